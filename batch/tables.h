#pragma once

#include <string>

class TVarList;

/// The Variables table as text: a header line, and one for each variable, name TAB type TAB description.
std::string FormatVariables(const TVarList& varList);

/// All segments of all image and database variables as text: a line for each, in the order of the store, of the
/// database and of the image, with the columns variable, picture, x, y, width, height, label (empty if nothing was
/// found) and the names of its features, joined with commas. The origin is the picture's top left corner.
std::string FormatSegments(const TVarList& varList);

/// Writes one table for each ranking in the store: DIRECTORY/NAME.tsv with the columns rank (from 1), imageIndex (from
/// 0), distance, file and tags, joined with commas. File and tags are empty where the database of the ranking is gone
/// or has changed. The directory exists. Returns the first file that could not be written; empty if all could.
std::string WriteRankings(const TVarList& varList, const std::string& directory);

/// Writes one run for each ranking in the store: DIRECTORY/NAME.run. Documents are the names of the pictures below the
/// database's location; the topic is called like the query's file, or like the variable where there was no query.
std::string WriteRuns(const TVarList& varList, const std::string& directory);
