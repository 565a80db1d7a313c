// What the controller does around commands: interrupting them, showing how far they are, and surviving what goes wrong.

#include <filesystem>
#include <memory>
#include <new>
#include <stdexcept>
#include <utility>

#include <QApplication>
#include <QDialog>
#include <QDragEnterEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QTableWidget>
#include <QTimer>
#include <QUrl>
#include <gtest/gtest.h>

#include "engine/var-list.h"
#include "engine/var.h"
#include "gui/picture-view.h"
#include "images/var-image.h"
#include "tests/support/ordinary-user.h"
#include "tests/support/workbench.h"

namespace {

/// Does something once, as soon as the output shows a text.
class TEventfulView : public TRecordingView {
 public:
  using TRecordingView::TRecordingView;

  void SetListener(TViewListener* newListener) override {
    listener = newListener;
    TRecordingView::SetListener(newListener);
  }
  void AddOutput(const std::string& text) override {
    TRecordingView::AddOutput(text);
    if (!trigger.empty() && text.find(trigger) != std::string::npos) {
      trigger.clear();
      action();
    }
  }
  void BeginWork() override {
    if (std::exchange(beginFails, false)) {
      throw std::bad_alloc();
    }
    TRecordingView::BeginWork();
  }
  void ShowVariables(const TVarList& variables) override {
    if (std::exchange(tableFails, false)) {
      throw std::runtime_error("no table");
    }
    TRecordingView::ShowVariables(variables);
  }
  void ShowWork(const std::string& text) override {
    works.push_back(text);
    TRecordingView::ShowWork(text);
    if (text.empty() && std::exchange(titleFails, false)) {
      throw std::bad_alloc();
    }
    if (!workTrigger.empty() && text == workTrigger) {
      action();
    }
  }

  TViewListener* listener = nullptr;
  std::string trigger;
  boost::function<void()> action = [this] { listener->Interrupt(); };
  std::string workTrigger;
  bool beginFails = false;
  bool tableFails = false;
  bool titleFails = false;
  std::vector<std::string> works;
};

/// A variable that cannot be described while memory is short.
class TCostlyVariable : public TVar {
 public:
  TCostlyVariable() : TVar("costly") {}
  std::unique_ptr<TVar> CreateNew() const override { return std::make_unique<TCostlyVariable>(); }
  void Assign(const TVar* /*source*/) override {}
  std::string GetDescription() const override {
    if (isMemoryShort) {
      throw std::bad_alloc();
    }
    return "as long as you like";
  }

  bool isMemoryShort = true;
};

class TControllerFlow : public testing::Test {
 protected:
  TControllerFlow() : view(window), controller(view) {}

  /// Runs a line and returns the output from there on; `trigger` is where the view acts.
  std::string Run(const std::string& line, const std::string& trigger = std::string()) {
    view.trigger = trigger;
    view.output.clear();
    controller.ExecuteCommand(line);
    return view.output;
  }

  void MakeCollection(const std::string& name, int count) {
    for (int i = 1; i <= count; ++i) {
      MakePicture(name + "/im" + std::to_string(i) + ".jpg", 16, 16, qRgb(0, 60 * i % 256, 255));
    }
  }

  TScratchDirectory directory;
  MainWindow window;
  TEventfulView view;
  TCtrlMain controller;
};

TEST_F(TControllerFlow, EveryCommandOverImagesStopsBehindTheImageUnderWay) {
  MakeCollection("photos", 3);
  MakeFile("photos/im2.jpg", "no picture");
  Run("db = loaddatabase(\"photos\")");
  // The second picture tells of itself while it is under way.
  EXPECT_EQ(Run("segmentimage(db, \"grid\")", "im2.jpg"),
            "> segmentimage(db, \"grid\")\n  Processing.. this could take some time\n"
            "  File 'photos/im2.jpg' cannot be read\n  Interrupted after 2 of 3 images\n  Function failed\n");
  EXPECT_EQ(Run("updatefeature(db, \"hsv\")", "im2.jpg"),
            "> updatefeature(db, \"hsv\")\n  Processing.. this could take some time\n"
            "  File 'photos/im2.jpg' cannot be read\n  Interrupted after 2 of 3 images\n  Function failed\n");
  EXPECT_EQ(Run("savefeature(db, \"hsv\")"),
            "> savefeature(db, \"hsv\")\n  1 images without the feature skipped\n"
            "  1 images that could not be read are not saved\n");
  for (const char* line :
       {"segmentimage(db, \"grid\")", "updatefeature(db, \"hsv\")", "q = loadimage(\"photos/im1.jpg\")",
        "updatefeature(q, \"hsv\")", "c = createclassifier(\"nearest\")"}) {
    Run(line);
  }
  ASSERT_EQ(Run("k = learnvisualconcept(db, db, c)").find("failed"), std::string::npos);
  const std::string stopped = "  Interrupted after 0 of 3 images\n  Function failed\n";
  // In each of these the wish comes with the echo.
  EXPECT_EQ(Run("savefeature(db, \"hsv\")", "> "), "> savefeature(db, \"hsv\")\n" + stopped);
  EXPECT_EQ(Run("loadfeature(db, \"hsv\")", "> "), "> loadfeature(db, \"hsv\")\n  Loading features..\n" + stopped);
  EXPECT_EQ(Run("removefeature(db, \"lbp\")", "> "), "> removefeature(db, \"lbp\")\n" + stopped);
  EXPECT_EQ(Run("i = searchtags(db, \"x\")", "> "), "> i = searchtags(db, \"x\")\n" + stopped);
  EXPECT_EQ(Run("findvisualconceptlocations(db, k, \"x\")", "> "),
            "> findvisualconceptlocations(db, k, \"x\")\n" + stopped);
  EXPECT_EQ(Run("updatevisualconcepttags(db, k, \"x\")", "> "),
            "> updatevisualconcepttags(db, k, \"x\")\n  0 images tagged\n" + stopped);
  EXPECT_EQ(Run("i = searchimage(db, q)"), "> i = searchimage(db, q)\n  Matching with features: hsv\n");
  EXPECT_EQ(Run("i = searchimage(db, q)", "> "),
            "> i = searchimage(db, q)\n  Matching with features: hsv\n" + stopped + "  Variable 'i' was removed\n");
  EXPECT_EQ(Run("n = learnvisualconcept(db, db, c)", "> "),
            "> n = learnvisualconcept(db, db, c)\n  Interrupted after 0 of 6 images\n  Function failed\n");
  Run("i = searchimage(db, q)");
  for (const std::string line : {"displayindex(i)", "displayindexmap(i)"}) {
    EXPECT_EQ(Run(line, "> "), "> " + line + "\n  Interrupted after 0 of 4 images\n  Function failed\n");
  }
  EXPECT_EQ(Run("removefeature(db, \"lbp\")"), "> removefeature(db, \"lbp\")\n")
      << "the wish was for that command only";
}

TEST_F(TControllerFlow, ATrainingWithoutEndIsEnded) {
  MakeCollection("photos", 2);
  for (const char* line : {"db = loaddatabase(\"photos\")", "segmentimage(db, \"grid\")", "updatefeature(db, \"hsv\")",
                           "c = createclassifier(\"neural\")", "setclassifiersetting(c, \"maxiterations\", \"-1\")",
                           "setclassifiersetting(c, \"maxerror\", \"-1\")"}) {
    Run(line);
  }
  view.workTrigger = "learnvisualconcept, 4 of 4";
  // The same examples for both classes: no network gets them right.
  EXPECT_EQ(Run("k = learnvisualconcept(db, db, c)"),
            "> k = learnvisualconcept(db, db, c)\n  Interrupted after 4 of 4 images\n  Function failed\n");
}

TEST_F(TControllerFlow, AnInterruptedScriptRunsNoFurtherLine) {
  MakeFile("inner.txt", "help reset\r\nreset(1)\r\n");
  MakeFile("outer.txt", "executescript(\"inner.txt\")\r\nreset(2)\r\n");
  EXPECT_EQ(Run("executescript(\"outer.txt\")", "Reset"),
            "> executescript(\"outer.txt\")\n> executescript(\"inner.txt\")\n> help reset\n"
            "  Name:        Reset\n  Description: Resets the program to its startup state\n"
            "  Syntax:      reset()\n  Returns:     nothing\n"
            "  Script interrupted\n  Function failed\n  Script interrupted\n  Function failed\n");
  EXPECT_EQ(controller.GetFailedLines(), 2);
  // Nothing is left to be run behind the last line.
  EXPECT_EQ(Run("executescript(\"inner.txt\")", "reset(1)"),
            "> executescript(\"inner.txt\")\n> help reset\n"
            "  Name:        Reset\n  Description: Resets the program to its startup state\n"
            "  Syntax:      reset()\n  Returns:     nothing\n> reset(1)\n");
}

TEST_F(TControllerFlow, EscapeAndClosingTheWindowEndAScript) {
  std::string lines;
  for (int i = 0; i < 100; ++i) {
    lines += "reset()\r\n";
  }
  MakeFile("s.txt", lines);
  auto* line = window.findChild<QLineEdit*>("leCommand");
  window.show();
  view.action = [&] { QApplication::postEvent(line, new QKeyEvent(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier)); };
  EXPECT_EQ(Run("executescript(\"s.txt\")", "reset()"),
            "> executescript(\"s.txt\")\n> reset()\n  Script interrupted\n  Function failed\n");
  EXPECT_TRUE(window.isVisible());
  view.action = [&] { QMetaObject::invokeMethod(&window, &QWidget::close, Qt::QueuedConnection); };
  EXPECT_EQ(Run("executescript(\"s.txt\")", "reset()"),
            "> executescript(\"s.txt\")\n> reset()\n  Script interrupted\n  Function failed\n");
  EXPECT_FALSE(window.isVisible());
}

TEST_F(TControllerFlow, TheTitleCountsAndGoesBack) {
  for (int i = 0; i < 1000; ++i) {
    MakeFile("many/" + std::to_string(i) + ".jpg", "");
  }
  Run("db = loaddatabase(\"many\")");
  std::vector<QString> titles;
  QObject::connect(&window, &QWidget::windowTitleChanged, [&](const QString& title) { titles.push_back(title); });
  view.works.clear();
  view.titleFails = true;
  Run("removefeature(db, \"hsv\")");
  ASSERT_GE(view.works.size(), 2u);
  EXPECT_EQ(view.works.front(), "removefeature, 0 of 1,000");
  EXPECT_EQ(view.works.back(), "");
  EXPECT_EQ(titles.front(), "Tessimar v" PROJECT_VERSION " - removefeature, 0 of 1,000");
  EXPECT_EQ(titles.back(), "Tessimar v" PROJECT_VERSION);
  EXPECT_FALSE(view.titleFails) << "the title was set back";
  EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr) << "and its failure left the work ended";
}

TEST_F(TControllerFlow, WhateverIsThrownEndsTheLineAndNotTheProgram) {
  MakeCollection("photos", 1);
  Run("db = loaddatabase(\"photos\")");
  view.action = [] { throw std::bad_alloc(); };
  EXPECT_EQ(Run("db = loaddatabase(\"photos\")", "Scanning"),
            "> db = loaddatabase(\"photos\")\n  Scanning..\n  Out of memory\n  Function failed\n"
            "  Variable 'db' was removed\n");
  EXPECT_EQ(Run("a=b=c", "not found"), "> a=b=c\n  Variable 'b=c' not found\n  Out of memory\n");
  EXPECT_EQ(Run("help", "Available"), "> help\n  Available functions:\n  Out of memory\n");
  EXPECT_EQ(Run("()", "Syntax"), "> ()\n  Syntax error while parsing function call\n  Out of memory\n");
  EXPECT_EQ(controller.GetFailedLines(), 4);
  view.beginFails = true;
  EXPECT_EQ(Run("help reset"), "  Out of memory\n");
  EXPECT_EQ(controller.GetFailedLines(), 5);
  view.tableFails = true;
  window.SetCommandText("reset()");
  view.output.clear();
  window.OnReturnPressed();
  window.SetCommandText("reset(1)");
  window.OnReturnPressed();
  EXPECT_EQ(view.output, "> reset()\n  no table\n> reset(1)\n") << "the next line runs";
}

TEST_F(TControllerFlow, ATableWithoutMemoryLeavesTheWorkEndedAndIsFilledLater) {
  const auto* table = window.findChild<QTableWidget*>("twVariables");
  TVarList variables;
  auto added = std::make_unique<TCostlyVariable>();
  TCostlyVariable& variable = *added;
  variables.Add(std::move(added));
  view.BeginWork();
  view.ShowVariables(variables);
  QApplication::processEvents();
  view.EndWork();
  EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr) << "the window takes input again";
  EXPECT_EQ(table->rowCount(), 0);
  variable.isMemoryShort = false;
  view.BeginWork();
  view.EndWork();
  ASSERT_EQ(table->rowCount(), 1);
  EXPECT_EQ(table->item(0, 2)->text(), "as long as you like");
}

TEST_F(TControllerFlow, OutsideOfWorkTheTableIsFilledAtOnce) {
  TVarList variables;
  auto added = std::make_unique<TCostlyVariable>();
  added->isMemoryShort = false;
  variables.Add(std::move(added));
  view.ShowVariables(variables);
  EXPECT_EQ(window.findChild<QTableWidget*>("twVariables")->rowCount(), 1);
}

TEST_F(TControllerFlow, ADisplayStandsUntilItsUserClosesIt) {
  MakeCollection("photos", 1);
  Run("q = loadimage(\"photos/im1.jpg\")");
  dynamic_cast<TVarImage&>(*controller.GetVarList().Find("q")).GetTags() = {"sea", "two words"};
  std::string text;
  QTimer user;
  QObject::connect(&user, &QTimer::timeout, [&] {
    // Nothing is there yet when the events of the echo are handled.
    if (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
      user.stop();
      text = dialog->findChild<TPictureView*>("laImage")->GetItems().front().text;
      dialog->reject();
    }
  });
  user.start(1);
  EXPECT_EQ(Run("displayimage(q)"), "> displayimage(q)\n");
  EXPECT_EQ(text, "photos/im1.jpg\nTags: sea, two words");
}

TEST_F(TControllerFlow, ADropOfWhatIsNoDirectoryTouchesNothing) {
  MakeCollection("photos", 2);
  MakeFile("notes.txt", "");
  Run("database = loaddatabase(\"photos\")");
  const auto drop = [&](const std::string& path) {
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QString::fromStdString(path))});
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QDropEvent event(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    view.output.clear();
    QApplication::sendEvent(&window, &enter);
    QApplication::sendEvent(&window, &event);
    return view.output;
  };
  const std::string here = directory.GetPath();
  for (const std::string& path : {here + "/notes.txt", here + "/none"}) {
    EXPECT_EQ(drop(path), "> database=loaddatabase(\"" + path + "\")\n  Path is not a directory\n  Function failed\n");
    EXPECT_NE(controller.GetVarList().Find("database"), nullptr);
    window.OnKeyUp();
    EXPECT_EQ(window.GetCommandText(), "database=loaddatabase(\"" + path + "\")") << "it is in the history";
  }
  // Typed, the same line costs the variable.
  EXPECT_EQ(Run("database=loaddatabase(\"notes.txt\")"),
            "> database=loaddatabase(\"notes.txt\")\n  Path is not a directory\n  Function failed\n"
            "  Variable 'database' was removed\n");
  EXPECT_TRUE(drop(here + "/photos").ends_with("  Database contains 2 images\n"));
}

TEST_F(TControllerFlow, AVariableThatWasThereBeforeIsNamedWhenItGoes) {
  MakeCollection("photos", 1);
  EXPECT_EQ(Run("a = loadimage(\"none\")"), "> a = loadimage(\"none\")\n  File does not exist\n  Function failed\n");
  Run("a = loaddatabase(\"photos\")");
  EXPECT_EQ(Run("A = loadimage(\"none\")"),
            "> A = loadimage(\"none\")\n  Destination variable already exists but has a different type, replacing it\n"
            "  File does not exist\n  Function failed\n  Variable 'a' was removed\n");
}

TEST(TControllerHistory, AnEntryLosesItsLineFeedsAndNothingElse) {
  const TScratchDirectory directory;
  {
    MainWindow window;
    TWindowView view(window);
    TCtrlMain(view).ExecuteCommand("one\n\ntwo\t\x01\xff\r three\n");
  }
  EXPECT_EQ(FileBytes("CommandHistory.txt"), "onetwo\t\x01\xff\r three\r\n");
}

TEST_F(TControllerFlow, TextFilesThatCannotBeOpenedFail) {
  MakeFile("s.txt", "reset()\r\n");
  MakeCollection("photos", 1);
  Run("db = loaddatabase(\"photos\")");
  std::filesystem::permissions("s.txt", std::filesystem::perms::none);
  const TOrdinaryUser ordinaryUser;
  ASSERT_TRUE(ordinaryUser.isOrdinary);
  const std::string failed = "\n  File cannot be read\n  Function failed\n";
  EXPECT_EQ(Run("executescript(\"s.txt\")"), "> executescript(\"s.txt\")" + failed);
  EXPECT_EQ(Run("loadmirflickrtags(db, \"s.txt\")"), "> loadmirflickrtags(db, \"s.txt\")" + failed);
}

}  // namespace
