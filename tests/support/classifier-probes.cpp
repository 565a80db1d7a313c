#include "tests/support/classifier-probes.h"

#include <algorithm>
#include <bit>
#include <filesystem>
#include <iterator>
#include <random>

#include <gtest/gtest.h>

#include "tests/support/test-vectors.h"

TFile BinaryFile() {
  return TFile(std::tmpfile());
}

std::unique_ptr<TFeatureVector> Vector(const TValues& values) {
  return MakeVector("", values);
}

TValues ValuesOf(const TFeatureVector& vector) {
  return {vector.GetData(), vector.GetData() + vector.GetLength()};
}

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

bool Restore(TClassifier& classifier, const std::string& bytes, const std::string& behind) {
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

void ExpectToRefuseEdits(TClassifier& classifier, const std::string& head, const std::string& text,
                         const std::vector<std::string>& edits) {
  for (const std::string& edit : edits) {
    const std::size_t mark = edit.find(" > ");
    EXPECT_FALSE(Restore(classifier, head + Counted(Replaced(text, edit.substr(0, mark), edit.substr(mark + 3)))))
        << edit;
  }
}

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

TValues ScaledByHand(TValues values) {
  for (double& value : values) {
    value = 2 * (value - 0.5) / 3.0 - 1;
  }
  return values;
}
