#pragma once

#include <cstdint>
#include <string_view>

/// Walks through a text that a library wrote, to make sure of it before the library reads it again. Every Take moves
/// past what it found; after one that fails the cursor must not be used any more.
class TTextCursor {
 public:
  explicit TTextCursor(std::string_view text) : rest(text) {}

  /// Exactly these characters, where a line end in the text may also be CR LF: libraries write text as the platform
  /// does.
  bool Take(std::string_view literal);

  /// A finite decimal number.
  bool TakeNumber(double& value);

  /// A decimal number without a sign that fits into 32 bits.
  bool TakeCount(std::uint32_t& value);

  bool AtEnd() const { return rest.empty(); }

 private:
  template <typename TNumber>
  bool Parse(TNumber& value);

  std::string_view rest;
};
