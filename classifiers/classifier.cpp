#include "classifiers/classifier.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <utility>

#include "base/file.h"
#include "classifiers/model-storage.h"
#include "kernels/scale-range.h"

namespace {

void AddExample(TFeatureVectorList& list, TFeatureVector* vector, bool copies) {
  // A feature that was not found is no example.
  if (vector == nullptr) {
    return;
  }
  if (!copies) {
    list.Add(vector);
    return;
  }
  auto copy = std::make_unique<TFeatureVector>();
  copy->Assign(*vector);
  list.Add(copy.release());
}

}  // namespace

TClassifier::TClassifier()
    : positiveExamples(std::make_unique<TFeatureVectorList>()),
      negativeExamples(std::make_unique<TFeatureVectorList>()) {}

TClassifier::~TClassifier() = default;

void TClassifier::Clear() {
  // Not the training: what was learned does not depend on the examples any more, except for the nearest neighbor.
  positiveExamples->Clear();
  negativeExamples->Clear();
}

bool TClassifier::Load(std::FILE* file) {
  std::optional<TScaling> scaling = ReadScaling(file);
  if (!scaling) {
    return false;
  }
  SetScaling(std::move(*scaling));
  return true;
}

bool TClassifier::Save(std::FILE* file) const {
  // Little-endian, and 0 for a classifier that has not scaled.
  if (!WriteInt32(file, dimension)) {
    return false;
  }
  if (dimension <= 0) {
    return true;
  }
  const auto count = static_cast<std::size_t>(dimension);
  return WriteDoubles(file, minimum.get(), count) && WriteDoubles(file, maximum.get(), count);
}

void TClassifier::AddPositiveExample(TFeatureVector* vector) {
  AddExample(*positiveExamples, vector, copyExamples);
}

void TClassifier::AddNegativeExample(TFeatureVector* vector) {
  AddExample(*negativeExamples, vector, copyExamples);
}

void TClassifier::Train() {}

void TClassifier::SetSeed(std::uint32_t /*value*/) {}

void TClassifier::SetCopyExamples(bool flag) {
  copyExamples = flag;
  // Examples that came before are included: whoever switches this with examples in the lists says whose they are.
  positiveExamples->SetOwnsItems(flag);
  negativeExamples->SetOwnsItems(flag);
}

std::string TClassifier::GetSettingName(std::uint32_t index) const {
  // A map of a handful of keys: walking there costs nothing, and gives the byte-wise order.
  return index < settings.size() ? std::next(settings.begin(), index)->first : std::string();
}

std::string TClassifier::GetSetting(const std::string& key) const {
  const auto found = settings.find(key);
  return found == settings.end() ? std::string() : found->second;
}

bool TClassifier::SetSetting(const std::string& key, const std::string& value) {
  const auto found = settings.find(key);
  if (found == settings.end()) {
    return false;
  }
  // Text of any kind; each class reads it at its next training, and takes what is no number or no name for a default.
  found->second = value;
  return true;
}

std::optional<TClassifier::TScaling> TClassifier::ReadScaling(std::FILE* file) {
  TScaling scaling;
  if (!ReadInt32(file, scaling.dimension) || scaling.dimension < 0) {
    return std::nullopt;
  }
  // Written by a classifier that has not scaled; no arrays follow.
  if (scaling.dimension == 0) {
    return scaling;
  }
  const auto count = static_cast<std::size_t>(scaling.dimension);
  const std::optional<std::uint64_t> remaining = base::RemainingBytes(file);
  // Two doubles for each dimension must still be there before memory is asked for.
  if (scaling.dimension > kMaxDimension || !remaining || *remaining < 2 * sizeof(double) * std::uint64_t{count}) {
    return std::nullopt;
  }
  scaling.minimum = std::make_unique_for_overwrite<double[]>(count);
  scaling.maximum = std::make_unique_for_overwrite<double[]>(count);
  if (!ReadDoubles(file, scaling.minimum.get(), count) || !ReadDoubles(file, scaling.maximum.get(), count)) {
    return std::nullopt;
  }
  return scaling;
}

void TClassifier::SetScaling(TScaling scaling) {
  dimension = scaling.dimension;
  if (dimension > 0) {
    minimum = std::move(scaling.minimum);
    maximum = std::move(scaling.maximum);
  }
}

void TClassifier::Normalize(double* values, std::uint32_t length) const {
  const std::uint32_t known = std::min(length, static_cast<std::uint32_t>(std::max(dimension, 0)));
  kernels::ScaleRange(minimum.get(), maximum.get(), known, values);
}

void TClassifier::Normalize(TFeatureVector& vector) const {
  Normalize(vector.GetData(), vector.GetLength());
}

void TClassifier::ComputeNormalization() {
  if (positiveExamples->GetItems().empty()) {
    return;
  }
  const std::uint32_t length = positiveExamples->GetItems().front()->GetLength();
  // Free first: the arrays may be large.
  minimum.reset();
  maximum.reset();
  dimension = static_cast<std::int32_t>(length);
  minimum = std::make_unique_for_overwrite<double[]>(length);
  maximum = std::make_unique_for_overwrite<double[]>(length);
  std::fill_n(minimum.get(), length, std::numeric_limits<double>::max());
  // The smallest positive number, so that a dimension of nothing but zeros has a range, and its zeros become -1. It
  // also means that a dimension of negative values alone ends at about 0 and not at its largest value.
  std::fill_n(maximum.get(), length, std::numeric_limits<double>::min());
  // Both classes together: scaled apart, the two would be moved over each other and could not be told apart.
  for (const TFeatureVectorList* list : {positiveExamples.get(), negativeExamples.get()}) {
    for (const TFeatureVector* example : list->GetItems()) {
      const double* const values = example->GetData();
      // The range is that of the first positive example's length. What a longer one has behind that stays unscaled.
      const std::uint32_t known = std::min(length, example->GetLength());
      for (std::uint32_t i = 0; i < known; ++i) {
        // The value stands second: std::min and std::max give their first argument if the second is a NaN, so that none
        // gets into the range.
        minimum[i] = std::min(minimum[i], values[i]);
        maximum[i] = std::max(maximum[i], values[i]);
      }
    }
  }
}

void TClassifier::NormalizeExamples() {
  for (const TFeatureVectorList* list : {positiveExamples.get(), negativeExamples.get()}) {
    for (TFeatureVector* example : list->GetItems()) {
      Normalize(*example);
    }
  }
}

bool TClassifier::ExamplesHaveLength(std::uint32_t length) const {
  const auto& positives = positiveExamples->GetItems();
  const auto& negatives = negativeExamples->GetItems();
  const auto fits = [length](const TFeatureVector* example) { return example->GetLength() == length; };
  return std::all_of(positives.begin(), positives.end(), fits) && std::all_of(negatives.begin(), negatives.end(), fits);
}

bool TClassifier::HasUniformExamples() const {
  const auto& positives = positiveExamples->GetItems();
  return !positives.empty() && ExamplesHaveLength(positives.front()->GetLength());
}
