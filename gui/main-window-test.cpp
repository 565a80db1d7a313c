#include "gui/main-window.h"

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include <QApplication>
#include <QDrag>
#include <QDragEnterEvent>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QGroupBox>
#include <QHelpEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QSplitter>
#include <QTableWidget>
#include <QTest>
#include <QToolTip>
#include <QUrl>
#include <gtest/gtest.h>

#include "gui/command-offer.h"
#include "tests/support/main-window-fixture.h"

namespace {

class TMainWindowTest : public TMainWindowFixture {
 protected:
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
