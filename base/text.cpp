#include "base/text.h"

#include <clocale>

namespace base {

namespace {

bool IsWhiteSpace(char character) {
  // Tab, line feed, vertical tab, form feed and carriage return are 9 to 13 without a gap. std::isspace would ask the
  // locale and, for bytes above 127, must not be given a char.
  return character == ' ' || (character >= '\t' && character <= '\r');
}

}  // namespace

char LowerAscii(char character) {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

std::string FoldCase(std::string text) {
  // Byte by byte is safe in UTF-8: every byte of a longer character is above 127 (RFC 3629).
  for (char& character : text) {
    character = LowerAscii(character);
  }
  return text;
}

std::string_view Trim(std::string_view text) {
  while (!text.empty() && IsWhiteSpace(text.front())) {
    text.remove_prefix(1);
  }
  while (!text.empty() && IsWhiteSpace(text.back())) {
    text.remove_suffix(1);
  }
  return text;
}

std::string_view SkipByteOrderMark(std::string_view text) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  return text.starts_with(kMark) ? text.substr(kMark.size()) : text;
}

std::string EscapeField(std::string_view field) {
  // What would tear a table apart, and nothing else: all other names stand as they are, to be searched for.
  std::string escaped;
  escaped.reserve(field.size());
  for (const char character : field) {
    switch (character) {
      case '\t':
        escaped += "\\t";
        break;
      case '\n':
        escaped += "\\n";
        break;
      case '\\':
        escaped += "\\\\";
        break;
      default:
        escaped += character;
    }
  }
  return escaped;
}

std::string UnescapeField(std::string_view field) {
  std::string text;
  text.reserve(field.size());
  for (std::size_t i = 0; i < field.size(); ++i) {
    if (field[i] != '\\' || i + 1 == field.size()) {
      text += field[i];
      continue;
    }
    const char kind = field[++i];
    // An unknown escape gives its character, so that damaged lines still give a text and never an error.
    text += kind == 't' ? '\t' : kind == 'n' ? '\n' : kind;
  }
  return text;
}

void UseClassicNumbers() {
  // Only the category of numbers: file names and messages stay in the user's own character set. In a German locale
  // printf would write "0,5" into tables, and strtod would read "0.5" as 0.
  std::setlocale(LC_NUMERIC, "C");
}

}  // namespace base
