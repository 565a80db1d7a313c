#include "experiments/repaired-text.h"

QString RepairText(std::string_view text) {
  // With its length: a view need not end in a zero byte.
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}
