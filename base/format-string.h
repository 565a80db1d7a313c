#pragma once

#include <string>

/// A new string from a printf format and its arguments, of any length. Numbers come out in the "C" locale as long as
/// the program keeps LC_NUMERIC there. A format that the C library refuses gives the empty string.
[[gnu::format(printf, 1, 2)]] std::string FormatString(const char* format, ...);
