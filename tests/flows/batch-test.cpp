// tessimar-batch as a process of its own: what goes in and comes out, and how it ends.

#include <algorithm>
#include <csignal>

#include <QImage>
#include <QProcess>
#include <gtest/gtest.h>

#include "tests/support/workbench.h"

namespace {

struct TOutcome {
  int status;
  std::string output;
  std::string errors;
};

class TBatch : public testing::Test {
 protected:
  TBatch() {
    MakePicture("photos/im1.jpg", 40, 30, qRgb(255, 0, 0));
    MakePicture("photos/im2.jpg", 40, 30, qRgb(0, 255, 0));
    MakePicture("q.png", 60, 40, qRgb(0, 250, 0));
    process.setProgram(BATCH_PROGRAM);
  }

  TOutcome Finish() {
    EXPECT_TRUE(process.waitForFinished(60000));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    return {process.exitCode(), process.readAllStandardOutput().toStdString(),
            process.readAllStandardError().toStdString()};
  }

  TOutcome Run(const QStringList& arguments, const std::string& input = std::string()) {
    process.setArguments(arguments);
    process.start();
    process.write(input.data(), static_cast<qint64>(input.size()));
    process.closeWriteChannel();
    return Finish();
  }

  TScratchDirectory directory;
  QProcess process;
};

constexpr const char* kSearch =
    "q = LOADIMAGE(\"q.png\")\n"
    "db = loaddatabase(\"photos\")\n"
    "updatefeature(q, \"hsv\")\n"
    "updatefeature(db, \"hsv\")\n"
    "index = searchimage(db, q)\n";

TEST_F(TBatch, RunsAScriptWithEitherLineEndAndALastLineWithoutOne) {
  MakeFile("s.txt", "reset()\r\nhelp reset\nreset(1)");
  const TOutcome outcome = Run({"s.txt"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output,
            "> reset()\n> help reset\n  Name:        Reset\n  Description: Resets the program to its startup state\n"
            "  Syntax:      reset()\n  Returns:     nothing\n> reset(1)\n");
  EXPECT_EQ(FileBytes("CommandHistory.txt"), "reset(1)\r\nhelp reset\r\nreset()\r\n");
  EXPECT_EQ(Run({}, "reset()").output, "> reset()\n");
  EXPECT_EQ(Run({"-"}, "a\xff\n").output, "> a\xff\n  Syntax error while parsing function call\n");
}

TEST_F(TBatch, SaysNothingOfASessionThatItDoesNotNeed) {
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.remove("XDG_RUNTIME_DIR");
  process.setProcessEnvironment(environment);
  EXPECT_EQ(Run({}, "reset()").errors, "");
}

TEST_F(TBatch, AnswersEachLineOfAPipeAsItArrives) {
  process.setArguments({});
  process.start();
  process.write("reset()\n");
  ASSERT_TRUE(process.waitForReadyRead(30000));
  EXPECT_EQ(process.readAllStandardOutput(), "> reset()\n");
  process.write("nonsense\n");
  ASSERT_TRUE(process.waitForReadyRead(30000));
  process.closeWriteChannel();
  EXPECT_EQ(Finish().status, 1);
}

TEST_F(TBatch, TellsByItsStatusWhetherAllLinesSucceeded) {
  MakeFile("bad.txt", "nonsense\r\n");
  MakeFile("folder/x", "");
  const std::vector<std::pair<std::string, int>> cases = {{"", 0},
                                                          {"help\n", 0},
                                                          {"\n", 1},
                                                          {"help none\n", 1},
                                                          {"executescript(\"bad.txt\")\n", 1},
                                                          {"a=loadimage(\"q.png\")\na=loaddatabase(\"photos\")\n", 0}};
  for (const auto& [input, status] : cases) {
    EXPECT_EQ(Run({}, input).status, status) << input;
  }
  for (const QStringList& arguments : {QStringList{"none.txt"},
                                       {"folder"},
                                       {"a", "b"},
                                       {"--frobnicate"},
                                       {"--pictures"},
                                       {"--pictures", "q.png"},
                                       {"--rankings", "q.png/x"},
                                       {"--runs", "q.png/x"},
                                       {"--variables", "folder"},
                                       {"--variables", "no/such/file"},
                                       {"--pictures="}}) {
    const TOutcome outcome = Run(arguments);
    EXPECT_EQ(outcome.status, 2) << arguments.join(' ').toStdString();
    EXPECT_EQ(outcome.output, "");
    EXPECT_TRUE(outcome.errors.starts_with("tessimar-batch: ")) << outcome.errors;
    EXPECT_EQ(outcome.errors.find('\n'), outcome.errors.size() - 1) << outcome.errors;
  }
  EXPECT_TRUE(Run({"--help"}).output.starts_with("Usage: tessimar-batch"));
  EXPECT_TRUE(Run({"--version"}).output.starts_with("tessimar-batch 0.1.8"));
}

TEST_F(TBatch, SavesDialogsVariablesAndRankings) {
  MakeFile("tree.txt", "1\r\n2\r\n2\r\n");
  MakeFile("green.txt", "2\r\n");
  // The scale of the user's screen must not reach the pictures.
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert("QT_SCALE_FACTOR", "2");
  process.setProcessEnvironment(environment);
  const TOutcome outcome =
      Run({"--pictures", "out/p", "--variables", "v.tsv", "--rankings=out/r/"},
          std::string(kSearch) +
              "loadmirflickrtags(db, \"tree.txt\")\nloadmirflickrtags(db, "
              "\"green.txt\")\ndisplayimage(q)\ndisplayindex(index)\n../In dex\\=index\ntab\t\"\t\"=index\n");
  EXPECT_EQ(outcome.status, 0) << outcome.output;
  EXPECT_EQ(QImage("out/p/001.png").size(), QSize(80, 90));
  EXPECT_EQ(QImage("out/p/001.png").pixel(30, 30), qRgb(0, 250, 0));
  EXPECT_EQ(QImage("out/p/002.png").size(), QSize(687, 621));
  EXPECT_FALSE(std::filesystem::exists("out/p/003.png"));
  EXPECT_EQ(FileBytes("v.tsv"),
            "q\timage\tFilename: \"q.png\", features: hsv\n"
            "db\tdatabase\tLocation: \"photos/\", number of images: 2, features: hsv\n"
            "index\tdatabaseindex\tDatabase index\n"
            "../index\\\\\tdatabaseindex\tDatabase index\n"
            "tab\"\\t\"\tdatabaseindex\tDatabase index\n");
  // Green of value 250 and of 255 share a bin, red lies in another: 1 + 1.
  const std::string ranking =
      "rank\timageIndex\tdistance\tfile name\ttags\n"
      "1\t1\t0\tphotos/im2.jpg\ttree,green\n2\t0\t2\tphotos/im1.jpg\ttree\n";
  EXPECT_EQ(FileBytes("out/r/index.tsv"), ranking);
  EXPECT_EQ(FileBytes("out/r/%2E%2E%2Findex%5C.tsv"), ranking);
  EXPECT_EQ(FileBytes("out/r/tab%22%09%22.tsv"), ranking);
}

TEST_F(TBatch, SavesRankingsAsRuns) {
  MakePicture("photos/a 10%.jpg", 40, 30, qRgb(255, 0, 0));
  const TOutcome outcome =
      Run({"--runs", "out/runs"},
          std::string(kSearch) +
              "p = loadimage(\"photos/im1.jpg\")\ntags = searchtags(db, \"x\")\n"
              "updatefeature(p, \"hsv\")\nmy%own = searchimage(db, p)\nreset2 = loadimage(\"q.png\")\n");
  EXPECT_EQ(outcome.status, 0) << outcome.output;
  EXPECT_EQ(FileBytes("out/runs/index.run"),
            "q.png Q0 im2.jpg 1 3 index\nq.png Q0 im1.jpg 2 2 index\nq.png Q0 a%2010%25.jpg 3 1 index\n");
  EXPECT_EQ(FileBytes("out/runs/my%25own.run"),
            "im1.jpg Q0 im1.jpg 1 3 my%25own\nim1.jpg Q0 a%2010%25.jpg 2 2 my%25own\n"
            "im1.jpg Q0 im2.jpg 3 1 my%25own\n");
  EXPECT_TRUE(FileBytes("out/runs/tags.run").starts_with("tags Q0 im1.jpg 1 3 tags\n"));
}

TEST_F(TBatch, NeitherALocaleNorADeadDisplayChangesTheOutput) {
  const std::string plain = Run({"--rankings", "r1"}, kSearch).output;
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert("DISPLAY", ":4711");
  environment.insert("QT_QPA_PLATFORM", "xcb");
  environment.insert("LOCPATH", QString::fromStdString(directory.GetPath() / "locales"));
  std::filesystem::create_directory("locales");
  for (const QString language : {"de_DE", "tr_TR"}) {
    const QString locale = language + ".UTF-8";
    ASSERT_EQ(QProcess::execute("localedef", {"--no-archive", "-i", language, "-f", "UTF-8", "locales/" + locale}), 0);
    environment.insert("LC_ALL", locale);
    process.setProcessEnvironment(environment);
    process.setProgram("locale");
    ASSERT_EQ(Run({"decimal_point"}).output, ",\n") << "the locale is in force";
    process.setProgram(BATCH_PROGRAM);
    EXPECT_EQ(Run({"--rankings", "r2"}, kSearch).output, plain);
    EXPECT_EQ(FileBytes("r2/index.tsv"), FileBytes("r1/index.tsv"));
  }
}

TEST_F(TBatch, CtrlCEndsTheRunAndKeepsTheHistory) {
  process.setArguments({});
  process.start();
  process.write("reset()\n");
  ASSERT_TRUE(process.waitForReadyRead(30000));
  kill(static_cast<pid_t>(process.processId()), SIGINT);
  EXPECT_EQ(Finish().status, 130);
  EXPECT_EQ(FileBytes("CommandHistory.txt"), "reset()\r\n");
}

TEST_F(TBatch, CtrlCEndsAScriptInsideAScriptAfterTheLineUnderWay) {
  std::string lines;
  for (int i = 0; i < 50000; ++i) {
    lines += "reset()\r\n";
  }
  MakeFile("inner.txt", lines);
  process.setArguments({});
  process.start();
  process.write("executescript(\"inner.txt\")\n");
  ASSERT_TRUE(process.waitForReadyRead(30000));
  kill(static_cast<pid_t>(process.processId()), SIGINT);
  const TOutcome outcome = Finish();
  EXPECT_EQ(outcome.status, 130);
  EXPECT_LT(outcome.output.size(), lines.size());
}

TEST_F(TBatch, AClosedPipeEndsTheRunAndKeepsTheHistory) {
  MakeFile("s.txt", [] {
    std::string lines;
    for (int i = 0; i < 2000; ++i) {
      lines += "help\n";
    }
    return lines;
  }());
  process.setProgram("/bin/sh");
  const TOutcome outcome =
      Run({"-c", "{ \"$0\" s.txt; echo $? > status; } | head -n 1", QStringLiteral(BATCH_PROGRAM)});
  EXPECT_EQ(outcome.output, "> help\n");
  EXPECT_EQ(FileBytes("status"), "141\n");
  EXPECT_TRUE(FileBytes("CommandHistory.txt").starts_with("help\r\n"));
}

TEST_F(TBatch, TheWorkbenchWithoutADisplaySaysSoAndEndsPlainly) {
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert("DISPLAY", ":4711");
  environment.insert("QT_QPA_PLATFORM", "xcb");
  process.setProcessEnvironment(environment);
  process.setProgram(WORKBENCH_PROGRAM);
  const TOutcome outcome = Run({});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_NE(outcome.errors, "");
}

/// The 8 x 8 grid of a displayed image, "x" for a cell that is outlined in green, row by row.
std::string GreenCells(const QString& file) {
  const QImage dialog(file);
  const int width = dialog.width() - 20;
  const int height = dialog.height() - 50;
  std::string cells;
  for (int row = 0; row < 8; ++row) {
    for (int column = 0; column < 8; ++column) {
      const QRgb corner = dialog.pixel(10 + width * column / 8, 10 + height * row / 8);
      cells += corner == qRgb(0, 255, 0) ? 'x' : '.';
    }
  }
  return cells;
}

TEST_F(TBatch, FindsAConceptSegmentBySegment) {
  MakePicture("reds/a.jpg", 80, 80, qRgb(200, 30, 30));
  MakePicture("blues/a.jpg", 80, 80, qRgb(30, 90, 200));
  QImage both(80, 80, QImage::Format_RGB888);
  both.fill(qRgb(30, 90, 200));
  for (int y = 20; y < 60; ++y) {
    for (int x = 40; x < 80; ++x) {
      both.setPixel(x, y, qRgb(200, 30, 30));
    }
  }
  both.save("both.png");
  std::string script = "both = loadimage(\"both.png\")\nr = loaddatabase(\"reds\")\nb = loaddatabase(\"blues\")\n";
  for (const char* variable : {"both", "r", "b"}) {
    script += std::string("segmentimage(") + variable + ", \"grid\")\nupdatefeature(" + variable + ", \"hsv\")\n";
  }
  for (const char* type : {"nearest", "svm"}) {
    script +=
        std::string("c = createclassifier(\"") + type +
        "\")\nk = learnvisualconcept(r, b, c)\nfindvisualconceptlocations(both, k, \"red\")\ndisplayimage(both)\n";
  }
  EXPECT_EQ(Run({"--pictures", "p"}, script).status, 0);
  const std::string none = "................";
  const std::string half = "....xxxx....xxxx";
  EXPECT_EQ(GreenCells("p/001.png"), none + half + half + none);
  EXPECT_EQ(GreenCells("p/002.png"), none + half + half + none);
}

TEST_F(TBatch, TheConceptOfTheSamplesIsFoundWhereItShould) {
  ASSERT_EQ(QProcess::execute(LAY_OUT_SAMPLES, {"."}), 0);
  const TOutcome outcome = Run({"--seed", "1", "--pictures", "first", "concept.txt"});
  EXPECT_EQ(outcome.status, 0) << outcome.output;
  EXPECT_EQ(outcome.output.find("Neuron"), std::string::npos) << "what libraries print stays off the output";
  const auto count = [](const QString& file) {
    const std::string cells = GreenCells(file);
    return std::count(cells.begin(), cells.end(), 'x');
  };
  // A windmill and a fish under "nearest", then under "svm".
  for (const char* windmill : {"first/001.png", "first/003.png"}) {
    EXPECT_GE(count(windmill), 48) << windmill;
  }
  for (const char* fish : {"first/002.png", "first/004.png"}) {
    EXPECT_LE(count(fish), 8) << fish;
  }
  EXPECT_EQ(Run({"--seed", "1", "--pictures", "second", "concept.txt"}).status, 0);
  for (const char* neural : {"005.png", "006.png"}) {
    EXPECT_EQ(FileBytes(std::string("first/") + neural), FileBytes(std::string("second/") + neural));
  }
}

TEST_F(TBatch, TheTourOfTheSamplesRunsToItsEnd) {
  std::filesystem::copy(SAMPLES_DIRECTORY, ".",
                        std::filesystem::copy_options::recursive | std::filesystem::copy_options::overwrite_existing);
  const TOutcome outcome = Run({"--pictures", "pictures", "tour.txt"});
  EXPECT_EQ(outcome.status, 0) << outcome.output;
  EXPECT_NE(outcome.output.find("Database contains 110 images"), std::string::npos);
  EXPECT_TRUE(std::filesystem::exists("pictures/001.png"));
}

}  // namespace
