#include "base/shared-text.h"

#include <unordered_set>

namespace base {

const std::string TSharedText::kEmpty;

// Texts are never taken out again. They are names of features, concepts and variables, of which a session has a
// handful, while records may number a million: eight bytes each here instead of the 32 of a string.
TSharedText& TSharedText::operator=(const std::string& newText) {
  // A set of nodes, which stay where they are as it grows.
  static std::unordered_set<std::string> texts;
  text = newText.empty() ? &kEmpty : &*texts.insert(newText).first;
  return *this;
}

}  // namespace base
