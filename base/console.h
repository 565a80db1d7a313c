#pragma once

#include <cstdio>
#include <string>
#include <string_view>

/// What a program without a window needs of its terminal: standard output for its own lines only, lines as they arrive,
/// and Ctrl-C as a wish that it can grant between two commands. SIGTERM and SIGHUP count as Ctrl-C.
namespace base {

/// Puts something into the places of standard input, output and error where the caller closed them, so that no file
/// that is opened later gets there and is written to in their stead. Reading and writing there fails. First of all in a
/// program.
void FillStandardPlaces();

/// Takes standard output for the caller. What libraries write to standard output goes to standard error from now on if
/// `verbose`, otherwise nowhere. The stream stays open until the program ends. Null if the platform refuses.
std::FILE* TakeStandardOutput(bool verbose);

/// Writes the text and whatever the stream still holds, and waits where a reader is slower than a stream that does not
/// block. False, with the reason in errno, if that cannot be done: EPIPE if nobody reads.
bool Print(std::FILE* stream, std::string_view text);

/// True if the stream is a terminal, where a person reads along.
bool IsTerminal(std::FILE* stream);

/// From now on a closed pipe is an error of the write that meets it and does not end the program, and the first Ctrl-C
/// only sets what Interrupted() tells and says so on standard error; a second one ends the program at once. Signals
/// that the program was started to ignore stay ignored. Includes MakeFileLimitAnError().
void CatchSignals();

/// A descriptor that is readable from the first Ctrl-C on, for a loop that waits for events; nobody reads from it. -1
/// where there is none.
int SignalDescriptor();

/// From now on a file that reaches the limit of its size (ulimit -f) is an error of the write, as on a full disk, and
/// does not end the program.
void MakeFileLimitAnError();

/// True once Ctrl-C was pressed after CatchSignals(); always false in a program that did not call it.
bool Interrupted();

/// Reads lines from standard input or from a file as they arrive. Lines end in LF or CR LF; what stands behind the last
/// line end is a line too, unless it is empty. A mark of UTF-8 at the beginning is no part of the first line.
class TLineReader {
 public:
  /// Reads standard input.
  TLineReader();
  /// Reads a file. IsOpen() tells whether it can be read.
  explicit TLineReader(const std::string& path);
  ~TLineReader();
  TLineReader(const TLineReader&) = delete;
  TLineReader& operator=(const TLineReader&) = delete;

  bool IsOpen() const { return descriptor >= 0; }

  /// True if the input is a terminal.
  bool IsTerminal() const;

  /// True if there is no zero byte in what arrives first: a picture has one. Waits for it.
  bool BeginsAsText();

  /// The next line without its end. False at the end of the input, if it could not be read to its end, or once Ctrl-C
  /// was pressed.
  bool Next(std::string& line);

  /// True if the system failed to deliver what comes next. The beginning of a line that was there already is not a
  /// line.
  bool HasFailed() const { return hasFailed; }

 private:
  bool ReadBlock();

  int descriptor = 0;
  bool atEnd = false;
  bool hasFailed = false;
  bool isFirst = true;
  std::string pending;
  std::size_t position = 0;
};

}  // namespace base
