// Stored classifiers, and examples with any numbers. The first byte chooses the type and whether the rest is what Load
// reads or examples of a few numbers each. What could be loaded must answer, and is stored as it is loaded again.

#include <array>
#include <cmath>
#include <cstdio>
#include <memory>

#include "classifiers/classifier-types.h"
#include "fuzz/input.h"
#include "fuzz/workshop.h"

namespace {

TFile FileOf(std::string_view bytes) {
  TFile file(std::tmpfile());
  Require(file && std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size());
  std::rewind(file.get());
  return file;
}

std::string Stored(const TClassifier& classifier) {
  const TFile file = FileOf("");
  Require(classifier.Save(file.get()));
  std::string bytes(static_cast<std::size_t>(std::ftell(file.get())), '\0');
  std::rewind(file.get());
  Require(std::fread(bytes.data(), 1, bytes.size(), file.get()) == bytes.size());
  return bytes;
}

/// Asks for vectors of each small length, and of the length of the examples.
void Ask(const TClassifier& classifier, std::uint32_t length) {
  TFeatureVector vector;
  for (const std::uint32_t each : {0U, 1U, 2U, 3U, 4U, length}) {
    vector.SetLength(each);
    vector.Clear();
    classifier.Classify(vector);
    for (std::uint32_t i = 0; i < each; ++i) {
      vector.GetData()[i] = 0.25 * i - 1;
    }
    classifier.Classify(vector);
    classifier.Score(vector);
  }
}

/// True if the bytes speak of very many empty examples, which take time and no place in the file.
bool HasManyEmptyExamples(std::string_view bytes) {
  TInputReader reader(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  constexpr std::int32_t kMany = 1000;
  return reader.Take<std::int32_t>() == 0 &&
         (reader.Take<std::int32_t>() > kMany || reader.Take<std::int32_t>() > kMany);
}

void TryLoad(const TClassifierType& type, std::string_view bytes) {
  if (&type == FindClassifierType("nearest") && HasManyEmptyExamples(bytes)) {
    return;
  }
  const auto classifier = type.make();
  const TFile file = FileOf(bytes);
  if (!classifier->Load(file.get())) {
    Require(Stored(*classifier) == Stored(*type.make()));
    return;
  }
  const auto length =
      TInputReader(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()).Take<std::int32_t>();
  Ask(*classifier, static_cast<std::uint32_t>(length) % 512);
  const std::string stored = Stored(*classifier);
  const auto again = type.make();
  const TFile second = FileOf(stored);
  Require(again->Load(second.get()) && Stored(*again) == stored);
}

/// A byte with the number of numbers an example has, then one with the settings, then the examples, of which each
/// second one is negative.
void TryTrain(const TClassifierType& type, TInputReader& reader) {
  const auto classifier = type.make();
  const std::uint32_t length = reader.Take<std::uint8_t>() % 6;
  const auto choice = reader.Take<std::uint8_t>();
  classifier->SetSeed(1);
  classifier->SetCopyExamples(true);
  classifier->SetNormalize((choice & 1) != 0);
  classifier->SetSetting("maxiterations", (choice & 2) != 0 ? "3" : "0");
  classifier->SetSetting("hiddenlayers", (choice & 4) != 0 ? "2" : "-1");
  TFeatureVector example;
  example.SetLength(length);
  for (int i = 0; i < 12 && !reader.GetRest().empty(); ++i) {
    for (std::uint32_t k = 0; k < length; ++k) {
      // Concepts leave out segments with numbers that are not finite.
      const auto number = reader.Take<double>();
      example.GetData()[k] = std::isfinite(number) ? number : 0.0;
    }
    if (length == 0) {
      reader.Take<std::uint8_t>();
    }
    if (i % 2 == 0) {
      classifier->AddPositiveExample(&example);
    } else {
      classifier->AddNegativeExample(&example);
    }
  }
  classifier->Train();
  Ask(*classifier, length);
  const TFile file = FileOf("");
  if (classifier->Save(file.get())) {
    std::rewind(file.get());
    Require(type.make()->Load(file.get()));
  }
}

}  // namespace

void FillWorkshop() {}

void TryInput(const std::uint8_t* data, std::size_t size) {
  TInputReader reader(data, size);
  const auto choice = reader.Take<std::uint8_t>();
  const TClassifierType& type = ClassifierTypes()[choice % ClassifierTypes().size()];
  if (choice < 128) {
    TryLoad(type, reader.GetRest());
  } else {
    TryTrain(type, reader);
  }
}
