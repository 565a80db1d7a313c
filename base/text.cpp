#include "base/text.h"

#include <clocale>

namespace base {

namespace {

bool IsWhiteSpace(char character) {
  return character == ' ' || (character >= '\t' && character <= '\r');
}

}  // namespace

char LowerAscii(char character) {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

std::string FoldCase(std::string text) {
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

void UseClassicNumbers() {
  std::setlocale(LC_NUMERIC, "C");
}

}  // namespace base
