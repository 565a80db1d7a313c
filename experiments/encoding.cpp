#include "experiments/encoding.h"

namespace {

template <typename TKeeps>
std::string Encode(std::string_view text, const TKeeps& keeps) {
  // Capitals, as RFC 3986 (section 2.1) asks for.
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string encoded;
  encoded.reserve(text.size());
  for (const char character : text) {
    if (keeps(character)) {
      encoded += character;
    } else {
      const auto byte = static_cast<unsigned char>(character);
      encoded += '%';
      encoded += kDigits[byte >> 4];
      encoded += kDigits[byte & 15];
    }
  }
  return encoded;
}

bool IsPlain(char character) {
  // The unreserved characters of RFC 3986, section 2.3.
  // Not std::isalnum: it asks the locale, and must not be given a negative char.
  return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z') ||
         (character >= '0' && character <= '9') || std::string_view("-._~").find(character) != std::string_view::npos;
}

/// -1 for what is no hexadecimal digit.
int DigitValue(char character) {
  if (character >= '0' && character <= '9') {
    return character - '0';
  }
  // The bit that tells small letters from capitals in ASCII.
  const char lower = static_cast<char>(character | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

}  // namespace

std::string EncodeName(std::string_view name) {
  return Encode(name, [](char character) { return IsPlain(character) || character == '/'; });
}

std::string EncodeTag(std::string_view tag) {
  // No colon stays, here or in EncodeName: the one in a qid parts tag and picture.
  return Encode(tag, IsPlain);
}

std::string EncodeField(std::string_view field) {
  // The % as well, or Decode would give back another text for a name with %41 in it.
  return Encode(field,
                [](char character) { return std::string_view("\t\n\r%").find(character) == std::string_view::npos; });
}

std::string EncodeSet(std::string_view set) {
  // Unsigned: where char has a sign, the bytes of a letter beyond ASCII would count as control characters.
  return Encode(set, [](char character) { return static_cast<unsigned char>(character) > ' ' && character != '%'; });
}

std::string Decode(std::string_view text) {
  std::string decoded;
  decoded.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool hasTwoMore = text[i] == '%' && i + 2 < text.size();
    const int high = hasTwoMore ? DigitValue(text[i + 1]) : -1;
    const int low = hasTwoMore ? DigitValue(text[i + 2]) : -1;
    if (high >= 0 && low >= 0) {
      // What comes out is not read again: %2541 stands for the text %41.
      decoded += static_cast<char>(high * 16 + low);
      i += 2;
    } else {
      decoded += text[i];
    }
  }
  return decoded;
}
