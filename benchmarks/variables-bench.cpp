// A long session: a script that makes many variables and copies each of them once more, in the window, of which time
// and memory must grow with the number of lines and no faster; and a line beside large pictures, which must not be
// decoded again for it.

#include <chrono>
#include <ctime>
#include <fstream>
#include <memory>
#include <string>

#include <QCoreApplication>
#include <benchmark/benchmark.h>
#include <malloc.h>

#include "benchmarks/bench-data.h"
#include "engine/ctrl-main.h"
#include "engine/var-list.h"
#include "engine/window-view.h"
#include "gui/main-window.h"

namespace {

/// The parts of the program that live as long as a session.
struct TSession {
  MainWindow window;
  TWindowView view{window};
  TCtrlMain controller{view};
};

/// Half of the variables are images, whose rows have thumbnails, half rankings.
void WriteScript(const std::string& name, std::int64_t variables) {
  std::ofstream script(name, std::ios::binary);
  for (int round = 0; round < 2; ++round) {
    for (std::int64_t i = 0; i < variables; ++i) {
      script << "copy" << i << (i % 2 == 0 ? "=image\r\n" : "=index\r\n");
    }
  }
}

double InUse() {
  const auto memory = mallinfo2();
  return static_cast<double>(memory.uordblks + memory.hblkhd);
}

double SecondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// The argument is the number of variables; there are twice as many lines.
void BM_Variables(benchmark::State& state) {
  const std::string pictures = PictureDirectory(200, 640, 480);
  EnterWorkDirectory("work-variables");
  WriteScript("variables.txt", state.range(0));
  double scriptTime = 0.0;
  double exitTime = 0.0;
  double memory = 0.0;
  for (auto _ : state) {
    auto session = std::make_unique<TSession>();
    session->window.show();
    session->controller.ExecuteCommand("image=loadimage(" + Quoted(pictures + "/im1.jpg") + ")");
    session->controller.ExecuteCommand("db=loaddatabase(" + Quoted(pictures) + ")");
    session->controller.ExecuteCommand("index=searchtags(db,\"none\")");
    QCoreApplication::processEvents();
    const double before = InUse();
    const std::clock_t start = std::clock();
    session->controller.ExecuteCommand("executescript(\"variables.txt\")");
    QCoreApplication::processEvents();
    scriptTime += static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    memory += InUse() - before;
    if (session->controller.GetVarList().GetVariables().size() != static_cast<std::size_t>(state.range(0)) + 3) {
      state.SkipWithError("The script did not make its variables.");
      return;
    }
    const auto end = std::chrono::steady_clock::now();
    session.reset();
    exitTime += SecondsSince(end);
  }
  const auto lines = 2.0 * static_cast<double>(state.range(0));
  state.counters["perLine"] = benchmark::Counter(scriptTime / lines, benchmark::Counter::kAvgIterations);
  state.counters["memoryPerLine"] = benchmark::Counter(memory / lines, benchmark::Counter::kAvgIterations);
  state.counters["exit"] = benchmark::Counter(exitTime, benchmark::Counter::kAvgIterations);
}

constexpr int kLargePictures = 20;

/// A line that fails, as the cheapest of all. The commands before it have decoded the thumbnails of the window's rows.
void BM_LineBesideLargePictures(benchmark::State& state) {
  const std::string pictures = PictureDirectory(kLargePictures, 4000, 3000);
  EnterWorkDirectory("work-variables");
  TSession session;
  session.window.show();
  for (int i = 1; i <= kLargePictures; ++i) {
    const std::string number = std::to_string(i);
    session.controller.ExecuteCommand("image" + number + "=loadimage(" + Quoted(pictures + "/im" + number + ".jpg") +
                                      ")");
  }
  QCoreApplication::processEvents();
  if (session.controller.GetVarList().GetVariables().size() != kLargePictures) {
    state.SkipWithError("The pictures did not become variables.");
  }
  for (auto _ : state) {
    session.controller.ExecuteCommand("none");
    QCoreApplication::processEvents();
  }
}

BENCHMARK(BM_LineBesideLargePictures)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Variables)->Arg(1250)->Arg(2500)->Arg(5000)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
