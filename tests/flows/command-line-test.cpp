// Both programs as a shell starts them: options, scripts, what goes to standard error, and where they work.

#include <csignal>
#include <functional>

#include <QElapsedTimer>
#include <QImage>
#include <QThread>
#include <gtest/gtest.h>

#include "tests/support/program-test.h"
#include "tests/support/test-pictures.h"

namespace {

class TCommandLine : public TProgramTest {
 protected:
  TCommandLine() { environment.insert("QT_QPA_PLATFORM", "offscreen"); }

  TOutcome Batch(const QStringList& arguments, const std::string& input = std::string()) {
    return Run(BATCH_PROGRAM, arguments, input);
  }

  TOutcome Window(const QStringList& arguments) { return Run(WORKBENCH_PROGRAM, arguments); }

  /// True once the condition holds, with the program still under way.
  bool Await(const std::function<bool()>& condition) {
    QElapsedTimer timer;
    for (timer.start(); !condition() && timer.elapsed() < 60000;) {
      process.waitForFinished(20);
    }
    return condition() && process.state() == QProcess::Running;
  }
};

TEST_F(TCommandLine, LinesOfTheCommandLineRunBeforeTheScript) {
  MakeFile("s.txt", "reset(3)\n");
  EXPECT_EQ(Batch({"-e", "reset(1)", "s.txt", "-ereset(2)"}),
            (TOutcome{0, "> reset(1)\n> reset(2)\n> reset(3)\n", ""}));
  EXPECT_EQ(Batch({"-e", "reset(1)"}, "reset(4)\n"), (TOutcome{0, "> reset(1)\n", ""}));
  EXPECT_EQ(Batch({"-e", "reset(1)", "-"}, "reset(4)\n"), (TOutcome{0, "> reset(1)\n> reset(4)\n", ""}));
}

TEST_F(TCommandLine, AFailedLineIsReportedByItsPosition) {
  MakeFile("outer.txt", "#!/usr/bin/env tessimar-batch\nreset()\nexecutescript(\"Inner.txt\")\na = loadimage(\"x\")\n");
  MakeFile("inner.txt", "reset()\r\nnonsense\r\n");
  TOutcome outcome = Batch({"outer.txt"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(
      outcome.output,
      "> reset()\n> executescript(\"Inner.txt\")\n> reset()\n> nonsense\n  Syntax error while parsing function call\n"
      "> a = loadimage(\"x\")\n  File does not exist\n  Function failed\n");
  EXPECT_EQ(outcome.errors,
            "outer.txt:3: inner.txt:2: Syntax error while parsing function call\n"
            "outer.txt:4: Function failed: File does not exist\n");
  // The variable that goes with a failed line is not why it failed.
  EXPECT_EQ(Batch({}, "reset()\nd = createclassifier(\"svm\")\nd = createclassifier(\"x\")\n")
                .errors.find("-:3: Function failed"),
            0U);
  EXPECT_EQ(Batch({"-e", "reset()", "-e", "f()"}).errors, "-e:2: Function 'f' not found\n");
  EXPECT_EQ(Batch({}, "#!no script\n").errors, "");
  EXPECT_EQ(Batch({}, "reset()\n#!no first line\n").errors, "-:2: Syntax error while parsing function call\n");
}

TEST_F(TCommandLine, AnErrorOfUsageNamesTheWordAndPointsToTheHelp) {
  const std::vector<std::pair<QStringList, std::string>> cases = {
      {{"--picture", "x"}, "Unknown option 'picture'."},
      {{"--pictures"}, "Missing value after '--pictures'."},
      {{"--pictures="}, "There is no value behind '--pictures'."},
      {{"--pictures", "--verbose"},
       "'--verbose' behind '--pictures' looks like an option; as a name it is './--verbose'."},
      {{"-e"}, "Missing value after '-e'."},
      {{"--seed", "1", "--seed=2"}, "There is more than one '--seed'."},
      {{"--seed", "one"}, "'one' behind '--seed' is no number from 0 to 4294967295."},
      {{"--verbose=1"}, "Unexpected value after '--verbose'."},
      {{"a", "b"}, "There is more than one script: 'b'."}};
  for (const auto& [arguments, reason] : cases) {
    EXPECT_EQ(Batch(arguments), (TOutcome{2, "", "tessimar-batch: " + reason + " See tessimar-batch --help.\n"}));
  }
  EXPECT_EQ(Window({"--batch"}), (TOutcome{2, "", "tessimar: Unknown option 'batch'. See tessimar --help.\n"}));
  EXPECT_EQ(Window({"a", "b"}),
            (TOutcome{2, "", "tessimar: There is more than one script: 'b'. See tessimar --help.\n"}));
}

TEST_F(TCommandLine, WhatIsNoScriptIsNotRun) {
  MakePicture("picture.jpg", 40, 30, qRgb(255, 0, 0));
  std::filesystem::create_directory("folder");
  const std::vector<std::pair<QString, std::string>> cases = {{"none.txt", "Script 'none.txt' cannot be read\n"},
                                                              {"folder", "Script 'folder' cannot be read\n"},
                                                              {"picture.jpg", "Script 'picture.jpg' is not a text\n"}};
  for (const auto& [script, reason] : cases) {
    EXPECT_EQ(Batch({script}), (TOutcome{2, "", "tessimar-batch: " + reason}));
    EXPECT_EQ(Window({script}), (TOutcome{2, "", "tessimar: " + reason}));
  }
}

TEST_F(TCommandLine, HelpAndVersionNeedNothing) {
  for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "HOME", "XDG_RUNTIME_DIR"}) {
    environment.remove(variable);
  }
  EXPECT_EQ(Batch({"--version"}), (TOutcome{0, "tessimar-batch " PROJECT_VERSION "\n", ""}));
  EXPECT_EQ(Window({"--version"}), (TOutcome{0, "tessimar " PROJECT_VERSION "\n", ""}));
  EXPECT_EQ(Batch({"-h"}).output.find("Usage: tessimar-batch "), 0U);
  EXPECT_EQ(Window({"--help"}).output.find("Usage: tessimar "), 0U);
  EXPECT_EQ(Batch({"-e", "reset()"}), (TOutcome{0, "> reset()\n", ""}));
  EXPECT_EQ(Window({}), (TOutcome{2, "", "tessimar: There is no display. tessimar-batch runs scripts without one.\n"}));
  environment.insert("DISPLAY", ":4711");
  EXPECT_EQ(Window({}), (TOutcome{2, "", "tessimar: There is no display. tessimar-batch runs scripts without one.\n"}));
}

TEST_F(TCommandLine, ATextThatDoesNotFitOnTheDiskIsToldOf) {
  EXPECT_EQ(Run("/bin/sh", {"-c", "exec \"$0\" --help >/dev/full", WORKBENCH_PROGRAM}),
            (TOutcome{2, "", "tessimar: Standard output cannot be written\n"}));
}

TEST_F(TCommandLine, APictureThatDoesNotFitOnTheDiskIsNamedAndNotLeftInHalf) {
  QImage noise(200, 200, QImage::Format_RGB888);
  for (int i = 0; i < 200 * 200; ++i) {
    noise.setPixel(i % 200, i / 200, static_cast<QRgb>(i) * 2654435761U);
  }
  noise.save("noise.png");
  // No file may grow beyond 8 blocks of 512 bytes.
  const TOutcome outcome = Run(
      "/bin/sh",
      {"-c", "trap '' XFSZ; ulimit -f 8; exec \"$0\" --pictures p -e 'a=loadimage(\"noise.png\")' -e 'displayimage(a)'",
       QStringLiteral(BATCH_PROGRAM)});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.errors, "tessimar-batch: File 'p/001.png' cannot be written\n");
  EXPECT_TRUE(std::filesystem::is_empty("p"));
}

TEST_F(TCommandLine, SegmentsAreListedWithTheirPlaceLabelAndFeatures) {
  MakePicture("reds/a.jpg", 80, 80, qRgb(200, 30, 30));
  MakePicture("blues/a.jpg", 80, 80, qRgb(30, 90, 200));
  MakePicture("db/b.jpg", 16, 8, qRgb(30, 90, 200));
  MakePicture("db/a.jpg", 80, 80, [](int x, int y) {
    return x >= 40 && y >= 20 && y < 40 ? TColor{200, 30, 30} : TColor{30, 90, 200};
  });
  std::string script = "db = loaddatabase(\"db\")\nr = loaddatabase(\"reds\")\nb = loaddatabase(\"blues\")\n";
  for (const char* variable : {"db", "r", "b"}) {
    script += std::string("segmentimage(") + variable + ", \"grid\")\nupdatefeature(" + variable + ", \"hsv\")\n";
  }
  script +=
      "c = createclassifier(\"nearest\")\nk = learnvisualconcept(r, b, c)\n"
      "findvisualconceptlocations(db, k, \"red\")\nsegmentimage(b, \"sift\")\n"
      "plain = loadimage(\"db/b.jpg\")\nsegmentimage(plain, \"grid\")\n";
  const TOutcome outcome = Batch({"--segments", "s.tsv"}, script);
  EXPECT_EQ(outcome.status, 0) << outcome.output;
  const std::string table = FileBytes("s.tsv");
  EXPECT_TRUE(
      table.starts_with("variable\tpicture\tx\ty\twidth\theight\tlabel\tfeatures\n"
                        "db\tdb/a.jpg\t0\t0\t10\t10\t\thsv\n"
                        "db\tdb/a.jpg\t10\t0\t10\t10\t\thsv\n"))
      << table;
  // Two rows of four cells are red.
  const auto count = [&](const std::string& text) {
    std::size_t found = 0;
    for (std::size_t at = table.find(text); at != std::string::npos; at = table.find(text, at + 1)) {
      ++found;
    }
    return found;
  };
  EXPECT_EQ(count("\tred\t"), 8U);
  EXPECT_EQ(count("db\tdb/a.jpg\t70\t30\t10\t10\tred\thsv\n"), 1U);
  EXPECT_EQ(count("\ndb\tdb/b.jpg\t"), 64U);
  EXPECT_EQ(count("\nplain\tdb/b.jpg\t"), 64U);
  EXPECT_TRUE(table.ends_with("plain\tdb/b.jpg\t14\t7\t2\t1\t\t\n"));
}

TEST_F(TCommandLine, TheWindowRunsAScriptAndStaysOpen) {
  MakePicture("photos/im1.jpg", 40, 30, qRgb(255, 0, 0));
  MakeFile(
      "s.txt",
      "#!/usr/bin/env tessimar\ndb = loaddatabase(\"photos\")\nupdatefeature(db, \"hsv\")\nsavefeature(db, \"hsv\")");
  Start(WORKBENCH_PROGRAM, {"s.txt"});
  EXPECT_TRUE(Await([] { return std::filesystem::exists("FeatureStorage/hsv-im1.dat"); }));
}

/// A signal, once a script has come as far as to make this file; what the window says and how it ends.
class TWindowSignal : public TCommandLine {
 protected:
  TOutcome EndBy(int signal, const std::string& lines, const std::string& awaited) {
    MakeFile("s.txt", lines);
    Start(WORKBENCH_PROGRAM, {"s.txt"});
    EXPECT_TRUE(Await([&] { return std::filesystem::exists(awaited); }));
    // What comes behind the file, a dialog or a training, shows nothing that could be waited for.
    QThread::msleep(300);
    EXPECT_EQ(kill(static_cast<pid_t>(process.processId()), signal), 0);
    return Finish();
  }

  const std::string save = "db = loaddatabase(\"photos\")\nupdatefeature(db, \"hsv\")\nsavefeature(db, \"hsv\")\n";
  const TOutcome closed = {130, "", "Ends after the command under way; once more ends at once\n"};
};

TEST_F(TWindowSignal, ClosesTheWindowAndKeepsTheHistory) {
  MakePicture("photos/im1.jpg", 40, 30, qRgb(255, 0, 0));
  for (const int signal : {SIGTERM, SIGHUP, SIGINT}) {
    std::filesystem::remove_all("FeatureStorage");
    std::filesystem::remove("CommandHistory.txt");
    EXPECT_EQ(EndBy(signal, save, "FeatureStorage/hsv.sources"), closed) << signal;
    EXPECT_TRUE(FileBytes("CommandHistory.txt").ends_with("db = loaddatabase(\"photos\")\r\n")) << signal;
  }
}

TEST_F(TWindowSignal, ClosesADialogAndEndsATrainingToo) {
  MakePicture("photos/im1.jpg", 40, 30, qRgb(255, 0, 0));
  MakePicture("others/im1.jpg", 40, 30, qRgb(0, 255, 0));
  EXPECT_EQ(EndBy(SIGTERM, save + "a = loadimage(\"photos/im1.jpg\")\ndisplayimage(a)\nreset()\n",
                  "FeatureStorage/hsv.sources"),
            closed);
  std::filesystem::remove_all("FeatureStorage");
  const std::string endless =
      "o = loaddatabase(\"others\")\nsegmentimage(o, \"grid\")\nupdatefeature(o, \"hsv\")\n"
      "segmentimage(db, \"grid\")\nupdatefeature(db, \"hsv\")\nc = createclassifier(\"neural\")\n"
      "setclassifiersetting(c, \"maxiterations\", \"-1\")\nsetclassifiersetting(c, \"maxerror\", \"-1\")\n"
      "updatefeature(o, \"lbp\")\nsavefeature(o, \"lbp\")\nk = learnvisualconcept(db, o, c)\nreset()\n";
  std::filesystem::remove("CommandHistory.txt");
  TOutcome outcome = EndBy(SIGTERM, save + endless, "FeatureStorage/lbp.sources");
  // The library of networks prints its layers.
  outcome.output.clear();
  EXPECT_EQ(outcome, closed);
  EXPECT_FALSE(FileBytes("CommandHistory.txt").starts_with("reset()")) << "no line runs behind it";
}

TEST_F(TCommandLine, TheWorkspaceIsMadeOnceAndWhatIsTheUsersStays) {
  MakeFile("share/tessimar/samples/tour.txt", "reset()\r\n");
  MakeFile("share/tessimar/samples/new.txt", "reset()\r\n");
  MakeFile("share/tessimar/samples/photos/im1.jpg", "a photograph");
  MakeFile("lib/tessimar/features/FeatureOwn.so", "");
  MakeFile("lib/tessimar/features/FeatureCount.so", "");
  std::filesystem::create_directory("bin");
  std::filesystem::copy_file(WORKBENCH_PROGRAM, "bin/tessimar");
  // As an earlier version left it: a file that the user changed, and a link to where that version was.
  MakeFile("home/Tessimar/tour.txt", "the user's own");
  std::filesystem::create_symlink("/nowhere/photos", "home/Tessimar/photos");
  MakeFile("home/Tessimar/FeatureOwn.so", "the user's own");
  environment.insert("HOME", QString::fromStdString(directory.GetPath() / "home"));
  Start(QString::fromStdString(directory.GetPath() / "bin/tessimar"), {"--workspace"});
  EXPECT_TRUE(Await([] { return std::filesystem::exists("home/Tessimar/FeatureStorage"); }));
  EXPECT_EQ(FileBytes("home/Tessimar/photos/im1.jpg"), "a photograph");
  EXPECT_TRUE(std::filesystem::is_symlink("home/Tessimar/new.txt"));
  EXPECT_EQ(FileBytes("home/Tessimar/tour.txt"), "the user's own");
  EXPECT_TRUE(std::filesystem::is_symlink("home/Tessimar/FeatureCount.so")) << "installed descriptors are at hand";
  EXPECT_EQ(FileBytes("home/Tessimar/FeatureOwn.so"), "the user's own");
  EXPECT_FALSE(std::filesystem::exists("FeatureStorage")) << "nothing beside the workspace";
}

TEST_F(TCommandLine, AHomeThatCannotBeWrittenIsAMessage) {
  MakeFile("file", "");
  for (const bool isKnown : {true, false}) {
    const std::string home = (directory.GetPath() / "file").string();
    environment.remove("HOME");
    if (isKnown) {
      environment.insert("HOME", QString::fromStdString(home));
    }
    Start(WORKBENCH_PROGRAM, {"--workspace"});
    const std::string expected =
        "tessimar: The folder '" + (isKnown ? home : std::string()) + "/Tessimar' cannot be used.";
    std::string errors;
    EXPECT_TRUE(Await([&] {
      errors += process.readAllStandardError().toStdString();
      return errors.find(expected) != std::string::npos;
    })) << "a dialog waits; so far: "
        << errors;
    process.kill();
    process.waitForFinished(30000);
  }
}

}  // namespace
