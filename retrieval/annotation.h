#pragma once

#include <cstddef>
#include <optional>
#include <string>

/// Annotation files: one image number a line, counted from 1, in a file that is named after the tag.

/// The tag of an annotation file: its name up to the first full stop.
std::string AnnotationTag(const std::string& path);

/// The position, from 0, of the image that a line names in a collection of `count` images; nothing if it names none.
/// What stands behind the digits does not count.
std::optional<std::size_t> AnnotatedPosition(const std::string& line, std::size_t count);
