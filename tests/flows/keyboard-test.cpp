// The window and the dialogs for those who have no mouse, and for those who do not see them.

#include <set>
#include <string>
#include <vector>

#include <QAccessible>
#include <QApplication>
#include <QDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QTableWidget>
#include <QTimer>
#include <gtest/gtest.h>

#include "engine/var-list.h"
#include "gui/picture-view.h"
#include "tests/support/workbench.h"

namespace {

/// Presses a key where the keyboard is, as the window system would.
void Press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
  QWidget* widget = QApplication::focusWidget();
  ASSERT_NE(widget, nullptr);
  for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
    QKeyEvent event(type, key, modifiers);
    QApplication::sendEvent(widget, &event);
  }
}

/// What a screen reader calls it.
QString NameOf(QWidget* widget) {
  return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
}

/// The widgets in `window` that the keyboard reaches and that have no name.
std::string NamelessWidgets(QWidget& window) {
  std::string nameless;
  for (QWidget* widget : window.findChildren<QWidget*>()) {
    const bool isInteractive = widget->focusPolicy() != Qt::NoFocus && widget->isVisibleTo(&window);
    if (isInteractive && NameOf(widget).isEmpty()) {
      nameless += widget->metaObject()->className() + (" " + widget->objectName().toStdString()) + "\n";
    }
  }
  return nameless;
}

class TKeyboard : public testing::Test {
 protected:
  TKeyboard() {
    MakePicture("photos/im1.jpg", 80, 40, qRgb(255, 0, 0));
    MakePicture("photos/im2.jpg", 80, 40, qRgb(0, 0, 255));
    MakeFile("red.txt", "1\r\n");
    for (const char* line :
         {"q = loadimage(\"photos/im1.jpg\")", "db = loaddatabase(\"photos\")", "loadmirflickrtags(db, \"red.txt\")",
          "index = searchtags(db, \"red\")", "segmentimage(q, \"grid\")"}) {
      workbench.Run(line);
    }
    workbench.window.show();
    workbench.window.activateWindow();
    QApplication::processEvents();
  }

  template <typename TWidget>
  TWidget* Find(const char* name) {
    return workbench.window.findChild<TWidget*>(name);
  }

  QString GetLine() { return Find<QLineEdit>("leCommand")->text(); }

  /// Runs a line, and `act` once its dialog stands on the screen and has the keyboard.
  template <typename TAction>
  void RunWithDialog(const std::string& line, TAction act) {
    bool isRun = false;
    const TDialogRunnerScope scope([&](QDialog& dialog) {
      QTimer::singleShot(0, &dialog, [&] {
        dialog.activateWindow();
        for (int i = 0; i < 1000 && !dialog.isActiveWindow(); ++i) {
          QApplication::processEvents(QEventLoop::AllEvents, 10);
        }
        act(dialog);
        isRun = true;
      });
      // Nobody would ever close what a fault leaves open.
      QTimer::singleShot(20000, &dialog, &QDialog::reject);
      dialog.exec();
    });
    workbench.Run(line);
    EXPECT_TRUE(isRun) << line;
  }

  TWorkbench workbench;
};

TEST_F(TKeyboard, EveryWidgetThatCanBeUsedHasAName) {
  EXPECT_EQ(NamelessWidgets(workbench.window), "");
  EXPECT_EQ(NameOf(Find<QLineEdit>("leCommand")), "Command");
  EXPECT_EQ(NameOf(Find<QTableWidget>("twSegmentationMethods")), "Segmentation methods");
  QAccessibleInterface* features = QAccessible::queryAccessibleInterface(Find<QTableWidget>("twFeatures"));
  EXPECT_EQ(features->tableInterface()->cellAt(1, 0)->text(QAccessible::Name), "lbp");
  int dialogs = 0;
  const TDialogRunnerScope scope([&](QDialog& dialog) {
    ++dialogs;
    EXPECT_NE(NameOf(&dialog), "");
    EXPECT_EQ(NamelessWidgets(dialog), "");
    for (TPictureView* view : dialog.findChildren<TPictureView*>()) {
      EXPECT_TRUE(view->GetItems().empty() || view->focusPolicy() != Qt::NoFocus) << "out of the keyboard's reach";
    }
  });
  for (const char* line :
       {"displayimage(q)", "displayindex(index)", "displayindexmap(index)", "evaluateindex(index, \"red\")"}) {
    workbench.Run(line);
  }
  EXPECT_EQ(dialogs, 4);
}

TEST_F(TKeyboard, TheDialogsOfTheToolkitHaveNamesToo) {
  TPictureView view;
  view.SetPicture(QPixmap(20, 20), {{QRect(), "missing.png", "a picture"}});
  view.show();
  std::string nameless;
  std::vector<QString> titles;
  const TDialogRunnerScope scope([&](QDialog& dialog) {
    titles.push_back(NameOf(&dialog));
    nameless += NamelessWidgets(dialog);
  });
  for (const char* chosen : {"Open file", "Save picture as PNG..."}) {
    QTimer::singleShot(0, [chosen] {
      auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
      ASSERT_NE(menu, nullptr);
      for (QAction* action : menu->actions()) {
        if (action->text() == chosen) {
          action->trigger();
        }
      }
      menu->close();
    });
    QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(5, 5), view.mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(&view, &event);
  }
  EXPECT_EQ(titles, (std::vector<QString>{"Tessimar", "Save picture as PNG"}));
  EXPECT_EQ(nameless, "");
}

TEST_F(TKeyboard, TabReachesAllOfTheWindowAndStaysNowhere) {
  const std::set<std::string> all = {"leCommand",  "twVariables",   "pteInfo",
                                     "twFeatures", "twClassifiers", "twSegmentationMethods"};
  std::set<std::string> reached;
  // In the command line Tab completes; its way out is the one backwards.
  for (std::size_t i = 0; i < all.size(); ++i) {
    Press(Qt::Key_Backtab, Qt::ShiftModifier);
    reached.insert(QApplication::focusWidget()->objectName().toStdString());
  }
  EXPECT_EQ(reached, all);
  EXPECT_EQ(QApplication::focusWidget()->objectName(), "leCommand");
  for (const std::string& name : all) {
    if (name == "leCommand") {
      continue;
    }
    Find<QWidget>(name.c_str())->setFocus();
    Press(Qt::Key_Tab);
    EXPECT_NE(QApplication::focusWidget()->objectName().toStdString(), name);
  }
  EXPECT_FALSE(Find<QPlainTextEdit>("pteInfo")->toPlainText().contains('\t'));
}

TEST_F(TKeyboard, EnterOnAnEntryHandsItToTheCommandLine) {
  auto* variables = Find<QTableWidget>("twVariables");
  const auto choose = [](QTableWidget* table, int row, int column) {
    table->setFocus();
    table->setCurrentCell(row, column);
    Press(Qt::Key_Return);
    EXPECT_EQ(QApplication::focusWidget()->objectName(), "leCommand");
  };
  ASSERT_EQ(workbench.GetColumn(0), (std::vector<std::string>{"q", "db", "index"}));
  choose(variables, 0, 2);
  EXPECT_EQ(GetLine(), "displayimage(q)");
  Press(Qt::Key_Escape);
  choose(variables, 2, 0);
  EXPECT_EQ(GetLine(), "displayindex(index)");
  Press(Qt::Key_Return);
  EXPECT_EQ(workbench.dialogs.size(), 1u);
  Press(Qt::Key_Escape);
  // In a line that is begun, and wherever there is nothing to show, the name alone goes in.
  Find<QLineEdit>("leCommand")->setText("updatefeature(");
  choose(variables, 1, 0);
  Find<QLineEdit>("leCommand")->insert(", ");
  choose(Find<QTableWidget>("twFeatures"), 0, 0);
  EXPECT_EQ(GetLine(), "updatefeature(db, \"hsv\"");
  Press(Qt::Key_Escape);
  choose(variables, 1, 0);
  EXPECT_EQ(GetLine(), "db");
}

TEST_F(TKeyboard, DialogsCloseByEscapeAndByEnter) {
  for (const int key : {Qt::Key_Escape, Qt::Key_Return}) {
    for (const char* line : {"displayimage(q)", "displayindex(index)"}) {
      bool isOpen = true;
      RunWithDialog(line, [&](QDialog& dialog) {
        Press(key);
        isOpen = dialog.isVisible();
        dialog.reject();
      });
      EXPECT_FALSE(isOpen) << line << " and key " << key;
    }
  }
}

TEST_F(TKeyboard, TheMenuKeyOpensTheMenuOfTheSegmentThatTheArrowsChose) {
  QStringList texts;
  QString first;
  QString chosen;
  RunWithDialog("displayimage(q)", [&](QDialog& dialog) {
    Press(Qt::Key_Tab);
    QWidget* view = QApplication::focusWidget();
    ASSERT_EQ(view->objectName().toStdString(), "laImage");
    const QImage before = dialog.grab().toImage();
    Press(Qt::Key_Right);
    EXPECT_NE(dialog.grab().toImage(), before) << "what is chosen can be seen";
    first = NameOf(view);
    Press(Qt::Key_Right);
    Press(Qt::Key_Right);
    Press(Qt::Key_Left);
    chosen = NameOf(view);
    QTimer::singleShot(0, [&] {
      auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
      ASSERT_NE(menu, nullptr);
      for (QAction* action : menu->actions()) {
        texts << action->text();
        if (action->text() == "Use as query") {
          action->trigger();
        }
      }
      menu->close();
    });
    QContextMenuEvent event(QContextMenuEvent::Keyboard, view->rect().center(),
                            view->mapToGlobal(view->rect().center()));
    QApplication::sendEvent(view, &event);
    dialog.reject();
  });
  EXPECT_EQ(texts, QStringList({"Copy file name", "Open file", "Use as query", "Save picture as PNG..."}));
  // Cells of 10 x 5 pixels, behind the picture as a whole.
  EXPECT_TRUE(first.contains("x 0, y 0, 10 x 5")) << first.toStdString();
  EXPECT_TRUE(chosen.contains("x 10, y 0, 10 x 5")) << chosen.toStdString();
  EXPECT_EQ(GetLine(), "query = loadimage(\"photos/im1.jpg\")");
}

TEST_F(TKeyboard, SpaceShowsTheFullSizeAndArrowsMoveIt) {
  QImage picture(3000, 1500, QImage::Format_RGB888);
  picture.fill(Qt::red);
  for (int y = 0; y < picture.height(); ++y) {
    for (int x = 1500; x < picture.width(); ++x) {
      picture.setPixelColor(x, y, Qt::blue);
    }
  }
  picture.save("large.png");
  workbench.Run("a = loadimage(\"large.png\")");
  RunWithDialog("displayimage(a)", [&](QDialog& dialog) {
    auto* view = dialog.findChild<TPictureView*>("laImage");
    const auto color = [&] { return view->grab().toImage().pixelColor(view->width() - 10, 20); };
    EXPECT_EQ(color(), QColor(Qt::blue)) << "all of it";
    Press(Qt::Key_Tab);
    Press(Qt::Key_Space);
    EXPECT_EQ(color(), QColor(Qt::red)) << "the top left corner";
    for (int i = 0; i < 60; ++i) {
      Press(Qt::Key_Right);
    }
    EXPECT_EQ(color(), QColor(Qt::blue)) << "the right edge";
    Press(Qt::Key_Space);
    EXPECT_EQ(view->grab().toImage().pixelColor(20, 20), QColor(Qt::red));
    dialog.reject();
  });
}

}  // namespace
