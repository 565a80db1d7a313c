#include "experiments/progress.h"

#include <cstdio>

#include "base/console.h"
#include "base/format-string.h"

TProgress::TProgress(bool isQuiet) : isShown(!isQuiet && base::IsTerminal(stderr)) {}

TProgress::~TProgress() {
  End();
}

void TProgress::Begin(const std::string& newLabel, std::size_t newTotal) {
  End();
  label = newLabel;
  total = newTotal;
  done = 0;
  begin = shown = TClock::now();
}

void TProgress::Advance(std::size_t count) {
  done += count;
  const TClock::time_point now = TClock::now();
  if (isShown && now - shown >= std::chrono::milliseconds(200)) {
    shown = now;
    Show();
  }
}

void TProgress::Show() {
  const double seconds = std::chrono::duration<double>(shown - begin).count();
  const double left = seconds / static_cast<double>(done) * static_cast<double>(total - done);
  const std::string time = left < 90.0 ? FormatString("%.0f s", left) : FormatString("%.0f min", left / 60.0);
  // The escape wipes what the line before had more.
  std::fprintf(stderr, "\r%s %zu of %zu, %s left\x1b[K", label.c_str(), done, total, time.c_str());
  std::fflush(stderr);
}

void TProgress::End() {
  if (isShown && shown != begin) {
    std::fputs("\r\x1b[K", stderr);
    std::fflush(stderr);
  }
  begin = shown;
}
