#include "batch/output-tap.h"

void TOutputTap::Write(const std::string& text) {
  if (failed) {
    return;
  }
  const bool written = std::fwrite(text.data(), 1, text.size(), stream) == text.size();
  // Every text that reaches the pane ends a line.
  failed = std::fflush(stream) != 0 || !written;
}
