#include "engine/command-history.h"

#include "base/file.h"

void TCommandHistory::Load(const std::string& filename) {
  entries.clear();
  std::string text = base::ReadFile(filename).value_or(std::string());
  text.resize(text.find('\0') == std::string::npos ? text.size() : text.find('\0'));
  std::size_t start = 0;
  for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', start)) {
    entries.push_back(text.substr(start, end == start ? 0 : end - start - 1));
    start = end + 1;
  }
}

void TCommandHistory::Save(const std::string& filename) const {
  std::string text;
  for (const std::string& entry : entries) {
    text += entry + "\r\n";
  }
  base::ReplaceFile(filename, text.data(), text.size());
}
