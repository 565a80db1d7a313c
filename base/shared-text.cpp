#include "base/shared-text.h"

#include <unordered_set>

namespace base {

const std::string TSharedText::kEmpty;

TSharedText& TSharedText::operator=(const std::string& newText) {
  // A set of nodes, which stay where they are as it grows.
  static std::unordered_set<std::string> texts;
  text = newText.empty() ? &kEmpty : &*texts.insert(newText).first;
  return *this;
}

}  // namespace base
