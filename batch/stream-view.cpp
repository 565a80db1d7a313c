#include "batch/stream-view.h"

#include <algorithm>
#include <cerrno>

#include "base/console.h"

TStreamView::TStreamView(std::FILE* theStream) : stream(theStream), showsWork(base::IsTerminal(stderr)) {}

void TStreamView::AddOutput(const std::string& text) {
  ShowWork(std::string());
  if (failed) {
    return;
  }
  failed = !base::Print(stream, text);
  hasLostItsReader = failed && errno == EPIPE;
}

void TStreamView::ReportFailedLine(const std::string& text) {
  ShowWork(std::string());
  std::fprintf(stderr, "%s\n", text.c_str());
}

void TStreamView::ShowWork(const std::string& text) {
  if (!showsWork || (text.empty() && shownWidth == 0)) {
    return;
  }
  // The cursor goes back, so that whatever is printed next stands in the place of the count and not behind it.
  // Spaces wipe what a longer text before has left; not every terminal knows an escape for that.
  const std::string blanks(std::max(shownWidth, text.size()) - text.size(), ' ');
  std::fprintf(stderr, "\r%s%s\r", text.c_str(), blanks.c_str());
  std::fflush(stderr);
  shownWidth = text.size();
}
