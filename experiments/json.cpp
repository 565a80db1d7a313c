#include "experiments/json.h"

#include "base/format-string.h"
#include "experiments/repaired-text.h"

std::string TJsonWriter::Quote(std::string_view text) {
  std::string quoted(1, '"');
  // Repaired first: RFC 8259 (section 8.1) asks for UTF-8, and names of files may be any bytes.
  for (const char character : RepairText(text).toStdString()) {
    if (character == '"' || character == '\\') {
      quoted += '\\';
      quoted += character;
    } else if (static_cast<unsigned char>(character) < ' ') {
      // RFC 8259, section 7: control characters must be escaped, everything else may stand as UTF-8.
      quoted += FormatString("\\u%04x", static_cast<unsigned>(character));
    } else {
      quoted += character;
    }
  }
  quoted += '"';
  return quoted;
}

void TJsonWriter::Add(std::string_view name, const std::vector<std::string>& texts) {
  std::string value = "[";
  for (const std::string& text : texts) {
    value.append(value.size() > 1 ? ", " : "").append(Quote(text));
  }
  value += ']';
  AddValue(name, value);
}

void TJsonWriter::BeginObject(std::string_view name) {
  AddValue(name, "");
  Open('{');
}

std::string TJsonWriter::Finish() {
  Close('}');
  return json + "\n";
}

void TJsonWriter::AddValue(std::string_view name, const std::string& value) {
  // Two fields of one name are not refused; many readers keep only the last one (RFC 8259, section 4).
  json.append(isFirst ? "\n" : ",\n").append(2 * depth, ' ');
  json.append(Quote(name)).append(": ").append(value);
  isFirst = false;
}

void TJsonWriter::Open(char bracket) {
  json += bracket;
  ++depth;
  isFirst = true;
}

void TJsonWriter::Close(char bracket) {
  --depth;
  if (!isFirst) {
    json.append(1, '\n').append(2 * depth, ' ');
  }
  json += bracket;
  // For the object around it, of which this one is a field.
  isFirst = false;
}
