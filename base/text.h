#pragma once

#include <string>
#include <string_view>

/// Operations on the 8-bit text (UTF-8 bytes) of the engine. They know only ASCII, whatever the user's locale: a
/// command typed in Turkey folds to the same letters as anywhere else.
namespace base {

/// The character in lower case, if it is one of A to Z.
char LowerAscii(char character);

/// The text with A to Z in lower case; every other byte stays.
std::string FoldCase(std::string text);

/// The text without blanks, tabs, line feeds, carriage returns, vertical tabs and form feeds at both ends. Refers to
/// the argument's characters.
std::string_view Trim(std::string_view text);

/// The text without the mark of UTF-8 (EF BB BF) that some editors put at the beginning of a file. Refers to the
/// argument's characters.
std::string_view SkipByteOrderMark(std::string_view text);

/// The text as a field of a line of fields with tabs between: tabs, line feeds and backslashes become \\t, \\n, \\\\.
std::string EscapeField(std::string_view field);
/// The text that EscapeField made the field of.
std::string UnescapeField(std::string_view field);

/// The texts one behind the other, with `separator` between each two.
template <typename TRange>
std::string Join(const TRange& texts, std::string_view separator) {
  std::string joined;
  bool first = true;
  for (const auto& text : texts) {
    if (!first) {
      joined += separator;
    }
    joined += text;
    first = false;
  }
  return joined;
}

/// Reads and writes numbers the same way in every country. Qt's application object adopts the user's locale, so a
/// program calls this once after it has made that object.
void UseClassicNumbers();

}  // namespace base
