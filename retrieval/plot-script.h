#pragma once

#include <string>

/// The script that has gnuplot draw the recall/precision curve, with the tag as the curve's title.
std::string FormatPlotScript(const std::string& tag);

/// False for a tag that gnuplot would read as part of its own language: one with a double quote, a back quote or a
/// control character, or with a backslash at its end. A script with such a tag must not be run.
bool IsSafePlotTitle(const std::string& tag);
