#pragma once

#include <string>
#include <string_view>

/// The name of a file: `name` with its ending, if file systems take one of that length. Of a longer name the beginning
/// stays, and behind it come "~" and the SHA-256 of the whole: two names never give the same file, and one gives the
/// same file in every run.
std::string FitFileName(const std::string& name, std::string_view ending);
