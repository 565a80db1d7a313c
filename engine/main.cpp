// tessimar: the workbench in a window.

#include <cstdio>
#include <cstdlib>
#include <memory>

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QMessageBox>
#include <QSocketNotifier>
#include <QTimer>

#include "base/console.h"
#include "base/format-string.h"
#include "base/memory.h"
#include "base/native-path.h"
#include "base/text.h"
#include "engine/ctrl-main.h"
#include "engine/window-view.h"
#include "gui/dialog-runner.h"
#include "gui/eight-bit-text.h"
#include "gui/main-window.h"

namespace {

constexpr int kUnusable = 2;
// As a shell reports a program that Ctrl-C ended.
constexpr int kInterrupted = 130;

constexpr const char* kUsage =
    R"(Usage: tessimar [--workspace] [SCRIPT]

Opens the workbench. Its files go into the directory in which it is started.

  SCRIPT            run the lines of this file, then leave the window to you
  --workspace       work in the folder Tessimar of your home, which is made if there
                    is none, with links to the sample collection and to the installed
                    descriptors. The entry in the desktop's menu does this
  -h, --help        print this text
  --version         print the version

tessimar-batch runs scripts without a window.

Exit status: 0 when the window was closed, 2 for wrong usage, without a display, or
if a file or folder cannot be used, 130 after Ctrl-C (or SIGTERM or SIGHUP), which
closes the window behind the command under way.
)";

int Refuse(const std::string& reason) {
  std::fprintf(stderr, "tessimar: %s\n", reason.c_str());
  return kUnusable;
}

/// Without a display the toolkit can only give up. It would do so with many words and a core dump.
void RefuseWithoutDisplay(QtMsgType type, const QMessageLogContext& /*context*/, const QString& /*message*/) {
  if (type == QtFatalMsg) {
    // _Exit: the toolkit is in the middle of its construction, so that neither destructors nor exit handlers may run.
    std::_Exit(Refuse("There is no display. tessimar-batch runs scripts without one."));
  }
}

void Report(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message) {
  std::fprintf(stderr, "%s\n", FromQString(message).c_str());
  if (type == QtFatalMsg) {
    std::_Exit(EXIT_FAILURE);
  }
}

struct TOptions {
  std::string script;
  bool workspace = false;
  bool help = false;
  bool version = false;
};

/// Reads the arguments behind the program's name. What is wrong with them goes to `reason`.
TOptions ParseOptions(const QStringList& arguments, std::string& reason) {
  QCommandLineParser parser;
  parser.addOptions({{{"h", "help"}, ""}, QCommandLineOption("version"), QCommandLineOption("workspace")});
  parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
  if (!parser.parse(arguments)) {
    reason = FromQString(parser.errorText());
  }
  const QStringList scripts = parser.positionalArguments();
  if (scripts.size() > 1) {
    reason = "There is more than one script: '" + FromQString(scripts[1]) + "'.";
  } else if (scripts.contains(QString())) {
    reason = "The name of the script is empty.";
  }
  return {scripts.isEmpty() ? std::string() : FromQString(scripts.first()), parser.isSet("workspace"),
          parser.isSet("help"), parser.isSet("version")};
}

/// Lays a link to each entry of `folder`, as seen from the program's own, into the working directory, where nothing of
/// that name stands.
void LinkEntries(const char* folder, QDir::Filters kinds) {
  const QDir entries(QDir(QApplication::applicationDirPath()).filePath(folder));
  for (const QFileInfo& entry : entries.entryInfoList(kinds)) {
    const QFileInfo link(entry.fileName());
    // A link into an installation that has gone would keep the entry out for good.
    if (link.isSymbolicLink() && !link.exists()) {
      QFile::remove(link.filePath());
    }
    // Fails where something stands, which is the user's.
    QFile::link(entry.absoluteFilePath(), link.filePath());
  }
}

/// Makes ~/Tessimar the working directory, with links to the parts of the sample collection and to the descriptors that
/// are installed. False if that folder cannot be used.
bool EnterWorkspace(QString& folder) {
  folder = QDir::home().filePath("Tessimar");
  // Without a home the toolkit names the root of the file system, which is no place for anybody's work.
  if (QDir::home().isRoot() || !base::MakeWritableDirectory(FromQString(folder)) || !QDir::setCurrent(folder)) {
    return false;
  }
  LinkEntries(TESSIMAR_SAMPLES, QDir::AllEntries | QDir::NoDotAndDotDot);
  LinkEntries(TESSIMAR_FEATURES, QDir::Files);
  return true;
}

/// Whoever started the program from a menu sees no terminal.
int RefuseInDialog(const QString& reason) {
  const int status = Refuse(FromQString(reason));
  QMessageBox box(QMessageBox::Critical, "Tessimar", reason);
  RunDialog(box);
  return status;
}

/// Has a signal close the windows, as a person would, so that the history is kept: Ctrl-C in the terminal, or its end.
void CloseOnSignal(QSocketNotifier& notifier) {
  base::CatchSignals();
  if (base::SignalDescriptor() < 0) {
    return;
  }
  notifier.setSocket(base::SignalDescriptor());
  QObject::connect(&notifier, &QSocketNotifier::activated, [&notifier] {
    notifier.setEnabled(false);
    QApplication::closeAllWindows();
  });
  notifier.setEnabled(true);
}

}  // namespace

int main(int argc, char** argv) {
  base::FillStandardPlaces();
  QStringList arguments;
  for (int i = 0; i < argc; ++i) {
    arguments << ToQString(argv[i]);
  }
  std::string reason;
  // These two need no display. All else waits until the toolkit has taken its own options out.
  const TOptions first = ParseOptions(arguments, reason);
  if (first.help || first.version) {
    return base::Print(stdout, first.help ? kUsage : "tessimar " TESSIMAR_VERSION "\n")
               ? EXIT_SUCCESS
               : Refuse("Standard output cannot be written");
  }
  base::KeepFreedMemory();
  qInstallMessageHandler(RefuseWithoutDisplay);
  QGuiApplication::setDesktopFileName(TESSIMAR_DESKTOP_ENTRY);
  const QApplication application(argc, argv);
  qInstallMessageHandler(Report);
  base::UseClassicNumbers();
  reason.clear();
  const TOptions options = ParseOptions(QApplication::arguments(), reason);
  if (!reason.empty()) {
    return Refuse(reason + " See tessimar --help.");
  }
  QString folder;
  if (options.workspace && !EnterWorkspace(folder)) {
    return RefuseInDialog(QString("The folder '%1' cannot be used. Started in a terminal, Tessimar works in the "
                                  "directory in which it is started.")
                              .arg(folder));
  }
  std::unique_ptr<base::TLineReader> reader;
  if (!options.script.empty()) {
    reader = std::make_unique<base::TLineReader>(options.script);
    if (!reader->IsOpen()) {
      return Refuse(FormatString("Script '%s' cannot be read", options.script.c_str()));
    }
    if (!reader->BeginsAsText()) {
      return Refuse(FormatString("Script '%s' is not a text", options.script.c_str()));
    }
  }
  QSocketNotifier signalNotifier(QSocketNotifier::Read);
  CloseOnSignal(signalNotifier);
  // Ends in the reverse order: the controller saves the history and lets go of the view, and the view of the window.
  // The timer below calls the controller and goes before it.
  MainWindow window;
  TWindowView view(window);
  TCtrlMain controller(view);
  window.show();
  QTimer scriptTimer;
  if (reader) {
    scriptTimer.setSingleShot(true);
    // From the event loop, so that the window is drawn before the first line runs and events are handled meanwhile.
    scriptTimer.callOnTimeout([&] { controller.RunScript(*reader, options.script); });
    scriptTimer.start();
  }
  const int status = QApplication::exec();
  return base::Interrupted() ? kInterrupted : status;
}
