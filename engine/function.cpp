#include "engine/function.h"

#include <array>
#include <string_view>

#include "base/format-string.h"
#include "base/native-path.h"
#include "engine/command-history.h"
#include "engine/var.h"
#include "engine/work.h"

TFunction::TFunction(const TCommandFacts& facts)
    : name(facts.name),
      returnsValue(facts.returns.create != nullptr),
      returnType(facts.returns.type),
      minParameters(static_cast<int>(facts.kinds.size()) - facts.optional),
      maxParameters(static_cast<int>(facts.kinds.size())),
      kinds(facts.kinds),
      takesAnything(facts.takesAnything),
      createReturn(facts.returns.create),
      help(facts.help) {}

void TFunction::ShowHelp() const {
  // The raw string of a help text begins with a line feed. No stream: one swallows its lack of memory, and the lines.
  std::string_view rest = help;
  if (rest.empty()) {
    Print("No help available for this function");
  }
  while (!rest.empty()) {
    rest.remove_prefix(1);
    const std::string_view line = rest.substr(0, rest.find('\n'));
    Print(std::string(line));
    rest.remove_prefix(line.size());
  }
}

std::unique_ptr<TVar> TFunction::CreateReturnVariable() const {
  return createReturn == nullptr ? nullptr : createReturn();
}

bool TFunction::CheckParameters(const std::vector<std::string>& params) const {
  if (takesAnything) {
    return true;
  }
  // Kinds are looked at only if the number fits, since they go by position.
  if (!CheckParameterCount(static_cast<int>(params.size()))) {
    return false;
  }
  bool allFit = true;
  for (std::size_t i = 0; i < params.size(); ++i) {
    // One bad parameter does not hide the next.
    allFit = CheckParameterType(static_cast<int>(i) + 1, params[i], kinds[i]) && allFit;
  }
  return allFit;
}

bool TFunction::Execute(const std::vector<std::string>& /*params*/) {
  // Reached only by a command that overrides neither of the two for its kind; the controller asks ReturnsValue() first.
  return Fail("This function needs a destination variable - function not executed");
}

bool TFunction::ExecuteWithReturn(TVar& /*variable*/, const std::vector<std::string>& /*params*/) {
  return Fail("This function does not need a destination variable - function not executed");
}

bool TFunction::CheckParameterCount(int count) const {
  if (count >= minParameters && count <= maxParameters) {
    return true;
  }
  // The texts are those of the transcripts, letter for letter.
  if (minParameters != maxParameters) {
    Print(FormatString("Function needs %d to %d parameters", minParameters, maxParameters));
  } else if (maxParameters == 0) {
    Print("Function does not take parameters");
  } else if (maxParameters == 1) {
    Print("Function needs 1 parameter");
  } else {
    Print(FormatString("Function needs %d parameters", maxParameters));
  }
  return false;
}

bool TFunction::CheckParameterType(int position, const std::string& parameter, const std::string& kind) const {
  const auto report = [&](const char* fault) {
    return Fail(FormatString("Parameter %d (%s) is ", position, parameter.c_str()) + fault);
  };
  if (kind == "variable" && varList->Find(parameter) == nullptr) {
    return report("an unknown variable");
  }
  // A single double quote passes, being its own first and last character; StripQuotes makes the empty text of it.
  if (kind == "string" && (parameter.empty() || parameter.front() != '"' || parameter.back() != '"')) {
    return report("not of type 'string', use syntax \"...\"");
  }
  if (kind == "boolean" && parameter != "true" && parameter != "false") {
    return report("not of type 'boolean', use true or false");
  }
  return true;
}

std::string TFunction::StripQuotes(const std::string& parameter) {
  return parameter.size() < 2 ? std::string() : parameter.substr(1, parameter.size() - 2);
}

void TFunction::PrintWrongType(int position, const std::string& quotedType) const {
  // No command has a variable further back.
  constexpr std::array<const char*, 3> kOrdinals = {"First", "Second", "Third"};
  Print(std::string(kOrdinals.at(static_cast<std::size_t>(position) - 1)) + " parameter is not of type " + quotedType);
}

void TFunction::Print(const std::string& line) const {
  if (output) {
    output(line);
  }
}

bool TFunction::Fail(const std::string& reason) const {
  Print(reason);
  return false;
}

void TFunction::PrintCount(int count, const char* what) const {
  if (count > 0) {
    Print(FormatString("%d %s", count, what));
  }
}

void TFunction::PrintLoss(const std::string& line) const {
  Print(line);
  if (work != nullptr) {
    work->NoteLoss();
  }
}

bool TFunction::LoadLines(const std::string& path, TCommandHistory& lines) const {
  // A pipe or a device is no file here: reading one might never end.
  if (!base::IsRegularFile(path)) {
    return Fail("File not found");
  }
  if (!lines.Load(path)) {
    return Fail("File cannot be read");
  }
  // Told, not mended: scripts that were written for the rule rely on it.
  if (lines.HasBareLineFeed()) {
    Print(FormatString("File '%s' has line ends without carriage return: the last character of such a line is lost",
                       path.c_str()));
  }
  if (lines.HasByteOrderMark()) {
    Print(
        FormatString("File '%s' begins with a byte order mark, which is read as part of its first line", path.c_str()));
  }
  if (lines.HasOpenLastLine()) {
    Print(FormatString("The last line of '%s' has no line end and is not read", path.c_str()));
  }
  return true;
}

bool TFunction::ForEach(std::size_t total, const boost::function<bool(std::size_t)>& step,
                        const boost::function<void()>& atEnd) const {
  // Asked before each image and not behind it: the last image is never followed by the question, so that a command
  // whose work is done cannot be interrupted any more.
  std::size_t done = 0;
  bool isSound = true;
  while (done < total && ReportProgress(done, total)) {
    isSound = step(done);
    if (!isSound) {
      break;
    }
    ++done;
  }
  // Counts and the rest of a report come before the line that tells of the interruption, which is the command's last.
  atEnd();
  return isSound && (done == total || Interrupted(done, total));
}

bool TFunction::ReportProgress(std::size_t done, std::size_t total) const {
  // Without anybody to ask, as in tests of single commands, nothing is ever interrupted.
  return work == nullptr || work->Continue(name, done, total);
}

bool TFunction::Interrupted(std::size_t done, std::size_t total) const {
  return Fail(FormatString("Interrupted after %d of %d images", static_cast<int>(done), static_cast<int>(total)));
}

void TFunction::ProcessEvents() const {
  if (work != nullptr) {
    work->ProcessEvents();
  }
}

void TFunction::Pause(int milliseconds) const {
  if (work != nullptr) {
    work->Pause(milliseconds);
  }
}
