#include "retrieval/annotation.h"

#include <cstdlib>
#include <string_view>

#include "base/native-path.h"

std::string AnnotationTag(const std::string& path) {
  const std::string_view filename = base::FileNameOf(path);
  // Up to the first full stop, so that "tree_r1.txt" is the tag "tree_r1" and "tree.test.txt" is "tree".
  return std::string(filename.substr(0, filename.find('.')));
}

std::optional<std::size_t> AnnotatedPosition(const std::string& line, std::size_t count) {
  // A number beyond all bounds comes back as the largest there is. Blanks in front are skipped and a sign is read;
  // without digits the number is 0.
  const long long number = std::strtoll(line.c_str(), nullptr, 10);
  if (number < 1 || static_cast<unsigned long long>(number) > count) {
    return std::nullopt;
  }
  return static_cast<std::size_t>(number) - 1;
}
