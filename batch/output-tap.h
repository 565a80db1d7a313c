#pragma once

#include <cstdio>
#include <string>

/// Copies the text of the output pane to a stream, flushed line by line.
class TOutputTap {
 public:
  /// The stream is not owned.
  explicit TOutputTap(std::FILE* stream) : stream(stream) {}

  void Write(const std::string& text);

  /// True once a write failed; nothing is written any more.
  bool HasFailed() const { return failed; }

 private:
  std::FILE* stream;
  bool failed = false;
};
