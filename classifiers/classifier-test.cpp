// The classifiers as values: one file, since all of them share the helpers that store, damage and restore them.
#include "classifiers/classifier.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <doublefann.h>
#include <gtest/gtest.h>
#include <svm.h>

#include "classifiers/classifier-list.h"
#include "classifiers/classifier-nearest-neighbor.h"
#include "classifiers/classifier-neural-network.h"
#include "classifiers/classifier-svm.h"
#include "tests/support/scratch-directory.h"

namespace {

using TValues = std::vector<double>;
using TFile = std::unique_ptr<std::FILE, decltype(&std::fclose)>;

TFile BinaryFile() {
  return {std::tmpfile(), &std::fclose};
}

std::unique_ptr<TFeatureVector> Vector(const TValues& values) {
  auto vector = std::make_unique<TFeatureVector>();
  vector->SetLength(static_cast<std::uint32_t>(values.size()));
  std::copy(values.begin(), values.end(), vector->GetData());
  return vector;
}

TValues ValuesOf(const TFeatureVector& vector) {
  return {vector.GetData(), vector.GetData() + vector.GetLength()};
}

/// Gives the classifier copies of its own.
void Teach(TClassifier& classifier, const std::vector<TValues>& positives, const std::vector<TValues>& negatives) {
  classifier.SetCopyExamples(true);
  for (const TValues& values : positives) {
    classifier.AddPositiveExample(Vector(values).get());
  }
  for (const TValues& values : negatives) {
    classifier.AddNegativeExample(Vector(values).get());
  }
}

double Answer(const TClassifier& classifier, const TValues& values) {
  return classifier.Classify(*Vector(values));
}

/// The answers on a grid of pairs, by their bits. The grid keeps off the boundaries of symmetric examples: the library
/// that stores support vectors rounds them to eight digits.
std::vector<std::uint64_t> AnswerBits(const TClassifier& classifier) {
  std::vector<std::uint64_t> bits;
  for (int x = -3; x <= 9; ++x) {
    for (int y = -3; y <= 9; ++y) {
      bits.push_back(std::bit_cast<std::uint64_t>(Answer(classifier, {x * 0.5 + 0.13, y * 0.5 + 0.07})));
    }
  }
  return bits;
}

std::string BytesOf(std::uint64_t number, int size) {
  return size == 0 ? "" : static_cast<char>(number & 0xFF) + BytesOf(number >> 8, size - 1);
}

std::string Int(std::int32_t value) {
  return BytesOf(static_cast<std::uint32_t>(value), 4);
}

/// A text behind its length.
std::string Counted(const std::string& text) {
  return Int(static_cast<std::int32_t>(text.size())) + text;
}

std::string Doubles(const TValues& values) {
  std::string bytes;
  for (const double value : values) {
    bytes += BytesOf(std::bit_cast<std::uint64_t>(value), 8);
  }
  return bytes;
}

/// What Save writes, here into a file that something else has written to before.
std::string Stored(const TClassifier& classifier) {
  const TFile file = BinaryFile();
  std::fputs("before", file.get());
  EXPECT_TRUE(classifier.Save(file.get()));
  const long end = std::ftell(file.get());
  std::string bytes(static_cast<std::size_t>(end - 6), '\0');
  std::fseek(file.get(), 6, SEEK_SET);
  EXPECT_EQ(std::fread(bytes.data(), 1, bytes.size(), file.get()), bytes.size());
  return bytes;
}

/// Loads the bytes from the middle of a file. What is read up to is checked too.
bool Restore(TClassifier& classifier, const std::string& bytes, const std::string& behind = "") {
  const TFile file = BinaryFile();
  std::fputs("before", file.get());
  std::fwrite(bytes.data(), 1, bytes.size(), file.get());
  std::fwrite(behind.data(), 1, behind.size(), file.get());
  std::fseek(file.get(), 6, SEEK_SET);
  const bool loaded = classifier.Load(file.get());
  EXPECT_TRUE(!loaded || std::ftell(file.get()) == static_cast<long>(6 + bytes.size()));
  return loaded;
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  const std::size_t place = text.find(from);
  EXPECT_NE(place, std::string::npos) << from;
  return place == std::string::npos ? text : text.replace(place, from.size(), to);
}

std::ptrdiff_t CountFiles() {
  return std::distance(std::filesystem::directory_iterator("."), std::filesystem::directory_iterator());
}

/// A stored classifier in parts: `head`, the length of `text`, and that text. Each edit, "from > to", spoils the text.
void ExpectToRefuseEdits(TClassifier& classifier, const std::string& head, const std::string& text,
                         const std::vector<std::string>& edits) {
  for (const std::string& edit : edits) {
    const std::size_t mark = edit.find(" > ");
    EXPECT_FALSE(Restore(classifier, head + Counted(Replaced(text, edit.substr(0, mark), edit.substr(mark + 3)))))
        << edit;
  }
}

/// Nothing short of the whole file loads, and no changed byte does harm: what is refused leaves the answers as they
/// were, what is accepted can answer.
void ExpectToSurviveDamage(TClassifier& classifier, const std::string& sound) {
  const auto answers = AnswerBits(classifier);
  for (std::size_t size = 0; size < sound.size(); ++size) {
    ASSERT_FALSE(Restore(classifier, sound.substr(0, size))) << size;
  }
  EXPECT_EQ(AnswerBits(classifier), answers);
  std::mt19937 random(11);
  for (std::size_t place = 0; place < sound.size(); ++place) {
    std::string damaged = sound;
    damaged[place] = "0189 -.\n\xFF"[random() % 9];
    if (Restore(classifier, damaged)) {
      Answer(classifier, {0.5, 1.5});
      ASSERT_TRUE(Restore(classifier, sound)) << place;
    }
    ASSERT_EQ(AnswerBits(classifier), answers) << place;
  }
  EXPECT_EQ(CountFiles(), 0);
}

const std::vector<TValues> kPositives = {{1.0, 0.5}, {0.5, 1.0}, {1.5, 1.0}};
const std::vector<TValues> kNegatives = {{3.0, 3.5}, {2.5, 3.0}, {3.5, 2.5}, {3.0, 3.0}};

/// kPositives and kNegatives between -1 and 1: both columns go from 0.5 to 3.5.
TValues ScaledByHand(TValues values) {
  for (double& value : values) {
    value = 2 * (value - 0.5) / 3.0 - 1;
  }
  return values;
}

/// Opens the scaling to the tests.
class TScalingProbe : public TClassifier {
 public:
  double Classify(const TFeatureVector& /*vector*/) const override { return 0.0; }
  using TClassifier::ComputeNormalization;
  using TClassifier::Normalize;
  using TClassifier::NormalizeExamples;
};

}  // namespace

TEST(TClassifier, ScalesEachDimensionByTheRangeOfAllExamples) {
  TScalingProbe probe;
  Teach(probe, {}, {{6, 5, 0, -3}});
  probe.ComputeNormalization();
  EXPECT_EQ(Stored(probe), Int(0)) << "without positive examples there is none";
  Teach(probe, {{2, 5, 0, -3}, {4, 5, 0, -1}}, {});
  probe.ComputeNormalization();
  probe.NormalizeExamples();
  // A constant dimension stays, zeros become -1, and below zero the largest value counts as (almost) 0.
  EXPECT_EQ(ValuesOf(*probe.GetPositiveExamples().GetItems()[0]), (TValues{-1, 5, -1, -1}));
  EXPECT_EQ(ValuesOf(*probe.GetPositiveExamples().GetItems()[1]), (TValues{0, 5, -1, 2 * 2.0 / 3 - 1}));
  EXPECT_EQ(ValuesOf(*probe.GetNegativeExamples().GetItems()[0]), (TValues{1, 5, -1, -1}));
  const auto query = Vector({8, 7, 0, -3});
  probe.Normalize(*query);
  EXPECT_EQ(ValuesOf(*query), (TValues{2, 7, -1, -1}));
  EXPECT_EQ(Stored(probe),
            Int(4) + Doubles({2, 5, 0, -3}) + Doubles({6, 5, 2.2250738585072014e-308, 2.2250738585072014e-308}));
}

TEST(TClassifier, LoadTakesAWholeBlockOrNothing) {
  TScalingProbe probe;
  const std::string sound = Int(2) + Doubles({1, -2}) + Doubles({3, 4});
  ASSERT_TRUE(Restore(probe, sound, "more"));
  EXPECT_EQ(Stored(probe), sound);
  const std::string hostile[] = {"",
                                 "\1\0",
                                 Int(3) + Doubles({1, 2, 3, 4, 5}),
                                 Int((1 << 24) + 1) + Doubles({1, 2}),
                                 Int(INT32_MAX) + Doubles({1, 2}),
                                 Int(-1) + Doubles({1, 2})};
  for (const std::string& bytes : hostile) {
    EXPECT_FALSE(Restore(probe, bytes));
    EXPECT_EQ(Stored(probe), sound);
  }
  // A block without a range puts the one before out of use.
  ASSERT_TRUE(Restore(probe, Int(0), "more"));
  const auto query = Vector({8, 8});
  probe.Normalize(*query);
  EXPECT_EQ(ValuesOf(*query), (TValues{8, 8}));
}

TEST(TClassifier, CopiesExamplesOrTakesTheCallersVectors) {
  TScalingProbe probe;
  const auto vector = Vector({1, 2});
  vector->SetName("lbp");
  probe.SetCopyExamples(false);
  probe.AddPositiveExample(vector.get());
  probe.AddPositiveExample(nullptr);
  ASSERT_EQ(probe.GetPositiveExamples().GetItems(), (TFeatureVectorList::TItems{vector.get()}));
  probe.Clear();
  probe.SetCopyExamples(true);
  probe.AddNegativeExample(vector.get());
  vector->GetData()[0] = 9;
  const auto& copies = probe.GetNegativeExamples().GetItems();
  ASSERT_EQ(copies.size(), 1U);
  EXPECT_EQ(ValuesOf(*copies[0]), (TValues{1, 2}));
  EXPECT_EQ(copies[0]->GetName(), "lbp");
}

TEST(TClassifierList, MakesClassifiersWithTheirDefaults) {
  const std::pair<const char*, const char*> kinds[] = {
      {"knn", "none"},
      {"", "none"},
      {"nearest", "NearestNeighbor, 0, 0"},
      {"neural", "NeuralNetwork, 1, 1, hiddenlayers = 1, maxerror = 0.0000001, maxiterations = 1000"},
      {"svm", ", 1, 1, kernel = rbf"}};
  for (const auto& [type, expected] : kinds) {
    const auto classifier = TClassifierList().Create(type);
    std::string found = "none";
    if (classifier) {
      found = classifier->GetName() + (classifier->GetCopyExamples() ? ", 1" : ", 0") +
              (classifier->GetNormalize() ? ", 1" : ", 0");
      for (std::uint32_t i = 0; i < classifier->GetSettingCount(); ++i) {
        const std::string key = classifier->GetSettingName(i);
        found += ", " + key + " = " + classifier->GetSetting(key);
      }
      EXPECT_EQ(classifier->GetSettingName(classifier->GetSettingCount()), "");
      EXPECT_EQ(Answer(*classifier, {1, 2}), 0.0);
    }
    EXPECT_EQ(found, expected);
  }
}

TEST(TClassifier, TrainsOnlyOnExamplesThatItCanUse) {
  for (const char* type : {"neural", "svm"}) {
    SCOPED_TRACE(type);
    TClassifierList list;
    list.SetSeed(5);
    const auto classifier = list.Create(type);
    list.PrepareTraining(*classifier);
    const auto train = [&](const std::vector<TValues>& positives, const std::vector<TValues>& negatives) {
      Teach(*classifier, positives, negatives);
      classifier->Train();
    };
    train({}, {{1, 2}});
    EXPECT_EQ(Answer(*classifier, {1, 2}), 0.0);
    train(kPositives, {{3, 3}});
    EXPECT_GT(Answer(*classifier, {1, 1}), 0.0);
    EXPECT_EQ(Answer(*classifier, {1, 1, 1}), 0.0);
    const auto answers = AnswerBits(*classifier);
    train({}, {{1, 2, 3}});
    EXPECT_EQ(AnswerBits(*classifier), answers);
    classifier->Clear();
    train({kPositives[0], {1, 2, 3}}, {});
    EXPECT_EQ(AnswerBits(*classifier), answers);
    classifier->Clear();
    classifier->Train();
    EXPECT_EQ(AnswerBits(*classifier), answers);
    train({{}}, {{}});
    EXPECT_EQ(Answer(*classifier, {}), 0.0);
    EXPECT_EQ(Answer(*classifier, {1, 2}), 0.0);
  }
}

TEST(TClassifierNearestNeighbor, AnswersWithTheClassOfTheNearestAndThePositivesWinTies) {
  TClassifierNearestNeighbor nearest;
  Teach(nearest, {{0, 0}}, {{2, 2}});
  EXPECT_EQ(Answer(nearest, {1, 1}), 1.0);
  EXPECT_EQ(Answer(nearest, {2, 1}), -1.0);
  EXPECT_EQ(Answer(nearest, {2, 1, 0}), 0.0);
  EXPECT_EQ(Answer(nearest, {}), 0.0);
  nearest.Train();
  EXPECT_EQ(ValuesOf(*nearest.GetNegativeExamples().GetItems()[0]), (TValues{2, 2}));
  EXPECT_EQ(Answer(nearest, {NAN, 1}), 0.0);
}

TEST(TClassifierNearestNeighbor, AnExampleDoesNotFindItselfButItsEqualDoes) {
  TClassifierNearestNeighbor nearest;
  nearest.SetCopyExamples(false);
  const auto example = Vector({1, 2});
  nearest.AddNegativeExample(example.get());
  EXPECT_EQ(nearest.Classify(*example), 0.0);
  EXPECT_EQ(Answer(nearest, {1, 2}), -1.0);
  const auto other = Vector({100, 100});
  nearest.AddPositiveExample(other.get());
  EXPECT_EQ(nearest.Classify(*example), 1.0);
}

TEST(TClassifierNearestNeighbor, AgreesWithAPlainSearchAmongManyExamples) {
  std::mt19937 random(3);
  const auto make = [&](std::size_t count) {
    std::vector<TValues> rows(count, TValues(7));
    for (TValues& row : rows) {
      std::generate(row.begin(), row.end(), [&] { return static_cast<double>(random() % 10007); });
    }
    return rows;
  };
  const auto positives = make(131);
  const auto negatives = make(197);
  TClassifierNearestNeighbor nearest;
  Teach(nearest, positives, negatives);
  const auto least = [](const std::vector<TValues>& rows, const TValues& query) {
    double best = HUGE_VAL;
    for (const TValues& row : rows) {
      best = std::min(best, std::transform_reduce(row.begin(), row.end(), query.begin(), 0.0, std::plus(),
                                                  [](double a, double b) { return std::fabs(a - b); }));
    }
    return best;
  };
  int found = 0;
  for (const TValues& query : make(200)) {
    const bool isPositive = least(positives, query) <= least(negatives, query);
    EXPECT_EQ(Answer(nearest, query), isPositive ? 1.0 : -1.0);
    found += isPositive ? 1 : 0;
  }
  EXPECT_GT(found, 40);
  EXPECT_LT(found, 160);
}

TEST(TClassifierNearestNeighbor, StoresItsExamplesFieldByField) {
  TClassifierNearestNeighbor nearest;
  EXPECT_EQ(Stored(nearest), std::string(12, '\0'));
  Teach(nearest, {{1, 2, 3}, {4, 5, 6}}, {});
  const std::string two = Int(3) + Int(2) + Doubles({1, 2, 3, 4, 5, 6}) + Int(0);
  ASSERT_EQ(two.size(), 60U);
  EXPECT_EQ(Stored(nearest), two);

  // Loading takes the place of the examples before, which were the caller's.
  TClassifierNearestNeighbor loaded;
  loaded.SetCopyExamples(false);
  const auto ours = Vector({9});
  loaded.AddPositiveExample(ours.get());
  loaded.AddNegativeExample(ours.get());
  const std::string none = Int(1) + Int(0) + Int(2) + Doubles({7, 8});
  ASSERT_TRUE(Restore(loaded, none, "more"));
  EXPECT_EQ(Stored(loaded), none);
  EXPECT_EQ(ValuesOf(*ours), (TValues{9}));
  EXPECT_TRUE(loaded.GetCopyExamples());
  EXPECT_EQ(loaded.GetNegativeExamples().GetItems()[1]->GetName(), "");
  EXPECT_FALSE(loaded.GetNormalize());

  // Every vector is written with the elements of the first; one that has fewer cannot be.
  nearest.AddNegativeExample(Vector({7, 8, 9, 10}).get());
  EXPECT_EQ(Stored(nearest), two.substr(0, 56) + Int(1) + Doubles({7, 8, 9}));
  nearest.AddNegativeExample(Vector({7}).get());
  const TFile file = BinaryFile();
  EXPECT_FALSE(nearest.Save(file.get()));
  EXPECT_EQ(std::ftell(file.get()), 0);
}

TEST(TClassifierNearestNeighbor, ADamagedFileLeavesTheExamples) {
  TClassifierNearestNeighbor nearest;
  Teach(nearest, kPositives, kNegatives);
  const std::string sound = Stored(nearest);
  for (std::size_t size = 0; size < sound.size(); ++size) {
    ASSERT_FALSE(Restore(nearest, sound.substr(0, size))) << size;
  }
  const std::string hostile[] = {Int(-1) + Int(0) + Int(0),           Int(0) + Int(-1) + Int(0),
                                 Int(0) + Int(0) + Int(INT32_MAX),    Int(0) + Int(INT32_MAX) + Int(0),
                                 Int(1) + Int(INT32_MAX) + Int(0),    Int(1 << 24) + Int(1) + Doubles({1}),
                                 Int((1 << 24) + 1) + Int(0) + Int(0)};
  for (const std::string& bytes : hostile) {
    EXPECT_FALSE(Restore(nearest, bytes));
    EXPECT_EQ(Stored(nearest), sound);
  }
}

namespace {

void TeachNeural(TClassifierNeuralNetwork& neural, std::uint32_t seed = 5) {
  neural.SetFixedSeed(true);
  neural.SetSeed(seed);
  Teach(neural, kPositives, kNegatives);
  neural.Train();
}

/// The network that the library makes of the same examples, scaled by hand, and of the same random numbers.
double BareNetworkAnswer(const TValues& query, unsigned seed, unsigned epochs) {
  const unsigned layers[] = {2, 5, 1};
  const std::unique_ptr<fann, decltype(&fann_destroy)> network(fann_create_standard_array(3, layers), &fann_destroy);
  const std::unique_ptr<fann_train_data, decltype(&fann_destroy_train)> data(fann_create_train(7, 2, 1),
                                                                             &fann_destroy_train);
  for (std::size_t row = 0; row < 7; ++row) {
    const TValues values = ScaledByHand(row < 3 ? kPositives[row] : kNegatives[row - 3]);
    std::copy(values.begin(), values.end(), data->input[row]);
    data->output[row][0] = row < 3 ? 1.0 : 0.0;
  }
  std::srand(seed);
  for (unsigned i = 0; i < network->total_connections; ++i) {
    network->weights[i] = -0.1F + 0.2F * static_cast<float>(std::rand()) / (RAND_MAX + 1.0F);
  }
  fann_train_on_data(network.get(), data.get(), epochs, 0, 0.0000001F);
  TValues scaled = ScaledByHand(query);
  return 2 * *fann_run(network.get(), scaled.data()) - 1;
}

}  // namespace

TEST(TClassifierNeuralNetwork, IsTheLibrarysNetworkOnScaledExamples) {
  for (const unsigned epochs : {1000U, 0U}) {
    TClassifierNeuralNetwork neural;
    neural.SetSetting("maxiterations", epochs == 0 ? "abc" : "1000");
    TeachNeural(neural);
    for (const TValues& query : {TValues{1, 1}, TValues{3, 3}, TValues{2, 1.75}, TValues{-4, 9}}) {
      EXPECT_EQ(Answer(neural, query), BareNetworkAnswer(query, 5, epochs));
    }
    EXPECT_EQ(ValuesOf(*neural.GetPositiveExamples().GetItems()[0]), ScaledByHand(kPositives[0]));
  }
  TClassifierNeuralNetwork neural;
  TeachNeural(neural);
  EXPECT_GT(Answer(neural, {1, 1}), 0.5);
  EXPECT_LT(Answer(neural, {3, 3}), -0.5);
  double squares = 0;
  for (std::size_t row = 0; row < 7; ++row) {
    const double answer = (Answer(neural, row < 3 ? kPositives[row] : kNegatives[row - 3]) + 1) / 2;
    squares += std::pow(answer - (row < 3 ? 1 : 0), 2);
  }
  EXPECT_NEAR(neural.GetMSE(), squares / 7, 1e-6);
}

TEST(TClassifierNeuralNetwork, ASeedDecidesTheNetwork) {
  TClassifierNeuralNetwork first;
  TeachNeural(first);
  TClassifierNeuralNetwork second;
  TClassifierList list;
  list.PrepareTraining(second);
  EXPECT_FALSE(second.GetFixedSeed());
  list.SetSeed(5);
  list.PrepareTraining(second);
  Teach(second, kPositives, kNegatives);
  second.Train();
  EXPECT_EQ(AnswerBits(second), AnswerBits(first));
  TClassifierNeuralNetwork third;
  TeachNeural(third, 6);
  EXPECT_NE(AnswerBits(third), AnswerBits(first));
}

TEST(TClassifierNeuralNetwork, LayersFollowTheSetting) {
  const std::pair<const char*, int> cases[] = {{"1", 1}, {"3", 3}, {"0", 0}, {"-4", 0}, {"two", 0}, {"99", 32}};
  const TScratchDirectory scratch;
  for (const auto& [setting, count] : cases) {
    std::string expected = "layer_sizes=5 ";  // the library counts a bias neuron in every layer
    for (int i = 0; i < count; ++i) {
      expected += "6 ";
    }
    TClassifierNeuralNetwork neural;
    neural.SetSetting("hiddenlayers", setting);
    neural.SetSetting("maxiterations", "-1");
    neural.SetSetting("maxerror", "100");
    Teach(neural, {{1, 2, 3, 4}}, {{4, 3, 2, 1}});
    neural.Train();
    EXPECT_NE(Stored(neural).find(expected + "2 \n"), std::string::npos) << setting;
    EXPECT_EQ(neural.GetMaxIterations(), -1);
    EXPECT_EQ(neural.GetMaxError(), 100.0F);
  }
}

TEST(TClassifierNeuralNetwork, StoresScalingThenTheNetworkFile) {
  const TScratchDirectory scratch;
  TClassifierNeuralNetwork neural;
  EXPECT_EQ(Stored(neural), Int(0) + Int(0));
  TeachNeural(neural);
  const std::string bytes = Stored(neural);
  ASSERT_GT(bytes.size(), 40U);
  EXPECT_EQ(bytes, Int(2) + Doubles({0.5, 0.5, 3.5, 3.5}) + Counted(bytes.substr(40)));
  EXPECT_EQ(bytes.substr(40, 13), "FANN_FLO_2.1\n");
  EXPECT_EQ(CountFiles(), 0);

  TClassifierNeuralNetwork loaded;
  ASSERT_TRUE(Restore(loaded, bytes, "more"));
  EXPECT_EQ(AnswerBits(loaded), AnswerBits(neural));
  EXPECT_TRUE(loaded.GetNormalize());
  EXPECT_EQ(Stored(loaded), bytes);

  // Without a range the queries go to the network as they are.
  ASSERT_TRUE(Restore(loaded, Int(0) + bytes.substr(36)));
  EXPECT_FALSE(loaded.GetNormalize());
  EXPECT_EQ(Answer(loaded, ScaledByHand({1, 2})), Answer(neural, {1, 2}));
  ASSERT_TRUE(Restore(loaded, Int(0) + Int(0)));
  EXPECT_EQ(Answer(loaded, {1, 2}), 0.0);
}

TEST(TClassifierNeuralNetwork, ADamagedFileLeavesTheNetwork) {
  const TScratchDirectory scratch;
  TClassifierNeuralNetwork neural;
  TeachNeural(neural);
  const std::string sound = Stored(neural);
  const auto answers = AnswerBits(neural);
  const std::string head = sound.substr(0, 36);
  const std::string text = sound.substr(40);
  ExpectToRefuseEdits(neural, head, text,
                      {"num_layers=3 > num_layers=300000000", "num_layers=3 > num_layers=0",
                       "num_layers=3 > num_layers=2", "layer_sizes=3 6 2 > layer_sizes=0 6 2",
                       "layer_sizes=3 6 2 > layer_sizes=4294967295 6 2", "layer_sizes=3 6 2 > layer_sizes=3 7 2",
                       "(3, 4, 5.0 > (9, 4, 5.0", "(3, 4, 5.0 > (3, 99, 5.0", "weight)=(0,  > weight)=(77, ",
                       "functions_count=10 > functions_count=4000000000", "network_type=0 > network_type=1",
                       "scale_included=0 > scale_included=1", "connection_rate=1.0 > connection_rate=0.5",
                       "learning_rate=0.7 > learning_rate=nan", "FANN_FLO_2.1 > FANN_FIX_2.0"});
  EXPECT_FALSE(Restore(neural, head + Int(-1) + text));
  EXPECT_FALSE(Restore(neural, Int(1) + Doubles({0, 1}) + sound.substr(36)));
  EXPECT_EQ(AnswerBits(neural), answers);
  ExpectToSurviveDamage(neural, sound);
}

namespace {

std::string Record(std::int32_t kernel, double gamma) {
  return Int(0) + Int(kernel) + Int(3) + Int(0) + Doubles({gamma, 0, 100, 0.001, 32768}) + Int(0) + Int(0) + Int(0) +
         Int(0) + Doubles({0.5, 0.1}) + Int(1) + Int(0);
}

void TeachSVM(TClassifierSVM& svm) {
  Teach(svm, kPositives, kNegatives);
  svm.Train();
}

/// The record in the stored bytes of a classifier of that dimension.
std::string StoredRecord(const TClassifierSVM& svm, std::size_t dimension) {
  return Stored(svm).substr(4 + 16 * dimension, 96);
}

}  // namespace

TEST(TClassifierSVM, IsTheLibrarysMachineOnScaledExamples) {
  for (const char* kernel : {"rbf", "linear", "poly", "sigmoid"}) {
    TClassifierSVM svm;
    svm.SetSetting("kernel", kernel);
    TeachSVM(svm);
    svm_parameter parameter = {};
    parameter.kernel_type = kernel == std::string("linear") ? LINEAR : kernel == std::string("poly") ? POLY : RBF;
    parameter.degree = 3;
    parameter.gamma = 0.5;  // 1 / length
    parameter.cache_size = 100;
    parameter.eps = 0.001;
    parameter.C = 32768;
    parameter.shrinking = 1;
    std::vector<std::vector<svm_node>> rows;
    std::vector<svm_node*> pointers;
    const auto addRow = [&](const TValues& values) {
      const TValues scaled = ScaledByHand(values);
      rows.push_back({{0, scaled[0]}, {1, scaled[1]}, {-1, 0}});
      pointers.push_back(rows.back().data());
    };
    std::for_each(kPositives.begin(), kPositives.end(), addRow);
    std::for_each(kNegatives.begin(), kNegatives.end(), addRow);
    TValues labels = {1, 1, 1, -1, -1, -1, -1};
    const svm_problem problem = {7, labels.data(), pointers.data()};
    svm_model* model = svm_train(&problem, &parameter);
    TValues expected;
    TValues answers;
    for (int i = 0; i < 24 * 24; ++i) {
      const TValues query = {i % 24 * 0.25 - 1, i / 24 * 0.25 - 1};
      addRow(query);
      expected.push_back(svm_predict(model, pointers.back()));
      answers.push_back(Answer(svm, query));
    }
    EXPECT_EQ(answers, expected) << kernel;
    EXPECT_LT(std::abs(std::reduce(expected.begin(), expected.end())), 24 * 24 - 100) << "both classes are there";
    svm_free_and_destroy_model(&model);
  }
}

TEST(TClassifierSVM, GammaFollowsTheKernelOfTheTrainingBefore) {
  const TScratchDirectory scratch;
  TClassifierSVM svm;
  EXPECT_EQ(Stored(svm), Int(0) + Record(2, 0.5) + Int(0));
  svm.SetSetting("kernel", "linear");
  TValues zeros(64);
  TValues ones(64, 1.0);
  Teach(svm, {zeros}, {ones});
  svm.Train();
  EXPECT_EQ(StoredRecord(svm, 64), Record(0, 0.015625));
  // A linear machine with a gamma of its own keeps it in its next training, and the one after that sets it anew.
  ASSERT_TRUE(Restore(svm, Int(0) + Record(0, 7.0) + Int(0)));
  EXPECT_EQ(Answer(svm, zeros), 0.0);
  svm.SetNormalize(true);
  svm.SetSetting("kernel", "sigmoid");
  svm.Train();
  EXPECT_EQ(StoredRecord(svm, 64), Record(2, 7.0));
  svm.SetSetting("kernel", "poly");
  svm.Train();
  EXPECT_EQ(StoredRecord(svm, 64), Record(1, 0.015625));
}

TEST(TClassifierSVM, EqualExamplesOfBothClassesGetSomeAnswer) {
  TClassifierSVM svm;
  Teach(svm, {{1, 1}, {1, 1}}, {{1, 1}});
  svm.Train();
  EXPECT_EQ(std::fabs(Answer(svm, {1, 1})), 1.0);
}

TEST(TClassifierSVM, StoresScalingParametersAndTheModelFile) {
  const TScratchDirectory scratch;
  TClassifierSVM svm;
  Teach(svm, {{0, 5, 1}}, {{2, 5, 0}});
  svm.Train();
  const std::string bytes = Stored(svm);
  ASSERT_GT(bytes.size(), 152U);
  const std::string text = bytes.substr(152);
  EXPECT_EQ(bytes, Int(3) + Doubles({0, 5, 0, 2, 5, 1}) + Record(2, 1.0 / 3) + Counted(text));
  // Elements count from 0, and the constant one is there as well.
  EXPECT_NE(text.find(" 0:-1 1:5 2:1 \n"), std::string::npos) << text;
  EXPECT_EQ(CountFiles(), 0);
}

TEST(TClassifierSVM, LoadsOverATrainedMachineAndTrainsOverALoadedOne) {
  const TScratchDirectory scratch;
  for (const char* kernel : {"rbf", "linear", "poly"}) {
    TClassifierSVM svm;
    svm.SetSetting("kernel", kernel);
    TeachSVM(svm);
    const std::string bytes = Stored(svm);
    TClassifierSVM other;
    Teach(other, {{1, 0}, {5, 5}}, {{0, 1}});
    other.Train();
    ASSERT_TRUE(Restore(other, bytes, "more"));
    EXPECT_EQ(AnswerBits(other), AnswerBits(svm));
    ASSERT_TRUE(Restore(other, bytes));
    other.Clear();
    Teach(other, kNegatives, kPositives);
    other.Train();
    EXPECT_EQ(Answer(other, {1, 1}), -1.0);
    EXPECT_EQ(Answer(other, {3, 3}), 1.0);
  }
  // A machine that knows one class only.
  TClassifierSVM one;
  Teach(one, kPositives, {});
  one.Train();
  TClassifierSVM loaded;
  ASSERT_TRUE(Restore(loaded, Stored(one)));
  EXPECT_EQ(Answer(loaded, {9, 9}), 1.0);
}

TEST(TClassifierSVM, ReadsTextWithTheLineEndsOfOtherPlatforms) {
  const TScratchDirectory scratch;
  TClassifierSVM svm;
  TeachSVM(svm);
  const std::string bytes = Stored(svm);
  std::string text;
  for (const char character : bytes.substr(136)) {
    text += character == '\n' ? "\r\n" : std::string(1, character);
  }
  TClassifierSVM loaded;
  ASSERT_TRUE(Restore(loaded, bytes.substr(0, 132) + Counted(text)));
  EXPECT_EQ(AnswerBits(loaded), AnswerBits(svm));
}

TEST(TClassifierSVM, ADamagedFileLeavesTheMachine) {
  const TScratchDirectory scratch;
  TClassifierSVM svm;
  TeachSVM(svm);
  const std::string sound = Stored(svm);
  const auto answers = AnswerBits(svm);
  const std::string head = sound.substr(0, 132);
  const std::string text = sound.substr(136);
  ExpectToRefuseEdits(
      svm, head, text,
      {"nr_class 2 > nr_class 2000000000", "nr_class 2\n > ", "total_sv  > total_sv 9", "nr_sv  > nr_sv 1",
       "rbf > sigmoid", "rbf > precomputed", "c_svc > epsilon_svr", "label 1 -1 > label 1 1", "label 1 -1 > label 1 -2",
       "gamma 0.5 > gamma nan", " 0: >  7:", " 1: >  -1:", " 1: >  1", text.substr(text.find("SV\n")) + " > SV\n"});
  const std::string range = sound.substr(0, 36);
  // The record asks for weights behind a pointer, for precomputed kernels, for another kernel than the model's.
  for (const std::string& record : {Replaced(Record(2, 0.5), Doubles({32768}) + Int(0), Doubles({32768}) + Int(2)),
                                    Record(4, 0.5), Record(0, 0.5), Record(2, -1.0), Record(2, NAN)}) {
    EXPECT_FALSE(Restore(svm, range + record + sound.substr(132)));
  }
  EXPECT_FALSE(Restore(svm, Int(1) + Doubles({0, 1}) + sound.substr(36)));
  EXPECT_EQ(AnswerBits(svm), answers);
  ExpectToSurviveDamage(svm, sound);
}

TEST(TClassifier, TemporaryFilesSpareWhatIsThereAndMayFail) {
  const TScratchDirectory scratch;
  TClassifierSVM svm;
  TeachSVM(svm);
  TClassifierNeuralNetwork neural;
  TeachNeural(neural);
  const std::pair<TClassifier*, const char*> cases[] = {{&svm, "svm-temp-"}, {&neural, "nn-temp-"}};
  for (const auto& [classifier, prefix] : cases) {
    // What stands under the next two numbers is a stranger's file and a link to nowhere.
    std::srand(42);
    const std::string file = prefix + std::to_string(std::rand()) + ".dat";
    const std::string link = prefix + std::to_string(std::rand()) + ".dat";
    MakeFile(file, "a stranger's");
    std::filesystem::create_symlink("nowhere", link);
    std::srand(42);
    const std::string bytes = Stored(*classifier);
    std::srand(42);
    EXPECT_TRUE(Restore(*classifier, bytes));
    EXPECT_EQ(FileBytes(file), "a stranger's");
    EXPECT_FALSE(std::filesystem::exists("nowhere"));
    EXPECT_EQ(CountFiles(), 2);
    std::filesystem::remove(file);
    std::filesystem::remove(link);
  }
  const std::string bytes = Stored(svm);
  const auto answers = AnswerBits(svm);
  std::filesystem::remove_all(scratch.GetPath());
  EXPECT_FALSE(Restore(svm, bytes));
  EXPECT_EQ(AnswerBits(svm), answers);
  for (const auto& [classifier, prefix] : cases) {
    const TFile file = BinaryFile();
    EXPECT_FALSE(classifier->Save(file.get())) << prefix;
  }
}
