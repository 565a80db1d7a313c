#include "gui/eight-bit-text.h"

#include <QString>

QString ToQString(const std::string& text) {
  // With the length: a zero byte is a character like any other to the engine's strings.
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

std::string FromQString(const QString& text) {
  const QByteArray bytes = text.toUtf8();
  return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}
