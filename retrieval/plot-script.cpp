#include "retrieval/plot-script.h"

#include <algorithm>

std::string FormatPlotScript(const std::string& tag) {
  return "set title \"Recall/precision\"\r\n"
         "set xlabel \"Recall\"\r\n"
         "set ylabel \"Precision\"\r\n"
         "file = \"recallprecision.txt\"\r\n"
         "set terminal png size 1024,768\r\n"
         "set output \"recallprecision.png\"\r\n"
         "plot file using 1:2 title \"" +
         tag + "\" with lines\r\n";
}

bool IsSafePlotTitle(const std::string& tag) {
  // The tag stands between double quotes in the script, where gnuplot reads escapes and runs what stands in back quotes
  // as a shell command. A backslash at the end would take the closing quote.
  return !tag.ends_with('\\') && std::none_of(tag.begin(), tag.end(), [](char character) {
    return character == '"' || character == '`' || static_cast<unsigned char>(character) < ' ' || character == '\x7f';
  });
}
