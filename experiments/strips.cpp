#include "experiments/strips.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <numeric>
#include <span>
#include <vector>

#include "base/console.h"
#include "base/format-string.h"
#include "experiments/html.h"
#include "images/image-rgb.h"
#include "images/tile.h"
#include "kernels/l1-distance-tile.h"

namespace {

constexpr std::size_t kMostStrips = 10;
// CountOfTop keeps that many ranks of a ranking even where --depth is less. Both numbers change together.
constexpr std::size_t kMostResults = 8;

/// The distances of a strip's results, feature by feature.
struct TStripDistances {
  /// By result; the sum over the features.
  std::vector<double> totals;
  /// By feature of the set; the sum over the results that can be compared.
  std::vector<double> ofFeatures;
};

class TStripWriter {
 public:
  TStripWriter(const TPlan& thePlan, const TFeatureTable& theTable, const TCollected& theCollected)
      : plan(thePlan), table(theTable), collected(theCollected) {}

  std::string FormatSet(std::size_t set) {
    const auto& results = collected.experiment.results[set];
    const auto precision = [&](std::size_t topic) { return ValueOf(results[topic].measures, TMeasure::kAp); };
    std::vector<std::size_t> topics(results.size());
    std::iota(topics.begin(), topics.end(), std::size_t{0});
    // No topic stands in both lists.
    const std::size_t bestCount = std::min(kMostStrips, (topics.size() + 1) / 2);
    const auto end = topics.begin() + static_cast<std::ptrdiff_t>(bestCount);
    // Ties stay in the order of the topics, so that the same experiment gives the same page.
    std::stable_sort(topics.begin(), topics.end(),
                     [&](std::size_t a, std::size_t b) { return precision(a) > precision(b); });
    std::vector<std::size_t> worst(end, topics.end());
    std::sort(worst.begin(), worst.end(), [&](std::size_t a, std::size_t b) {
      return precision(a) != precision(b) ? precision(a) < precision(b) : a < b;
    });
    worst.resize(std::min(kMostStrips, worst.size()));
    std::string html = "<h3>" + EscapeHtml(plan.setNames[set]) + "</h3>\n";
    html += FormatList("best", {topics.begin(), end}, set);
    return worst.empty() ? html : html + FormatList("worst", worst, set);
  }

  /// Empty if every picture that was drawn is the one that was measured.
  const std::string& GetChanged() const { return changed; }

 private:
  std::string FormatList(const char* which, const std::vector<std::size_t>& topics, std::size_t set) {
    std::string count;
    if (topics.size() > 1) {
      count = topics.size() == kMostStrips ? "ten " : FormatString("%zu ", topics.size());
    }
    std::string html = FormatString("<h4>%s: the %s%s %s</h4>\n", EscapeHtml(plan.setNames[set]).c_str(), count.c_str(),
                                    which, topics.size() == 1 ? "query" : "queries");
    for (const std::size_t topic : topics) {
      html += FormatStrip(topic, set);
    }
    return html;
  }

  std::string FormatStrip(std::size_t number, std::size_t set) {
    const TTopic& topic = collected.experiment.topics[number];
    const double precision = ValueOf(collected.experiment.results[set][number].measures, TMeasure::kAp);
    const std::uint32_t query = collected.topics.queries[topic.query];
    const auto top = collected.GetTop(topic.query, set);
    const std::span<const std::int32_t> shown = top.first(std::min(kMostResults, top.size()));
    const TStripDistances distances = Measure(query, shown, set);
    const std::vector<std::uint32_t>& carriers = plan.truth.carriers.at(topic.tag);
    std::string html = "<div class=\"strip\">\n<p><strong>" + EscapeHtml(topic.tag) +
                       "</strong>: " + EscapeHtml(topic.picture) + ", average precision " +
                       FormatDecimals(precision, 3) + "</p>\n";
    html += "<ol class=\"row\">\n<li class=\"query\"><figure>" + FormatFrame(query) +
            "<figcaption>query <span class=\"file\">" + EscapeHtml(topic.picture) +
            "</span></figcaption></figure></li>\n";
    for (std::size_t i = 0; i < shown.size(); ++i) {
      const auto picture = static_cast<std::uint32_t>(shown[i]);
      const bool isRelevant = std::binary_search(carriers.begin(), carriers.end(), picture);
      const std::string distance = std::isinf(distances.totals[i]) ? "\u221e" : FormatDecimals(distances.totals[i], 4);
      html += FormatString("<li class=\"%s\"><figure>", isRelevant ? "yes" : "no") + FormatFrame(picture) +
              FormatString(
                  "<figcaption>%zu <span class=\"mark\" aria-hidden=\"true\">%s</span><span "
                  "class=\"unseen\">%s, distance</span> %s",
                  i + 1, isRelevant ? "\u2713" : "\u2717", isRelevant ? "relevant" : "not relevant", distance.c_str()) +
              " <span class=\"file\">" + EscapeHtml(plan.collection.names[picture]) +
              "</span></figcaption></figure></li>\n";
    }
    html += "</ol>\n";
    return html + (plan.sets[set].size() > 1 ? FormatShares(distances, set) : std::string()) + "</div>\n";
  }

  TStripDistances Measure(std::uint32_t query, std::span<const std::int32_t> shown, std::size_t set) const {
    TStripDistances distances;
    std::vector<std::vector<double>> parts;
    distances.totals.resize(shown.size(), 0.0);
    for (const std::size_t feature : plan.sets[set]) {
      const TFeatureRows& rows = table.GetFeatures()[feature];
      std::vector<const double*> vectors;
      for (const std::int32_t picture : shown) {
        vectors.push_back(rows.rows[static_cast<std::size_t>(picture)]);
      }
      const double* vector = rows.rows[query];
      // Worked out anew: rankings on disk keep positions and no distances. The same kernel in the same order of
      // features gives the same bits.
      kernels::AddL1DistanceTile(&vector, 1, vectors.data(), vectors.size(), rows.length, distances.totals.data(),
                                 shown.size());
      // Once more and from 0: the totals go on from feature to feature, which is the order of the ranking, and cannot
      // be taken apart again.
      std::vector<double>& part = parts.emplace_back(shown.size(), 0.0);
      kernels::AddL1DistanceTile(&vector, 1, vectors.data(), vectors.size(), rows.length, part.data(), shown.size());
    }
    for (double& total : distances.totals) {
      // As in the ranking itself.
      total = std::isnan(total) ? INFINITY : total;
    }
    for (const std::vector<double>& part : parts) {
      double& sum = distances.ofFeatures.emplace_back(0.0);
      for (std::size_t i = 0; i < part.size(); ++i) {
        // A result without a distance would make every share a NaN.
        sum += std::isinf(distances.totals[i]) ? 0.0 : part[i];
      }
    }
    return distances;
  }

  std::string FormatShares(const TStripDistances& distances, std::size_t set) const {
    const double total = std::accumulate(distances.ofFeatures.begin(), distances.ofFeatures.end(), 0.0);
    // Shares of nothing would be 0 / 0.
    if (total == 0.0) {
      return "<p class=\"shares\">No distance to share: none of these results differs from the query and can be "
             "compared with "
             "it.</p>\n";
    }
    std::string shares;
    for (std::size_t i = 0; i < distances.ofFeatures.size(); ++i) {
      const std::string& name = plan.sources[plan.sets[set][i]].feature->GetName();
      shares.append(i == 0 ? "" : ", ").append(EscapeHtml(name));
      shares += FormatString(" %s %%", FormatDecimals(100.0 * distances.ofFeatures[i] / total, 1).c_str());
    }
    return "<p class=\"shares\">Share of the distance: " + shares + "</p>\n";
  }

  /// The picture in its frame; one that cannot be read leaves the frame empty but for its name.
  std::string FormatFrame(std::uint32_t picture) {
    const std::string name = EscapeHtml(plan.collection.names[picture]);
    const std::string& address = AddressOf(picture);
    return "<div class=\"frame\">" +
           (address.empty() ? "<span class=\"missing\">" + name + " cannot be read</span>"
                            : "<img alt=\"" + name + "\" src=\"" + address + "\"/>") +
           "</div>";
  }

  const std::string& AddressOf(std::uint32_t picture) {
    // Pixels: the frame of a strip.
    constexpr int kSide = 104;
    constexpr int kQuality = 75;
    const auto [place, isNew] = addresses.try_emplace(picture);
    // What Ctrl-C ended is not written.
    if (isNew && !base::Interrupted()) {
      const std::string path = plan.collection.GetPath(picture);
      std::size_t other = 0;
      // A report that shows another picture than the one that was measured would be a lie that nobody can see.
      if (!table.IsCurrent(plan.collection, picture, picture + 1, other)) {
        changed = path;
      }
      // The second look at the file: one that has gone since the first is shown as unreadable.
      TImageRGB thumbnail;
      if (table.IsReadable(picture) && LoadThumbnail(path, kSide, thumbnail)) {
        place->second = FormatJpegAddress(thumbnail.EncodeJpeg(kQuality));
      }
    }
    return place->second;
  }

  const TPlan& plan;
  const TFeatureTable& table;
  const TCollected& collected;
  /// By picture: its thumbnail; empty where it cannot be read.
  std::map<std::uint32_t, std::string> addresses;
  std::string changed;
};

}  // namespace

std::optional<TReportSection> FormatStripSection(const TPlan& plan, const TFeatureTable& table,
                                                 const TCollected& collected, std::string& reason) {
  TStripWriter writer(plan, table, collected);
  std::string body =
      "<p>By average precision. Behind each query stand the first results of its ranking with rank and distance: "
      "\u2713 in a "
      "green, solid frame is relevant, \u2717 in a red, dashed one is not. Shares of the distance are those of the "
      "results that are shown, taken together.</p>\n";
  for (std::size_t set = 0; set < plan.sets.size(); ++set) {
    body += writer.FormatSet(set);
  }
  if (!writer.GetChanged().empty()) {
    reason = FormatString("'%s' has changed since its features were extracted; run the step extract again",
                          writer.GetChanged().c_str());
    return std::nullopt;
  }
  return TReportSection{"queries", "Best and worst queries", body};
}
