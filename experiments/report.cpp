#include "experiments/report.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <string_view>

#include "base/format-string.h"
#include "experiments/curve-chart.h"
#include "experiments/html.h"
#include "experiments/report-style.h"

namespace {

// The tables have eight decimals; people compare by two or three.
constexpr int kDecimals = 3;

/// In the order of TMeasure.
constexpr std::array<std::string_view, kMeasureCount> kMeasureTitles = {
    "average precision", "precision at 1",  "precision at 5", "precision at 10", "precision at 20",
    "R-precision",       "reciprocal rank", "nDCG at 10",     "recall at 100",   "average precision over all ranks"};

std::string TitleOf(std::size_t measure) {
  return std::string(kMeasureTitles[measure]) + " (" + std::string(kMeasureNames[measure]) + ")";
}

std::string Decimals(double number) {
  return FormatDecimals(number, kDecimals);
}

std::string FormatInterval(const TInterval& interval) {
  return FormatString("[%s, %s]", Decimals(interval.low).c_str(), Decimals(interval.high).c_str());
}

/// A number of things, with the name of one and of several.
std::string Count(std::size_t number, const char* one, const char* several) {
  return FormatString("%zu %s", number, number == 1 ? one : several);
}

std::string SetHeadings(const TExperiment& experiment) {
  std::string headings;
  for (const std::string& set : experiment.sets) {
    headings += FormatColumnHeading(EscapeHtml(set));
  }
  return headings;
}

/// The row of a set over all topics.
const TSummaryRow& OverAll(const TExperiment& experiment, std::size_t set, std::size_t measure) {
  // There always is one: Summarise makes a row for each set and measure.
  return *std::find_if(experiment.summary.begin(), experiment.summary.end(), [&](const TSummaryRow& row) {
    return row.set == set && row.tag.empty() && static_cast<std::size_t>(row.measure) == measure;
  });
}

std::string FormatSummaryTable(const TExperiment& experiment) {
  std::string rows;
  for (std::size_t measure = 0; measure < kMeasureCount; ++measure) {
    rows += "<tr>" + FormatRowHeading(TitleOf(measure));
    for (std::size_t set = 0; set < experiment.sets.size(); ++set) {
      const TSummaryRow& row = OverAll(experiment, set, measure);
      rows += FormatCell(Decimals(row.mean) + " <span class=\"interval\">" + FormatInterval(*row.interval) + "</span>");
    }
    rows += "</tr>\n";
  }
  return FormatTable("Means over all topics, with their 95 percent intervals",
                     FormatColumnHeading("measure") + SetHeadings(experiment), rows);
}

/// A bar from 0 to the mean, and a line over it from one end of the interval to the other.
std::string FormatBar(const TSummaryRow& row) {
  const auto percent = [](double part) { return FormatDecimals(100.0 * part, 2) + "%"; };
  const std::string low = percent(row.interval->low);
  const std::string high = percent(row.interval->high);
  // Hidden from screen readers, which read the number behind it. Percentages let the page's style decide the size.
  return "<svg aria-hidden=\"true\"><rect class=\"scale\" width=\"100%\" height=\"100%\"/><rect y=\"15%\" width=\"" +
         percent(row.mean) + "\" height=\"70%\" fill=\"" + ColorOfSet(row.set) + "\"/><line class=\"whisker\" x1=\"" +
         low + "\" x2=\"" + high + "\" y1=\"50%\" y2=\"50%\"/><line class=\"whisker\" x1=\"" + low + "\" x2=\"" + low +
         "\" y1=\"25%\" y2=\"75%\"/><line class=\"whisker\" x1=\"" + high + "\" x2=\"" + high +
         "\" y1=\"25%\" y2=\"75%\"/></svg>";
}

std::string FormatBars(const TExperiment& experiment) {
  std::string bars =
      "<p>Each bar goes from 0 to 1; the line across its end is the interval.</p>\n<div class=\"bars\">\n";
  for (std::size_t measure = 0; measure < kMeasureCount; ++measure) {
    bars += "<div><h4>" + TitleOf(measure) + "</h4>\n<ul>\n";
    for (std::size_t set = 0; set < experiment.sets.size(); ++set) {
      const TSummaryRow& row = OverAll(experiment, set, measure);
      bars += "<li><span class=\"name\">" + EscapeHtml(experiment.sets[set]) + "</span>" + FormatBar(row) +
              "<span class=\"value\">" + Decimals(row.mean) + "</span></li>\n";
    }
    bars += "</ul></div>\n";
  }
  return bars + "</div>\n";
}

TReportSection FormatSummarySection(const TExperiment& experiment) {
  return {"summary", "Summary",
          "<h3>Table</h3>\n" + FormatSummaryTable(experiment) + "<h3>Bars</h3>\n" + FormatBars(experiment)};
}

/// Which of the two is better, by how much, and whether that is more than luck.
std::string FormatComparison(const TExperiment& experiment, const TComparison& comparison) {
  // R. Fisher's convention. Taken against the p after Holm's correction, so that it holds for all comparisons of the
  // report together.
  constexpr double kLevel = 0.05;
  // What four decimals would show as 0.0000; the smallest p of 100,000 draws is 0.00001.
  constexpr double kLeastShown = 0.00005;
  const auto probability = [](double p) { return p < kLeastShown ? "p &lt; 0.0001" : "p = " + FormatDecimals(p, 4); };
  // The sentence names the better set first, whichever stands first in the table.
  const bool isTurned = comparison.difference < 0.0;
  const std::string better = EscapeHtml(experiment.sets[isTurned ? comparison.a : comparison.b]);
  const std::string worse = EscapeHtml(experiment.sets[isTurned ? comparison.b : comparison.a]);
  // The ends of an interval change places with its sign.
  const TInterval interval =
      isTurned ? TInterval{-comparison.interval.high, -comparison.interval.low} : comparison.interval;
  const std::string figures = Decimals(isTurned ? -comparison.difference : comparison.difference) + " " +
                              FormatInterval(interval) + ", " + probability(comparison.p);
  // Only exactly 0 is no difference: of one that rounds to 0.000 the sentence still names the better set.
  std::string sentence = "<strong>" + better + (comparison.difference == 0.0 ? " is as good as " : " is better than ") +
                         worse + (comparison.difference == 0.0 ? ": " : " by ") + figures + "</strong>";
  if (experiment.comparisons.size() > 1) {
    sentence += " (" + probability(comparison.pHolm) + " after Holm's correction)";
  }
  if (comparison.difference != 0.0) {
    sentence += comparison.pHolm < kLevel ? ". That is more than luck" : ". That may be luck";
  }
  return sentence + FormatString(": of %s %s does better on %zu, as well on %zu, worse on %zu.",
                                 Count(experiment.topics.size(), "topic", "topics").c_str(), better.c_str(),
                                 isTurned ? comparison.losses : comparison.wins, comparison.ties,
                                 isTurned ? comparison.wins : comparison.losses);
}

TReportSection FormatComparisonSection(const TExperiment& experiment) {
  if (experiment.comparisons.empty()) {
    return {"comparisons", "Comparisons", "<p>There is one set only, and nothing to compare it with.</p>\n"};
  }
  std::string body =
      "<p>By average precision: the mean difference, its 95 percent interval, and how often a difference as large "
      "comes "
      "about by lot. What has p below 0.05 after the correction for the number of comparisons counts as more than "
      "luck.</p>\n<ul>\n";
  for (const TComparison& comparison : experiment.comparisons) {
    body += "<li>" + FormatComparison(experiment, comparison) + "</li>\n";
  }
  return {"comparisons", "Comparisons", body + "</ul>\n"};
}

TReportSection FormatCurveSection(const TExperiment& experiment) {
  const std::string drawing = DrawCurves(experiment);
  const std::string figure =
      drawing.empty()
          ? "<p>The curves are not drawn: gnuplot is not installed, or failed. The table has their numbers.</p>\n"
          : "<figure>\n" + drawing + "</figure>\n";
  std::string rows;
  for (std::size_t level = 0; level < kRecallLevels; ++level) {
    rows += "<tr>" + FormatRowHeading(FormatString("%zu.%zu", level / 10, level % 10));
    for (const TCurve& curve : experiment.curves) {
      rows += FormatCell(Decimals(curve[level]));
    }
    rows += "</tr>\n";
  }
  return {"curves", "Recall and precision",
          figure + FormatTable("Interpolated precision at levels of recall, mean over all topics",
                               FormatColumnHeading("recall") + SetHeadings(experiment), rows)};
}

/// Nothing where no topic has a tag.
std::optional<TReportSection> FormatTagSection(const TExperiment& experiment) {
  // By tag: the row of each set. The summary has them set by set.
  std::map<std::string, std::vector<const TSummaryRow*>> tags;
  for (const TSummaryRow& row : experiment.summary) {
    if (!row.tag.empty() && row.measure == TMeasure::kAp) {
      tags[row.tag].push_back(&row);
    }
  }
  // Rankings of other programs have topics without tags.
  if (tags.empty()) {
    return std::nullopt;
  }
  std::string rows;
  for (const auto& [tag, means] : tags) {
    // No precision is below 0, and where all are 0 all share the first place.
    double best = 0.0;
    for (const TSummaryRow* row : means) {
      best = std::max(best, row->mean);
    }
    rows += "<tr>" + FormatRowHeading(EscapeHtml(tag)) + FormatCell(std::to_string(means.front()->topics));
    for (const TSummaryRow* row : means) {
      const std::string number = Decimals(row->mean);
      // Equal to the last bit: sets that share the first place are both in bold type.
      rows += FormatCell(row->mean == best && means.size() > 1 ? "<strong>" + number + "</strong>" : number);
    }
    rows += "</tr>\n";
  }
  const std::string caption = experiment.sets.size() > 1
                                  ? "Mean average precision by tag; the best of each row is in bold type"
                                  : "Mean average precision by tag";
  return TReportSection{
      "tags", "Tags",
      FormatTable(caption, FormatColumnHeading("tag") + FormatColumnHeading("topics") + SetHeadings(experiment), rows)};
}

std::string FormatIntroduction(const TExperiment& experiment) {
  std::string sets;
  for (const std::string& set : experiment.sets) {
    sets.append(sets.empty() ? "" : ", ").append(EscapeHtml(set));
  }
  std::string text = "<p>" + Count(experiment.topics.size(), "topic", "topics") + " of " +
                     Count(experiment.queryCount, "query", "queries") + ", measured for " +
                     Count(experiment.sets.size(), "set", "sets") + ": " + sets + ".</p>\n";
  if (!experiment.damage.empty()) {
    text += "<p><strong>" + Count(experiment.damage.size(), "file or line was", "files or lines were") +
            " skipped;</strong> damage.tsv says which, and why.</p>\n";
  }
  return text;
}

}  // namespace

std::string FormatReport(const TExperiment& experiment, const std::vector<TReportSection>& more) {
  std::vector<TReportSection> sections = {FormatSummarySection(experiment), FormatComparisonSection(experiment),
                                          FormatCurveSection(experiment)};
  if (auto tags = FormatTagSection(experiment)) {
    sections.push_back(std::move(*tags));
  }
  sections.insert(sections.end(), more.begin(), more.end());

  std::string links;
  std::string bodies;
  for (const TReportSection& section : sections) {
    const std::string heading = EscapeHtml(section.heading);
    links += "<li><a href=\"#" + section.id + "\">" + heading + "</a></li>\n";
    bodies.append("<section id=\"" + section.id + "\">\n<h2>" + heading + "</h2>\n").append(section.body);
    bodies += "</section>\n";
  }
  // One file, with style and pictures in it: a report is mailed and archived.
  // The encoding comes first, as browsers look for it in the first 1,024 bytes alone (HTML standard).
  return std::string("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\"/>\n") +
         "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"/>\n"
         "<title>Report of an experiment</title>\n<style>" +
         kReportStyle + "</style>\n</head>\n<body>\n<header>\n<h1>Report of an experiment</h1>\n" +
         FormatIntroduction(experiment) + "<nav aria-label=\"Sections\"><ul>\n" + links +
         "</ul></nav>\n</header>\n<main>\n" + bodies + "</main>\n</body>\n</html>\n";
}
