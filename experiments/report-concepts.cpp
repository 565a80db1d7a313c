#include "experiments/report-concepts.h"

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "base/format-string.h"
#include "experiments/html.h"
#include "images/image-rgb.h"
#include "images/tile.h"

namespace {

// As many as intervals of a few hundred pictures can support; the tables have eight.
constexpr int kDecimals = 3;
constexpr std::size_t kMostDrawn = 3;

/// Text of a table that breaks between words only.
std::string Words(const std::string& text) {
  return "<span class=\"words\">" + EscapeHtml(text) + "</span>";
}

std::string FormatFigures(const TMeasuredConcepts& measured) {
  std::string headings;
  for (const char* heading :
       {"tag", "classifier", "taught", "asked", "true positives", "false positives", "true negatives",
        "false negatives", "area by fraction", "area by mean score", "mean square error"}) {
    headings += FormatColumnHeading(Words(heading));
  }
  std::string rows;
  // By tag, then by classifier, as the tables have them.
  for (const TMeasuredConcept& each : measured.concepts) {
    const TSegmentCounts counts = each.CountSegments();
    rows += "<tr>" + FormatRowHeading(Words(each.tag)) + FormatCell(each.classifier);
    for (const std::size_t count : {each.taught, each.asked.size(), counts.truePositives, counts.falsePositives,
                                    counts.trueNegatives, counts.falseNegatives}) {
      rows += FormatCell(std::to_string(count));
    }
    rows += FormatCell(FormatDecimals(each.areaByFraction, kDecimals)) +
            FormatCell(FormatDecimals(each.areaByScore, kDecimals)) +
            FormatCell(each.meanSquareError ? FormatDecimals(*each.meanSquareError, 6) : "none") + "</tr>\n";
  }
  return FormatTable(
      "Pictures taught and asked; segments of the pictures asked; areas under the curve over these pictures; error of "
      "the training",
      headings, rows);
}

/// Draws the pictures of concepts. Each is stored once, however often it is drawn.
class TSegmentDrawing {
 public:
  explicit TSegmentDrawing(const TPictureCollection& theCollection) : collection(theCollection) {}

  std::string Format(const TAskedPicture& asked, const TMeasuredConcept& measured) {
    const std::string name = EscapeHtml(collection.names[asked.picture]);
    const std::size_t total = asked.segments.size();
    const auto positive = static_cast<std::size_t>(
        std::count_if(asked.segments.begin(), asked.segments.end(), [](const auto& each) { return each.isPositive; }));
    const std::string words =
        (asked.isCarrier ? "carries " : "does not carry ") + EscapeHtml(measured.tag) +
        FormatString("; %zu of %zu segments positive, %zu right", positive, total, asked.CountRight());
    std::string html =
        "<li><figure class=\"segments\">" +
        FormatString("<svg viewBox=\"0 0 %d %d\" role=\"img\" aria-label=\"", asked.width, asked.height) + name + " " +
        words + "\">";
    if (Keep(asked)) {
      // The picture itself stands once in the page, as a symbol: each drawing of it costs a line.
      html += FormatString("<use href=\"#concept-picture-%u\"/>", asked.picture);
    }
    std::string cells;
    std::string found;
    for (const TAskedSegment& each : asked.segments) {
      cells += Outline(each);
      if (each.isPositive) {
        // A line without length ends in two half discs: a dot.
        found += FormatString("M%d %dh0", each.x + each.width / 2, each.y + each.height / 2);
      }
    }
    // Two lines of each kind, a dark one below a light one, show on every picture.
    html += "<path class=\"cells-under\" d=\"" + cells + "\"/><path class=\"cells\" d=\"" + cells + "\"/>";
    if (!found.empty()) {
      html += "<path class=\"found-under\" d=\"" + found + "\"/><path class=\"found\" d=\"" + found + "\"/>";
    }
    return html + "</svg><figcaption>" + words + "<span class=\"file\">" + name +
           "</span></figcaption></figure></li>\n";
  }

  /// What the drawings refer to.
  const std::string& GetPictures() const { return pictures; }

 private:
  static std::string Outline(const TAskedSegment& segment) {
    return FormatString("M%d %dh%dv%dh%dz", segment.x, segment.y, segment.width, segment.height, -segment.width);
  }

  /// False if there is no such picture any more.
  bool Keep(const TAskedPicture& asked) {
    // Pixels of the longer side, twice what the page shows, for screens with small pixels.
    constexpr int kSide = 240;
    constexpr int kQuality = 75;
    const auto [place, isNew] = isKept.try_emplace(asked.picture, false);
    TImageRGB thumbnail;
    if (isNew && LoadThumbnail(collection.GetPath(asked.picture), kSide, thumbnail)) {
      place->second = true;
      // The thumbnail's sides are rounded; stretched to the full size its pixels meet the segments' coordinates.
      pictures += FormatString(
                      "<image id=\"concept-picture-%u\" width=\"%d\" height=\"%d\" "
                      "preserveAspectRatio=\"none\" href=\"",
                      asked.picture, asked.width, asked.height) +
                  FormatJpegAddress(thumbnail.EncodeJpeg(kQuality)) + "\"/>\n";
    }
    return place->second;
  }

  const TPictureCollection& collection;
  std::map<std::uint32_t, bool> isKept;
  std::string pictures;
};

std::string FormatList(const char* which, const std::vector<const TAskedPicture*>& pictures,
                       const TMeasuredConcept& measured, TSegmentDrawing& drawing) {
  std::string html = FormatString("<p>The %s right segments:</p>\n<ul class=\"row\">\n", which);
  for (const TAskedPicture* picture : pictures) {
    html += drawing.Format(*picture, measured);
  }
  return html + "</ul>\n";
}

std::string FormatDrawings(const TMeasuredConcept& measured, TSegmentDrawing& drawing) {
  std::vector<const TAskedPicture*> pictures;
  for (const TAskedPicture& each : measured.asked) {
    pictures.push_back(&each);
  }
  // Stable, so that equal ones stay in the order of the collection; those with the fewest are read from the end, where
  // it is the reverse order.
  std::stable_sort(pictures.begin(), pictures.end(),
                   [](const auto* a, const auto* b) { return a->CountRight() > b->CountRight(); });
  // No picture stands in both lists.
  const auto most = static_cast<std::ptrdiff_t>(std::min(kMostDrawn, (pictures.size() + 1) / 2));
  const auto fewest = std::min(static_cast<std::ptrdiff_t>(kMostDrawn), std::ssize(pictures) - most);
  std::string html = "<h4>" + EscapeHtml(measured.tag) + ", " + measured.classifier + "</h4>\n";
  html += FormatList("most", {pictures.begin(), pictures.begin() + most}, measured, drawing);
  return html + FormatList("fewest", {pictures.rbegin(), pictures.rbegin() + fewest}, measured, drawing);
}

}  // namespace

TReportSection FormatConceptSection(const TMeasuredConcepts& measured, const TPictureCollection& collection) {
  std::string leftOut = measured.leftOut == 0 ? std::string()
                                              : FormatString(
                                                    " %zu of %zu pictures could not be used and are in "
                                                    "neither half.",
                                                    measured.leftOut, collection.names.size());
  if (measured.concepts.empty()) {
    return {"concepts", "Concepts",
            "<p>No tag has four pictures that carry it and two that do not." + leftOut + "</p>\n"};
  }
  TSegmentDrawing drawing(collection);
  std::string body =
      "<p>Half of the pictures of each tag, and half of the others, taught a classifier with their segments (" +
      EscapeHtml(measured.features) +
      "); the other halves were asked. A segment is right if it is positive in a picture that carries the tag, or not "
      "positive in one that does not." +
      leftOut + "</p>\n<h3>Figures</h3>\n" + FormatFigures(measured);
  std::string drawings;
  const std::string* tag = nullptr;
  for (const TMeasuredConcept& each : measured.concepts) {
    // A heading for each tag, under which its classifiers stand.
    if (tag == nullptr || *tag != each.tag) {
      tag = &each.tag;
      drawings +=
          "<h3>" + EscapeHtml(each.tag) + "</h3>\n<p>All segments are outlined; a dot marks a positive one.</p>\n";
    }
    drawings += FormatDrawings(each, drawing);
  }
  // In front of the drawings that refer to them, and not shown itself.
  body += "<svg class=\"unseen\" aria-hidden=\"true\"><defs>\n" + drawing.GetPictures() + "</defs></svg>\n";
  return {"concepts", "Concepts", body + drawings};
}
