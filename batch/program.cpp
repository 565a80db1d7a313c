#include "batch/program.h"

#include <cstdio>
#include <exception>
#include <new>

#include <QApplication>

#include "base/console.h"
#include "base/file.h"
#include "base/format-string.h"
#include "base/memory.h"
#include "base/native-path.h"
#include "base/text.h"
#include "base/trial.h"
#include "batch/options.h"
#include "batch/session.h"
#include "batch/stream-view.h"
#include "features/plugin-doctor.h"
#include "gui/eight-bit-text.h"

namespace {

/// The toolkit warns of what a session at a screen would have, such as a runtime directory. Nothing of that is needed
/// here.
void ReportErrors(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message) {
  if (type == QtCriticalMsg || type == QtFatalMsg) {
    std::fprintf(stderr, "%s\n", FromQString(message).c_str());
  }
}

/// Pictures must look the same on every machine, so nothing of the user's screen may reach the toolkit.
void ForgetScreen() {
  for (const char* variable : {"QT_SCALE_FACTOR", "QT_SCREEN_SCALE_FACTORS", "QT_FONT_DPI", "QT_USE_PHYSICAL_DPI",
                               "QT_STYLE_OVERRIDE", "QT_QPA_PLATFORMTHEME", "QT_AUTO_SCREEN_SCALE_FACTOR"}) {
    qunsetenv(variable);
  }
  // One pixel of a dialog is one pixel of its picture.
  qputenv("QT_ENABLE_HIGHDPI_SCALING", "0");
  qputenv("QT_QPA_PLATFORM", "offscreen");
}

int CheckOnePlugin(const std::string& fileName) {
  if (!base::CanRunTrials()) {
    return RefuseBatch("Plug-ins cannot be checked on this system");
  }
  if (!base::IsRegularFile(fileName)) {
    return RefuseBatch(FormatString("Plug-in '%s' cannot be read", fileName.c_str()));
  }
  bool isPrinted = true;
  const bool isSound = CheckPlugin(base::NativePath(fileName), [&](const std::string& line) {
    isPrinted = base::Print(stdout, line + '\n') && isPrinted;
  });
  if (!isPrinted) {
    return RefuseBatch("Standard output cannot be written");
  }
  return isSound ? kBatchSucceeded : kBatchLineFailed;
}

int Run(int argc, char** argv, const char* version) {
  std::string reason;
  const auto options = ParseOptions(argc, argv, reason);
  if (!options) {
    return RefuseBatch(reason + " See tessimar-batch --help.");
  }
  if (options->help || options->version) {
    return base::Print(stdout, options->help ? kUsage : version) ? kBatchSucceeded
                                                                 : RefuseBatch("Standard output cannot be written");
  }
  if (!options->checkedPlugin.empty()) {
    return CheckOnePlugin(options->checkedPlugin);
  }
  TBatchSession session(*options);
  // Outputs such as /dev/stdout are opened here, before standard output is put aside below.
  if (!session.Open(reason)) {
    return RefuseBatch(reason);
  }
  qInstallMessageHandler(ReportErrors);
  std::FILE* output = base::TakeStandardOutput(options->verbose);
  if (output == nullptr) {
    return RefuseBatch("Standard output cannot be used");
  }
  base::CatchSignals();
  base::KeepFreedMemory();
  // Before the application object, which reads these variables as it is made.
  ForgetScreen();
  // The toolkit must not take options out of our own arguments, which were parsed already.
  int argumentCount = 1;
  QApplication application(argumentCount, argv);
  // Behind the application object, which takes over the user's locale: tables would get decimal commas.
  base::UseClassicNumbers();
  TStreamView view(output);
  return session.Run(view);
}

}  // namespace

int RunBatch(int argc, char** argv, const char* version) {
  base::FillStandardPlaces();
  try {
    return Run(argc, argv, version);
  } catch (const std::bad_alloc&) {
    return RefuseBatch("Out of memory");
  } catch (const std::exception& failure) {
    // What is thrown inside a command ends that command alone; what comes here ends the run.
    return RefuseBatch(failure.what());
  }
}
