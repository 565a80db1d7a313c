#pragma once

#include <string>

namespace base {

/// A text that thousands of records have in common, such as the name of a feature or of a concept: a record keeps a
/// pointer to the one copy of it, which stays until the program ends.
class TSharedText {
 public:
  /// The empty text, without looking for it.
  TSharedText() = default;
  TSharedText& operator=(const std::string& newText);

  const std::string& Get() const { return *text; }

 private:
  static const std::string kEmpty;

  // Never null, and not owned.
  const std::string* text = &kEmpty;
};

}  // namespace base
