#include "classifiers/svm-parameter-record.h"

#include <array>
#include <cmath>
#include <cstdint>

#include "classifiers/model-storage.h"

namespace {

/// svm_parameter as 32-bit code lays it out. Written field by field and not as a block of memory, whose pointers and
/// padding differ from machine to machine. Doubles begin at multiples of 8, hence the padding.
struct TParameterRecord {
  std::array<std::int32_t, 4> kinds;    // svm_type, kernel_type, degree, padding
  std::array<double, 5> numbers;        // gamma, coef0, cache_size, eps, C
  std::array<std::int32_t, 4> weights;  // nr_weight, weight_label, weight, padding
  std::array<double, 2> tolerances;     // nu, p
  std::array<std::int32_t, 2> flags;    // shrinking, probability
};

bool WriteIntegers(std::FILE* file, const auto& values) {
  for (const std::int32_t value : values) {
    if (!WriteInt32(file, value)) {
      return false;
    }
  }
  return true;
}

bool ReadIntegers(std::FILE* file, auto& values) {
  for (std::int32_t& value : values) {
    if (!ReadInt32(file, value)) {
      return false;
    }
  }
  return true;
}

/// For a record from a file, which must be one that the library can train with: other kinds of machine need other data,
/// and weights would be sought behind pointers that no file can hold.
bool ParametersAreValid(const svm_parameter& parameter) {
  // One tebibyte is nobody's cache; the library would multiply it by 2^20 into a number of bytes.
  constexpr double kMaxCacheSize = 1 << 20;  // megabytes
  // Beyond what svm_check_parameter asks: its tests are of the form "C <= 0", which a NaN passes. C-SVC does not use nu
  // and p, so that any number will do.
  return parameter.svm_type == C_SVC &&
         (parameter.kernel_type == LINEAR || parameter.kernel_type == POLY || parameter.kernel_type == RBF) &&
         parameter.degree >= 0 && std::isfinite(parameter.gamma) && parameter.gamma >= 0 &&
         std::isfinite(parameter.coef0) && parameter.cache_size > 0 && parameter.cache_size <= kMaxCacheSize &&
         std::isfinite(parameter.eps) && parameter.eps > 0 && std::isfinite(parameter.C) && parameter.C > 0 &&
         parameter.nr_weight == 0 && std::isfinite(parameter.nu) && std::isfinite(parameter.p) &&
         (parameter.shrinking == 0 || parameter.shrinking == 1) && parameter.probability == 0;
}

}  // namespace

std::optional<svm_parameter> ReadSvmParameters(std::FILE* file) {
  TParameterRecord record = {};
  if (!ReadIntegers(file, record.kinds) || !ReadDoubles(file, record.numbers.data(), record.numbers.size()) ||
      !ReadIntegers(file, record.weights) || !ReadDoubles(file, record.tolerances.data(), record.tolerances.size()) ||
      !ReadIntegers(file, record.flags) || record.weights[1] != 0 || record.weights[2] != 0) {
    return std::nullopt;
  }
  svm_parameter parameter = {};
  parameter.svm_type = record.kinds[0];
  parameter.kernel_type = record.kinds[1];
  parameter.degree = record.kinds[2];
  parameter.gamma = record.numbers[0];
  parameter.coef0 = record.numbers[1];
  parameter.cache_size = record.numbers[2];
  parameter.eps = record.numbers[3];
  parameter.C = record.numbers[4];
  parameter.nr_weight = record.weights[0];
  parameter.nu = record.tolerances[0];
  parameter.p = record.tolerances[1];
  parameter.shrinking = record.flags[0];
  parameter.probability = record.flags[1];
  return ParametersAreValid(parameter) ? std::optional(parameter) : std::nullopt;
}

bool WriteSvmParameters(std::FILE* file, const svm_parameter& parameters) {
  const TParameterRecord record = {
      {parameters.svm_type, parameters.kernel_type, parameters.degree, 0},
      {parameters.gamma, parameters.coef0, parameters.cache_size, parameters.eps, parameters.C},
      {parameters.nr_weight, 0, 0, 0},
      {parameters.nu, parameters.p},
      {parameters.shrinking, parameters.probability}};
  return WriteIntegers(file, record.kinds) && WriteDoubles(file, record.numbers.data(), record.numbers.size()) &&
         WriteIntegers(file, record.weights) &&
         WriteDoubles(file, record.tolerances.data(), record.tolerances.size()) && WriteIntegers(file, record.flags);
}
