#pragma once

#include <ostream>
#include <string>

#include <QProcess>
#include <gtest/gtest.h>

#include "tests/support/scratch-directory.h"

/// How a program ended, and what it wrote.
struct TOutcome {
  int status;
  std::string output;
  std::string errors;

  bool operator==(const TOutcome&) const = default;
};

void PrintTo(const TOutcome& outcome, std::ostream* stream);

/// A program as a process of its own, in an empty directory. What still runs behind the test is stopped.
class TProgramTest : public testing::Test {
 protected:
  ~TProgramTest() override;

  /// Starts a program with all of its input.
  void Start(const QString& program, const QStringList& arguments, const std::string& input = std::string());

  /// Waits for the program, which must come to its end by itself.
  TOutcome Finish();

  TOutcome Run(const QString& program, const QStringList& arguments, const std::string& input = std::string()) {
    Start(program, arguments, input);
    return Finish();
  }

  TScratchDirectory directory;
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  QProcess process;
};
