#include "base/format-string.h"

#include <cstdarg>
#include <cstdio>

std::string FormatString(const char* format, ...) {
  std::string text;
  va_list measured;
  va_start(measured, format);
  // A list is indeterminate once vsnprintf has walked through it (C11, 7.21.6.12), so each of the two passes has its
  // own.
  va_list filled;
  va_copy(filled, measured);
  const int length = std::vsnprintf(nullptr, 0, format, measured);
  if (length > 0) {
    text.resize(static_cast<std::size_t>(length));
    // vsnprintf also writes the terminating zero, for which a string keeps room behind its last character.
    std::vsnprintf(text.data(), text.size() + 1, format, filled);
  }
  va_end(filled);
  va_end(measured);
  return text;
}
