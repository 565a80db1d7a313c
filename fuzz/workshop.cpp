#include "fuzz/workshop.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <set>

#include <QApplication>

#include "base/console.h"
#include "base/text.h"
#include "batch/options.h"
#include "batch/session.h"
#include "batch/stream-view.h"
#include "fuzz/input.h"
#include "tests/support/test-pictures.h"

namespace filesystem = std::filesystem;

namespace {

class TFuzzView : public TStreamView {
 public:
  using TStreamView::TStreamView;

  void SetListener(TViewListener* newListener) override { listener = newListener; }

  void AddOutput(const std::string& text) override {
    if (listener != nullptr && text.starts_with("> ")) {
      listener->Complete(text.substr(2, text.size() - 3));
      listener->PreviousCommand();
      listener->PreviousCommand();
      listener->NextCommand();
    }
    TStreamView::AddOutput(text);
  }

  // Standard error is libFuzzer's.
  void ReportFailedLine(const std::string& /*text*/) override {}

  void BeginWork() override {
    if (++lines > kMostLines) {
      listener->Interrupt();
    }
  }

  void ShowWork(const std::string& text) override {
    if (!text.empty() && ++draws > kMostDraws) {
      listener->Interrupt();
    }
  }

  bool IsClosing() const override { return lines > kMostLines || draws > kMostDraws; }

 private:
  static constexpr int kMostLines = 100;
  /// At 50 milliseconds or more each.
  static constexpr int kMostDraws = 60;

  TViewListener* listener = nullptr;
  int lines = 0;
  int draws = 0;
};

/// A directory for all inputs of a process. Between the inputs the working directory is the one the process was started
/// in, where libFuzzer looks for its files.
class TWorkshop {
 public:
  TWorkshop() {
    FillWorkshop();
    for (const auto& entry : filesystem::recursive_directory_iterator(".")) {
      fixtures.insert(entry.path());
    }
    filesystem::current_path(before);
  }

  void Visit(const std::uint8_t* data, std::size_t size) const {
    filesystem::current_path(directory.GetPath());
    TryInput(data, size);
    Tidy();
    filesystem::current_path(before);
  }

 private:
  void Tidy() const {
    std::set<filesystem::path> others;
    for (filesystem::recursive_directory_iterator entry("."), end; entry != end; ++entry) {
      if (!fixtures.contains(entry->path())) {
        others.insert(entry->path());
        entry.disable_recursion_pending();
      }
    }
    for (const filesystem::path& path : others) {
      filesystem::remove_all(path);
    }
  }

  const filesystem::path before = filesystem::current_path();
  TScratchDirectory directory;
  std::set<filesystem::path> fixtures;
};

}  // namespace

int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  setenv("QT_QPA_PLATFORM", "offscreen", 1);
  setenv("PATH", "/nowhere", 1);
  static int argumentCount = 1;
  static char name[] = "fuzz";
  static char* arguments[] = {name, nullptr};
  // Never deleted: libFuzzer ends the process in the middle of everything.
  static auto* const application = new QApplication(argumentCount, arguments);
  Require(application != nullptr);
  base::UseClassicNumbers();
  Require(base::TakeStandardOutput(false) != nullptr);
  return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const TWorkshop workshop;
  workshop.Visit(data, size);
  return 0;
}

bool RunSession(const std::string& script) {
  static std::FILE* const output = std::fopen("/dev/null", "w");
  TOptions options;
  options.script = script;
  options.seed = 1;
  options.variables = "tables/variables.tsv";
  options.segments = "tables/segments.tsv";
  options.rankings = "tables/rankings";
  options.runs = "tables/runs";
  TBatchSession session(options);
  std::string reason;
  if (!session.Open(reason)) {
    return true;
  }
  TFuzzView view(output);
  session.Run(view);
  return !view.IsClosing();
}

void MakeTinyPictures() {
  const auto blob = [](int middle, unsigned char red, unsigned char blue) {
    return [=](int x, int y) -> TColor {
      const int distance = (x - middle) * (x - middle) + (y - 20) * (y - 20);
      const auto green = static_cast<unsigned char>(distance < 64 ? 250 : 4 * (x % 16));
      return {red, green, blue};
    };
  };
  MakePicture("photos/im1.jpg", 40, 36, blob(12, 200, 0));
  MakePicture("photos/im2.jpg", 44, 40, blob(26, 180, 20));
  MakePicture("photos/im10.jpg", 36, 40, blob(18, 10, 220));
  MakePicture("others/a.jpg", 40, 40, blob(20, 0, 90));
  MakePicture("others/b.jpg", 7, 5, blob(3, 60, 60));
  MakePicture("query.png", 40, 36, blob(13, 190, 10));
  // The first bytes of a PNG file. Files of no known form are decoded in a process apart, and making one costs a
  // process under sanitizers more than all else: therefore no collection has one.
  MakeFile("photos/not-a-picture.jpg", "\x89PNG\r\n\x1a\n");
  MakeFile("empty.jpg", "");
  filesystem::create_directory("nothing");
  filesystem::create_directory("tables");
}
