// tessimar-batch as a process of its own: what goes in and comes out, and how it ends.

#include <algorithm>
#include <array>
#include <csignal>

#include <QImage>
#include <QThread>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/program-test.h"
#include "tests/support/test-pictures.h"

namespace {

class TBatch : public TProgramTest {
 protected:
  TBatch() {
    MakePicture("photos/im1.jpg", 40, 30, qRgb(255, 0, 0));
    MakePicture("photos/im2.jpg", 40, 30, qRgb(0, 255, 0));
    MakePicture("q.png", 60, 40, qRgb(0, 250, 0));
    process.setProgram(BATCH_PROGRAM);
  }

  TOutcome Run(const QStringList& arguments, const std::string& input = std::string()) {
    return TProgramTest::Run(process.program(), arguments, input);
  }
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

TEST_F(TBatch, TheMarkThatAnEditorPutsBeforeAScriptIsNoPartOfIt) {
  const std::string mark = "\xef\xbb\xbf";
  MakeFile("s.txt", mark + "a = createclassifier(\"svm\")\r\ngetclassifiersetting(a, \"kernel\")\r\n");
  const std::string lines = "> a = createclassifier(\"svm\")\n> getclassifiersetting(a, \"kernel\")\n  kernel = rbf\n";
  EXPECT_EQ(Run({"s.txt"}), (TOutcome{0, lines, ""}));
  EXPECT_EQ(Run({}, mark + "#!/usr/bin/env tessimar-batch\nreset()"), (TOutcome{0, "> reset()\n", ""}));
  EXPECT_EQ(Run({}, mark), (TOutcome{0, "", ""}));
}

TEST_F(TBatch, InAFileOfACommandTheMarkIsPartOfTheFirstLineAndToldOf) {
  MakeFile("tree.txt",
           "\xef\xbb\xbf"
           "2\r\n1\r\n");
  EXPECT_EQ(Run({}, "db = loaddatabase(\"photos\")\nloadmirflickrtags(db, \"tree.txt\")\n").output,
            "> db = loaddatabase(\"photos\")\n  Scanning..\n  Database contains 2 images\n"
            "> loadmirflickrtags(db, \"tree.txt\")\n"
            "  File 'tree.txt' begins with a byte order mark, which is read as part of its first line\n"
            "  1 lines name no image\n");
}

TEST_F(TBatch, SaysNothingOfASessionThatItDoesNotNeed) {
  environment.remove("XDG_RUNTIME_DIR");
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
                                       {"--pictures", "q.png"},
                                       {"--rankings", "q.png/x"},
                                       {"--runs", "q.png/x"},
                                       {"--variables", "folder"},
                                       {"--variables", "no/such/file"},
                                       {"--pictures="},
                                       {"--plugins", "none"},
                                       {"--plugins", "q.png"},
                                       {"--plugins", "photos", "--plugins", ""},
                                       {"--check-plugin", "none.so"},
                                       {"--check-plugin", "folder"},
                                       {"--check-plugin", "a.so", "b.so"},
                                       {"--check-plugin", "a.so", "--seed", "1"},
                                       {"--segments", "folder"}}) {
    const TOutcome outcome = Run(arguments);
    EXPECT_EQ(outcome.status, 2) << arguments.join(' ').toStdString();
    EXPECT_EQ(outcome.output, "");
    EXPECT_TRUE(outcome.errors.starts_with("tessimar-batch: ")) << outcome.errors;
    EXPECT_EQ(outcome.errors.find('\n'), outcome.errors.size() - 1) << outcome.errors;
  }
}

TEST_F(TBatch, LoadsPluginsOfFurtherDirectoriesAndChecksOne) {
  const std::filesystem::path fixtures(PLUGIN_FIXTURES);
  std::filesystem::create_directories("shelf");
  std::filesystem::create_directories("other");
  std::filesystem::copy_file(fixtures / "plain", "shelf/FeaturePlain.so");
  std::filesystem::copy_file(fixtures / "plain", "other/FeaturePlain.so");
  MakeFile("other/FeatureX.so", "no library");
  const TOutcome outcome =
      Run({"--plugins", "shelf", "--plugins", "other/"}, "q = loadimage(\"q.png\")\nupdatefeature(q, \"fixture\")\n");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_TRUE(outcome.output.starts_with(
      "  Plug-in 'other/FeaturePlain.so' never runs: there is another feature \"fixture\" before it\n"
      "  Plug-in 'other/FeatureX.so' was left out: it is no library\n> "))
      << outcome.output;
  EXPECT_EQ(Run({"--check-plugin", "SHELF/FeaturePlain.so"}).status, 0);
  const TOutcome check = Run({"--check-plugin", "other/FeatureX.so"});
  EXPECT_EQ(check.status, 1);
  EXPECT_EQ(check.output, "FAULT  cannot be used: it is no library\nFeatureX.so is not sound: 1 fault\n");
  EXPECT_EQ(check.errors, "");
}

TEST_F(TBatch, SavesDialogsVariablesAndRankings) {
  MakeFile("tree.txt", "1\r\n2\r\n2\r\n");
  MakeFile("green.txt", "2\r\n");
  // The scale of the user's screen must not reach the pictures.
  environment.insert("QT_SCALE_FACTOR", "2");
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
            "name\ttype\tdescription\n"
            "q\timage\tFilename: \"q.png\", features: hsv\n"
            "db\tdatabase\tLocation: \"photos/\", number of images: 2, features: hsv\n"
            "index\tdatabaseindex\tDatabase index\n"
            "../index\\\\\tdatabaseindex\tDatabase index\n"
            "tab\"\\t\"\tdatabaseindex\tDatabase index\n");
  // Green of value 250 and of 255 share a bin, red lies in another: 1 + 1.
  const std::string ranking =
      "rank\timageIndex\tdistance\tfile\ttags\n"
      "1\t1\t0\tphotos/im2.jpg\ttree,green\n2\t0\t2\tphotos/im1.jpg\ttree\n";
  EXPECT_EQ(FileBytes("out/r/index.tsv"), ranking);
  EXPECT_EQ(FileBytes("out/r/%2E%2E%2Findex%5C.tsv"), ranking);
  EXPECT_EQ(FileBytes("out/r/tab%22%09%22.tsv"), ranking);
}

TEST_F(TBatch, RankingsWithLongNamesGetFilesOfTheirOwn) {
  const std::string longName(300, 'x');
  const std::string other = longName + "y";
  const std::string lines =
      kSearch + longName + " = index\n" + other + " = index\n" + std::string(236, 'z') + " = index\n";
  EXPECT_EQ(Run({"--rankings", "r", "--runs", "r"}, lines).status, 0);
  // The digests of 300 x, and of these and a y, come from sha256sum.
  const std::string first = std::string(171, 'x') + "~0d4e2ca9e9cbced7a7a5380eb29e1a3783b9b6d0db72de36a1051038e1c1fbc7";
  const std::string second =
      std::string(171, 'x') + "~bb6bf88a559366f02cef3a1003753cd4448b9136138eabf95f6472c69193ea18";
  for (const std::string& file : {first, second, std::string(236, 'z'), std::string("index")}) {
    EXPECT_EQ(FileBytes("r/" + file + ".tsv"), FileBytes("r/index.tsv")) << file;
    EXPECT_TRUE(std::filesystem::exists("r/" + file + ".run")) << file;
  }
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator("r"), std::filesystem::directory_iterator()), 8);
}

TEST_F(TBatch, TellsByItsStatusThatAFileIsMissingInWhatSucceeded) {
  MakeFile("photos/im3.jpg", "no picture");
  const TOutcome outcome = Run({}, "db = loaddatabase(\"photos\")\nupdatefeature(db, \"hsv\")\n");
  EXPECT_EQ(outcome.status, 3);
  EXPECT_NE(outcome.output.find("  File 'photos/im3.jpg' cannot be read\n"), std::string::npos) << outcome.output;
  EXPECT_EQ(Run({}, "db = loaddatabase(\"photos\")\nupdatefeature(db, \"hsv\")\nnonsense\n").status, 1);
  EXPECT_EQ(Run({}, "db = loaddatabase(\"photos\")\nloadfeature(db, \"hsv\")\n").status, 0) << "nothing was stored";
  EXPECT_EQ(Run({}, "q = loadimage(\"photos/im3.jpg\")\ndisplayimage(q)\n").status, 3);
}

TEST_F(TBatch, WhatAKilledRunLeftBehindGoes) {
  const auto old = std::filesystem::file_time_type::clock::now() - std::chrono::hours(2);
  const std::vector<std::string> gone = {".tessimar-17-1", "FeatureStorage/.tessimar-17-22", "r/.tessimar-17-1"};
  const std::vector<std::string> kept = {".tessimar-17-", ".tessimar-x-1", "tessimar-17-1", "r/.tessimar-1-2-3"};
  for (const auto* files : {&gone, &kept}) {
    for (const std::string& file : *files) {
      MakeFile(file, "half");
      std::filesystem::last_write_time(file, old);
    }
  }
  MakeFile("FeatureStorage/.tessimar-17-1", "of a run that goes on");
  const std::string save = "db = loaddatabase(\"photos\")\nupdatefeature(db, \"hsv\")\nsavefeature(db, \"hsv\")\n";
  EXPECT_EQ(Run({"--rankings", "r"}, save).status, 0);
  for (const std::string& file : gone) {
    EXPECT_FALSE(std::filesystem::exists(file)) << file;
  }
  for (const std::string& file : kept) {
    EXPECT_TRUE(std::filesystem::exists(file)) << file;
  }
  EXPECT_TRUE(std::filesystem::exists("FeatureStorage/.tessimar-17-1"));
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

TEST_F(TBatch, ARankingWhoseDatabaseIsGoneHasNoNames) {
  MakePicture("other/im1.jpg", 40, 30, qRgb(0, 0, 255));
  const TOutcome outcome =
      Run({"--rankings", "out", "--runs", "out"}, std::string(kSearch) + "db = loaddatabase(\"other\")\n");
  EXPECT_EQ(outcome.status, 0) << outcome.output;
  // Green lies in the bin of the query, red in another: 1 + 1.
  EXPECT_EQ(FileBytes("out/index.tsv"), "rank\timageIndex\tdistance\tfile\ttags\n1\t1\t0\t\t\n2\t0\t2\t\t\n");
  EXPECT_EQ(FileBytes("out/index.run"), "");
}

TEST_F(TBatch, AClosedStandardOutputIsRefused) {
  process.setProgram("sh");
  const TOutcome outcome = Run({"-c", "exec \"$0\" -e \"reset()\" >&-", BATCH_PROGRAM});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.errors, "tessimar-batch: Standard output cannot be used\n");
}

TEST_F(TBatch, NoFileTakesThePlaceOfAClosedStream) {
  process.setProgram("sh");
  // The pipe is the first to be opened, and would be where messages go.
  ASSERT_EQ(mkfifo("pipe", 0600), 0);
  Run({"-c", "cat pipe >table & \"$0\" -e nonsense --variables pipe 2>&-; wait", BATCH_PROGRAM});
  EXPECT_EQ(FileBytes("table"), "name\ttype\tdescription\n");
  // And so is the script, in the place of the output.
  MakeFile("s.txt", "reset()\n");
  EXPECT_EQ(Run({"-c", "exec \"$0\" s.txt >&-", BATCH_PROGRAM}),
            (TOutcome{2, "", "tessimar-batch: Standard output cannot be used\n"}));
  EXPECT_EQ(Run({"-c", "exec \"$0\" <&-", BATCH_PROGRAM}),
            (TOutcome{1, "  Script '-' cannot be read to its end\n", ""}));
}

TEST_F(TBatch, AStandardOutputOnAFullDiskIsToldOf) {
  const TOutcome full = {2, "", "tessimar-batch: Standard output cannot be written\n"};
  MakeFile("s.txt", "reset()\nhelp\n");
  MakeFile("a.so", "no library");
  process.setProgram("sh");
  for (const QStringList& arguments :
       {QStringList{"s.txt"}, QStringList{"--help"}, QStringList{"--version"}, QStringList{"--check-plugin", "a.so"}}) {
    EXPECT_EQ(Run(QStringList{"-c", "exec \"$0\" \"$@\" >/dev/full", BATCH_PROGRAM} + arguments), full)
        << arguments.join(' ').toStdString();
  }
  EXPECT_EQ(FileBytes("CommandHistory.txt"), "reset()\r\n") << "the run ends behind the line that could not be told";
}

TEST_F(TBatch, ASlowReaderOfAPipeThatDoesNotBlockGetsAll) {
  std::string lines;
  std::string expected;
  for (int i = 0; i < 3000; ++i) {
    lines += "reset() " + std::to_string(i) + "\n";
    expected += "> reset() " + std::to_string(i) + "\n";
  }
  MakeFile("s.txt", lines);
  std::array<int, 2> ends = {};
  ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
  ASSERT_EQ(fcntl(ends[1], F_SETFL, O_NONBLOCK), 0);
  ASSERT_LT(fcntl(ends[1], F_SETPIPE_SZ, 4096), static_cast<int>(expected.size())) << "or it never fills";
  process.setChildProcessModifier([&] { dup2(ends[1], STDOUT_FILENO); });
  Start(process.program(), {"s.txt"});
  ASSERT_TRUE(process.waitForStarted());
  close(ends[1]);
  // Full before anybody reads.
  int waiting = 0;
  for (int tries = 0; tries < 300 && waiting < 3000; ++tries) {
    QThread::msleep(100);
    ASSERT_EQ(ioctl(ends[0], FIONREAD, &waiting), 0);
  }
  ASSERT_GE(waiting, 3000);
  std::string output;
  std::array<char, 512> block;
  for (ssize_t count = 1; count > 0;) {
    count = read(ends[0], block.data(), block.size());
    output.append(block.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
  }
  close(ends[0]);
  EXPECT_EQ(Finish().status, 0);
  EXPECT_EQ(output, expected);
}

TEST_F(TBatch, ALimitOfFileSizesIsAFailureAndNotTheEnd) {
  // A vector of "hsv" has 256 numbers of 8 bytes, and no file may grow beyond 2 blocks of 512 bytes.
  MakeFile("s.txt", std::string(kSearch) + "savefeature(db, \"hsv\")\nreset()\n");
  process.setProgram("sh");
  const TOutcome outcome = Run({"-c", "ulimit -c 0; ulimit -f 2; exec \"$0\" s.txt", BATCH_PROGRAM});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errors, "s.txt:6: Function failed: File 'FeatureStorage/hsv-im1.dat' cannot be written\n");
  EXPECT_TRUE(outcome.output.ends_with("> reset()\n")) << outcome.output;
  EXPECT_FALSE(std::filesystem::exists("FeatureStorage/hsv-im1.dat"));
}

TEST_F(TBatch, ATableThatCannotBeWrittenIsNamedAndKeepsNoOtherFromItsPlace) {
  std::filesystem::create_symlink("/dev/full", "v.tsv");
  std::filesystem::create_symlink("/dev/full", "s.tsv");
  const TOutcome outcome =
      Run({"--variables", "v.tsv", "--segments", "s.tsv", "--rankings", "tables", "--runs", "runs"}, kSearch);
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.errors,
            "tessimar-batch: File 'v.tsv' cannot be written\ntessimar-batch: File 's.tsv' cannot be written\n");
  EXPECT_TRUE(FileBytes("tables/index.tsv").starts_with("rank\timageIndex\tdistance\tfile\ttags\n1\t1\t"));
  EXPECT_TRUE(std::filesystem::exists("runs/index.run"));
}

TEST_F(TBatch, AnInstallationWithoutTheToolkitsPluginsIsToldOf) {
  std::filesystem::copy_file(BATCH_PROGRAM, "tessimar-batch");
  MakeFile("qt.conf", "[Paths]\nPlugins=none\n");
  process.setProgram("sh");
  const TOutcome outcome = Run({"-c", "ulimit -c 0; ./tessimar-batch -e \"reset()\""});
  EXPECT_NE(outcome.status, 0);
  EXPECT_NE(outcome.errors.find("no Qt platform plugin could be initialized"), std::string::npos) << outcome.errors;
}

TEST_F(TBatch, TellsHowFarItIsOnATerminalOnly) {
  MakeFile("s.txt", "db = loaddatabase(\"photos\")\nsegmentimage(db, \"grid\")\n");
  EXPECT_EQ(Run({"s.txt"}).errors, "");
  process.setProgram("script");
  const std::string shown = Run({"-qec", QStringLiteral("\"" BATCH_PROGRAM "\" s.txt"), "/dev/null"}).output;
  // The count stands alone on its line, and goes when there is something to say.
  const std::string count = "segmentimage, 0 of 2";
  const std::string blanks(count.size(), ' ');
  EXPECT_NE(shown.find("this could take some time\r\n\r" + count + "\r"), std::string::npos) << shown;
  EXPECT_NE(shown.find("\r" + blanks + "\r  Processing done\r\n"), std::string::npos) << shown;
}

TEST_F(TBatch, TheTrainingLibrariesAreHeardOnRequestOnly) {
  const std::string lines = std::string(kSearch) +
                            "segmentimage(db, \"grid\")\nupdatefeature(db, \"hsv\")\nc = createclassifier(\"svm\")\n"
                            "k = learnvisualconcept(db, db, c)\n";
  const TOutcome quiet = Run({}, lines);
  const TOutcome verbose = Run({"--verbose"}, lines);
  EXPECT_EQ(quiet.errors, "");
  EXPECT_NE(verbose.errors.find("optimization finished"), std::string::npos) << verbose.errors;
  EXPECT_EQ(verbose.output, quiet.output);
}

TEST_F(TBatch, NeitherALocaleNorADeadDisplayChangesTheOutput) {
  const std::string plain = Run({"--rankings", "r1"}, kSearch).output;
  environment.insert("DISPLAY", ":4711");
  environment.insert("QT_QPA_PLATFORM", "xcb");
  environment.insert("LOCPATH", QString::fromStdString(directory.GetPath() / "locales"));
  std::filesystem::create_directory("locales");
  for (const QString language : {"de_DE", "tr_TR"}) {
    const QString locale = language + ".UTF-8";
    ASSERT_EQ(QProcess::execute("localedef", {"--no-archive", "-i", language, "-f", "UTF-8", "locales/" + locale}), 0);
    environment.insert("LC_ALL", locale);
    ASSERT_EQ(TProgramTest::Run("locale", {"decimal_point"}).output, ",\n") << "the locale is in force";
    process.setProgram(BATCH_PROGRAM);
    EXPECT_EQ(Run({"--rankings", "r2"}, kSearch).output, plain);
    EXPECT_EQ(FileBytes("r2/index.tsv"), FileBytes("r1/index.tsv"));
  }
}

/// A named pipe that nobody else has open.
void MakePipe(const char* name) {
  std::filesystem::remove(name);
  ASSERT_EQ(mkfifo(name, 0600), 0);
}

const std::string kVariablesHeader = "name\ttype\tdescription\n";

constexpr const char* kEnds = "Ends after the command under way; once more ends at once\n";

TEST_F(TBatch, ASignalToEndKeepsTheHistoryAndWritesTheTables) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    std::filesystem::remove("CommandHistory.txt");
    std::filesystem::remove("v.tsv");
    process.setArguments({"--variables", "v.tsv"});
    process.start();
    process.write("db = loaddatabase(\"photos\")\n");
    ASSERT_TRUE(process.waitForReadyRead(30000));
    kill(static_cast<pid_t>(process.processId()), signal);
    const TOutcome outcome = Finish();
    EXPECT_EQ(outcome.status, 130) << signal;
    EXPECT_EQ(outcome.errors, kEnds);
    EXPECT_EQ(FileBytes("CommandHistory.txt"), "db = loaddatabase(\"photos\")\r\n");
    EXPECT_TRUE(FileBytes("v.tsv").starts_with(kVariablesHeader + "db\tdatabase\t")) << FileBytes("v.tsv");
  }
}

TEST_F(TBatch, ASecondSignalEndsAtOnceWhicheverItIs) {
  MakePipe("full");
  const int reader = open("full", O_RDONLY | O_NONBLOCK);
  // A command that does not end: its output goes where nobody takes it.
  std::string lines;
  for (int i = 0; i < 5000; ++i) {
    lines += "help\r\n";
  }
  MakeFile("s.txt", lines);
  process.setStandardOutputFile("full");
  process.setArguments({});
  process.start();
  process.write("executescript(\"s.txt\")\n");
  process.waitForBytesWritten(30000);
  for (int waiting = 0, before = -1; waiting == 0 || waiting > before; usleep(100000)) {
    before = waiting;
    ioctl(reader, FIONREAD, &waiting);
  }
  const auto number = static_cast<pid_t>(process.processId());
  kill(number, SIGTERM);
  process.setReadChannel(QProcess::StandardError);
  ASSERT_TRUE(process.waitForReadyRead(30000));
  kill(number, SIGINT);
  ASSERT_TRUE(process.waitForFinished(30000));
  EXPECT_EQ(process.exitStatus(), QProcess::CrashExit);
  EXPECT_EQ(process.exitCode(), SIGINT);
  EXPECT_EQ(process.readAllStandardError(), kEnds) << "said once";
  close(reader);
}

TEST_F(TBatch, ASignalThatTheStarterIgnoresIsIgnored) {
  process.setProgram("/bin/sh");
  process.setArguments({"-c", "trap '' HUP; exec \"$0\"", QStringLiteral(BATCH_PROGRAM)});
  process.start();
  process.write("reset()\n");
  ASSERT_TRUE(process.waitForReadyRead(30000));
  kill(static_cast<pid_t>(process.processId()), SIGHUP);
  process.write("reset()\n");
  process.closeWriteChannel();
  const TOutcome outcome = Finish();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output, "> reset()\n> reset()\n");
  EXPECT_EQ(outcome.errors, "");
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

TEST_F(TBatch, NamedPipesInTheProgramsPlacesAreRefusedAndNotWaitedFor) {
  MakePipe("CommandHistory.txt");
  EXPECT_EQ(Run({}, "reset()\n").status, 0) << "at the start and at the end";
  EXPECT_TRUE(std::filesystem::is_fifo("CommandHistory.txt"));
  const std::string evaluation = std::string(kSearch) + "evaluateindex(index, \"x\")\n";
  for (const std::string name : {"recallprecision.txt", "recallprecision.plt"}) {
    MakePipe(name.c_str());
    const TOutcome outcome = Run({}, evaluation);
    EXPECT_EQ(outcome.status, 1) << name;
    EXPECT_TRUE(outcome.output.ends_with("  File '" + name + "' cannot be written\n  Function failed\n"))
        << outcome.output;
    EXPECT_TRUE(std::filesystem::is_fifo(name));
    std::filesystem::remove(name);
  }
  // Also one with a reader is no place for a file of the program's own.
  MakePipe("out.tsv");
  const int reader = open("out.tsv", O_RDONLY | O_NONBLOCK);
  std::filesystem::create_directory("tables");
  std::filesystem::rename("out.tsv", "tables/index.tsv");
  EXPECT_EQ(Run({"--rankings", "tables"}, kSearch).status, 2);
  char byte = 0;
  EXPECT_EQ(read(reader, &byte, 1), 0) << "nothing came";
  close(reader);
}

TEST_F(TBatch, APipeThatTakesTheHistorysPlaceLaterIsNotWaitedForEither) {
  process.setArguments({});
  process.start();
  process.write("reset()\n");
  ASSERT_TRUE(process.waitForReadyRead(30000));
  MakePipe("CommandHistory.txt");
  process.closeWriteChannel();
  EXPECT_EQ(Finish().status, 0);
  EXPECT_TRUE(std::filesystem::is_fifo("CommandHistory.txt"));
}

TEST_F(TBatch, VariablesGoToAnyOutputThatDoesNotBlock) {
  const std::string image = "q = loadimage(\"q.png\")\n";
  const std::string rows = kVariablesHeader + "q\timage\tFilename: \"q.png\", no features\n";
  EXPECT_TRUE(Run({"--variables", "/dev/stdout"}, image).output.ends_with(rows));
  EXPECT_EQ(Run({"--variables", "/dev/stdout"}).output, kVariablesHeader);
  // The same file under another name: neither the printed lines nor the table are lost.
  process.setStandardOutputFile("out.txt");
  EXPECT_EQ(Run({"--variables", "out.txt"}, image).status, 0);
  EXPECT_EQ(FileBytes("out.txt"), "> q = loadimage(\"q.png\")\n" + rows);
  process.setStandardOutputFile(QString());
  EXPECT_EQ(Run({"--variables", "/dev/null"}, image).status, 0);
  ASSERT_EQ(mkfifo("pipe", 0600), 0);
  EXPECT_EQ(Run({"--variables", "pipe"}, image).status, 2) << "nobody reads";
  const int reader = open("pipe", O_RDONLY | O_NONBLOCK);
  EXPECT_EQ(Run({"--variables", "pipe"}, image).status, 0);
  std::string got(100, ' ');
  got.resize(static_cast<std::size_t>(std::max<ssize_t>(read(reader, got.data(), got.size()), 0)));
  EXPECT_EQ(got, rows);
  close(reader);
  // The table of an earlier run stays until this one has its own.
  MakeFile("v.tsv", "earlier");
  process.setArguments({"--variables", "v.tsv"});
  process.start();
  process.write(image.data());
  ASSERT_TRUE(process.waitForReadyRead(30000));
  EXPECT_EQ(FileBytes("v.tsv"), "earlier");
  process.closeWriteChannel();
  Finish();
  EXPECT_EQ(FileBytes("v.tsv"), rows);
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
  MakePicture("both.png", 80, 80, [](int x, int y) {
    return x >= 40 && y >= 20 && y < 60 ? TColor{200, 30, 30} : TColor{30, 90, 200};
  });
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
