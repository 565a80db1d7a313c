#pragma once

#include <filesystem>
#include <functional>
#include <set>
#include <string>

#include "tests/support/scratch-directory.h"

/// A directory for all inputs of a process, with files that are there for each of them. Between the inputs the working
/// directory is the one the process was started in, where libFuzzer looks for its files.
class TWorkshop {
 public:
  /// `fill` makes the files, with the new directory as working directory.
  explicit TWorkshop(const std::function<void()>& fill);

  /// Calls `work` with the directory as working directory, and removes what it left there.
  void Visit(const std::function<void()>& work);

 private:
  void Tidy();

  const std::filesystem::path before;
  TScratchDirectory directory;
  std::set<std::filesystem::path> fixtures;
};

/// What a process needs in which sessions run: the toolkit's application object without a screen, nothing on standard
/// output, and no gnuplot.
void PrepareForSessions();

/// Runs a script of the working directory as tessimar-batch does, with all its tables, and before each line completes
/// it and goes through the history as the keys do. A session ends after a hundred lines, and what takes longer than
/// some seconds is interrupted as by Ctrl-C. False if that happened.
bool RunSession(const std::string& script);

/// Three pictures in photos/, two in others/, query.png, and what can go wrong with pictures.
void MakeTinyPictures();
