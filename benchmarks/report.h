#pragma once

#include <map>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

/// A figure of a benchmark and how it is written.
enum class TUnit { kSeconds, kBytes, kNumber };
struct TFigure {
  /// The counter that holds it; empty for the processor time of an iteration.
  std::string counter;
  TUnit unit;
};
inline const TFigure kProcessorTime = {"", TUnit::kSeconds};

/// What stands beside a row's own benchmark: another benchmark or, without one, a value that is known.
struct TPeer {
  std::string label;
  std::string benchmark;
  double value = 0.0;
};

/// A line of the table of ratios. Benchmarks are named with their arguments ("BM_SiftDetect/640/480"). Of several own
/// benchmarks the dearest counts, of several peers the cheapest.
struct TRow {
  std::string title;
  std::vector<std::string> ours;
  std::vector<TPeer> peers;
  /// The largest ratio that meets the target; 0 without a target.
  double limit = 0.0;
  TFigure figure = kProcessorTime;
};

/// A line of the table of growth: the benchmark's time divided by its argument, the number of images.
struct TGrowthRow {
  std::string title;
  std::string benchmark;
};

/// The lines, in rows.cpp.
const std::vector<TRow>& Rows();
const std::vector<TGrowthRow>& GrowthRows();

/// Collects the repetitions of a run and prints their medians as tables in Markdown.
class TReport : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context& context) override;
  void ReportRuns(const std::vector<Run>& runs) override;

  /// Leaves out the lines whose benchmarks were not run, and says below what was skipped and why.
  void PrintTables() const;

 private:
  /// The median of the repetitions; below 0 without any.
  double Median(const std::string& benchmark, const std::string& counter) const;
  /// Empty if one of the row's own benchmarks, or all peers, were not run or failed.
  std::string RowText(const TRow& row) const;
  std::string GrowthText(const TGrowthRow& row) const;
  void PrintNoise() const;

  /// The repetitions of each benchmark by counter; the processor time stands under the empty name.
  std::map<std::string, std::map<std::string, std::vector<double>>> repetitions;
  std::map<std::string, std::string> errors;
};
