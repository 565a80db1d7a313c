// tessimar-experiment among files that an accident or another program left in its places.

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>
#include <fcntl.h>

#include <QJsonDocument>
#include <QRegularExpression>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/program-test.h"
#include "tests/support/test-pictures.h"

namespace {

namespace filesystem = std::filesystem;

constexpr TColor kRed = {255, 0, 0};
constexpr TColor kBlue = {0, 0, 255};

class TExperimentRefusals : public TProgramTest {
 protected:
  TExperimentRefusals() {
    MakePicture("photos/im1.jpg", 8, 8, [](int, int) { return kRed; });
    MakePicture("photos/im2.jpg", 8, 8, [](int x, int) { return x < 2 ? kBlue : kRed; });
    MakePicture("photos/im3.jpg", 8, 8, [](int x, int) { return x < 6 ? kBlue : kRed; });
    MakePicture("photos/im4.jpg", 8, 8, [](int, int) { return kBlue; });
    MakeFile("tags/red.txt", "1\n2\n");
  }

  TOutcome Run(const QStringList& arguments) { return TProgramTest::Run(EXPERIMENT_PROGRAM, arguments); }

  TOutcome RunStep(const QString& step, const QString& part = "1/1") {
    return Run(options + QStringList{"--step", step} +
               (step == "report" ? QStringList() : QStringList{"--part", part}));
  }

  void ExpectFailure(const TOutcome& outcome, const std::string& message) {
    EXPECT_EQ(outcome.status, 1) << message;
    EXPECT_EQ(outcome.errors, "tessimar-experiment: " + message + "\n");
  }

  const QStringList options = {"photos", "--truth", "tags", "--features", "hsv", "--out", "o"};
};

std::string Replaced(std::string text, const std::string& before, const std::string& after) {
  const std::size_t place = text.find(before);
  EXPECT_NE(place, std::string::npos) << before;
  return text.replace(std::min(place, text.size()), before.size(), after);
}

/// A table as NumPy writes it in version 1.0 of its format.
std::string NumPyTable(std::size_t rows, std::size_t columns) {
  std::string text = "{'descr': '<f8', 'fortran_order': False, 'shape': (" + std::to_string(rows) + ", " +
                     std::to_string(columns) + "), }";
  text.resize(117, ' ');
  return std::string("\x93NUMPY\x01\x00\x76\x00", 10) + text + "\n" + std::string(rows * columns * 8, '\0');
}

TEST_F(TExperimentRefusals, OptionsThatDoNotGoTogether) {
  MakeFile("a.run", "q Q0 d 1 1 a\n");
  for (const auto& [arguments, message] : std::vector<std::pair<QStringList, std::string>>{
           {options + QStringList{"--qrels", "q"}, "'--qrels' belongs to '--measure'."},
           {{"--measure", "a.run", "--out", "o"}, "'--qrels' is missing."},
           {{"photos", "--truth", "tags", "--out="}, "The value of '--out' is empty."},
           {options + QStringList{"--features="}, "The value of '--features' is empty."},
           {{"photos", "--truth", "--quiet", "--out", "o"},
            "'--quiet' behind '--truth' looks like an option; as a name it is './--quiet'."},
           {options + QStringList{"--plugins", "p", "--plugins", "-q"},
            "'-q' behind '--plugins' looks like an option; as a name it is './-q'."}}) {
    const TOutcome outcome = Run(arguments);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.errors, "tessimar-experiment: " + message + " See tessimar-experiment --help.\n");
  }
  const TOutcome outcome = Run({"--classes", "none", "--out", "o"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.errors, "tessimar-experiment: Collection 'none' is no directory\n");
}

TEST_F(TExperimentRefusals, FilesThatAreNotOfAnExperimentAreNotTouched) {
  MakeFile("o/runs/mine.txt", "precious");
  const TOutcome outcome = Run(options);
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.errors,
            "tessimar-experiment: Directory 'o/' holds 'runs/mine.txt', which is not of an experiment\n");
  EXPECT_EQ(FileBytes("o/runs/mine.txt"), "precious");
  // What a program that was killed left there.
  filesystem::rename("o/runs/mine.txt", "o/runs/.tessimar-17-1");
  EXPECT_EQ(Run(options).status, 0);
}

TEST_F(TExperimentRefusals, FilesInThePlacesOfDirectories) {
  MakeFile("o/features", "");
  ExpectFailure(Run(options), "Directory 'o/features' cannot be written");
  filesystem::remove("o/features");
  MakeFile("o/parts", "");
  ExpectFailure(Run(options), "Directory 'o/parts' cannot be written");
  filesystem::remove("o/parts");
  MakeFile("o/runs", "");
  ExpectFailure(Run(options), "Directory 'o/runs' cannot be written");
  filesystem::remove("o/runs");
  EXPECT_EQ(Run(options).status, 0);
}

TEST_F(TExperimentRefusals, DirectoriesInThePlacesOfFiles) {
  for (const std::string name :
       {"features/hsv.npy.unfinished", "features/hsv.npy", "features/pictures.txt", "topics.tsv"}) {
    const std::string named = name == "topics.tsv" || name.ends_with(".unfinished") ? name : name + ".unfinished";
    MakeFile("o/" + name + "/inside", "");
    ExpectFailure(Run(options), "File 'o/" + named + "' cannot be written");
    filesystem::remove_all("o");
  }
  EXPECT_EQ(Run(options).status, 0);
}

TEST_F(TExperimentRefusals, AFullDiskWhileFeaturesAndRankingsAreWritten) {
  ASSERT_EQ(RunStep("extract").status, 0);
  filesystem::create_directory("o/parts");
  filesystem::create_symlink("/dev/full", "o/parts/rank.1-of-1.bin.new");
  ExpectFailure(RunStep("rank"), "File 'o/parts/rank.1-of-1.bin' cannot be written");
  MakePicture("photos/im1.jpg", 8, 8, [](int, int) { return kBlue; });
  for (const std::string name : {"pictures.txt", "digest.txt"}) {
    const std::string unfinished = "o/features/" + name + ".unfinished";
    filesystem::remove(unfinished);
    filesystem::create_symlink("/dev/full", unfinished);
    ExpectFailure(RunStep("extract"), "File '" + unfinished + "' cannot be written");
    filesystem::remove(unfinished);
  }
}

TEST_F(TExperimentRefusals, DamagedFeaturesAreRefusedByTheNextStepAndMadeAnewByAWholeRun) {
  ASSERT_EQ(Run(options).status, 0);
  const std::string pictures = FileBytes("o/features/pictures.txt");
  const std::string digest = FileBytes("o/features/digest.txt");
  const std::string numbers = FileBytes("o/features/hsv.npy");
  const std::string topics = FileBytes("o/topics.tsv");
  const std::string lacks = "lacks the feature 'hsv'; run the step extract again";
  struct TAccident {
    std::string file;
    std::string bytes;
    std::string message;
  };
  for (const TAccident& each :
       std::vector<TAccident>{{"pictures.txt", "im1.jpg\n", "is missing; run the step extract for it"},
                              {"pictures.txt", Replaced(pictures, "\t\n", "\tdamaged\n"),
                               "is not of this collection; run the step extract again"},
                              {"pictures.txt", pictures.substr(0, pictures.find('\n') + 1),
                               "is not of this collection; run the step extract again"},
                              {"digest.txt", Replaced(digest, "hsv\t", "hsv\tx"),
                               "has the feature 'hsv' of another version; run the step extract again"},
                              {"digest.txt", Replaced(digest, "hsv\t", "gone\t"), lacks},
                              {"hsv.npy", "", lacks},
                              {"hsv.npy", "\x93NUMPY", lacks},
                              {"hsv.npy", numbers.substr(0, numbers.size() - 1), lacks},
                              {"hsv.npy", Replaced(numbers, "'<f8'", "'>f8'"), lacks},
                              {"hsv.npy", Replaced(numbers, "), }", "),} "), lacks},
                              {"hsv.npy", NumPyTable(5, 2), lacks}}) {
    MakeFile("o/features/" + each.file, each.bytes);
    ExpectFailure(RunStep("rank"), "The part 1 of 1 of the features in 'o/features' " + each.message);
    EXPECT_EQ(Run(options).status, 0) << each.file;
    EXPECT_EQ(FileBytes("o/features/pictures.txt"), pictures);
    EXPECT_EQ(FileBytes("o/features/digest.txt"), digest);
    EXPECT_EQ(FileBytes("o/features/hsv.npy"), numbers);
    EXPECT_EQ(FileBytes("o/topics.tsv"), topics);
  }
}

TEST_F(TExperimentRefusals, FeaturesOfAPictureThatHasAnotherNameNow) {
  ASSERT_EQ(RunStep("extract").status, 0);
  filesystem::rename("photos/im4.jpg", "photos/im5.jpg");
  ExpectFailure(
      RunStep("rank"),
      "The part 1 of 1 of the features in 'o/features' is not of this collection; run the step extract again");
}

TEST_F(TExperimentRefusals, AnUnreadableFirstPictureLeavesTheOthersInTheirRows) {
  ASSERT_EQ(RunStep("extract").status, 0);
  const std::string intact = FileBytes("o/features/hsv.npy");
  filesystem::remove_all("o");
  MakeFile("photos/im1.jpg", "no picture");
  ASSERT_EQ(RunStep("extract").status, 0);
  const std::string damaged = FileBytes("o/features/hsv.npy");
  ASSERT_EQ(damaged.size(), intact.size());
  const std::size_t header = 128;
  const std::size_t row = (intact.size() - header) / 4;
  EXPECT_EQ(damaged.substr(0, header), intact.substr(0, header));
  EXPECT_EQ(damaged.substr(header + row), intact.substr(header + row));
  for (std::size_t place = header; place < header + row; place += sizeof(double)) {
    double number = 0.0;
    std::memcpy(&number, damaged.data() + place, sizeof number);
    EXPECT_TRUE(std::isnan(number)) << place;
  }
}

TEST_F(TExperimentRefusals, PartsWithVectorsOfDifferentLengths) {
  ASSERT_EQ(RunStep("extract", "1/2").status, 0);
  ASSERT_EQ(RunStep("extract", "2/2").status, 0);
  MakeFile("o/features/hsv.2-of-2.npy", NumPyTable(2, 3));
  ExpectFailure(RunStep("rank"),
                "The part 2 of 2 of the features in 'o/features' has vectors of another length for the feature 'hsv'");
}

TEST_F(TExperimentRefusals, DamagedRankings) {
  ASSERT_EQ(Run(options).status, 0);
  const std::string file = "o/parts/rank.1-of-1.bin";
  const std::string rankings = FileBytes(file);
  for (const std::string& bytes : {std::string("x"), rankings.substr(0, rankings.size() - 1), rankings + "x",
                                   Replaced(rankings, "rankings 1\n", "rankings 1\nunknown\tline\n"),
                                   Replaced(rankings, "rankings 1", "rankings 2")}) {
    MakeFile(file, bytes);
    ExpectFailure(RunStep("report"), "The part 1 of 1 of the rankings ('" + file + "') is damaged");
  }
}

TEST_F(TExperimentRefusals, AReportWithoutTopics) {
  ASSERT_EQ(Run(options).status, 0);
  MakeFile("tags/red.txt", "1\n");
  const TOutcome outcome = RunStep("report");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_NE(outcome.errors.find("There is no topic"), std::string::npos) << outcome.errors;
}

TEST_F(TExperimentRefusals, PluginsWhoseVectorsHaveNoLengthOrChangeIt) {
  for (const std::string name : {"growing", "length-zero"}) {
    MakeFile("plugins/Feature" + name + ".so", FileBytes(PLUGIN_FIXTURES "/" + name));
    const TOutcome outcome = Run({"photos", "--truth", "tags", "--plugins", "plugins", "--features", "hsv,fixture",
                                  "--out", QString::fromStdString(name)});
    EXPECT_EQ(outcome.status, 3) << outcome.errors;
    filesystem::remove_all("plugins");
  }
  EXPECT_EQ(FileBytes("growing/damage.tsv").find("im1.jpg"), std::string::npos) << "the first says how long they are";
  EXPECT_NE(FileBytes("growing/damage.tsv").find("im2.jpg\t0\tfeature 'fixture' has "), std::string::npos)
      << FileBytes("growing/damage.tsv");
  for (const std::string picture : {"im1.jpg", "im4.jpg"}) {
    EXPECT_NE(FileBytes("length-zero/damage.tsv").find(picture + "\t0\tfeature 'fixture' has an invalid length\n"),
              std::string::npos)
        << FileBytes("length-zero/damage.tsv");
  }
}

TEST_F(TExperimentRefusals, AFeatureWithoutAnyVectorPutsAllPicturesAtInfinity) {
  MakeFile("plugins/FeatureZero.so", FileBytes(PLUGIN_FIXTURES "/length-zero"));
  MakeFile("tags/blue.txt", "3\n4\n");
  EXPECT_EQ(
      Run({"photos", "--truth", "tags", "--plugins", "plugins", "--features", "hsv,hsv+fixture", "--out", "o"}).status,
      3);
  // By "hsv" the others are nearer the more blue they have; where all are as far away they stand as in the collection.
  EXPECT_NE(FileBytes("o/runs/hsv.run").find("blue:im4.jpg Q0 im3.jpg 1 3 hsv\n"), std::string::npos);
  EXPECT_NE(FileBytes("o/runs/hsv+fixture.run").find("blue:im4.jpg Q0 im1.jpg 1 3 hsv+fixture\n"), std::string::npos);
}

TEST_F(TExperimentRefusals, FeaturesThatAreCalledLikeOtherThings) {
  for (const std::string name : {"name-blank", "name-mark", "name-percent"}) {
    MakeFile("plugins/Feature" + name + ".so", FileBytes(PLUGIN_FIXTURES "/" + name));
  }
  const QStringList arguments = {
      "photos", "--truth", "tags", "--plugins", "plugins", "--features", "set 1,hsv,x-of-9,a%b", "--out", "o"};
  EXPECT_EQ(Run(arguments), (TOutcome{0, Run(arguments).output, ""}));
  for (const std::string name : {"set 1", "hsv", "x-of-9", "a%b"}) {
    EXPECT_NE(FileBytes("o/report.html").find("<text>" + name + "</text>"), std::string::npos) << name;
    EXPECT_TRUE(filesystem::exists("o/features/" + name + ".npy")) << name;
  }
}

TEST_F(TExperimentRefusals, AFileOfAPluginIsAPartOfIt) {
  MakeFile("plugins/FeaturePlain.so", FileBytes(PLUGIN_FIXTURES "/plain"));
  MakeFile("plugins/fixture.txt", "layers 2");
  MakeFile("plugins/fixtures.txt", "of another feature");
  const QStringList arguments = {"photos",     "--truth", "tags",  "--plugins", "plugins",
                                 "--features", "fixture", "--out", "o"};
  ASSERT_EQ(Run(arguments).status, 0);
  // printf %s 'layers 2' | sha256sum
  EXPECT_NE(FileBytes("o/record.json")
                .find("\"fixture.txt\": \"1473b0df748ffc52f3d6653ed3ae7af25eac84ea55850a5ee3c0ec03622c0cfc\""),
            std::string::npos);
  MakeFile("plugins/fixtures.txt", "changed");
  EXPECT_EQ(Run(arguments + QStringList{"--step", "rank"}).status, 0);
  MakeFile("plugins/fixture.txt", "layers 3");
  ExpectFailure(Run(arguments + QStringList{"--step", "rank"}),
                "The part 1 of 1 of the features in 'o/features' has the feature 'fixture' of another version; run the "
                "step extract again");
  EXPECT_EQ(Run(arguments).status, 0) << "a whole start computes it anew";
}

TEST_F(TExperimentRefusals, ArgumentsThatAreNotUtf8) {
  const TOutcome outcome = TProgramTest::Run(
      "sh", {"-c", "exec \"$0\" photos --truth tags --out \"$(printf 'o\\377')\"", EXPERIMENT_PROGRAM});
  EXPECT_EQ(outcome, (TOutcome{2, "",
                               "tessimar-experiment: The argument 'o\xff' is not UTF-8. See tessimar-experiment "
                               "--help.\n"}));
  EXPECT_FALSE(filesystem::exists("o\xef\xbf\xbd"));
}

TEST_F(TExperimentRefusals, RunsWithoutAJudgedTopic) {
  MakeFile("a.run", "\nq1 Q0 d1 1 2 a\n  \t\nq1 Q0 d2 2 1 b\n");
  MakeFile("other.run", "q7 Q0 d1 1 2 other\n");
  MakeFile("qrels", "\nq1 0 d2 1\n \n");
  MakeFile("none", "q1 0 d1 0\nq1 0 d2 -1\n");
  ExpectFailure(Run({"--measure", "a.run", "--qrels", "none", "--out", "m"}),
                "There is no topic: 'none' names no relevant document");
  TOutcome outcome = Run({"--measure", "other.run", "--qrels", "qrels", "--out", "m"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.errors,
            "tessimar-experiment: Run 'other.run' holds no line of the form qid Q0 docno rank score tag for a judged "
            "topic\n");
  EXPECT_FALSE(filesystem::exists("m/summary.tsv"));
  outcome = Run({"--measure", "a.run", "--qrels", "qrels", "--out", "m"});
  EXPECT_EQ(outcome.status, 3);
  EXPECT_EQ(FileBytes("m/damage.tsv"), "file\tline\treason\na.run\t4\tthe run is called 'b' here, and 'a' before\n");
  // Blank lines are no fault; the relevant document is at rank 2.
  EXPECT_NE(FileBytes("m/topics.tsv").find("a\tq1\tq1\t\t1\t0.50000000\t"), std::string::npos)
      << FileBytes("m/topics.tsv");
}

TEST_F(TExperimentRefusals, NamesWithBackslashesAndControlCharactersStandInTheRecordAndTheReport) {
  const std::string name = "a\"b\\c\x01\n.run";
  MakeFile(name, "q1 Q0 d1 1 1 x\x7f\xc2\x85\xef\xbf\xbfy\n");
  MakeFile("qrels", "q1 0 d1 1\n");
  ASSERT_EQ(Run({"--measure", QString::fromStdString(name), "--qrels", "qrels", "--out", "m"}).status, 0);
  const QJsonDocument record = QJsonDocument::fromJson(QByteArray::fromStdString(FileBytes("m/record.json")));
  EXPECT_EQ(record["options"]["measure"][0].toString().toStdString(), name) << FileBytes("m/record.json");
  // What HTML forbids is shown by its picture, or else as unknown.
  const std::string html = FileBytes("m/report.html");
  EXPECT_NE(html.find("x\xe2\x90\xa1\xef\xbf\xbd\xef\xbf\xbdy"), std::string::npos);
  EXPECT_EQ(html.find('\x7f'), std::string::npos);
}

TEST_F(TExperimentRefusals, AClosedStandardOutput) {
  const TOutcome outcome = TProgramTest::Run(
      "sh", {"-c", "exec \"$0\" \"$@\" >&-", EXPERIMENT_PROGRAM, "photos", "--truth", "tags", "--out", "o"});
  ExpectFailure(outcome, "Standard output cannot be used");
}

TEST_F(TExperimentRefusals, AStandardOutputOnAFullDisk) {
  const QStringList shell = {"-c", "exec \"$0\" \"$@\" >/dev/full", EXPERIMENT_PROGRAM};
  ExpectFailure(TProgramTest::Run("sh", shell + QStringList{"photos", "--truth", "tags", "--out", "o"}),
                "Standard output cannot be written");
  EXPECT_TRUE(filesystem::exists("o/summary.tsv")) << "the results are there all the same";
  EXPECT_EQ(TProgramTest::Run("sh", shell + QStringList{"--version"}),
            (TOutcome{2, "", "tessimar-experiment: Standard output cannot be written\n"}));
}

TEST_F(TExperimentRefusals, ALimitOfFileSizesIsAFailureAndNotTheEnd) {
  // A block has 512 bytes; the head of a file of features alone is larger than that with its first vector.
  const TOutcome outcome = TProgramTest::Run("sh", {"-c", "ulimit -c 0; ulimit -f 1; exec \"$0\" \"$@\"",
                                                    EXPERIMENT_PROGRAM, "photos", "--truth", "tags", "--out", "o"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_TRUE(outcome.errors.ends_with("cannot be written\n")) << outcome.errors;
}

/// The larger collection of the samples, which takes long enough to be interrupted.
class TExperimentInterrupted : public TExperimentRefusals {
 protected:
  TExperimentInterrupted() {
    filesystem::create_directory("samples");
    filesystem::current_path("samples");
    EXPECT_EQ(QProcess::execute(LAY_OUT_SAMPLES, {"."}), 0);
  }

  /// Sends Ctrl-C as soon as the program asks to be told of it.
  TOutcome Interrupt(const QStringList& arguments) {
    Start(EXPERIMENT_PROGRAM, arguments);
    const std::string status = "/proc/" + std::to_string(process.processId()) + "/status";
    bool isCaught = false;
    while (!isCaught && process.state() != QProcess::NotRunning) {
      std::ostringstream text;
      text << std::ifstream(status).rdbuf();
      const std::size_t caught = text.str().find("SigCgt:");
      isCaught = caught != std::string::npos &&
                 (std::stoull(text.str().substr(caught + 7), nullptr, 16) >> (SIGINT - 1) & 1) != 0;
      process.waitForFinished(1);
    }
    kill(static_cast<pid_t>(process.processId()), SIGINT);
    return Finish();
  }
};

TEST_F(TExperimentInterrupted, EachStepLeavesNoHalfResult) {
  const QStringList whole = {"photos", "--truth", "tags", "--features", "hsv", "--out", "o"};
  ASSERT_EQ(Run(whole + QStringList{"--step", "extract"}).status, 0);
  EXPECT_EQ(Interrupt(whole + QStringList{"--step", "rank"}).status, 130);
  EXPECT_FALSE(filesystem::exists("o/parts/rank.1-of-1.bin"));
  ASSERT_EQ(Run(whole + QStringList{"--step", "rank"}).status, 0);
  EXPECT_EQ(Interrupt(whole + QStringList{"--step", "report"}).status, 130);
  EXPECT_EQ(Interrupt(whole + QStringList{"--step", "report", "--concepts", "nearest"}).status, 130);
  EXPECT_FALSE(filesystem::exists("o/summary.tsv"));
}

TEST_F(TExperimentInterrupted, ATerminalSeesTheTimeThatIsLeftUntilCtrlC) {
  // The first picture takes longer than a count that is shown stays.
  filesystem::remove("photos/im1.jpg");
  MakePicture("photos/im1.jpg", 3000, 3000, [](int, int) { return kRed; });
  const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
  ASSERT_GE(terminal, 0);
  ASSERT_EQ(grantpt(terminal), 0);
  ASSERT_EQ(unlockpt(terminal), 0);
  process.setStandardErrorFile(ptsname(terminal));
  Start(EXPERIMENT_PROGRAM, {"photos", "--truth", "tags", "--concepts", "nearest,svm", "--out", "o"});
  ASSERT_TRUE(process.waitForStarted());
  std::string seen;
  while (seen.find("\rConcepts: 0 of ") == std::string::npos) {
    std::string bytes(1000, ' ');
    const ssize_t count = read(terminal, bytes.data(), bytes.size());
    ASSERT_GT(count, 0) << seen;
    seen.append(bytes, 0, static_cast<std::size_t>(count));
  }
  kill(static_cast<pid_t>(process.processId()), SIGINT);
  EXPECT_EQ(Finish().status, 130);
  close(terminal);
  EXPECT_FALSE(filesystem::exists("o/summary.tsv"));
  EXPECT_TRUE(QString::fromStdString(seen).contains(
      QRegularExpression("\r(Pictures|Segments): [1-9][0-9]* of [0-9]+, [0-9]+ (s|min) left\x1b\\[K")))
      << seen;
}

}  // namespace
