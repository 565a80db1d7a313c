#include "experiments/progress.h"

#include <algorithm>
#include <cstdio>

#include "base/console.h"
#include "base/format-string.h"

/// A log would keep every state of a line that is written over and over.
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
  isBegun = true;
  Show();
}

void TProgress::Advance(std::size_t count) {
  done += count;
  const TClock::time_point now = TClock::now();
  // Five times a second: fast enough to look alive, slow enough to cost nothing over a slow line.
  if (now - shown >= std::chrono::milliseconds(200)) {
    shown = now;
    Show();
  }
}

void TProgress::Show() {
  if (!isShown) {
    return;
  }
  const double seconds = std::chrono::duration<double>(shown - begin).count();
  // As if all pieces took equally long. Features that are taken over from an earlier start take next to nothing, so
  // that behind them the estimate is too short at first.
  const double left = seconds / static_cast<double>(std::max<std::size_t>(done, 1)) * static_cast<double>(total - done);
  std::string time;
  if (done > 0) {
    // Seconds up to a minute and a half, minutes from then on: the estimate has no more digits than that.
    time = left < 90.0 ? FormatString(", %.0f s left", left) : FormatString(", %.0f min left", left / 60.0);
  }
  // The escape wipes what the line before had more.
  std::fprintf(stderr, "\r%s %zu of %zu%s\x1b[K", label.c_str(), done, total, time.c_str());
  std::fflush(stderr);
}

void TProgress::End() {
  if (isShown && isBegun) {
    std::fputs("\r\x1b[K", stderr);
    std::fflush(stderr);
  }
  isBegun = false;
}
