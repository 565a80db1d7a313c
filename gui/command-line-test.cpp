#include "gui/command-line.h"

#include <string>
#include <vector>

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDialog>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QStyleOptionSlider>
#include <QTest>
#include <QTimer>
#include <QToolTip>
#include <QWheelEvent>
#include <gtest/gtest.h>

#include "tests/support/main-window-fixture.h"

namespace {

/// The keys whose release reaches what it watches.
class TReleaseWatcher : public QObject {
 public:
  bool eventFilter(QObject* /*watched*/, QEvent* event) override {
    if (event->type() == QEvent::KeyRelease) {
      released.push_back(static_cast<QKeyEvent*>(event)->key());
    }
    return false;
  }

  std::vector<int> released;
};

class TCommandLineTest : public TMainWindowFixture {
 protected:
  TCommandLineTest() {
    // As the controller does, which empties the line behind every command but help.
    window.OnReturnPressed = [this] {
      lines.push_back(window.GetCommandText());
      if (lines.back() == "help") {
        window.SelectCommandText();
      } else {
        window.ClearCommandText();
      }
    };
  }

  void SetClipboard(const QString& text) { QApplication::clipboard()->setText(text); }

  static void Commit(QWidget* widget, const QString& text) {
    QInputMethodEvent event;
    event.setCommitString(text);
    QApplication::sendEvent(widget, &event);
  }

  bool PressWith(Qt::KeyboardModifiers modifiers, int key) {
    QKeyEvent event(QEvent::KeyPress, key, modifiers);
    QApplication::sendEvent(line, &event);
    return event.isAccepted();
  }

  QLineEdit* line = Find<QLineEdit>("leCommand");
  std::vector<std::string> lines;
};

TEST_F(TCommandLineTest, EachPastedLineRunsAndWhatIsBehindThemStays) {
  SetClipboard("one\r\ntwo\n\nth\rree\nfo\u00fcr");
  window.SetCommandText("x = ");
  PressWith(Qt::ControlModifier, Qt::Key_V);
  EXPECT_EQ(lines, (std::vector<std::string>{"x = one", "two", "", "th\rree"}));
  EXPECT_EQ(window.GetCommandText(), "fo\u00fcr");
  lines.clear();
  SetClipboard("a");
  PressWith(Qt::ShiftModifier, Qt::Key_Insert);
  EXPECT_EQ(window.GetCommandText(), "fo\u00fcra");
  SetClipboard("\n");
  PressWith(Qt::ShiftModifier, Qt::Key_Insert);
  EXPECT_EQ(lines, (std::vector<std::string>{"fo\u00fcra"}));
  EXPECT_EQ(window.GetCommandText(), "");
}

TEST_F(TCommandLineTest, TheTextOfAHelpRequestStaysSelectedUntilTheNextLine) {
  SetClipboard("help\nnext\n");
  PressWith(Qt::ControlModifier, Qt::Key_V);
  EXPECT_EQ(lines, (std::vector<std::string>{"help", "next"}));
  SetClipboard("help\n");
  PressWith(Qt::ControlModifier, Qt::Key_V);
  EXPECT_EQ(line->selectedText(), "help");
  Press(line, Qt::Key_X, "x");
  EXPECT_EQ(window.GetCommandText(), "x");
}

TEST_F(TCommandLineTest, TheContextMenuPastesLikewise) {
  SetClipboard("one\ntwo");
  window.show();
  bool found = false;
  QTimer::singleShot(0, [&] {
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    for (QAction* action : menu->actions()) {
      if (action->text().startsWith("&Paste")) {
        found = true;
        action->trigger();
      }
    }
    menu->close();
  });
  QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 5), line->mapToGlobal(QPoint(5, 5)));
  QApplication::sendEvent(line, &event);
  EXPECT_TRUE(found);
  EXPECT_EQ(lines, std::vector<std::string>{"one"});
  EXPECT_EQ(window.GetCommandText(), "two");
}

TEST_F(TCommandLineTest, LinesThatAnInputMethodCommitsRunLikewise) {
  Commit(line, "fo\u00fcr");
  EXPECT_EQ(window.GetCommandText(), "fo\u00fcr");
  Commit(line, " = one\ntwo\nrest");
  EXPECT_EQ(lines, (std::vector<std::string>{"fo\u00fcr = one", "two"}));
  EXPECT_EQ(window.GetCommandText(), "rest");
}

TEST_F(TCommandLineTest, TheMiddleButtonAndAKeyPasteTheSelectionAndNotTheClipboard) {
  QClipboard* clipboard = QApplication::clipboard();
  // Where the platform has none there is nothing to paste.
  const bool hasSelection = clipboard->supportsSelection();
  if (hasSelection) {
    clipboard->setText("one\ntwo", QClipboard::Selection);
  }
  SetClipboard("clipboard\n");
  window.show();
  window.SetCommandText("x = ");
  QTest::mouseClick(line, Qt::MiddleButton, Qt::NoModifier, QPoint(line->width() - 5, line->height() / 2));
  EXPECT_EQ(lines, hasSelection ? std::vector<std::string>{"x = one"} : std::vector<std::string>());
  EXPECT_EQ(window.GetCommandText(), hasSelection ? "two" : "x = ");
  lines.clear();
  PressWith(Qt::ControlModifier | Qt::ShiftModifier, Qt::Key_Insert);
  EXPECT_EQ(lines, hasSelection ? std::vector<std::string>{"twoone"} : std::vector<std::string>());
  EXPECT_EQ(window.GetCommandText(), hasSelection ? "two" : "x = ");
}

TEST_F(TCommandLineTest, AMouseSelectsText) {
  window.show();
  window.SetCommandText("word");
  const QPoint start(line->width() - 5, line->height() / 2);
  QTest::mousePress(line, Qt::LeftButton, Qt::NoModifier, start);
  QTest::mouseMove(line, QPoint(0, start.y()));
  QTest::mouseRelease(line, Qt::LeftButton, Qt::NoModifier, QPoint(0, start.y()));
  EXPECT_EQ(line->selectedText(), "word");
}

TEST_F(TCommandLineTest, TheLineTakesAMegabyteAndAPasteOfMoreIsRefused) {
  const QString megabyte(1 << 20, 'x');
  SetClipboard(megabyte + "\nrest");
  PressWith(Qt::ControlModifier, Qt::Key_V);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0], megabyte.toStdString());
  EXPECT_EQ(window.GetCommandText(), "rest");
  window.show();
  SetClipboard("one\n" + megabyte + "y\n");
  PressWith(Qt::ControlModifier, Qt::Key_V);
  EXPECT_EQ(lines.size(), 1u) << "all or nothing";
  EXPECT_TRUE(QToolTip::text().contains("was not pasted"));
}

TEST_F(TCommandLineTest, LinesThatWaitAreNotLost) {
  // As the controller does while a command is under way.
  window.OnReturnPressed = [this] { lines.push_back(window.GetCommandText()); };
  SetClipboard("one\ntwo\nrest");
  PressWith(Qt::ControlModifier, Qt::Key_V);
  EXPECT_EQ(lines, (std::vector<std::string>{"one", "two"}));
  EXPECT_EQ(window.GetCommandText(), "rest");
}

TEST_F(TCommandLineTest, F1IsHelpAndKeepsWhatWasBegun) {
  Press(line, Qt::Key_F1);
  EXPECT_EQ(lines, std::vector<std::string>{"help"});
  EXPECT_EQ(line->selectedText(), "help");
  window.SetCommandText("begun");
  Press(line, Qt::Key_F1);
  EXPECT_EQ(lines.size(), 2u);
  EXPECT_EQ(window.GetCommandText(), "begun");
}

TEST_F(TCommandLineTest, ControlQCloses) {
  window.show();
  PressWith(Qt::ControlModifier, Qt::Key_Q);
  EXPECT_FALSE(window.isVisible());
  EXPECT_TRUE(window.IsClosing());
}

TEST_F(TCommandLineTest, WhileACommandRunsOnlyEscapeAndClosingGetThrough) {
  int interrupts = 0;
  window.OnInterrupt = [&] { ++interrupts; };
  window.show();
  window.SetCommandText("running");
  window.SetBusy(true);
  window.SetBusy(true);
  EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::BusyCursor);
  Press(line, Qt::Key_A, "a");
  Press(line, Qt::Key_Return);
  Press(line, Qt::Key_B, "b");
  EXPECT_EQ(window.GetCommandText(), "running");
  Press(line, Qt::Key_Escape);
  EXPECT_EQ(interrupts, 1);
  EXPECT_EQ(window.GetCommandText(), "running") << "Escape means the command";
  auto* pane = Find<QPlainTextEdit>("pteInfo");
  pane->setPlainText("some text");
  QMouseEvent doubleClick(QEvent::MouseButtonDblClick, QPointF(10, 10), pane->viewport()->mapToGlobal(QPointF(10, 10)),
                          Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(pane->viewport(), &doubleClick);
  EXPECT_FALSE(pane->textCursor().hasSelection());
  window.SetBusy(false);
  EXPECT_NE(QApplication::overrideCursor(), nullptr) << "the script still runs";
  QCoreApplication::processEvents();
  window.ClearCommandText();
  window.SetBusy(false);
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);
  EXPECT_EQ(window.GetCommandText(), "") << "not before the events are handled";
  QCoreApplication::processEvents();
  EXPECT_EQ(lines, std::vector<std::string>{"a"});
  EXPECT_EQ(window.GetCommandText(), "b");
  QApplication::sendEvent(pane->viewport(), &doubleClick);
  EXPECT_TRUE(pane->textCursor().hasSelection()) << "the mouse is back";
}

TEST_F(TCommandLineTest, WhileACommandRunsCommittedTextAndReleasedKeysWait) {
  TReleaseWatcher watcher;
  line->installEventFilter(&watcher);
  const auto release = [this](int key) {
    QKeyEvent event(QEvent::KeyRelease, key, Qt::NoModifier);
    QApplication::sendEvent(line, &event);
  };
  window.SetBusy(true);
  Press(line, Qt::Key_A, "a");
  release(Qt::Key_A);
  Commit(line, "\u00fc");
  Press(line, Qt::Key_Escape);
  release(Qt::Key_Escape);
  EXPECT_EQ(window.GetCommandText(), "");
  EXPECT_TRUE(watcher.released.empty());
  window.SetBusy(false);
  QCoreApplication::processEvents();
  EXPECT_EQ(window.GetCommandText(), "a\u00fc");
  EXPECT_EQ(watcher.released, std::vector<int>{Qt::Key_A}) << "Escape was the command's";
}

TEST_F(TCommandLineTest, WhileACommandRunsTheWheelAndTheContextMenuDoNothing) {
  auto* pane = Find<QPlainTextEdit>("pteInfo");
  pane->setPlainText(QString("line\n").repeated(500));
  window.show();
  const QPoint place(20, 20);
  const QPoint onScreen = pane->viewport()->mapToGlobal(place);
  const auto turn = [&] {
    QWheelEvent event(place, onScreen, QPoint(), QPoint(0, -120), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase,
                      false);
    QApplication::sendEvent(pane->viewport(), &event);
    return pane->verticalScrollBar()->value();
  };
  ASSERT_EQ(pane->verticalScrollBar()->value(), 0);
  window.SetBusy(true);
  EXPECT_EQ(turn(), 0);
  bool isMenuOpen = false;
  QTimer::singleShot(0, [&] {
    if (QWidget* menu = QApplication::activePopupWidget()) {
      isMenuOpen = true;
      menu->close();
    }
  });
  QContextMenuEvent event(QContextMenuEvent::Mouse, place, onScreen);
  QApplication::sendEvent(pane->viewport(), &event);
  QCoreApplication::processEvents();
  EXPECT_FALSE(isMenuOpen);
  window.SetBusy(false);
  EXPECT_GT(turn(), 0);
}

TEST_F(TCommandLineTest, AScrollBarHeldWhenACommandBeginsIsLetGo) {
  auto* pane = Find<QPlainTextEdit>("pteInfo");
  pane->setPlainText(QString("line\n").repeated(500));
  window.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
  QScrollBar* bar = pane->verticalScrollBar();
  QStyleOptionSlider option;
  option.initFrom(bar);
  option.orientation = Qt::Vertical;
  option.minimum = bar->minimum();
  option.maximum = bar->maximum();
  option.pageStep = bar->pageStep();
  const QRect slider = bar->style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, bar);
  // Through the window, where the toolkit notices which buttons are held.
  const auto onWindow = [&](QPoint place) { return bar->mapTo(&window, place); };
  const QPoint place = slider.center();
  QTest::mousePress(window.windowHandle(), Qt::LeftButton, Qt::NoModifier, onWindow(place));
  ASSERT_TRUE(bar->isSliderDown());
  window.SetBusy(true);
  QTest::mouseMove(window.windowHandle(), onWindow(place + QPoint(0, 20)));
  EXPECT_GT(bar->value(), 0) << "a drag goes on";
  QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, Qt::NoModifier, onWindow(place + QPoint(0, 20)));
  EXPECT_FALSE(bar->isSliderDown());
  QTest::mousePress(window.windowHandle(), Qt::LeftButton, Qt::NoModifier, onWindow(place + QPoint(0, 20)));
  EXPECT_FALSE(bar->isSliderDown()) << "a new press is held back";
  QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, Qt::NoModifier, onWindow(place + QPoint(0, 20)));
  window.SetBusy(false);
}

TEST_F(TCommandLineTest, ControlQDuringACommandClosesBehindIt) {
  int interrupts = 0;
  window.OnInterrupt = [&] { ++interrupts; };
  window.show();
  window.SetBusy(true);
  PressWith(Qt::ControlModifier, Qt::Key_Q);
  EXPECT_EQ(interrupts, 1);
  EXPECT_TRUE(window.isVisible());
  window.SetBusy(false);
  EXPECT_FALSE(window.isVisible());
}

TEST_F(TCommandLineTest, KeysKeptOverSeveralCommandsStayInOrder) {
  window.OnReturnPressed = [this] {
    lines.push_back(window.GetCommandText());
    window.SetBusy(true);
    window.ProcessWorkEvents();
    window.ClearCommandText();
    window.SetBusy(false);
  };
  window.SetBusy(true);
  for (const char letter : {'a', '\n', 'b', '\n', 'c'}) {
    Press(line, letter == '\n' ? Qt::Key_Return : Qt::Key_A + letter - 'a', QString(letter));
  }
  window.SetBusy(false);
  for (int i = 0; i < 5; ++i) {
    QCoreApplication::processEvents();
  }
  EXPECT_EQ(lines, (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(window.GetCommandText(), "c");
}

TEST_F(TCommandLineTest, ClosingDuringACommandIsRemembered) {
  int interrupts = 0;
  window.OnInterrupt = [&] { ++interrupts; };
  window.show();
  window.OnReturnPressed = [&] {
    lines.push_back(window.GetCommandText());
    window.SetBusy(true);
    Press(line, Qt::Key_Z, "z");
    window.close();
    EXPECT_TRUE(window.isVisible());
    window.ProcessWorkEvents();
    window.SetBusy(false);
  };
  SetClipboard("one\ntwo\n");
  PressWith(Qt::ControlModifier, Qt::Key_V);
  EXPECT_EQ(interrupts, 1);
  EXPECT_FALSE(window.isVisible());
  EXPECT_EQ(lines, std::vector<std::string>{"one"}) << "nothing runs in a window that is closed";
}

TEST_F(TCommandLineTest, ADialogOfACommandGetsItsInputAsUsual) {
  int interrupts = 0;
  window.OnInterrupt = [&] { ++interrupts; };
  window.show();
  window.SetBusy(true);
  QDialog dialog;
  bool hadPointer = false;
  QTimer::singleShot(0, [&] {
    hadPointer = QApplication::overrideCursor() == nullptr;
    Press(&dialog, Qt::Key_Escape);
  });
  dialog.exec();
  EXPECT_TRUE(hadPointer);
  EXPECT_EQ(dialog.result(), QDialog::Rejected);
  EXPECT_EQ(interrupts, 0);
  EXPECT_NE(QApplication::overrideCursor(), nullptr);
  window.SetBusy(false);
}

}  // namespace
