#pragma once

#include <cstddef>
#include <string>

/// What a command under way needs of the program that runs it: to show how far it is, to let the window draw itself,
/// and to hear that the user wants it to end. Given to every command by TFunctionList; outlives every call.
class TWork {
 public:
  TWork() = default;
  virtual ~TWork() = default;
  TWork(const TWork&) = delete;
  TWork& operator=(const TWork&) = delete;

  /// Tells that `done` of the `total` images of a command are through, so that the window draws itself and its title
  /// counts on. Cheap enough to be called before every image. False once the user has asked the command to end.
  virtual bool Continue(const std::string& command, std::size_t done, std::size_t total) = 0;

  /// Lets the window draw itself now.
  virtual void ProcessEvents() = 0;

  /// Waits, where there is somebody to watch.
  virtual void Pause(int milliseconds) = 0;

  /// Tells from where the next command line comes that the command wants run: the line of that number, from 1, of a
  /// script.
  virtual void SetPosition(const std::string& script, std::size_t line) = 0;

  /// Tells that a file could not be read, or not whole, so that what the command makes lacks something although it
  /// succeeds.
  virtual void NoteLoss() = 0;

  /// True once the user has asked the command under way to end.
  virtual bool IsInterrupted() const = 0;
};
