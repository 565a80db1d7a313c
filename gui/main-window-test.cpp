#include "gui/main-window.h"

#include <string>
#include <vector>

#include <QApplication>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QScreen>
#include <QSplitter>
#include <QTableWidget>
#include <QUrl>
#include <gtest/gtest.h>

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
  EXPECT_EQ(window.windowTitle(), "Tessimar v0.1.8");
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
  EXPECT_FALSE(fired);
  EXPECT_EQ(window.GetCommandText(), "kept");
}

}  // namespace
