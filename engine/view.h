#pragma once

#include <cstddef>
#include <string>
#include <vector>

class TVarList;

/// What may stand in the command line in place of its bytes from `start` to the cursor.
struct TCompletion {
  std::size_t start = 0;
  std::vector<std::string> candidates;
};

/// Who hears of what the user does in a view. The controller is the one.
class TViewListener {
 public:
  TViewListener() = default;
  virtual ~TViewListener() = default;
  TViewListener(const TViewListener&) = delete;
  TViewListener& operator=(const TViewListener&) = delete;

  /// A line is complete: typed, or pasted with its line end.
  virtual void OnCommandEntered() = 0;
  /// The same for a line that the view made of a dropped file.
  virtual void OnFileDropped() = 0;
  /// Up and down in the command line.
  virtual void PreviousCommand() = 0;
  virtual void NextCommand() = 0;
  /// The user wants the command under way to end.
  virtual void Interrupt() = 0;
  /// What may stand in place of the end of the given text, which stands before the cursor of the command line.
  virtual TCompletion Complete(const std::string& before) const = 0;
};

/// What the controller shows: its one way to the user. tessimar shows it in a window (TWindowView), tessimar-batch as a
/// stream of text.
class TView {
 public:
  TView() = default;
  virtual ~TView() = default;
  TView(const TView&) = delete;
  TView& operator=(const TView&) = delete;

  /// Sets who is notified of the user's actions; null for nobody.
  virtual void SetListener(TViewListener* listener) = 0;

  /// One more entry of the lists of what is available.
  virtual void AddFeature(const std::string& name) = 0;
  virtual void AddClassifier(const std::string& name) = 0;
  virtual void AddSegmentationMethod(const std::string& name) = 0;

  /// Appends text, which brings its own line end, to the output.
  virtual void AddOutput(const std::string& text) = 0;

  /// A line of a script failed. The text is one line without its end, such as "script.txt:12: Function failed: File
  /// does not exist"; in a script that another one runs, both positions stand in it, the outer one first. The output
  /// has it already, in more words.
  virtual void ReportFailedLine(const std::string& text) = 0;

  /// The variables may have changed. While work is under way a view need not show each state of them; when it ends,
  /// they are shown. The list lives as long as there is a listener.
  virtual void ShowVariables(const TVarList& variables) = 0;

  /// The command line.
  virtual std::string GetCommandText() const = 0;
  virtual void SetCommandText(const std::string& text) = 0;
  virtual void SelectCommandText() = 0;

  /// Work begins and has ended; both nest. In between the user's input waits, but for the wish to interrupt. The end
  /// must come whatever failed, so that it never throws itself.
  virtual void BeginWork() = 0;
  virtual void EndWork() noexcept = 0;

  /// True once the user has closed the view while work is under way: no further line shall begin.
  virtual bool IsClosing() const = 0;

  /// Shows what is under way, as "segmentimage, 1,200 of 25,000", and draws what has changed; empty when it is over.
  virtual void ShowWork(const std::string& text) = 0;

  /// Draws what has changed and delivers what has arrived meanwhile.
  virtual void ProcessEvents() = 0;

  /// Waits, where there is somebody to watch.
  virtual void Pause(int milliseconds) = 0;
};
