#include "tests/support/program-test.h"

void PrintTo(const TOutcome& outcome, std::ostream* stream) {
  *stream << "status " << outcome.status << "\noutput:\n" << outcome.output << "errors:\n" << outcome.errors;
}

TProgramTest::~TProgramTest() {
  process.kill();
  process.waitForFinished(30000);
}

void TProgramTest::Start(const QString& program, const QStringList& arguments, const std::string& input) {
  process.setProcessEnvironment(environment);
  process.start(program, arguments);
  process.write(input.data(), static_cast<qint64>(input.size()));
  process.closeWriteChannel();
}

TOutcome TProgramTest::Finish() {
  EXPECT_TRUE(process.waitForFinished(120000));
  EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
  return {process.exitCode(), process.readAllStandardOutput().toStdString(),
          process.readAllStandardError().toStdString()};
}
