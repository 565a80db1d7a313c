#include "classifiers/text-cursor.h"

#include <charconv>
#include <cmath>
#include <system_error>

bool TTextCursor::Take(std::string_view literal) {
  for (const char expected : literal) {
    if (expected == '\n' && rest.starts_with("\r\n")) {
      rest.remove_prefix(1);
    }
    if (!rest.starts_with(expected)) {
      return false;
    }
    rest.remove_prefix(1);
  }
  return true;
}

bool TTextCursor::TakeNumber(double& value) {
  // from_chars reads "inf" and "nan", with which a model computes nothing.
  return Parse(value) && std::isfinite(value);
}

bool TTextCursor::TakeCount(std::uint32_t& value) {
  return Parse(value);
}

template <typename TNumber>
bool TTextCursor::Parse(TNumber& value) {
  // Whatever the locale. strtod would take a comma for the decimal point in some, and skip blanks that are not in the
  // form.
  const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), value);
  if (error != std::errc()) {
    return false;
  }
  rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
  return true;
}
