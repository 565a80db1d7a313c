#pragma once

#include <chrono>
#include <cstddef>
#include <string>

/// One line on the terminal that counts what is done and tells the time left. It writes nothing where standard error is
/// no terminal.
class TProgress {
 public:
  explicit TProgress(bool isQuiet);
  ~TProgress();
  TProgress(const TProgress&) = delete;
  TProgress& operator=(const TProgress&) = delete;

  /// Begins to count: "LABEL 12 of 110, 3 s left".
  void Begin(const std::string& label, std::size_t total);
  void Advance(std::size_t count = 1);
  /// Wipes the line.
  void End();

 private:
  using TClock = std::chrono::steady_clock;

  void Show();

  bool isShown;
  bool isBegun = false;
  std::string label;
  std::size_t done = 0;
  std::size_t total = 0;
  TClock::time_point begin;
  TClock::time_point shown;
};
