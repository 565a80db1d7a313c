#include "batch/session.h"

#include <cstdio>

#include <boost/bind/bind.hpp>

#include "base/abandoned-files.h"
#include "base/console.h"
#include "base/format-string.h"
#include "base/native-path.h"
#include "batch/picture-saver.h"
#include "batch/stream-view.h"
#include "batch/tables.h"
#include "engine/ctrl-main.h"
#include "gui/dialog-runner.h"

int RefuseBatch(const std::string& reason) {
  std::fprintf(stderr, "tessimar-batch: %s\n", reason.c_str());
  return kBatchUnusable;
}

TBatchSession::TBatchSession(const TOptions& theOptions) : options(theOptions) {}

TBatchSession::~TBatchSession() = default;

bool TBatchSession::Open(std::string& reason) {
  // What is read comes first: a slip in its name makes no directory and no file.
  for (const std::string& directory : options.plugins) {
    if (!base::ListDirectory(directory)) {
      reason = FormatString("Directory '%s' cannot be read", directory.c_str());
      return false;
    }
  }
  if (!options.script.empty()) {
    reader = std::make_unique<base::TLineReader>(options.script);
    if (!reader->IsOpen()) {
      reason = FormatString("Script '%s' cannot be read", options.script.c_str());
      return false;
    }
    // Somebody gave a picture in place of a script; every line of it would be an error.
    if (!reader->BeginsAsText()) {
      reason = FormatString("Script '%s' is not a text", options.script.c_str());
      return false;
    }
  } else if (!options.onlyLines) {
    reader = std::make_unique<base::TLineReader>();
  }
  // Whether the results can be written is better known before an hour of work than after it.
  for (const std::string& directory : {options.pictures, options.rankings, options.runs}) {
    if (!directory.empty() && !base::MakeWritableDirectory(directory)) {
      reason = FormatString("Directory '%s' cannot be written", directory.c_str());
      return false;
    }
    if (!directory.empty()) {
      base::RemoveAbandonedFiles(directory);
    }
  }
  const auto open = [&](std::optional<base::TNamedOutput>& table, const std::string& path) {
    if (path.empty() || table.emplace(path).IsOpen()) {
      return true;
    }
    reason = FormatString("File '%s' cannot be written", path.c_str());
    return false;
  };
  return open(variables, options.variables) && open(segments, options.segments);
}

int TBatchSession::Run(TStreamView& view) {
  TCtrlMain controller(view, options.plugins);
  // Before the first line: a network or a map may be made by any of them.
  if (options.seed) {
    controller.SetSeed(*options.seed);
  }
  TPictureSaver saver(options.pictures);
  const TDialogRunnerScope scope(
      options.pictures.empty() ? TDialogRunner() : boost::bind(&TPictureSaver::Save, &saver, boost::placeholders::_1));
  // Lines go on behind one that failed, as those of a script do.
  for (std::size_t i = 0; i < options.lines.size() && !view.HasFailed() && !base::Interrupted(); ++i) {
    controller.ExecuteScriptLine(options.lines[i], "-e", i + 1);
  }
  if (reader) {
    // Whoever types sees the answer to each line and needs no position.
    const std::string standardInput = reader->IsTerminal() ? "" : "-";
    controller.RunScript(*reader, options.script.empty() ? standardInput : options.script);
  }
  // The tables are written even after lines that failed: what succeeded is worth having, and the status tells.
  // One that cannot be written does not keep the others from their places, which may be on another disk.
  bool isWritten = true;
  const auto expectWritten = [&](const std::string& failedFile) {
    if (!failedFile.empty()) {
      RefuseBatch(FormatString("File '%s' cannot be written", failedFile.c_str()));
      isWritten = false;
    }
  };
  const TVarList& varList = controller.GetVarList();
  expectWritten(saver.GetFailedFile());
  expectWritten(variables && !variables->Write(FormatVariables(varList)) ? options.variables : "");
  expectWritten(segments && !segments->Write(FormatSegments(varList)) ? options.segments : "");
  expectWritten(options.rankings.empty() ? "" : WriteRankings(varList, options.rankings));
  expectWritten(options.runs.empty() ? "" : WriteRuns(varList, options.runs));
  if (view.HasFailed() && !view.HasLostItsReader()) {
    RefuseBatch("Standard output cannot be written");
    isWritten = false;
  }
  // The gravest first: what was asked for and is not there outweighs whatever the lines did.
  if (!isWritten) {
    return kBatchUnusable;
  }
  // Before the reader that has gone: a pipeline that Ctrl-C ends loses its reader as well.
  if (base::Interrupted()) {
    return kBatchInterrupted;
  }
  if (view.HasFailed()) {
    return kBatchNobodyReads;
  }
  if (controller.GetFailedLines() > 0) {
    return kBatchLineFailed;
  }
  return controller.HasLosses() ? kBatchIncomplete : kBatchSucceeded;
}
