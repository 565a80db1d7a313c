#include "engine/command-history.h"

#include <algorithm>

#include "base/file.h"
#include "base/text.h"

bool TCommandHistory::Load(const std::string& filename) {
  entries.clear();
  hasBareLineFeed = false;
  // A text ends at its first zero byte, as it does for every program that reads it as a C string; what stands behind
  // one is no command.
  std::string text;
  const base::TReadOutcome outcome = base::ReadFile(filename, text);
  isUnreadable = outcome == base::TReadOutcome::kUnreadable;
  text.resize(std::min(text.size(), text.find('\0')));
  hasByteOrderMark = base::SkipByteOrderMark(text).size() < text.size();
  std::size_t start = 0;
  for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', start)) {
    hasBareLineFeed = hasBareLineFeed || end == start || text[end - 1] != '\r';
    // Files come with CR LF, and the character in front of a line feed goes without being looked at. A file with bare
    // line feeds loses a letter a line, which the caller tells the user.
    entries.push_back(text.substr(start, end == start ? 0 : end - start - 1));
    start = end + 1;
  }
  hasOpenLastLine = start < text.size();
  return outcome == base::TReadOutcome::kRead;
}

bool TCommandHistory::Save(const std::string& filename) const {
  std::string text;
  for (const std::string& entry : entries) {
    text += entry + "\r\n";
  }
  return base::ReplaceFile(filename, text.data(), text.size());
}
