#include "experiments/curve-chart.h"

#include <array>
#include <string_view>

#include "base/format-string.h"
#include "base/run-program.h"
#include "experiments/html.h"

namespace {

constexpr std::array<const char*, 8> kColors = {"#2b7bba", "#c8680a", "#2e8b3d", "#8a63d2",
                                                "#d0403f", "#0f8a8a", "#9a6a4f", "#c2528f"};

/// Narrow, so that the letters stay readable on a telephone.
constexpr int kWidth = 480;
// In the units of the drawing, as are all sizes here; the page scales it to its width.
constexpr int kPlotHeight = 340;
constexpr int kKeyHeight = 21;

int HeightOf(const TExperiment& experiment) {
  return kPlotHeight + kKeyHeight * static_cast<int>(experiment.sets.size());
}

/// What stands in the drawing for the name of a set: a name may hold anything, and would be gnuplot's to read.
std::string PlaceOfName(std::size_t set) {
  // With its tags: "set 1" alone would be found in "set 10" as well.
  return FormatString("<text>set %zu</text>", set);
}

std::string FormatScript(const TExperiment& experiment) {
  // A data block (gnuplot 5.0 and later) holds the numbers in the script itself: no file has to be made.
  std::string script = FormatString(
      "set encoding utf8\n"
      "set terminal svg size %d,%d dynamic font 'sans-serif,14' noenhanced butt\n"
      "set xrange [0:1]\nset yrange [0:1]\nset xtics 0.2\nset ytics 0.2\nset format '%%.1f'\n"
      "set xlabel 'recall'\nset ylabel 'precision'\nset grid\n"
      "set key below left Left reverse maxcols 1\n$curves << END\n",
      kWidth, HeightOf(experiment));
  for (std::size_t level = 0; level < kRecallLevels; ++level) {
    // The level of recall without the rounding of a division by 10.
    script += FormatString("%zu.%zu", level / 10, level % 10);
    for (const TCurve& curve : experiment.curves) {
      script += FormatString(" %.8f", curve[level]);
    }
    script += "\n";
  }
  script += "END\nplot ";
  for (std::size_t set = 0; set < experiment.sets.size(); ++set) {
    // Told apart by dashes and marks as well as by color.
    // The numbers of colors, dashes and marks have no common factor: only the 521st set looks like the first.
    constexpr std::size_t kDashes = 5;
    constexpr std::size_t kMarks = 13;
    script +=
        FormatString("%s$curves using 1:%zu with linespoints lc rgb '%s' lw 2 dt %zu pt %zu ps 0.8 title 'set %zu'",
                     set == 0 ? "" : ", ", set + 2, ColorOfSet(set), set % kDashes + 1, set % kMarks + 1, set);
  }
  return script + "\n";
}

void ReplaceAll(std::string& text, std::string_view what, std::string_view with) {
  // Behind what was put in, so that a name that holds what is sought is not replaced again.
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size())) {
    text.replace(at, what.size(), with);
  }
}

/// Names of elements, which a browser would show where the pointer rests.
void RemoveTitles(std::string& drawing) {
  for (std::size_t begin = drawing.find("<title>"); begin != std::string::npos;
       begin = drawing.find("<title>", begin)) {
    constexpr std::string_view kEnd = "</title>";
    const std::size_t end = drawing.find(kEnd, begin);
    drawing.erase(begin, end == std::string::npos ? end : end + kEnd.size() - begin);
  }
}

}  // namespace

const char* ColorOfSet(std::size_t set) {
  return kColors[set % kColors.size()];
}

std::string DrawCurves(const TExperiment& experiment) {
  const std::string printed = base::AskGnuplot(FormatScript(experiment)).value_or("");
  // What stands before names the version and addresses of namespaces that a page does without.
  const std::size_t begin = printed.find("<g id=\"gnuplot_canvas\">");
  const std::size_t end = printed.rfind("</svg>");
  if (begin == std::string::npos || end == std::string::npos) {
    return {};
  }
  std::string drawing = printed.substr(begin, end - begin);
  RemoveTitles(drawing);
  // The namespace of that prefix was declared in what has been cut off; HTML wants the plain name.
  ReplaceAll(drawing, "xlink:href=", "href=");
  ReplaceAll(drawing, "color=\"black\"", "color=\"inherit\"");
  // gnuplot quotes attributes in either way. With the page's own color the drawing stays readable on a dark background.
  for (const std::string attribute : {"stroke", "fill"}) {
    ReplaceAll(drawing, attribute + "=\"black\"", attribute + "=\"currentColor\"");
    ReplaceAll(drawing, attribute + "='black'", attribute + "='currentColor'");
  }
  // Onward from the last one: gnuplot draws the names in the order of the sets, and a set may be called like the place
  // of another.
  std::size_t from = 0;
  for (std::size_t set = 0; set < experiment.sets.size(); ++set) {
    const std::string place = PlaceOfName(set);
    const std::size_t at = drawing.find(place, from);
    if (at != std::string::npos) {
      const std::string name = "<text>" + EscapeHtml(experiment.sets[set]) + "</text>";
      drawing.replace(at, place.size(), name);
      from = at + name.size();
    }
  }
  return FormatString(
             "<svg class=\"curves\" viewBox=\"0 0 %d %d\" role=\"img\" aria-label=\"Precision by recall, one "
             "line for each set; the table below has the numbers\">\n",
             kWidth, HeightOf(experiment)) +
         drawing + "</svg>\n";
}
