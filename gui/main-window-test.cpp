#include "gui/main-window.h"

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDialog>
#include <QDrag>
#include <QDragEnterEvent>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QGroupBox>
#include <QHelpEvent>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QScreen>
#include <QScrollBar>
#include <QSplitter>
#include <QStyleOptionSlider>
#include <QTableWidget>
#include <QTest>
#include <QTimer>
#include <QToolTip>
#include <QUrl>
#include <QWheelEvent>
#include <gtest/gtest.h>

#include "gui/command-offer.h"
#include "tests/support/scratch-directory.h"

namespace {

class TMainWindowTest : public testing::Test {
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

  /// Drops on a widget as the window system would: the toolkit looks for a widget under the mouse that accepts.
  static bool Drop(QWidget* widget, const QMimeData& data) {
    const QPoint middle = widget->rect().center();
    QDragEnterEvent enter(middle, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    enter.ignore();
    QApplication::sendEvent(widget, &enter);
    if (!enter.isAccepted()) {
      return false;
    }
    // With Shift a source proposes to move its files.
    QDragMoveEvent move(middle, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::ShiftModifier);
    move.ignore();
    QApplication::sendEvent(widget, &move);
    if (!move.isAccepted()) {
      return false;
    }
    EXPECT_EQ(move.dropAction(), Qt::CopyAction);
    QDropEvent drop(middle, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    drop.ignore();
    QApplication::sendEvent(widget, &drop);
    return drop.isAccepted();
  }

  QLabel* SideCell(const char* table, int row) {
    return dynamic_cast<QLabel*>(Find<QTableWidget>(table)->cellWidget(row, 0));
  }

  QString CellText(int row, int column) { return Find<TVariablesTable>("twVariables")->item(row, column)->text(); }

  QPixmap Thumbnail(int row) { return Find<TVariablesTable>("twVariables")->GetThumbnail(row, 1); }

  TScratchDirectory directory;
  MainWindow window;
};

TEST_F(TMainWindowTest, TheFormHasItsNamesGeometryAndHeaders) {
  EXPECT_EQ(window.windowTitle(), "Tessimar v" PROJECT_VERSION);
  EXPECT_EQ(window.size(), QSize(1182, 568));
  const QSize available = QApplication::primaryScreen()->availableGeometry().size();
  EXPECT_EQ(window.pos().x(), (available.width() - window.frameGeometry().width()) / 2);
  EXPECT_EQ(window.pos().y(), (available.height() - window.frameGeometry().height()) / 2);

  const std::vector<std::pair<const char*, QRect>> places = {
      {"splitter", {10, 10, 1021, 551}},     {"twVariables", {10, 20, 1001, 221}},
      {"pteInfo", {10, 20, 1001, 221}},      {"leCommand", {10, 20, 1001, 20}},
      {"groupBox", {1040, 10, 131, 161}},    {"groupBox_2", {1040, 180, 131, 161}},
      {"groupBox_3", {1040, 350, 131, 161}}, {"twFeatures", {10, 20, 111, 131}},
      {"twClassifiers", {10, 20, 111, 131}}, {"twSegmentationMethods", {10, 20, 111, 131}}};
  for (const auto& [name, place] : places) {
    EXPECT_EQ(Find<QWidget>(name)->geometry(), place) << name;
  }
  const std::vector<std::pair<const char*, const char*>> titles = {
      {"gbVariables", "Variables"}, {"gbOutput", "Output"},        {"gbCommand", "Command"},
      {"groupBox", "Features"},     {"groupBox_2", "Classifiers"}, {"groupBox_3", "Segmentation methods"}};
  for (const auto& [name, title] : titles) {
    EXPECT_EQ(Find<QGroupBox>(name)->title(), title);
  }
  auto* variables = Find<QTableWidget>("twVariables");
  ASSERT_EQ(variables->columnCount(), 3);
  EXPECT_EQ(variables->horizontalHeaderItem(2)->text(), "Description");
  EXPECT_EQ(variables->columnWidth(0), 100);
  EXPECT_EQ(variables->columnWidth(2), 750);
  EXPECT_EQ(variables->dragDropMode(), QAbstractItemView::DropOnly);
  EXPECT_TRUE(variables->acceptDrops());
  EXPECT_EQ(Find<QTableWidget>("twFeatures")->dragDropMode(), QAbstractItemView::DragOnly);
  auto* splitter = Find<QSplitter>("splitter");
  ASSERT_EQ(splitter->count(), 3);
  EXPECT_EQ(splitter->widget(2)->objectName(), "gbCommand");
  EXPECT_EQ(Find<QPlainTextEdit>("pteInfo")->font().family(), "Courier New");
  EXPECT_FALSE(Find<QPlainTextEdit>("pteInfo")->isReadOnly());
}

TEST_F(TMainWindowTest, SideTablesGetOneRowAName) {
  window.AddFeature("hsv");
  window.AddFeature("<b>lbp</b>");
  window.AddClassifier("svm");
  window.AddSegmentationMethod("grid");
  EXPECT_EQ(Find<QTableWidget>("twFeatures")->rowCount(), 2);
  EXPECT_EQ(SideCell("twFeatures", 0)->text(), "hsv");
  EXPECT_EQ(SideCell("twFeatures", 0)->indent(), 5);
  EXPECT_EQ(SideCell("twFeatures", 1)->textFormat(), Qt::PlainText);
  EXPECT_EQ(SideCell("twClassifiers", 0)->text(), "svm");
  EXPECT_EQ(SideCell("twSegmentationMethods", 0)->text(), "grid");
}

TEST_F(TMainWindowTest, AnImageShowsAThumbnailInPlaceOfItsType) {
  QImage picture(400, 300, QImage::Format_RGB888);
  picture.fill(Qt::red);
  ASSERT_TRUE(picture.save("Red \u00c4.png"));
  window.SetVariables({{"a", "image", "first", "red \u00c4.png"},
                       {"b", "image", "second", "gone.jpg"},
                       {"c", "database", "third", ""}});
  EXPECT_EQ(CellText(0, 0), "a");
  EXPECT_EQ(CellText(0, 1), "");
  const QPixmap thumbnail = Thumbnail(0);
  EXPECT_EQ(thumbnail.size(), QSize(40, 30));
  EXPECT_EQ(thumbnail.toImage().pixelColor(20, 15), QColor(Qt::red));
  EXPECT_TRUE(Thumbnail(1).isNull());
  EXPECT_EQ(CellText(2, 1), "database");
  EXPECT_EQ(CellText(2, 2), "third");
  window.SetVariables({});
  EXPECT_EQ(Find<QTableWidget>("twVariables")->rowCount(), 0);
}

TEST_F(TMainWindowTest, AThumbnailOfALargePhotographShowsTheWholeOfIt) {
  QImage picture(3001, 2001, QImage::Format_RGB888);
  picture.fill(Qt::white);
  for (int y = 0; y < 2001; ++y) {
    for (int x = 1500; x < 3001; ++x) {
      picture.setPixelColor(x, y, y < 1000 ? Qt::blue : Qt::black);
    }
  }
  ASSERT_TRUE(picture.save("large.jpg", nullptr, 95));
  window.SetVariables({{"a", "image", "", "large.jpg"}});
  const QImage thumbnail = Thumbnail(0).toImage();
  ASSERT_EQ(thumbnail.size(), QSize(40, 30));
  EXPECT_GT(thumbnail.pixelColor(2, 27).lightness(), 245);
  EXPECT_LT(thumbnail.pixelColor(37, 27).lightness(), 10);
  EXPECT_GT(thumbnail.pixelColor(37, 2).blue(), 245);
  EXPECT_LT(thumbnail.pixelColor(37, 2).red(), 10);
}

TEST_F(TMainWindowTest, OutputIsInsertedWhereTheCursorStands) {
  window.AddOutput("one\n");
  window.AddOutput("two \xc3\xa9\n");
  auto* pane = Find<QPlainTextEdit>("pteInfo");
  EXPECT_EQ(pane->toPlainText(), "one\ntwo \u00e9\n");
  pane->moveCursor(QTextCursor::Start);
  window.AddOutput("zero\n");
  EXPECT_EQ(pane->toPlainText(), "zero\none\ntwo \u00e9\n");
}

TEST_F(TMainWindowTest, OutputLeavesTheSelectionWhatItIs) {
  auto* pane = Find<QPlainTextEdit>("pteInfo");
  window.AddOutput("one\ntwo\n");
  pane->selectAll();
  window.AddOutput("three\n");
  window.AddOutput("four\n");
  EXPECT_EQ(pane->toPlainText(), "one\ntwo\nthree\nfour\n");
  EXPECT_EQ(pane->textCursor().selectedText(), "one\u2029two\u2029");
  // A selection made from its end to its start: the cursor, and so the place of output, is in front of it.
  QTextCursor backwards = pane->textCursor();
  backwards.setPosition(7);
  backwards.setPosition(4, QTextCursor::KeepAnchor);
  pane->setTextCursor(backwards);
  window.AddOutput("1.5\n");
  window.AddOutput("1.6\n");
  EXPECT_EQ(pane->toPlainText(), "one\n1.5\n1.6\ntwo\nthree\nfour\n");
  EXPECT_EQ(pane->textCursor().selectedText(), "two");
  pane->moveCursor(QTextCursor::End);
  window.AddOutput("five\n");
  EXPECT_TRUE(pane->toPlainText().endsWith("four\nfive\n"));
}

TEST_F(TMainWindowTest, AChangedFileShowsWithTheNextRowsAndNoneIsReadTwice) {
  const auto paint = [](const char* file, QColor color, std::chrono::seconds age) {
    QImage picture(40, 30, QImage::Format_RGB888);
    picture.fill(color);
    ASSERT_TRUE(picture.save(file, "BMP"));
    std::filesystem::last_write_time(file, std::filesystem::file_time_type::clock::now() - age);
  };
  const std::vector<TVariableRow> rows = {{"a", "image", "", "a.png"}, {"b", "image", "", "./a.png"}};
  const auto colorOf = [&](int row) { return Thumbnail(row).toImage().pixelColor(20, 15); };
  paint("a.png", Qt::red, std::chrono::hours(2));
  window.SetVariables(rows);
  EXPECT_EQ(colorOf(0), QColor(Qt::red));
  paint("a.png", Qt::blue, std::chrono::hours(1));
  EXPECT_EQ(colorOf(0), QColor(Qt::red)) << "a picture changes with a line, not under the eye";
  window.SetVariables(rows);
  EXPECT_EQ(colorOf(0), QColor(Qt::blue));
  // A change that the file's size and time do not show: what is kept is shown, under any name of the file.
  const auto changed = std::filesystem::last_write_time("a.png");
  paint("a.png", Qt::green, std::chrono::hours(1));
  std::filesystem::last_write_time("a.png", changed);
  window.SetVariables(rows);
  EXPECT_EQ(colorOf(0), QColor(Qt::blue));
  EXPECT_EQ(colorOf(1), QColor(Qt::blue));
  // Twice within the grain of a file system's clock.
  for (const QColor color : {Qt::red, Qt::green}) {
    paint("a.png", color, std::chrono::seconds(0));
    window.SetVariables(rows);
    EXPECT_EQ(colorOf(0), color);
  }
  std::filesystem::remove("a.png");
  window.SetVariables(rows);
  EXPECT_TRUE(Thumbnail(0).isNull());
}

TEST_F(TMainWindowTest, AThumbnailIsMadeForTheRatioOfTheScreen) {
  QImage picture(160, 120, QImage::Format_RGB888);
  picture.fill(Qt::red);
  ASSERT_TRUE(picture.save("a.png"));
  MakeFile("text.png", "no picture");
  window.SetVariables({{"a", "image", "", "a.png"},
                       {"b", "image", "", "gone.png"},
                       {"c", "image", "", "text.png"},
                       {"d", "database", "", "a.png"}});
  auto* table = Find<TVariablesTable>("twVariables");
  EXPECT_EQ(table->GetThumbnail(0, 2).size(), QSize(80, 60));
  EXPECT_EQ(table->GetThumbnail(0, 2).deviceIndependentSize(), QSizeF(40, 30));
  EXPECT_EQ(table->GetThumbnail(0, 1).size(), QSize(40, 30));
  for (const int row : {1, 2, 3}) {
    EXPECT_TRUE(table->GetThumbnail(row, 2).isNull()) << row;
  }
}

TEST_F(TMainWindowTest, APictureOfMoreThan128MegabytesHasAThumbnail) {
  QImage picture(7000, 5000, QImage::Format_RGB32);
  picture.fill(QColor(200, 200, 200));
  ASSERT_TRUE(picture.save("large.png", nullptr, 100));
  testing::internal::CaptureStderr();
  window.SetVariables({{"a", "image", "", "large.png"}});
  const QImage thumbnail = Thumbnail(0).toImage();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  ASSERT_EQ(thumbnail.size(), QSize(40, 30));
  EXPECT_EQ(thumbnail.pixelColor(20, 15), QColor(200, 200, 200));
}

TEST_F(TMainWindowTest, TheTableTakesOverWhatDiffersAndDrawsIt) {
  window.SetVariables({{"a", "x", "1", ""}, {"b", "x", "2", ""}, {"c", "x", "3", ""}});
  auto* table = Find<QTableWidget>("twVariables");
  const QTableWidgetItem* last = table->item(2, 0);
  // A variable that is replaced goes to the end; the rows behind it stay what they were.
  window.SetVariables({{"a", "x", "1", ""}, {"c", "x", "3", ""}, {"b", "y", "4", ""}});
  EXPECT_EQ(table->item(1, 0), last);
  std::string texts;
  for (int row = 0; row < table->rowCount(); ++row) {
    for (int column = 0; column < 3; ++column) {
      texts += CellText(row, column).toStdString();
    }
  }
  EXPECT_EQ(texts, "ax1cx3by4");

  QImage picture(40, 30, QImage::Format_RGB888);
  picture.fill(Qt::red);
  ASSERT_TRUE(picture.save("a.png"));
  window.SetVariables({{"a", "image", "1", "a.png"}});
  window.show();
  const QImage drawn = table->viewport()->grab().toImage();
  EXPECT_EQ(drawn.pixelColor(100, 15), QColor(Qt::red));
  EXPECT_EQ(drawn.pixelColor(139, 15), QColor(Qt::red));
  EXPECT_NE(drawn.pixelColor(140, 15), QColor(Qt::red));
}

TEST_F(TMainWindowTest, CellsAndTitlesHaveTooltipsWithTheirWholeText) {
  window.SetVariables({{"<b>a</b>", "image", std::string(500, 'd'), "pictures/a.png"}});
  window.show();
  auto* table = Find<QTableWidget>("twVariables");
  const std::vector<QString> texts = {"&lt;b&gt;a&lt;/b&gt;", "pictures/a.png", QString(500, 'd')};
  for (int column = 0; column < 3; ++column) {
    const QPoint place = table->visualItemRect(table->item(0, column)).center();
    QHelpEvent event(QEvent::ToolTip, place, table->viewport()->mapToGlobal(place));
    QApplication::sendEvent(table->viewport(), &event);
    EXPECT_TRUE(QToolTip::text().contains(texts[static_cast<std::size_t>(column)])) << column;
  }
  EXPECT_EQ(Find<QGroupBox>("groupBox_3")->toolTip(), "Segmentation methods");
  window.AddFeature("<i>plug-in</i>");
  EXPECT_TRUE(SideCell("twFeatures", 0)->toolTip().contains("&lt;i&gt;plug-in"));
}

TEST_F(TMainWindowTest, BelowTheRowsThereIsNoTooltip) {
  window.SetVariables({{"a", "text", "one row", ""}});
  window.show();
  auto* table = Find<QTableWidget>("twVariables");
  const auto askAt = [&](QPoint place) {
    QHelpEvent event(QEvent::ToolTip, place, table->viewport()->mapToGlobal(place));
    QApplication::sendEvent(table->viewport(), &event);
  };
  askAt(table->visualItemRect(table->item(0, 2)).center());
  EXPECT_TRUE(QToolTip::isVisible());
  askAt(QPoint(150, table->viewport()->height() - 5));
  EXPECT_TRUE(QTest::qWaitFor([] { return !QToolTip::isVisible(); }));
}

TEST_F(TMainWindowTest, AWindowTallerThanTheScreenIsShrunkOntoIt) {
  const QRect screen = window.screen()->availableGeometry();
  window.resize(screen.size() + QSize(200, 200));
  window.show();
  // With room for a frame and its title bar.
  EXPECT_TRUE(screen.contains(window.geometry().adjusted(-6, -30, 6, 6)));
  EXPECT_GT(window.height(), screen.height() - 60) << "no smaller than it must be";
}

TEST_F(TMainWindowTest, TheContentsFollowTheirPanes) {
  window.show();
  const auto placeOf = [&](const char* name) { return Find<QWidget>(name)->geometry(); };
  EXPECT_EQ(placeOf("twVariables"), QRect(10, 20, 1001, 221));
  EXPECT_EQ(placeOf("pteInfo"), QRect(10, 20, 1001, 221));
  // 551 pixels without two handles of 4, shared as 260 to 260 to 50.
  EXPECT_EQ(placeOf("gbVariables"), QRect(0, 0, 1021, 248));
  EXPECT_EQ(placeOf("gbOutput"), QRect(0, 252, 1021, 247));
  EXPECT_EQ(placeOf("gbCommand"), QRect(0, 503, 1021, 48));
  window.resize(1482, 868);
  EXPECT_EQ(placeOf("splitter"), QRect(10, 10, 1321, 851));
  EXPECT_EQ(placeOf("twVariables").width(), 1301);
  EXPECT_EQ(Find<QTableWidget>("twVariables")->columnWidth(2), 1050);
  EXPECT_EQ(placeOf("leCommand"), QRect(10, 20, 1301, 20));
  EXPECT_EQ(placeOf("groupBox"), QRect(1340, 10, 131, 261));
  EXPECT_EQ(placeOf("groupBox_2"), QRect(1340, 280, 131, 261));
  EXPECT_EQ(placeOf("groupBox_3"), QRect(1340, 550, 131, 261));
  EXPECT_EQ(placeOf("twSegmentationMethods"), QRect(10, 20, 111, 231));
  const int both = placeOf("twVariables").height() + placeOf("pteInfo").height();
  EXPECT_EQ(both, 221 + 221 + 300);
  auto* splitter = Find<QSplitter>("splitter");
  const QList<int> sizes = splitter->sizes();
  splitter->setSizes({sizes[0] - 200, sizes[1] + 200, sizes[2]});
  EXPECT_EQ(placeOf("twVariables").height() + placeOf("pteInfo").height(), both);
  EXPECT_EQ(placeOf("pteInfo").height() - placeOf("twVariables").height(), 400);
  window.resize(1182, 568);
  splitter->setSizes(QList<int>({260, 260, 50}));
  EXPECT_EQ(placeOf("groupBox_2"), QRect(1040, 180, 131, 161));
  EXPECT_EQ(placeOf("leCommand"), QRect(10, 20, 1001, 20));
  EXPECT_FALSE(window.windowIcon().pixmap(48, 48).isNull());
}

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

class TCommandLineTest : public TMainWindowTest {
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

TEST_F(TMainWindowTest, TheTitleShowsTheWorkUnderWay) {
  window.ShowWork("segmentimage, 1,200 of 25,000");
  EXPECT_EQ(window.windowTitle(), "Tessimar v" PROJECT_VERSION " - segmentimage, 1,200 of 25,000");
  window.ShowWork("");
  EXPECT_EQ(window.windowTitle(), "Tessimar v" PROJECT_VERSION);
}

TEST_F(TMainWindowTest, ACommandOfferedDuringAnotherStandsInTheLineAfterwards) {
  OfferCommand("now");
  EXPECT_EQ(window.GetCommandText(), "now");
  window.SetBusy(true);
  OfferCommand("later");
  window.ClearCommandText();
  window.SetBusy(false);
  EXPECT_EQ(window.GetCommandText(), "later");
}

TEST_F(TMainWindowTest, KeysOfTheCommandLineFireTheCallbacksOnly) {
  std::string fired;
  auto* line = Find<QLineEdit>("leCommand");
  // Keys pressed before anybody listens do nothing.
  Press(line, Qt::Key_Up);
  Press(line, Qt::Key_Return);
  window.OnKeyUp = [&] { fired += 'u'; };
  window.OnKeyDown = [&] { fired += 'd'; };
  window.OnReturnPressed = [&] { fired += 'r'; };
  Press(line, Qt::Key_X, "x");
  Press(line, Qt::Key_Y, "y");
  EXPECT_EQ(window.GetCommandText(), "xy");
  Press(line, Qt::Key_Up);
  Press(line, Qt::Key_Down);
  Press(line, Qt::Key_Return);
  EXPECT_EQ(fired, "udr");
  EXPECT_EQ(window.GetCommandText(), "xy");
  Press(line, Qt::Key_Escape);
  EXPECT_EQ(window.GetCommandText(), "");
  EXPECT_EQ(fired, "udr");
  window.SetCommandText("gr\xc3\xbc\xc3\x9f");
  EXPECT_EQ(window.GetCommandText(), "gr\xc3\xbc\xc3\x9f");
}

TEST_F(TMainWindowTest, ADroppedFileRunsTheGeneratedLineWhereverItFalls) {
  const std::vector<std::pair<const char*, const char*>> cases = {
      {"file:///home/me/My%20Photo.jpg", "image=loadimage(\"/home/me/My Photo.jpg\")"},
      {"file:///home/me/a.jpg.d/x", "image=loadimage(\"/home/me/a.jpg.d/x\")"},
      {"file:///home/me/photo.JPG", "database=loaddatabase(\"/home/me/photo.JPG\")"},
      {"file:///home/me/%C3%84pfel", "database=loaddatabase(\"/home/me/\xc3\x84pfel\")"},
      {"file:///C:/Pictures/a.jpg", "image=loadimage(\"C:/Pictures/a.jpg\")"}};
  window.show();
  for (const char* target : {"twVariables", "pteInfo", "leCommand", "twFeatures", "gbCommand", "centralWidget"}) {
    auto* widget = Find<QWidget>(target);
    if (auto* area = qobject_cast<QAbstractScrollArea*>(widget)) {
      widget = area->viewport();
    }
    for (const auto& [url, line] : cases) {
      std::string seen;
      window.OnFileDropped = [&] { seen = window.GetCommandText(); };
      QMimeData data;
      data.setUrls({QUrl(url), QUrl("file:///second.jpg")});
      data.setText("as file managers do");
      EXPECT_TRUE(Drop(widget, data)) << target;
      EXPECT_EQ(seen, line) << target;
    }
  }
}

TEST_F(TMainWindowTest, OtherDropsRunNothing) {
  bool fired = false;
  window.OnReturnPressed = [&] { fired = true; };
  window.OnFileDropped = [&] { fired = true; };
  window.SetCommandText("kept");
  QMimeData text;
  text.setText("tessimar/feature");
  EXPECT_FALSE(Drop(&window, text));
  QMimeData other;
  other.setData("application/x-other", "bytes");
  EXPECT_FALSE(Drop(&window, other));
  QMimeData none;
  none.setUrls({});
  EXPECT_TRUE(Drop(&window, none));
  EXPECT_FALSE(fired);
  EXPECT_EQ(window.GetCommandText(), "kept");
}

TEST_F(TMainWindowTest, TheLeftButtonDragsAFeatureOutOfTheWindow) {
  window.show();
  // What lies at the place of the features in their box.
  const QPoint place = Find<QTableWidget>("twFeatures")->geometry().center();
  const auto press = [&](Qt::MouseButton button, QPoint at) {
    QMouseEvent event(QEvent::MouseButtonPress, at, window.mapToGlobal(QPointF(at)), button, button, Qt::NoModifier);
    QApplication::sendEvent(&window, &event);
    return window.findChildren<QDrag*>().size();
  };
  EXPECT_EQ(press(Qt::RightButton, place), 0);
  EXPECT_EQ(press(Qt::LeftButton, QPoint(600, 300)), 0);
  ASSERT_EQ(press(Qt::LeftButton, place), 1) << "the toolkit deletes it with the next events";
  EXPECT_EQ(window.findChild<QDrag*>()->mimeData()->text(), "tessimar/feature");
}

}  // namespace
