#include "classifiers/classifier-nearest-neighbor.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "base/file.h"
#include "classifiers/distance-bounds.h"
#include "classifiers/model-storage.h"
#include "kernels/l1-distance.h"

namespace {

using TExamples = std::vector<std::unique_ptr<TFeatureVector>>;

/// Examples without elements take no byte of the file, so that the file cannot bound their number.
constexpr std::uint64_t kMaxEmptyExamples = 1 << 20;

/// What a query has found so far.
struct TNearest {
  // Nothing is nearer than an example whose distance overflows or is not a number, so that such a one never answers.
  double distance = std::numeric_limits<double>::max();
  double result = 0.0;
};

/// Compares the query with the examples of one class, a block of them at a time, which needs no memory of its own. The
/// result becomes theirs if one of them is nearer than all before. `next` gives the next example, and null behind the
/// last.
template <typename TNext>
void Compare(const TFeatureVector& query, double result, TNearest& nearest, const TNext& next) {
  // Pointers on the stack, filled and used up block by block: a query of a million examples needs no list of them.
  constexpr std::size_t kBlock = 64;
  std::array<const double*, kBlock> candidates;
  const TFeatureVector* example = next();
  while (example != nullptr) {
    std::size_t count = 0;
    for (; example != nullptr && count < kBlock; example = next()) {
      // The same object and not an equal one: a vector that was added as an example is asked about without finding
      // itself, while a duplicate of it counts.
      if (example != &query && example->GetLength() == query.GetLength()) {
        candidates[count++] = example->GetData();
      }
    }
    if (kernels::FindNearestL1(query.GetData(), query.GetLength(), candidates.data(), count, nearest.distance) <
        count) {
      nearest.result = result;
    }
  }
}

void CompareAll(const TFeatureVector& query, const TFeatureVectorList& list, double result, TNearest& nearest) {
  const auto& items = list.GetItems();
  std::size_t i = 0;
  Compare(query, result, nearest, [&] { return i < items.size() ? items[i++] : nullptr; });
}

/// Reads a count and that many vectors. Nothing if the file cannot hold them.
std::optional<TExamples> ReadExamples(std::FILE* file, std::uint32_t length) {
  std::int32_t count = 0;
  if (!ReadInt32(file, count) || count < 0) {
    return std::nullopt;
  }
  const std::optional<std::uint64_t> remaining = base::RemainingBytes(file);
  const std::uint64_t most = length == 0 ? kMaxEmptyExamples : remaining.value_or(0) / (sizeof(double) * length);
  if (!remaining || static_cast<std::uint64_t>(count) > most) {
    return std::nullopt;
  }
  // Only now, when the rest of the file is known to be long enough: a damaged count must not ask for memory.
  TExamples examples(static_cast<std::size_t>(count));
  for (auto& example : examples) {
    example = std::make_unique<TFeatureVector>();
    example->SetLength(length);
    if (!ReadDoubles(file, example->GetData(), length)) {
      return std::nullopt;
    }
  }
  return examples;
}

bool WriteExamples(std::FILE* file, const TFeatureVectorList& list, std::uint32_t length) {
  const auto& items = list.GetItems();
  return WriteInt32(file, static_cast<std::int32_t>(items.size())) &&
         std::all_of(items.begin(), items.end(),
                     [&](const TFeatureVector* example) { return WriteDoubles(file, example->GetData(), length); });
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

TClassifierNearestNeighbor::~TClassifierNearestNeighbor() = default;

double TClassifierNearestNeighbor::Classify(const TFeatureVector& vector) const {
  UpdateBounds();
  if (bounds && vector.GetLength() == Example(0)->GetLength() && bounds->SetQuery(vector.GetData())) {
    return ClassifyWithBounds(vector);
  }
  TNearest nearest;
  // Positives first, and only a smaller distance replaces what was found: on a tie the positive class wins.
  CompareAll(vector, *positiveExamples, 1.0, nearest);
  CompareAll(vector, *negativeExamples, -1.0, nearest);
  return nearest.result;
}

double TClassifierNearestNeighbor::Score(const TFeatureVector& vector) const {
  TNearest positive;
  TNearest negative;
  CompareAll(vector, *positiveExamples, 1.0, positive);
  CompareAll(vector, *negativeExamples, -1.0, negative);
  // One of the two is 0, and the sum is the other class, or 0 where both lists are empty.
  if (positive.result == 0.0 || negative.result == 0.0) {
    return positive.result + negative.result;
  }
  const double sum = negative.distance + positive.distance;
  return sum > 0.0 ? (negative.distance - positive.distance) / sum : 0.0;
}

double TClassifierNearestNeighbor::ClassifyWithBounds(const TFeatureVector& vector) const {
  // The row of the smallest bound is most often the nearest itself. Its true distance is the limit for all others:
  // whatever has a larger bound is out without being read.
  std::size_t promising = bounds->Nearest(std::numeric_limits<std::size_t>::max());
  if (Example(promising) == &vector) {
    promising = bounds->Nearest(promising);
  }
  const double* const values = Example(promising)->GetData();
  double limit = TNearest().distance;
  kernels::FindNearestL1(vector.GetData(), vector.GetLength(), &values, 1, limit);
  // One as near as the promising one may come before it and win the tie.
  TNearest nearest;
  // FindNearestL1 looks for what is strictly nearer; the next double makes that "as near".
  nearest.distance = std::min(std::nextafter(limit, HUGE_VAL), nearest.distance);
  const std::vector<std::uint32_t>& rows = bounds->Within(limit);
  auto row = rows.begin();
  const auto compareUpTo = [&](std::size_t end, double result) {
    Compare(vector, result, nearest, [&] { return row != rows.end() && *row < end ? Example(*row++) : nullptr; });
  };
  compareUpTo(positiveExamples->GetItems().size(), 1.0);
  compareUpTo(std::numeric_limits<std::size_t>::max(), -1.0);
  return nearest.result;
}

const TFeatureVector* TClassifierNearestNeighbor::Example(std::size_t row) const {
  const auto& positives = positiveExamples->GetItems();
  return row < positives.size() ? positives[row] : negativeExamples->GetItems()[row - positives.size()];
}

void TClassifierNearestNeighbor::UpdateBounds() const {
  const std::pair revision(positiveExamples->GetRevision(), negativeExamples->GetRevision());
  // Freed before the new ones are made, as both take an eighth of the examples' memory.
  if (revision != boundsRevision) {
    bounds.reset();
    bounds = MakeBounds();
    boundsRevision = revision;
  }
}

std::unique_ptr<TDistanceBounds> TClassifierNearestNeighbor::MakeBounds() const {
  // What belongs to the caller may change or go without a word.
  if (!positiveExamples->GetOwnsItems() || !negativeExamples->GetOwnsItems()) {
    return nullptr;
  }
  std::vector<const double*> rows;
  std::uint32_t length = 0;
  for (const TFeatureVectorList* list : {positiveExamples.get(), negativeExamples.get()}) {
    for (const TFeatureVector* example : list->GetItems()) {
      // Bounds are for rows of one length. Examples of several are compared one by one.
      if (!rows.empty() && example->GetLength() != length) {
        return nullptr;
      }
      length = example->GetLength();
      rows.push_back(example->GetData());
    }
  }
  return TDistanceBounds::Make(rows, length);
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
  // Longer examples are cut to the first one's length in the file, shorter ones cannot be filled up.
  if (std::any_of(positives.begin(), positives.end(), isShorter) ||
      std::any_of(negatives.begin(), negatives.end(), isShorter)) {
    return false;
  }
  return WriteInt32(file, static_cast<std::int32_t>(length)) && WriteExamples(file, *positiveExamples, length) &&
         WriteExamples(file, *negativeExamples, length);
}

bool TClassifierNearestNeighbor::Load(std::FILE* file) {
  std::int32_t length = 0;
  if (!ReadInt32(file, length) || length < 0 || length > kMaxDimension) {
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
  // After Clear(), which deletes by the ownership of the lists as it was.
  SetCopyExamples(true);
  HandOver(*positives, *positiveExamples);
  HandOver(*negatives, *negativeExamples);
  return true;
}
