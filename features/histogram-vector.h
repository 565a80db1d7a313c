#pragma once

#include <array>
#include <cstdint>
#include <string>

class TFeatureVector;

constexpr std::uint32_t kHistogramLength = 256;

/// The counts of a histogram, one for each value of a byte.
using TByteHistogram = std::array<std::uint64_t, kHistogramLength>;

/// Fills a vector with the name and with each count divided by `total` (0 / 0 gives NaN).
void SetHistogram(const std::string& name, const TByteHistogram& counts, double total, TFeatureVector& vector);
