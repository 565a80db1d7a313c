#include "engine/window-view.h"

#include <algorithm>
#include <exception>
#include <utility>
#include <vector>

#include <boost/bind/bind.hpp>

#include "base/run-program.h"
#include "engine/var-list.h"
#include "engine/var.h"
#include "gui/main-window.h"
#include "images/var-image.h"

TWindowView::TWindowView(MainWindow& theWindow) : window(theWindow) {
  // Armed again by the next change; without one there is nothing to fill.
  fillTimer.setSingleShot(true);
  fillTimer.callOnTimeout([this] { FillTable(); });
}

TWindowView::~TWindowView() {
  // Qualified, as a virtual call from a destructor reaches no further anyway.
  TWindowView::SetListener(nullptr);
}

void TWindowView::SetListener(TViewListener* listener) {
  if (listener == nullptr) {
    fillTimer.stop();
    unshown = nullptr;
    window.OnKeyUp.clear();
    window.OnKeyDown.clear();
    window.OnReturnPressed.clear();
    window.OnFileDropped.clear();
    window.OnInterrupt.clear();
    window.OnComplete.clear();
    return;
  }
  // Callbacks and no signals of the toolkit: the controller is no QObject, and the window knows no engine file.
  window.OnKeyUp = boost::bind(&TViewListener::PreviousCommand, listener);
  window.OnKeyDown = boost::bind(&TViewListener::NextCommand, listener);
  window.OnReturnPressed = boost::bind(&TViewListener::OnCommandEntered, listener);
  window.OnFileDropped = boost::bind(&TViewListener::OnFileDropped, listener);
  window.OnInterrupt = boost::bind(&TViewListener::Interrupt, listener);
  window.OnComplete = [listener](const std::string& before) -> TCandidates {
    const auto [start, candidates] = listener->Complete(before);
    return {start, candidates};
  };
}

void TWindowView::AddFeature(const std::string& name) {
  window.AddFeature(name);
}

void TWindowView::AddClassifier(const std::string& name) {
  window.AddClassifier(name);
}

void TWindowView::AddSegmentationMethod(const std::string& name) {
  window.AddSegmentationMethod(name);
}

void TWindowView::AddOutput(const std::string& text) {
  window.AddOutput(text);
}

void TWindowView::ShowVariables(const TVarList& list) {
  // A pointer is enough: the list is the controller's and lives as long as that is the listener.
  unshown = &list;
  if (workDepth == 0) {
    FillTable();
  } else if (!fillTimer.isActive()) {
    fillTimer.start();
  }
}

void TWindowView::FillTable() noexcept {
  fillTimer.stop();
  if (unshown == nullptr) {
    return;
  }
  try {
    FillRows();
  } catch (const std::exception&) {
    // Nobody is there to be told, and memory for a line may be missing too: what is still unshown comes with the next
    // line.
  }
}

void TWindowView::FillRows() {
  const auto start = std::chrono::steady_clock::now();
  // Text only: the table keeps no pointer into the store, whose variables may go before the table is drawn.
  std::vector<TVariableRow> rows;
  rows.reserve(unshown->GetVariables().size());
  for (const auto& variable : unshown->GetVariables()) {
    const auto* image = dynamic_cast<const TVarImage*>(variable.get());
    rows.push_back({variable->GetName(), variable->GetType(), variable->GetDescription(),
                    image != nullptr ? image->GetFilename() : std::string()});
  }
  window.SetVariables(rows);
  unshown = nullptr;
  // However many rows there are, filling takes at most a tenth of the time of a script.
  const auto spent = std::chrono::steady_clock::now() - start;
  fillTimer.setInterval(std::chrono::duration_cast<std::chrono::milliseconds>(10 * spent));
}

std::string TWindowView::GetCommandText() const {
  return window.GetCommandText();
}

void TWindowView::SetCommandText(const std::string& text) {
  window.SetCommandText(text);
}

void TWindowView::SelectCommandText() {
  window.SelectCommandText();
}

void TWindowView::BeginWork() {
  window.SetBusy(true);
  ++workDepth;
}

void TWindowView::EndWork() noexcept {
  // Before the window is free again: the user must see the final state when the pointer is an arrow.
  if (--workDepth == 0) {
    FillTable();
  }
  try {
    window.SetBusy(false);
  } catch (const std::exception&) {
    // Input that waited may be lost for lack of memory, which is better than the program.
  }
}

bool TWindowView::IsClosing() const {
  return window.IsClosing();
}

void TWindowView::ShowWork(const std::string& text) {
  window.ShowWork(text);
}

void TWindowView::ProcessEvents() {
  window.ProcessWorkEvents();
}

void TWindowView::Pause(int milliseconds) {
  // Milliseconds between two looks at the events, so that a window that waits is still drawn and Escape still works.
  constexpr int kStep = 50;
  for (int rest = milliseconds; rest > 0; rest -= kStep) {
    ProcessEvents();
    base::Pause(std::min(rest, kStep));
  }
}
