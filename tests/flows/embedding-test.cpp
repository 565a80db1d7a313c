// The plug-in "embedding" with small networks. tests/embedding/make-networks.py made them and the expected numbers.

#include <cmath>
#include <filesystem>
#include <numeric>
#include <sstream>

#include <sys/stat.h>

#include <QProcess>
#include <gtest/gtest.h>

#include "base/format-string.h"
#include "features/feature-list.h"
#include "images/feature-vector.h"
#include "images/image-rgb.h"
#include "tests/support/scratch-directory.h"

namespace filesystem = std::filesystem;

namespace {

using TNumbers = std::vector<double>;

const filesystem::path kNetworks = EMBEDDING_NETWORKS;

/// One number a line.
TNumbers Expected(const std::string& name) {
  std::istringstream lines(FileBytes(kNetworks / (name + ".txt")));
  TNumbers numbers;
  for (double number = 0.0; lines >> number;) {
    numbers.push_back(number);
  }
  EXPECT_FALSE(numbers.empty()) << name;
  return numbers;
}

void FillPicture(TImageRGB& picture, int width, int height) {
  picture.SetSize(width, height, true);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const auto value = static_cast<unsigned char>(29 * x + 53 * y + 17 * x * y);
      picture.SetPixel(x, y, value, static_cast<unsigned char>(value + 71), static_cast<unsigned char>(value + 142));
    }
  }
}

void ExpectNear(const TNumbers& numbers, const TNumbers& expected, double tolerance) {
  ASSERT_EQ(numbers.size(), expected.size());
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    EXPECT_NEAR(numbers[i], expected[i], tolerance) << i;
  }
}

class TEmbedding : public testing::Test {
 protected:
  /// Lays the plug-in, a network and its text into a new directory.
  std::string LayOut(const std::string& network, const std::string& text) {
    std::string name = FormatString("d%d", ++directories);
    filesystem::create_directory(name);
    filesystem::copy_file(EMBEDDING_PLUGIN, name + "/FeatureEmbedding.so");
    if (!network.empty()) {
      filesystem::copy_file(kNetworks / (network + ".onnx"), name + "/embedding.onnx");
    }
    MakeFile(name + "/embedding.txt", text);
    return name;
  }

  TNumbers Vector(const std::string& directory, int width, int height) {
    const TFeatureList list({directory});
    EXPECT_EQ(list.GetRefusals(), std::vector<std::string>());
    const TFeature* feature = list.Find("embedding");
    TImageRGB picture;
    FillPicture(picture, width, height);
    TFeatureVector vector;
    if (feature == nullptr || !feature->ProcessColor(picture, vector)) {
      ADD_FAILURE() << "no embedding in " << directory;
      return {};
    }
    return {vector.GetData(), vector.GetData() + vector.GetLength()};
  }

  /// Why the plug-in of that directory was left out.
  static std::string Refusal(const std::string& directory) {
    const TFeatureList list({directory});
    EXPECT_EQ(list.GetFeatures().size(), 2u);
    const std::string start = "Plug-in '" + directory + "/FeatureEmbedding.so' was left out: ";
    if (list.GetRefusals().size() != 1 || !list.GetRefusals().front().starts_with(start)) {
      ADD_FAILURE() << directory;
      return {};
    }
    return list.GetRefusals().front().substr(start.size());
  }

  const TScratchDirectory scratch;
  int directories = 0;
};

TEST_F(TEmbedding, GivesTheOutputOfTheNetworkScaledToASumOfOne) {
  const std::string text = "size 8 8\nshorter 8 # nothing is resized\r\n\n";
  const TNumbers expected = Expected("small");
  EXPECT_NEAR(std::transform_reduce(expected.begin(), expected.end(), 0.0, std::plus<>(),
                                    [](double number) { return std::abs(number); }),
              1.0, 1e-6);
  ExpectNear(Vector(LayOut("small", text), 8, 8), expected, 1e-6);
  ExpectNear(Vector(LayOut("dynamic-batch", text), 8, 8), expected, 1e-6);
  ExpectNear(Vector(LayOut("two-outputs", text + "output average"), 8, 8), Expected("average"), 1e-6);
  ExpectNear(Vector(LayOut("two-outputs", text + "output largest"), 8, 8), Expected("largest"), 1e-6);
  EXPECT_EQ(Vector(LayOut("two-outputs", text + "output rectify"), 8, 8).size(), 256u) << "a node";
  EXPECT_EQ(Vector(LayOut("small", text), 0, 0), TNumbers(5, 0.0));
}

TEST_F(TEmbedding, PreparesPicturesAsTheTextSays) {
  ExpectNear(Vector(LayOut("input", "size 8 8\nshorter 8"), 8, 8), Expected("input"), 1e-7);
  const std::string raw = "size 8 8\nmean 0 0 0\ndeviation 1 1 1\nscale 1\n";
  const TNumbers rgb = Vector(LayOut("input", raw + "shorter 8"), 8, 8);
  const TNumbers bgr = Vector(LayOut("input", raw + "shorter 8\nchannels bgr"), 8, 8);
  // The first red byte of the picture is 0, the first blue one 142.
  EXPECT_EQ(rgb.front(), 0.0);
  EXPECT_GT(bgr.front(), 0.0);
  EXPECT_TRUE(std::equal(rgb.begin(), rgb.begin() + 64, bgr.begin() + 128));
  EXPECT_TRUE(std::equal(rgb.begin() + 128, rgb.end(), bgr.begin()));
  // Mean and deviation stand in the order of the channels: (byte - 10) / 2, of which the first is blue.
  const TNumbers shifted =
      Vector(LayOut("input", "size 8 8\nshorter 8\nscale 1\nchannels bgr\nmean 10 0 0\ndeviation 2 1 1"), 8, 8);
  EXPECT_NEAR(shifted[0] / shifted[128 + 1], (142.0 - 10.0) / 2.0 / 29.0, 1e-6);

  // Another library resized these; both round to bytes, on their own ways to the same sum.
  struct TCase {
    const char* expected;
    const char* text;
    int width;
    int height;
  };
  for (const TCase& each : {TCase{"crop-37x23", "shorter 9", 37, 23}, TCase{"crop-5x6", "fit crop\nshorter 9", 5, 6},
                            TCase{"resize-50x7", "fit resize", 50, 7}}) {
    SCOPED_TRACE(each.expected);
    const TNumbers bytes = Expected(each.expected);
    const double sum = std::accumulate(bytes.begin(), bytes.end(), 0.0);
    TNumbers numbers = Vector(LayOut("input", raw + each.text), each.width, each.height);
    for (double& number : numbers) {
      number *= sum;
    }
    ExpectNear(numbers, bytes, 1.01);
  }
  EXPECT_EQ(Vector(LayOut("small", "size 8 8"), 1, 20000).size(), 5u) << "a resized picture of 9 x 180000";
}

TEST_F(TEmbedding, AMissingOrBadNetworkIsRefusedInOneLine) {
  const std::string text = "size 8 8";
  const auto expectRefusal = [](const std::string& directory, const std::string& start) {
    const std::string refusal = Refusal(directory);
    EXPECT_TRUE(refusal.starts_with(start)) << refusal;
  };
  const std::string missing = LayOut("", text);
  expectRefusal(missing, "embedding.onnx cannot be read");
  std::string directory = LayOut("", text);
  filesystem::create_directory(directory + "/embedding.onnx");
  expectRefusal(directory, "embedding.onnx cannot be read");
  directory = LayOut("small", text);
  filesystem::remove(directory + "/embedding.txt");
  expectRefusal(directory, "embedding.txt cannot be read");
  directory = LayOut("small", text);
  filesystem::remove(directory + "/embedding.txt");
  ASSERT_EQ(mkfifo((directory + "/embedding.txt").c_str(), 0600), 0);
  expectRefusal(directory, "embedding.txt cannot be read");
  expectRefusal(LayOut("small", std::string(70000, ' ')), "embedding.txt is larger than a few lines can be");
  expectRefusal(LayOut("small", "size 4096 4096"), "the network in embedding.onnx does not run on one picture of 4096");
  expectRefusal(LayOut("small", text + "\noutput"), "embedding.txt, line 2");

  const std::string whole = FileBytes(kNetworks / "small.onnx");
  for (const std::size_t size : {std::size_t{0}, std::size_t{1}, whole.size() / 2, whole.size() - 1}) {
    directory = LayOut("", text);
    MakeFile(directory + "/embedding.onnx", whole.substr(0, size));
    expectRefusal(directory, "embedding.onnx is no network that can be read: ");
  }
  directory = LayOut("", text);
  MakeFile(directory + "/embedding.onnx", "a text");
  expectRefusal(directory, "embedding.onnx is no network that can be read: ");
  directory = LayOut("small", text);
  filesystem::resize_file(directory + "/embedding.onnx", std::uintmax_t{1} << 31);
  expectRefusal(directory, "embedding.onnx has 2 GiB or more");

  expectRefusal(LayOut("two-outputs", text),
                "the network in embedding.onnx has several outputs (average, largest); embedding.txt must name one, as "
                "in: output average");
  expectRefusal(LayOut("small", text + "\noutput nothing"),
                "the network in embedding.onnx has no output or node called 'nothing'");
  expectRefusal(LayOut("one-channel", text),
                "the network in embedding.onnx does not run on one picture of 8 x 8 with 3 channels; ");
  expectRefusal(LayOut("small", "size 16 16"),
                "the network in embedding.onnx does not run on one picture of 16 x 16 with 3 channels; ");
  expectRefusal(LayOut("not-finite", text + "\nscale 1000"),
                "the network in embedding.onnx gives values that are not finite");
}

TEST_F(TEmbedding, AnAnswerThatIsNotFiniteBecomesZeroes) {
  // The gray picture of the start is the mean, so all is 0 but the bias.
  const std::string directory = LayOut("not-finite", "size 8 8\nscale 1\nmean 128 128 128\ndeviation 0.1 0.1 0.1");
  EXPECT_EQ(Vector(directory, 8, 8), TNumbers(256, 0.0));
}

TEST_F(TEmbedding, ATextThatIsNotUnderstoodIsRefusedWithItsLine) {
  for (const auto& [text, refusal] :
       {std::pair("size 8 8\n\nmean 0.5 abc 0.5", "embedding.txt, line 3: 'abc' is no number"),
        std::pair("size 8 8x", "embedding.txt, line 1: '8x' is no number"),
        std::pair("size 8", "embedding.txt, line 1: 'size' takes 2 values"),
        std::pair("size 0 8", "embedding.txt, line 1: '0' is no side from 1 to 4096"),
        std::pair("size 8 99999999999", "embedding.txt, line 1: '99999999999' is no number"),
        std::pair("deviation 1 0 1", "embedding.txt, line 1: '0' is not above 0"),
        std::pair("scale nan", "embedding.txt, line 1: 'nan' is no number"),
        std::pair("scale 0,5", "embedding.txt, line 1: '0,5' is no number"),
        std::pair("channels rbg", "embedding.txt, line 1: 'rbg' is neither rgb nor bgr"),
        std::pair("fit center", "embedding.txt, line 1: 'center' is neither crop nor resize"),
        std::pair("# a network\nsigma 1 1 1", "embedding.txt, line 2: 'sigma' is not known"),
        std::pair("size 8 8\nsize 8 8", "embedding.txt, line 2: 'size' stands there twice"),
        std::pair("size 8 8\nshorter 7", "embedding.txt: 'shorter 7' is less than the input's 8")}) {
    EXPECT_EQ(Refusal(LayOut("small", text)), refusal);
  }
}

TEST_F(TEmbedding, TheDoctorFindsItSoundAndTwoRunsGiveTheSameBytes) {
  const std::string directory = LayOut("small", "size 8 8");
  QProcess process;
  const auto run = [&process](const QStringList& arguments, const char* input) {
    process.start(BATCH_PROGRAM, arguments);
    process.write(input);
    process.closeWriteChannel();
    EXPECT_TRUE(process.waitForFinished(120000));
    EXPECT_EQ(process.readAllStandardError(), "") << "libraries keep quiet";
    return process.exitCode();
  };
  EXPECT_EQ(run({"--check-plugin", QString::fromStdString(directory) + "/FeatureEmbedding.so"}, ""), 0)
      << process.readAllStandardOutput().toStdString();
  TImageRGB picture;
  FillPicture(picture, 640, 480);
  filesystem::create_directory("photos");
  picture.SaveToFile("photos/im1.jpg");
  std::string first;
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(run({"--plugins", QString::fromStdString(directory)},
                  "db = loaddatabase(\"photos\")\nupdatefeature(db, \"embedding\")\nsavefeature(db, \"embedding\")\n"),
              0)
        << process.readAllStandardOutput().toStdString();
    std::string bytes;
    for (const auto& file : filesystem::recursive_directory_iterator("FeatureStorage")) {
      bytes += file.is_regular_file() ? FileBytes(file.path()) : "";
    }
    EXPECT_GE(bytes.size(), 5 * sizeof(double));
    EXPECT_TRUE(first.empty() || bytes == first);
    first = bytes;
    filesystem::remove_all("FeatureStorage");
  }
  // Whoever has no network reads one line, and the rest of the program runs.
  filesystem::remove(directory + "/embedding.onnx");
  EXPECT_EQ(run({"--plugins", QString::fromStdString(directory)}, "reset()\n"), 0);
  EXPECT_EQ(process.readAllStandardOutput(),
            "  Plug-in 'd1/FeatureEmbedding.so' was left out: embedding.onnx cannot be "
            "read; it belongs beside the library\n> reset()\n");
  EXPECT_EQ(run({"--check-plugin", QString::fromStdString(directory) + "/FeatureEmbedding.so"}, ""), 1);
}

}  // namespace
