#include "classifiers/classifier-nearest-neighbor.h"

#include <algorithm>
#include <array>
#include <limits>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "base/little-endian.h"
#include "kernels/l1-distance.h"

namespace {

using TExamples = std::vector<std::unique_ptr<TFeatureVector>>;

/// Examples without elements take no byte of the file, so that the file cannot bound their number.
constexpr std::uint64_t kMaxEmptyExamples = 1 << 20;

/// What a query has found so far.
struct TNearest {
  double distance = std::numeric_limits<double>::max();
  double result = 0.0;
};

/// Compares the query with the examples of one list, a block of them at a time, which needs no memory of its own.
void Compare(const TFeatureVector& query, const TFeatureVectorList& list, double result, TNearest& nearest) {
  constexpr std::size_t kBlock = 64;
  std::array<const double*, kBlock> candidates;
  const auto& items = list.GetItems();
  for (std::size_t i = 0; i < items.size();) {
    std::size_t count = 0;
    for (; i < items.size() && count < kBlock; ++i) {
      if (items[i] != &query && items[i]->GetLength() == query.GetLength()) {
        candidates[count++] = items[i]->GetData();
      }
    }
    if (kernels::FindNearestL1(query.GetData(), query.GetLength(), candidates.data(), count, nearest.distance) <
        count) {
      nearest.result = result;
    }
  }
}

/// Reads a count and that many vectors. Nothing if the file cannot hold them.
std::optional<TExamples> ReadExamples(std::FILE* file, std::uint32_t length) {
  std::int32_t count = 0;
  if (!base::ReadInt32(file, count) || count < 0) {
    return std::nullopt;
  }
  const std::optional<std::uint64_t> remaining = base::RemainingBytes(file);
  const std::uint64_t most = length == 0 ? kMaxEmptyExamples : remaining.value_or(0) / (sizeof(double) * length);
  if (!remaining || static_cast<std::uint64_t>(count) > most) {
    return std::nullopt;
  }
  TExamples examples(static_cast<std::size_t>(count));
  for (auto& example : examples) {
    example = std::make_unique<TFeatureVector>();
    example->SetLength(length);
    if (!base::ReadDoubles(file, example->GetData(), length)) {
      return std::nullopt;
    }
  }
  return examples;
}

bool WriteExamples(std::FILE* file, const TFeatureVectorList& list, std::uint32_t length) {
  const auto& items = list.GetItems();
  return base::WriteInt32(file, static_cast<std::int32_t>(items.size())) &&
         std::all_of(items.begin(), items.end(), [&](const TFeatureVector* example) {
           return base::WriteDoubles(file, example->GetData(), length);
         });
}

void HandOver(TExamples& examples, TFeatureVectorList& list) {
  for (auto& example : examples) {
    list.Add(example.release());
  }
}

}  // namespace

TClassifierNearestNeighbor::TClassifierNearestNeighbor() {
  name = "NearestNeighbor";
}

double TClassifierNearestNeighbor::Classify(const TFeatureVector& vector) const {
  TNearest nearest;
  Compare(vector, *positiveExamples, 1.0, nearest);
  Compare(vector, *negativeExamples, -1.0, nearest);
  return nearest.result;
}

bool TClassifierNearestNeighbor::Save(std::FILE* file) const {
  const auto& positives = positiveExamples->GetItems();
  const auto& negatives = negativeExamples->GetItems();
  std::uint32_t length = 0;
  if (!positives.empty()) {
    length = positives.front()->GetLength();
  } else if (!negatives.empty()) {
    length = negatives.front()->GetLength();
  }
  const auto isShorter = [&](const TFeatureVector* example) { return example->GetLength() < length; };
  if (std::any_of(positives.begin(), positives.end(), isShorter) ||
      std::any_of(negatives.begin(), negatives.end(), isShorter)) {
    return false;
  }
  return base::WriteInt32(file, static_cast<std::int32_t>(length)) && WriteExamples(file, *positiveExamples, length) &&
         WriteExamples(file, *negativeExamples, length);
}

bool TClassifierNearestNeighbor::Load(std::FILE* file) {
  std::int32_t length = 0;
  if (!base::ReadInt32(file, length) || length < 0 || length > kMaxDimension) {
    return false;
  }
  std::optional<TExamples> positives = ReadExamples(file, static_cast<std::uint32_t>(length));
  if (!positives) {
    return false;
  }
  std::optional<TExamples> negatives = ReadExamples(file, static_cast<std::uint32_t>(length));
  if (!negatives) {
    return false;
  }
  Clear();
  SetCopyExamples(true);
  HandOver(*positives, *positiveExamples);
  HandOver(*negatives, *negativeExamples);
  return true;
}
