#pragma once

#include <string>
#include <string_view>
#include <vector>

/// JSON text, field by field, in the order of the calls, two blanks a level.
class TJsonWriter {
 public:
  TJsonWriter() { Open('{'); }

  void Add(std::string_view name, std::string_view text) { AddValue(name, Quote(text)); }
  void Add(std::string_view name, const char* text) { Add(name, std::string_view(text)); }
  void Add(std::string_view name, std::size_t number) { AddValue(name, std::to_string(number)); }
  void Add(std::string_view name, bool flag) { AddValue(name, flag ? "true" : "false"); }
  void Add(std::string_view name, const std::vector<std::string>& texts);

  void BeginObject(std::string_view name);
  void EndObject() { Close('}'); }

  /// Ends the whole.
  std::string Finish();

 private:
  /// A byte that belongs to no UTF-8 becomes U+FFFD.
  static std::string Quote(std::string_view text);

  void AddValue(std::string_view name, const std::string& value);
  void Open(char bracket);
  void Close(char bracket);

  std::string json;
  std::size_t depth = 0;
  bool isFirst = true;
};
