#pragma once

#include <memory>
#include <optional>
#include <string>

#include "base/file.h"
#include "batch/options.h"

class TStreamView;

namespace base {
class TLineReader;
}

/// How tessimar-batch ends.
inline constexpr int kBatchSucceeded = 0;
inline constexpr int kBatchLineFailed = 1;
inline constexpr int kBatchUnusable = 2;
inline constexpr int kBatchIncomplete = 3;
// As a shell reports a program that Ctrl-C or a closed pipe ended.
inline constexpr int kBatchInterrupted = 130;
inline constexpr int kBatchNobodyReads = 141;

/// Tells the reason on standard error. Always kBatchUnusable.
int RefuseBatch(const std::string& reason);

/// One session of command lines: from the options to the tables at its end, without what concerns the whole process.
class TBatchSession {
 public:
  /// The options outlive the session.
  explicit TBatchSession(const TOptions& options);
  ~TBatchSession();
  TBatchSession(const TBatchSession&) = delete;
  TBatchSession& operator=(const TBatchSession&) = delete;

  /// Opens what is read and what will be written. False, and the reason, if one of them cannot be used.
  bool Open(std::string& reason);

  /// Runs the lines, and those of the script if there is one, and writes what was asked for. Returns how it ended. The
  /// toolkit's application object must be there.
  int Run(TStreamView& view);

 private:
  const TOptions& options;
  std::unique_ptr<base::TLineReader> reader;
  /// Tables that are written at the end, in files that were found writable at the start; nothing: not wanted.
  std::optional<base::TNamedOutput> variables;
  std::optional<base::TNamedOutput> segments;
};
