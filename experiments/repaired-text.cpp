#include "experiments/repaired-text.h"

QString RepairText(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}
