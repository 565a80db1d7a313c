#pragma once

#include <QApplication>
#include <QKeyEvent>
#include <gtest/gtest.h>

#include "gui/main-window.h"
#include "tests/support/scratch-directory.h"

/// A window without a controller, in a directory of its own.
class TMainWindowFixture : public testing::Test {
 protected:
  template <typename TWidget>
  TWidget* Find(const char* name) {
    auto* widget = window.findChild<TWidget*>(name);
    EXPECT_NE(widget, nullptr) << name;
    return widget;
  }

  static bool Press(QWidget* widget, int key, const QString& text = QString()) {
    QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, text);
    QApplication::sendEvent(widget, &event);
    return event.isAccepted();
  }

  TScratchDirectory directory;
  MainWindow window;
};
