#include "benchmarks/report.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <numeric>
#include <utility>

#include <hwy/targets.h>

#include "benchmarks/simd-level.h"

namespace {

constexpr std::array<int, 3> kGrowthSizes = {1000, 10000, 100000};

std::string Format(const char* format, double value) {
  std::array<char, 64> text;
  std::snprintf(text.data(), text.size(), format, value);
  return text.data();
}

/// Three digits in the largest unit that leaves something before the point.
std::string WithUnit(double value, TUnit unit) {
  if (unit == TUnit::kNumber) {
    return Format("%.3f", value);
  }
  if (unit == TUnit::kBytes) {
    return Format("%.1f MB", value / 1e6);
  }
  for (const auto& [size, name] : {std::pair(1.0, " s"), std::pair(1e-3, " ms"), std::pair(1e-6, " us")}) {
    if (value >= size) {
      return Format(value / size < 100 ? "%.3g" : "%.0f", value / size) + name;
    }
  }
  return Format("%.3g ns", value * 1e9);
}

double MedianOf(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return values.size() % 2 == 1 ? *middle : (*middle + *std::max_element(values.begin(), middle)) / 2;
}

double CoefficientOfVariation(const std::vector<double>& values) {
  const auto count = static_cast<double>(values.size());
  const double mean = std::accumulate(values.begin(), values.end(), 0.0) / count;
  const double squares = std::accumulate(values.begin(), values.end(), 0.0, [mean](double sum, double value) {
    return sum + (value - mean) * (value - mean);
  });
  return std::sqrt(squares / (count - 1)) / mean;
}

}  // namespace

bool TReport::ReportContext(const Context& /*context*/) {
  return true;
}

void TReport::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    const std::string& arguments = run.run_name.args;
    const std::string name = run.run_name.function_name + (arguments.empty() ? "" : "/" + arguments);
    if (run.error_occurred) {
      errors[name] = run.error_message;
    } else if (run.run_type == Run::RT_Iteration) {
      auto& figures = repetitions[name];
      figures[""].push_back(run.cpu_accumulated_time / static_cast<double>(run.iterations));
      for (const auto& [counter, value] : run.counters) {
        figures[counter].push_back(value);
      }
    }
  }
}

void TReport::PrintTables() const {
  std::string rows;
  for (const TRow& row : Rows()) {
    rows += RowText(row);
  }
  if (!rows.empty()) {
    std::printf("| What | Ours | Beside | Ratio | Target | |\n|---|---|---|---|---|---|\n%s\n", rows.c_str());
  }
  std::string growth;
  for (const TGrowthRow& row : GrowthRows()) {
    growth += GrowthText(row);
  }
  if (!growth.empty()) {
    std::printf(
        "Time for each image among so many; n log n alone would grow by %.2f.\n\n"
        "| What | 1,000 | 10,000 | 100,000 | Growth |\n|---|---|---|---|---|\n%s\n",
        std::log(kGrowthSizes.back()) / std::log(kGrowthSizes.front()), growth.c_str());
  }
  std::printf("SSE2 stands for the level %s: plain code compiled for SSE2. The other libraries run at their best.\n",
              hwy::TargetName(kPlain));
  PrintNoise();
  for (const auto& [name, message] : errors) {
    std::printf("%s was skipped: %s\n", name.c_str(), message.c_str());
  }
}

double TReport::Median(const std::string& benchmark, const std::string& counter) const {
  const auto known = repetitions.find(benchmark);
  // A benchmark that failed once may have counted what it did not do.
  if (known == repetitions.end() || !known->second.contains(counter) || errors.contains(benchmark)) {
    return -1.0;
  }
  return MedianOf(known->second.at(counter));
}

std::string TReport::RowText(const TRow& row) const {
  double ours = -1.0;
  for (const std::string& benchmark : row.ours) {
    const double value = Median(benchmark, row.figure.counter);
    if (value < 0) {
      return "";
    }
    ours = std::max(ours, value);
  }
  double best = -1.0;
  std::string label;
  for (const TPeer& peer : row.peers) {
    const double value = peer.benchmark.empty() ? peer.value : Median(peer.benchmark, row.figure.counter);
    if (value >= 0 && (best < 0 || value < best)) {
      best = value;
      label = peer.label;
    }
  }
  if (best < 0) {
    return "";
  }
  const double ratio = ours / best;
  const std::string target = row.limit > 0 ? Format("<= %.3g", row.limit) : "-";
  const std::string verdict = row.limit <= 0 ? "-" : ratio <= row.limit ? "met" : "**not met**";
  return "| " + row.title + " | " + WithUnit(ours, row.figure.unit) + " | " + label + ": " +
         WithUnit(best, row.figure.unit) + " | " + Format("%.2f", ratio) + " | " + target + " | " + verdict + " |\n";
}

std::string TReport::GrowthText(const TGrowthRow& row) const {
  std::string text = "| " + row.title;
  std::array<double, kGrowthSizes.size()> times;
  for (std::size_t i = 0; i < times.size(); ++i) {
    times[i] = Median(row.benchmark + "/" + std::to_string(kGrowthSizes[i]), "") / kGrowthSizes[i];
    if (times[i] < 0) {
      return "";
    }
    text += " | " + WithUnit(times[i], TUnit::kSeconds);
  }
  return text + " | " + Format("%.2f", times.back() / times.front()) + " |\n";
}

void TReport::PrintNoise() const {
  std::vector<double> variations;
  std::string worst;
  for (const auto& [name, figures] : repetitions) {
    if (figures.at("").size() > 1) {
      const double variation = CoefficientOfVariation(figures.at(""));
      if (variations.empty() || variation > *std::max_element(variations.begin(), variations.end())) {
        worst = name;
      }
      variations.push_back(variation);
    }
  }
  if (!variations.empty()) {
    std::printf("Coefficient of variation over the repetitions: %.1f %% in the median, %.1f %% at most (%s).\n",
                100 * MedianOf(variations), 100 * *std::max_element(variations.begin(), variations.end()),
                worst.c_str());
  }
}
