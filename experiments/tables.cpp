#include "experiments/tables.h"

#include <vector>

#include "base/format-string.h"
#include "base/text.h"
#include "experiments/encoding.h"

namespace {

using TFields = std::vector<std::string>;

std::string Number(double number) {
  // Eight decimals in every table, as in the curve of the command evaluateindex.
  // The decimal point is that of the locale, for which main has chosen "C".
  return FormatString("%.8f", number);
}

std::string Line(const TFields& fields) {
  // What may hold a TAB or a line feed is encoded before it comes here; numbers and fixed names hold none.
  return base::Join(fields, "\t").append(1, '\n');
}

}  // namespace

std::string FormatTopicsHeading() {
  TFields heading = {"set", "qid", "picture", "tag", "relevant"};
  // In the order of TMeasure, which is that of the values in the rows.
  heading.insert(heading.end(), kMeasureNames.begin(), kMeasureNames.end());
  return Line(heading);
}

std::string FormatTopics(const TExperiment& experiment, std::size_t set) {
  std::string table;
  for (std::size_t i = 0; i < experiment.topics.size(); ++i) {
    const TTopic& topic = experiment.topics[i];
    // The qid is encoded as it is in the runs, which it leads to.
    TFields fields = {EncodeField(experiment.sets[set]), topic.qid, EncodeField(topic.picture), EncodeField(topic.tag),
                      std::to_string(topic.relevant)};
    for (const double value : experiment.results[set][i].measures) {
      fields.push_back(Number(value));
    }
    table += Line(fields);
  }
  return table;
}

std::string FormatSummary(const TExperiment& experiment) {
  std::string table = Line({"set", "tag", "measure", "topics", "mean", "low", "high"});
  for (const TSummaryRow& row : experiment.summary) {
    // Empty and not 0 where a row has no interval, as that of a single tag.
    table += Line({EncodeField(experiment.sets[row.set]), EncodeField(row.tag),
                   std::string(kMeasureNames[static_cast<std::size_t>(row.measure)]), std::to_string(row.topics),
                   Number(row.mean), row.interval ? Number(row.interval->low) : std::string(),
                   row.interval ? Number(row.interval->high) : std::string()});
  }
  return table;
}

std::string FormatComparisons(const TExperiment& experiment) {
  std::string table = Line({"a", "b", "difference", "low", "high", "wins", "ties", "losses", "p", "p_holm"});
  for (const TComparison& each : experiment.comparisons) {
    // Eight decimals do for p as well: the smallest that 100,000 draws can give is 0.00001.
    table += Line({EncodeField(experiment.sets[each.a]), EncodeField(experiment.sets[each.b]), Number(each.difference),
                   Number(each.interval.low), Number(each.interval.high), std::to_string(each.wins),
                   std::to_string(each.ties), std::to_string(each.losses), Number(each.p), Number(each.pHolm)});
  }
  return table;
}

std::string FormatCurves(const TExperiment& experiment) {
  std::string table = Line({"set", "recall", "precision"});
  for (std::size_t set = 0; set < experiment.sets.size(); ++set) {
    for (std::size_t level = 0; level < kRecallLevels; ++level) {
      table += Line({EncodeField(experiment.sets[set]), FormatString("%zu.%zu", level / 10, level % 10),
                     Number(experiment.curves[set][level])});
    }
  }
  return table;
}

std::string FormatConcepts(const TMeasuredConcepts& measured) {
  std::string table = Line({"tag", "classifier", "features", "taught", "asked", "segments", "tp", "fp", "tn", "fn",
                            "auc_fraction", "auc_score", "mse"});
  for (const TMeasuredConcept& each : measured.concepts) {
    const TSegmentCounts counts = each.CountSegments();
    TFields fields = {EncodeField(each.tag), each.classifier, EncodeField(measured.features)};
    for (const std::size_t count : {each.taught, each.asked.size(), counts.GetTotal(), counts.truePositives,
                                    counts.falsePositives, counts.trueNegatives, counts.falseNegatives}) {
      fields.push_back(std::to_string(count));
    }
    fields.push_back(Number(each.areaByFraction));
    fields.push_back(Number(each.areaByScore));
    // Empty and not 0: a classifier without a training error has not trained without errors.
    fields.push_back(each.meanSquareError ? Number(*each.meanSquareError) : std::string());
    table += Line(fields);
  }
  return table;
}

std::string FormatSegmentsHeading() {
  return Line({"tag", "classifier", "picture", "x", "y", "width", "height", "score", "positive"});
}

std::string FormatSegments(const TMeasuredConcept& measured, const std::vector<std::string>& names) {
  std::string table;
  for (const TAskedPicture& asked : measured.asked) {
    // The same for all segments of a picture, encoded once.
    const std::string start =
        EncodeField(measured.tag) + "\t" + measured.classifier + "\t" + EncodeField(names[asked.picture]);
    for (const TAskedSegment& each : asked.segments) {
      table += Line({start, std::to_string(each.x), std::to_string(each.y), std::to_string(each.width),
                     std::to_string(each.height), Number(each.score), each.isPositive ? "1" : "0"});
    }
  }
  return table;
}

std::string FormatDamage(const TDamageList& damage) {
  std::string table = Line({"file", "line", "reason"});
  for (const TDamage& each : damage) {
    // The bytes of a name stay as they are, UTF-8 or not: it has to lead to the file.
    table += Line({EncodeField(each.file), std::to_string(each.line), EncodeField(each.reason)});
  }
  return table;
}
