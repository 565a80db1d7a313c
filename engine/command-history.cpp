#include "engine/command-history.h"

#include "base/file.h"

bool TCommandHistory::Load(const std::string& filename) {
  entries.clear();
  hasBareLineFeed = false;
  const auto bytes = base::ReadFile(filename);
  // A text ends at its first zero byte, as it does for every program that reads it as a C string; what stands behind
  // one is no command.
  const std::string text = bytes ? bytes->substr(0, bytes->find('\0')) : std::string();
  std::size_t start = 0;
  for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', start)) {
    hasBareLineFeed = hasBareLineFeed || end == start || text[end - 1] != '\r';
    // Files come with CR LF, and the character in front of a line feed goes without being looked at. A file with bare
    // line feeds loses a letter a line, which the caller tells the user.
    entries.push_back(text.substr(start, end == start ? 0 : end - start - 1));
    start = end + 1;
  }
  hasOpenLastLine = start < text.size();
  return bytes.has_value();
}

void TCommandHistory::Save(const std::string& filename) const {
  std::string text;
  for (const std::string& entry : entries) {
    text += entry + "\r\n";
  }
  base::ReplaceFile(filename, text.data(), text.size());
}
