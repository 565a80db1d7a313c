#include "gui/tool-tip.h"

#include <QString>

QString PlainToolTip(const QString& text) {
  // Only markup is broken into lines, and only what begins like markup is taken for it.
  return text.isEmpty() ? QString() : "<p style='white-space:pre-wrap'>" + text.toHtmlEscaped() + "</p>";
}
