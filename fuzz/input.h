#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

// Every target is called with this, once for each input: by libFuzzer, or by replay-main.cpp. A target stops the
// program if it finds a fault, and always returns 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
// What the process needs before the first input.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);

/// Stops the program if `holds` is false: what a target checks besides the sanitizers.
inline void Require(bool holds) {
  if (!holds) {
    __builtin_trap();
  }
}

/// The text of an input, cut at each line "%%" into `count` parts; the last one holds all that is left, and what is
/// missing is empty.
inline std::vector<std::string> PartsOf(const std::uint8_t* data, std::size_t size, std::size_t count) {
  constexpr std::string_view kMark = "%%\n";
  std::vector<std::string> parts;
  std::string_view rest(reinterpret_cast<const char*>(data), size);
  while (parts.size() + 1 < count) {
    std::size_t end = rest.find(kMark);
    while (end != std::string_view::npos && end > 0 && rest[end - 1] != '\n') {
      end = rest.find(kMark, end + 1);
    }
    parts.emplace_back(rest.substr(0, end));
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + kMark.size());
  }
  parts.emplace_back(rest);
  return parts;
}

/// Takes numbers from the front of an input. Behind its end all of them are 0.
class TInputReader {
 public:
  TInputReader(const std::uint8_t* data, std::size_t size) : rest(reinterpret_cast<const char*>(data), size) {}

  template <typename TNumber>
  TNumber Take() {
    static_assert(std::is_arithmetic_v<TNumber>);
    char bytes[sizeof(TNumber)] = {};
    const std::size_t count = std::min(rest.size(), sizeof bytes);
    std::memcpy(bytes, rest.data(), count);
    rest.remove_prefix(count);
    TNumber number;
    std::memcpy(&number, bytes, sizeof bytes);
    return number;
  }

  /// As many bytes as there are, `count` at most.
  std::string_view TakeBlock(std::size_t count) {
    const std::string_view block = rest.substr(0, count);
    rest.remove_prefix(block.size());
    return block;
  }

  std::string_view GetRest() const { return rest; }

 private:
  std::string_view rest;
};
