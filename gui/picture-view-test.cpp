#include "gui/picture-view.h"

#include <filesystem>
#include <string>
#include <vector>

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDesktopServices>
#include <QFileDialog>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <QTextBrowser>
#include <QTimer>
#include <QToolTip>
#include <QUrl>
#include <gtest/gtest.h>

#include "gui/command-offer.h"
#include "gui/dialog-runner.h"
#include "gui/image-display.h"
#include "gui/index-display.h"
#include "tests/support/scratch-directory.h"

namespace {

void Send(QWidget* widget, QEvent::Type type, QPoint place, Qt::MouseButton which = Qt::LeftButton) {
  const bool isDown = type != QEvent::MouseButtonRelease;
  const auto button = type == QEvent::MouseMove ? Qt::NoButton : which;
  QMouseEvent event(type, place, widget->mapToGlobal(QPointF(place)), button, isDown ? which : Qt::NoButton,
                    Qt::NoModifier);
  QApplication::sendEvent(widget, &event);
}

void Click(QWidget* widget, QPoint place, Qt::MouseButton which = Qt::LeftButton) {
  Send(widget, QEvent::MouseButtonPress, place, which);
  Send(widget, QEvent::MouseButtonRelease, place, which);
}

void Press(QWidget* widget, int key) {
  QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
  QApplication::sendEvent(widget, &event);
}

QString ToolTipAt(QWidget* widget, QPoint place) {
  QHelpEvent event(QEvent::ToolTip, place, widget->mapToGlobal(place));
  QApplication::sendEvent(widget, &event);
  return QToolTip::text();
}

/// Chooses an entry of the context menu; the entries that there were.
QStringList Choose(QWidget* widget, QPoint place, const QString& chosen) {
  QStringList texts;
  QTimer::singleShot(0, [&] {
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    for (QAction* action : menu->actions()) {
      texts << action->text();
    }
    for (QAction* action : menu->actions()) {
      if (action->text() == chosen) {
        action->trigger();
      }
    }
    menu->close();
  });
  QContextMenuEvent event(QContextMenuEvent::Mouse, place, widget->mapToGlobal(place));
  QApplication::sendEvent(widget, &event);
  return texts;
}

bool IsOnScreen(const QWidget& window) {
  // With room for a frame and its title bar.
  return window.screen()->availableGeometry().contains(window.geometry().adjusted(-6, -30, 6, 6));
}

/// Red at the left and blue at the right, with one green pixel in the middle of the blue.
QImage LargePicture() {
  QImage picture(3000, 1500, QImage::Format_RGB888);
  picture.fill(Qt::red);
  for (int y = 0; y < picture.height(); ++y) {
    for (int x = 1500; x < picture.width(); ++x) {
      picture.setPixelColor(x, y, Qt::blue);
    }
  }
  picture.setPixelColor(2250, 750, Qt::green);
  return picture;
}

class TPictureViewTest : public testing::Test {
 protected:
  const TScratchDirectory directory;
};

TEST_F(TPictureViewTest, ALargePictureIsReducedOnlyWhereItIsShown) {
  TImageDisplay dialog;
  dialog.SetImage(LargePicture());
  EXPECT_EQ(dialog.grab().size(), QSize(3020, 1550));
  dialog.show();
  EXPECT_TRUE(IsOnScreen(dialog));
  auto* view = dialog.findChild<TPictureView*>("laImage");
  EXPECT_NEAR(view->width(), 2 * view->height(), 2);
  EXPECT_GT(view->width(), 600) << "as large as fits on 800 x 800";
  EXPECT_TRUE(dialog.rect().contains(dialog.findChild<QPushButton*>("pbClose")->geometry()));
  const QImage shown = view->grab().toImage();
  EXPECT_EQ(shown.pixelColor(5, 5), QColor(Qt::red));
  EXPECT_EQ(shown.pixelColor(view->width() - 5, 5), QColor(Qt::blue));
}

TEST_F(TPictureViewTest, AClickShowsTheFullSizeWhichIsDragged) {
  TImageDisplay dialog;
  dialog.SetImage(LargePicture());
  dialog.show();
  auto* view = dialog.findChild<TPictureView*>("laImage");
  const QPoint clicked(view->width() * 3 / 4, view->height() / 2);
  const auto findGreen = [&] {
    const QImage shown = view->grab().toImage();
    for (int y = 0; y < shown.height(); ++y) {
      for (int x = 0; x < shown.width(); ++x) {
        if (shown.pixelColor(x, y) == QColor(Qt::green)) {
          return QPoint(x, y);
        }
      }
    }
    return QPoint(-1, -1);
  };
  EXPECT_EQ(findGreen(), QPoint(-1, -1)) << "one pixel of many";
  Click(view, clicked);
  const QPoint green = findGreen();
  EXPECT_LE((green - clicked).manhattanLength(), 8) << "what was clicked stays under the mouse";
  Send(view, QEvent::MouseButtonPress, clicked);
  Send(view, QEvent::MouseMove, clicked + QPoint(-40, 30));
  Send(view, QEvent::MouseButtonRelease, clicked + QPoint(-40, 30));
  EXPECT_EQ(findGreen(), green + QPoint(-40, 30));
  Send(view, QEvent::MouseButtonPress, clicked);
  Send(view, QEvent::MouseMove, clicked + QPoint(5000, 5000));
  Send(view, QEvent::MouseButtonRelease, clicked + QPoint(5000, 5000));
  EXPECT_EQ(view->grab().toImage().pixelColor(0, 0), QColor(Qt::red)) << "not beyond the edge";
  Click(view, QPoint(3, 3));
  EXPECT_EQ(view->grab().toImage().pixelColor(view->width() - 5, 5), QColor(Qt::blue)) << "all of it again";
}

TEST_F(TPictureViewTest, OnlyAClickOfTheLeftButtonChangesTheSize) {
  TImageDisplay dialog;
  dialog.SetImage(LargePicture());
  dialog.show();
  auto* view = dialog.findChild<TPictureView*>("laImage");
  const QImage reduced = view->grab().toImage();
  Click(view, QPoint(5, 5), Qt::RightButton);
  Click(view, QPoint(5, 5), Qt::MiddleButton);
  EXPECT_EQ(view->grab().toImage(), reduced);
  Send(view, QEvent::MouseButtonPress, QPoint(5, 5));
  Send(view, QEvent::MouseMove, QPoint(60, 60));
  EXPECT_EQ(view->grab().toImage(), reduced) << "there is nothing to drag";
  Send(view, QEvent::MouseButtonRelease, QPoint(5, 5));
  EXPECT_NE(view->grab().toImage(), reduced);
}

TEST_F(TPictureViewTest, WhatTheArrowsChoseIsFramedAtEverySize) {
  TImageDisplay dialog;
  dialog.SetImage(LargePicture(), {{QRect(), "a.jpg", "all"}, {QRect(1000, 500, 200, 120), "a.jpg", "part"}});
  dialog.show();
  dialog.activateWindow();
  auto* view = dialog.findChild<TPictureView*>("laImage");
  ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
  view->setFocus();
  const QColor color = view->palette().color(QPalette::Highlight);
  const auto frame = [&] {
    const QImage shown = view->grab().toImage();
    QRect found;
    for (int y = 0; y < shown.height(); ++y) {
      for (int x = 0; x < shown.width(); ++x) {
        if (shown.pixelColor(x, y) == color) {
          found |= QRect(x, y, 1, 1);
        }
      }
    }
    return found;
  };
  EXPECT_EQ(frame(), view->rect());
  Press(view, Qt::Key_Right);
  const QRect reduced = frame();
  EXPECT_NEAR(reduced.width(), 200.0 * view->width() / 3000, 2);
  EXPECT_NEAR(reduced.x(), 1000.0 * view->width() / 3000, 2);
  Press(view, Qt::Key_Space);
  const QRect full = frame();
  EXPECT_EQ(full.size(), QSize(200, 120));
  EXPECT_LE((full.center() - reduced.center()).manhattanLength(), 8) << "it stays where it was";
  Press(view, Qt::Key_Right);
  EXPECT_EQ(frame(), full.translated(-60, 0));
  Press(view, Qt::Key_Escape);
  EXPECT_FALSE(dialog.isVisible()) << "all other keys are the dialog's";
}

TEST_F(TPictureViewTest, NarrowPicturesLeaveRoomForTheButton) {
  TImageDisplay dialog;
  QImage picture(20, 5000, QImage::Format_RGB888);
  picture.fill(Qt::red);
  dialog.SetImage(picture);
  dialog.show();
  EXPECT_TRUE(IsOnScreen(dialog));
  EXPECT_TRUE(dialog.rect().contains(dialog.findChild<QPushButton*>("pbClose")->geometry()));
}

TEST_F(TPictureViewTest, TooltipsTellOfTheTopmostThingAtThatPlaceAtEverySize) {
  const std::vector<TPictureItem> items = {{QRect(), "a.jpg", "all"},
                                           {QRect(0, 0, 2000, 1500), "a.jpg", "left"},
                                           {QRect(1000, 0, 1000, 1500), "a.jpg", "middle <b>"}};
  TImageDisplay dialog;
  dialog.SetImage(LargePicture(), items);
  dialog.show();
  auto* view = dialog.findChild<TPictureView*>("laImage");
  const auto at = [&](double part) { return QPoint(static_cast<int>(view->width() * part), 20); };
  EXPECT_TRUE(ToolTipAt(view, at(0.2)).contains("left"));
  EXPECT_TRUE(ToolTipAt(view, at(0.5)).contains("middle &lt;b&gt;"));
  EXPECT_TRUE(ToolTipAt(view, at(0.9)).contains("all"));
  Click(view, at(0.99));
  EXPECT_TRUE(ToolTipAt(view, QPoint(1, 20)).contains("all")) << "the right edge at full size";
  EXPECT_EQ(view->accessibleName(), "all");
}

TEST_F(TPictureViewTest, AGridTooLargeForTheScreenIsReducedAsAWhole) {
  TIndexDisplay dialog;
  QImage tile(160, 120, QImage::Format_RGB888);
  tile.fill(Qt::red);
  dialog.SetImage(tile, 0, {QRect(), "first.jpg", "first"});
  dialog.SetImage(QImage(), 15, {QRect(), "last.jpg", "last"});
  dialog.resize(687, 900);
  dialog.show();
  EXPECT_TRUE(IsOnScreen(dialog));
  TPictureView* whole = nullptr;
  for (TPictureView* view : dialog.findChildren<TPictureView*>()) {
    if (view->isVisible()) {
      EXPECT_EQ(whole, nullptr);
      whole = view;
    }
  }
  ASSERT_NE(whole, nullptr);
  EXPECT_EQ(whole->grab().toImage().pixelColor(40, 40), QColor(Qt::red));
  EXPECT_TRUE(ToolTipAt(whole, QPoint(40, 40)).contains("first"));
  EXPECT_TRUE(ToolTipAt(whole, whole->rect().bottomRight() - QPoint(40, 40)).contains("last"));
}

TEST_F(TPictureViewTest, TheContextMenuHandsTheFileOn) {
  MakeFile("Photos/A b.jpg", "any bytes");
  // Stands in for the desktop, as a widget that is handed addresses.
  QTextBrowser desktop;
  QDesktopServices::setUrlHandler("file", &desktop, "setSource");
  std::string offered;
  const TCommandOfferScope scope([&](const std::string& line) { offered = line; });
  TPictureView view;
  QPixmap picture(100, 100);
  picture.fill(Qt::red);
  view.SetPicture(picture, {{QRect(50, 0, 50, 100), "photos/a b.jpg", "text"}});
  view.resize(100, 100);
  view.show();
  const QPoint place(75, 50);
  EXPECT_EQ(Choose(&view, place, "Copy file name"),
            (QStringList{"Copy file name", "Open file", "Use as query", "Save picture as PNG..."}));
  EXPECT_EQ(QApplication::clipboard()->text(), "photos/a b.jpg");
  Choose(&view, place, "Use as query");
  EXPECT_EQ(offered, "query = loadimage(\"photos/a b.jpg\")");
  Choose(&view, place, "Open file");
  EXPECT_TRUE(desktop.source().toLocalFile().endsWith("/Photos/A b.jpg")) << desktop.source().toString().toStdString();
  EXPECT_EQ(Choose(&view, QPoint(10, 10), ""), QStringList{"Save picture as PNG..."}) << "no file there";

  QString warning;
  const TDialogRunnerScope runner([&](QDialog& dialog) { warning = dynamic_cast<QMessageBox&>(dialog).text(); });
  std::filesystem::remove("Photos/A b.jpg");
  Choose(&view, place, "Open file");
  EXPECT_EQ(warning, "File 'photos/a b.jpg' cannot be opened");
  QDesktopServices::unsetUrlHandler("file");
}

TEST_F(TPictureViewTest, SavesThePictureAtFullSize) {
  TImageDisplay dialog;
  dialog.SetImage(LargePicture(), {{QRect(), "photos/a.b.jpg", "text"}});
  dialog.show();
  auto* view = dialog.findChild<TPictureView*>("laImage");
  QString proposed;
  QString warning;
  QString target = "saved.png";
  const TDialogRunnerScope runner([&](QDialog& shown) {
    if (auto* box = qobject_cast<QMessageBox*>(&shown)) {
      warning = box->text();
      return;
    }
    auto& files = dynamic_cast<QFileDialog&>(shown);
    proposed = QFileInfo(files.selectedFiles().first()).fileName();
    files.selectFile(target);
    shown.done(QDialog::Accepted);
  });
  Choose(view, QPoint(5, 5), "Save picture as PNG...");
  EXPECT_EQ(proposed, "a.b.png");
  const QImage saved("saved.png");
  EXPECT_EQ(saved.size(), QSize(3000, 1500));
  EXPECT_EQ(saved.pixelColor(2250, 750), QColor(Qt::green));
  EXPECT_EQ(warning, "");
  target = "none/saved.png";
  Choose(view, QPoint(5, 5), "Save picture as PNG...");
  EXPECT_TRUE(warning.endsWith("saved.png' cannot be written")) << warning.toStdString();
}

TEST_F(TPictureViewTest, ASmallDialogKeepsItsPlaceInTheMiddle) {
  TImageDisplay dialog;
  QImage picture(100, 100, QImage::Format_RGB888);
  picture.fill(Qt::red);
  dialog.SetImage(picture);
  dialog.show();
  const QSize screen = dialog.screen()->size();
  EXPECT_EQ(dialog.pos(), QPoint((screen.width() - 120) / 2, (screen.height() - 150) / 2));
  EXPECT_EQ(dialog.size(), QSize(120, 150));
}

}  // namespace
