#include "engine/ctrl-main.h"

#include <string>
#include <vector>

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTableWidget>
#include <QTimer>
#include <gtest/gtest.h>

#include "base/console.h"
#include "tests/support/ordinary-user.h"
#include "tests/support/workbench.h"

namespace {

using TTexts = std::vector<std::string>;

void Press(TWorkbench& workbench, int key) {
  QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
  QApplication::sendEvent(workbench.window.findChild<QLineEdit*>("leCommand"), &event);
}

/// Types a line into the command line and presses Return.
void Type(TWorkbench& workbench, const std::string& line) {
  workbench.window.SetCommandText(line);
  Press(workbench, Qt::Key_Return);
}

int Rows(TWorkbench& workbench, const char* table) {
  return workbench.window.findChild<QTableWidget*>(table)->rowCount();
}

TEST(TCtrlMain, AFirstStartFillsTheSideTablesAndPrintsNothing) {
  TWorkbench workbench;
  EXPECT_EQ(workbench.GetOutput(), "");
  EXPECT_EQ(Rows(workbench, "twFeatures"), 2);
  EXPECT_EQ(Rows(workbench, "twClassifiers"), 3);
  EXPECT_EQ(Rows(workbench, "twSegmentationMethods"), 2);
  EXPECT_EQ(Rows(workbench, "twVariables"), 0);
  EXPECT_TRUE(std::filesystem::is_directory("FeatureStorage"));
  Press(workbench, Qt::Key_Up);
  Press(workbench, Qt::Key_Down);
  EXPECT_EQ(workbench.window.GetCommandText(), "");
}

TEST(TCtrlMain, AFeatureDirectoryThatCannotBeMadeIsReported) {
  TScratchDirectory directory;
  MakeFile("FeatureStorage", "a file");
  MakeFile("FeatureBroken.so", "no library");
  MainWindow window;
  TRecordingView view(window);
  const TCtrlMain controller(view);
  EXPECT_TRUE(
      view.output.starts_with("  Directory 'FeatureStorage' cannot be created\n"
                              "  Plug-in 'FeatureBroken.so' was left out: "))
      << view.output;
}

TEST(TCtrlMain, TheEchoIsNotIndentedAndThePaneShowsWhatTheObserverGot) {
  TWorkbench workbench;
  Type(workbench, "Reset( )");
  Type(workbench, "help Reset");
  EXPECT_EQ(workbench.GetOutput(), "> Reset( )\n> help Reset\n  Function 'Reset' not found\n");
  EXPECT_EQ(workbench.window.findChild<QPlainTextEdit*>("pteInfo")->toPlainText().toStdString(), workbench.GetOutput());
}

TEST(TCtrlMain, OnlyAHelpRequestLeavesItsTextInTheCommandLine) {
  TWorkbench workbench;
  for (const char* line : {"help", " help reset ", "help nothing"}) {
    Type(workbench, line);
    EXPECT_EQ(workbench.window.GetCommandText(), line);
  }
  for (const char* line : {"nonsense", "a=b", "reset()", "HELP", ""}) {
    Type(workbench, line);
    EXPECT_EQ(workbench.window.GetCommandText(), "") << line;
  }
}

TEST(TCtrlMain, UpAndDownWalkTheHistoryNewestFirst) {
  TWorkbench workbench;
  Type(workbench, "One()");
  Type(workbench, "two()");
  TTexts seen;
  for (const int key : {Qt::Key_Up, Qt::Key_Up, Qt::Key_Up, Qt::Key_Down, Qt::Key_Down, Qt::Key_Down}) {
    Press(workbench, key);
    seen.push_back(workbench.window.GetCommandText());
  }
  EXPECT_EQ(seen, (TTexts{"two()", "One()", "One()", "two()", "", ""}));
  Press(workbench, Qt::Key_Up);
  Press(workbench, Qt::Key_Escape);
  Press(workbench, Qt::Key_Up);
  EXPECT_EQ(workbench.window.GetCommandText(), "One()") << "Escape keeps the position";
}

TEST(TCtrlMain, TheHistoryKeepsTheLast25LinesOverARestart) {
  TScratchDirectory directory;
  std::string longHistory;
  for (int i = 0; i < 30; ++i) {
    longHistory += "old" + std::to_string(i) + "\r\n";
  }
  MakeFile("CommandHistory.txt", longHistory);
  {
    MainWindow window;
    TWindowView view(window);
    const TCtrlMain controller(view);
  }
  EXPECT_EQ(FileBytes("CommandHistory.txt"), longHistory) << "a longer file is read whole";
  {
    MainWindow window;
    TWindowView view(window);
    TCtrlMain controller(view);
    for (int i = 1; i <= 26; ++i) {
      controller.ExecuteCommand(i % 2 == 0 ? "Line " + std::to_string(i) : "");
    }
    EXPECT_EQ(FileBytes("CommandHistory.txt"), longHistory) << "nothing is written during a run";
  }
  std::string expected;
  for (int i = 26; i >= 2; --i) {
    expected += (i % 2 == 0 ? "Line " + std::to_string(i) : "") + "\r\n";
  }
  EXPECT_EQ(FileBytes("CommandHistory.txt"), expected);
}

TEST(TCtrlMain, AHistoryThatCannotBeReadStaysAndOneThatCannotBeWrittenIsTold) {
  TScratchDirectory directory;
  const std::string earlier = "earlier\r\n";
  MakeFile("CommandHistory.txt", earlier);
  std::filesystem::create_directory("FeatureStorage");
  MainWindow window;
  const auto run = [&] {
    TRecordingView view(window);
    testing::internal::CaptureStderr();
    {
      const TOrdinaryUser ordinaryUser;
      EXPECT_TRUE(ordinaryUser.isOrdinary);
      TCtrlMain(view).ExecuteCommand("reset()");
    }
    return std::pair(view.output, testing::internal::GetCapturedStderr());
  };
  using std::filesystem::perms;
  std::filesystem::permissions(".", perms::all);
  std::filesystem::permissions("CommandHistory.txt", perms::none);
  EXPECT_EQ(run(), std::pair(std::string("  CommandHistory.txt could not be read and is left as it is\n> reset()\n"),
                             std::string()));
  EXPECT_EQ(FileBytes("CommandHistory.txt"), earlier);
  std::filesystem::permissions("CommandHistory.txt", perms::owner_read | perms::group_read | perms::others_read);
  EXPECT_EQ(run(), std::pair(std::string("> reset()\n"), std::string("File 'CommandHistory.txt' cannot be written\n")));
  EXPECT_EQ(FileBytes("CommandHistory.txt"), earlier);
}

TEST(TCtrlMain, TheVariablesTableFollowsTheStore) {
  TWorkbench workbench;
  MakePicture("a.jpg", 4, 4, qRgb(255, 0, 0));
  std::filesystem::create_directory("photos");
  workbench.Run("A = LoadImage( \"A.jpg\" )");
  workbench.Run("b = loaddatabase(\"photos\")");
  EXPECT_EQ(workbench.GetColumn(0), (TTexts{"a", "b"}));
  EXPECT_EQ(workbench.GetColumn(1), (TTexts{"", "database"}));
  EXPECT_EQ(workbench.GetColumn(2),
            (TTexts{"Filename: \"a.jpg\", no features", "Location: \"photos/\", number of images: 0"}));
  EXPECT_EQ(workbench.Run("a = b"), "Destination variable has a different type, replacing it\n");
  EXPECT_EQ(workbench.GetColumn(0), (TTexts{"b", "a"})) << "a replaced variable moves to the end";
  EXPECT_EQ(workbench.Run("b = loadimage(\"a.jpg\")"),
            "Destination variable already exists but has a different type, replacing it\n");
  EXPECT_EQ(workbench.Run("b = loadimage(\"none.jpg\")"),
            "File does not exist\nFunction failed\nVariable 'b' was removed\n");
  EXPECT_EQ(workbench.GetColumn(0), (TTexts{"a"})) << "a failed command takes its destination with it";
  workbench.Run("reset(1,2)");
  EXPECT_EQ(workbench.GetColumn(0), TTexts{});
}

TEST(TCtrlMain, AScriptOfTheStartRunsToItsEndOrUntilEscape) {
  TWorkbench workbench;
  MakeFile("s.txt", "#!/usr/bin/env tessimar\nreset(1)\nreset(2)");
  base::TLineReader whole("s.txt");
  workbench.controller.RunScript(whole, "s.txt");
  const std::string both = "> reset(1)\n> reset(2)\n";
  EXPECT_EQ(workbench.GetOutput(), both);
  base::TLineReader part("s.txt");
  // Arrives while the first line runs.
  QTimer::singleShot(0, &workbench.window, [&] { Press(workbench, Qt::Key_Escape); });
  workbench.controller.RunScript(part, "s.txt");
  EXPECT_EQ(workbench.GetOutput(), both + "> reset(1)\n  Script interrupted\n");
}

TEST(TCtrlMain, CountsTheLinesThatFail) {
  TWorkbench workbench;
  MakePicture("a.jpg", 4, 4, qRgb(255, 0, 0));
  MakeFile("script.txt", "nonsense\r\nhelp\r\n\r\n");
  const std::vector<std::pair<const char*, int>> cases = {{"help", 0},
                                                          {"help none", 1},
                                                          {"", 1},
                                                          {"=x", 1},
                                                          {"x=", 1},
                                                          {"none()", 1},
                                                          {"loadimage(\"a.jpg\")", 1},
                                                          {"x=reset()", 1},
                                                          {"a=loadimage(1,2)", 1},
                                                          {"a=loadimage(\"a.jpg\")", 0},
                                                          {"displayimage(none)", 1},
                                                          {"a=loadimage(\"b.jpg\")", 1},
                                                          {"a=b", 1},
                                                          {"a=loaddatabase(\".\")", 0},
                                                          {"a=loadimage(\"a.jpg\")", 0},
                                                          {"a=a", 0},
                                                          {"executescript(\"script.txt\")", 2},
                                                          {"executescript(\"none.txt\")", 1}};
  for (const auto& [line, failures] : cases) {
    const int before = workbench.controller.GetFailedLines();
    workbench.Run(line);
    EXPECT_EQ(workbench.controller.GetFailedLines() - before, failures) << line;
  }
}

TEST(TCtrlMain, ADropDuringACommandRunsAfterIt) {
  TWorkbench workbench;
  MakeFile("script.txt", "first()\r\nsecond()\r\n");
  bool dropped = false;
  // The toolkit delivers such a drop while the script repaints the window.
  QMetaObject::invokeMethod(
      &workbench.window,
      [&] {
        dropped = true;
        workbench.window.SetCommandText("third()");
        workbench.window.OnReturnPressed();
      },
      Qt::QueuedConnection);
  Type(workbench, "executescript(\"script.txt\")");
  EXPECT_TRUE(dropped);
  const std::string& output = workbench.GetOutput();
  EXPECT_LT(output.find("> second()"), output.find("> third()"));
  EXPECT_NE(output.find("> third()"), std::string::npos);
}

TEST(TCtrlMain, LongLinesAndForeignBytesAreHarmless) {
  TWorkbench workbench;
  const std::string megabyte(1 << 20, 'x');
  EXPECT_EQ(workbench.Run(megabyte), "Syntax error while parsing function call\n");
  EXPECT_EQ(workbench.Run("a=" + megabyte), "Variable '" + megabyte + "' not found\n");
  EXPECT_EQ(workbench.Run("reset(" + std::string(1 << 20, ',') + ")"), "");
  EXPECT_EQ(workbench.Run("a=\xff\xfe"), "Variable '\xff\xfe' not found\n");
}

}  // namespace
