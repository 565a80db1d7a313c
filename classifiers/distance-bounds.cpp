#include "classifiers/distance-bounds.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "kernels/byte-distance.h"

namespace {

// As many as a byte has.
constexpr double kLevels = 256.0;

/// Shorter rows, filled up to whole units, would take too much of the rows' own memory.
constexpr std::size_t kLeastLength = kernels::kByteRowUnit;
/// The distances of longer ones do not fit into 32 bits.
constexpr std::size_t kMostLength = std::size_t{1} << 24;
/// So few are compared with a query as fast as it is rounded.
constexpr std::size_t kLeastRows = 32;

/// More than the rounding of doubles can make of a level, which is at most 256 and the result of a few operations.
constexpr double kLevelError = 1e-12;
/// More than the rounding of doubles can make, as a part of it, of a sum of up to 2^24 numbers.
constexpr double kSumError = 1e-8;

}  // namespace

std::unique_ptr<TDistanceBounds> TDistanceBounds::Make(const std::vector<const double*>& rows, std::size_t length) {
  if (rows.size() < kLeastRows || rows.size() > std::numeric_limits<std::uint32_t>::max() || length < kLeastLength ||
      length > kMostLength) {
    return nullptr;
  }
  double lowest = rows.front()[0];
  double highest = lowest;
  bool isFinite = true;
  for (const double* row : rows) {
    for (std::size_t i = 0; i < length; ++i) {
      isFinite &= std::isfinite(row[i]);
      lowest = std::min(lowest, row[i]);
      highest = std::max(highest, row[i]);
    }
  }
  const double step = (highest - lowest) / (kLevels - 1.0);
  // A step of 0 (all numbers alike) cannot be divided by, a denormal one has lost the digits that the bound needs, and
  // an infinite one comes of a range beyond the largest double.
  if (!isFinite || !std::isnormal(step)) {
    return nullptr;
  }
  return std::unique_ptr<TDistanceBounds>(new TDistanceBounds(rows, length, lowest, step));
}

TDistanceBounds::TDistanceBounds(const std::vector<const double*>& rows, std::size_t theLength, double theLowest,
                                 double theStep)
    : length(theLength),
      pitch((theLength + kernels::kByteRowUnit - 1) / kernels::kByteRowUnit * kernels::kByteRowUnit),
      lowest(theLowest),
      step(theStep),
      bytes(rows.size() * pitch),
      moved(rows.size()),
      queryBytes(pitch),
      distances(rows.size()) {
  for (std::size_t row = 0; row < rows.size(); ++row) {
    const auto distance = static_cast<float>(Round(rows[row], bytes.data() + row * pitch));
    // The conversion to single precision may round down; the next float is certainly not below. A float each saves half
    // of the memory.
    moved[row] = std::nextafter(distance, std::numeric_limits<float>::max());
  }
}

double TDistanceBounds::Round(const double* numbers, std::uint8_t* rounded) const {
  double sum = 0.0;
  for (std::size_t i = 0; i < length; ++i) {
    const double level = std::clamp((numbers[i] - lowest) / step, 0.0, kLevels - 1.0);
    // To the nearest level, so that no number moves by more than half a step. Which way the middle between two goes
    // makes no difference to the bound; std::lround would ask the library each time.
    rounded[i] = static_cast<std::uint8_t>(level + 0.5);  // NOLINT(bugprone-incorrect-roundings)
    sum += std::fabs(level - static_cast<double>(rounded[i]));
  }
  // An upper limit of what the exact sum would be: this value is subtracted from distances, and must not be too small.
  return sum * (1.0 + kSumError) + static_cast<double>(length) * kLevelError;
}

bool TDistanceBounds::SetQuery(const double* query) {
  if (!std::all_of(query, query + length, [](double number) { return std::isfinite(number); })) {
    return false;
  }
  queryMoved = Round(query, queryBytes.data());
  kernels::ByteDistances(queryBytes.data(), bytes.data(), pitch, distances.size(), distances.data());
  return true;
}

std::size_t TDistanceBounds::Nearest(std::size_t excluded) const {
  std::size_t nearest = excluded == 0 ? 1 : 0;
  double least = Bound(nearest);
  for (std::size_t row = nearest + 1; row < distances.size(); ++row) {
    const double bound = Bound(row);
    if (bound < least && row != excluded) {
      least = bound;
      nearest = row;
    }
  }
  return nearest;
}

const std::vector<std::uint32_t>& TDistanceBounds::Within(double distance) {
  // In steps, and a little larger for the rounding of the sums on the other side.
  const double limit = (distance / step + queryMoved) * (1.0 + kSumError);
  within.clear();
  for (std::size_t row = 0; row < distances.size(); ++row) {
    if (Bound(row) <= limit) {
      within.push_back(static_cast<std::uint32_t>(row));
    }
  }
  return within;
}

std::size_t TDistanceBounds::GetMemory() const {
  return bytes.capacity() + moved.capacity() * sizeof(float) + queryBytes.capacity() +
         (distances.capacity() + within.capacity()) * sizeof(std::uint32_t);
}
