#include "features/plugin-doctor.h"

#include <algorithm>
#include <array>
#include <bit>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "base/format-string.h"
#include "base/native-path.h"
#include "base/plugin-library.h"
#include "base/text.h"
#include "base/trial.h"
#include "features/feature-hsv.h"
#include "features/feature-lbp.h"
#include "features/plugin-exports.h"

namespace {

using TClock = std::chrono::steady_clock;
using TFlush = base::TGuardedBlock::TFlush;
/// The bits of the numbers, so that a value that is not a number can be compared too.
using TAnswer = std::vector<std::uint64_t>;

enum class TFill { kBlack, kGray, kColor, kNoise };

struct TPicture {
  const char* name;
  int width;
  int height;
  TFill fill;
};

// From the smallest to the largest: who is slow is slow on the last.
constexpr std::array<TPicture, 11> kPictures = {{{"0 x 0", 0, 0, TFill::kNoise},
                                                 {"1 x 1", 1, 1, TFill::kNoise},
                                                 {"1 x 500", 1, 500, TFill::kNoise},
                                                 {"500 x 1", 500, 1, TFill::kNoise},
                                                 {"17 x 13", 17, 13, TFill::kNoise},
                                                 {"101 x 75", 101, 75, TFill::kColor},
                                                 {"64 x 48 black", 64, 48, TFill::kBlack},
                                                 {"64 x 48 gray", 64, 48, TFill::kGray},
                                                 {"64 x 48 color", 64, 48, TFill::kColor},
                                                 {"64 x 48 noise", 64, 48, TFill::kNoise},
                                                 {"4000 x 3000", 4000, 3000, TFill::kNoise}}};
// Of the pictures above: the one that is asked for again and again, small enough for a thousand calls.
constexpr std::size_t kNoisePicture = 9;
constexpr TPicture kMegapixel = {"1000 x 1000", 1000, 1000, TFill::kNoise};

// As many as a leak of a few bytes needs to stand out from the allocator's own bookkeeping; a slow plug-in is judged by
// fewer.
constexpr int kLeakCalls = 1000;
constexpr int kFewestLeakCalls = 20;
constexpr auto kLeakTime = std::chrono::seconds(60);
// The best of three: the first one may load pages, and any of them may be interrupted.
constexpr int kTimedCalls = 3;

/// What the surroundings of a call hold that must not matter, different from call to call.
struct TSurroundings {
  TFlush flush;
  /// In every element before the call: signaling NaNs that no computation gives.
  std::uint64_t element;
  /// In the bytes between the rows.
  unsigned char padding;
};

// The two calls differ in everything that must not matter. An element that keeps both patterns was not written; an
// answer that differs has read what is not its own.
// A signaling NaN has all bits of the exponent, and 0 in the first bit of the fraction (IEEE 754-2008, 6.2.1).
constexpr TSurroundings kFirst = {TFlush::kAtEnd, 0x7ff4a5a500c0ffee, 0x55};
constexpr TSurroundings kSecond = {TFlush::kAtStart, 0x7ff45a5a00decade, 0xc3};

void FillRow(const TPicture& picture, int y, int bytesPerPixel, std::uint64_t& state, unsigned char* row) {
  const std::size_t count = static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(bytesPerPixel);
  switch (picture.fill) {
    case TFill::kBlack:
    case TFill::kGray:
      std::fill_n(row, count, picture.fill == TFill::kBlack ? 0 : 128);
      break;
    case TFill::kColor:
      for (std::size_t i = 0; i < count; ++i) {
        // A slope in each channel, of another steepness, that wraps around at 256: colors of all hues, the same on
        // every machine.
        const auto channel = i % static_cast<std::size_t>(bytesPerPixel);
        row[i] = static_cast<unsigned char>(i * (channel + 1) + static_cast<std::size_t>(y) * (5 - channel));
      }
      break;
    case TFill::kNoise:
      // Marsaglia, "Xorshift RNGs", Journal of Statistical Software 8(14), 2003.
      for (std::size_t i = 0; i < count; i += sizeof state) {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        std::memcpy(row + i, &state, std::min(count - i, sizeof state));
      }
  }
}

/// Why the plug-in cannot be asked; nothing if it could. The answer's length is what the plug-in asked for.
std::optional<std::string> Ask(const TPluginExports& exports, bool isColor, const TPicture& picture,
                               const TSurroundings& surroundings, TAnswer& answer, TClock::duration* time = nullptr) {
  const std::int32_t length = exports.getFeatureLength();
  if (length < 0 || length > kMaxPluginLength) {
    return FormatString("asks for %d numbers; the workbench gives 0 to %d", length, kMaxPluginLength);
  }
  const int bytesPerPixel = isColor ? 3 : 1;
  // As in the workbench, where rows begin at multiples of 4.
  const std::ptrdiff_t rowSize = static_cast<std::ptrdiff_t>(picture.width) * bytesPerPixel;
  const auto stride = static_cast<std::int32_t>((rowSize + 3) & ~std::ptrdiff_t{3});
  base::TGuardedBlock pixels(static_cast<std::size_t>(stride) * static_cast<std::size_t>(picture.height),
                             surroundings.flush, "the pixels");
  const base::TGuardedBlock elements(static_cast<std::size_t>(length) * sizeof(double), surroundings.flush,
                                     "the vector");
  if (!pixels.HasMemory() || !elements.HasMemory()) {
    return "there is not enough memory to try it";
  }
  // The same for every call, so that both calls see one picture. Any number would do but 0, at which the generator
  // stands still.
  std::uint64_t state = 0x9e3779b97f4a7c15;
  for (int y = 0; y < picture.height; ++y) {
    unsigned char* row = pixels.GetBytes() + static_cast<std::ptrdiff_t>(y) * stride;
    std::fill(row + rowSize, row + stride, surroundings.padding);
    FillRow(picture, y, bytesPerPixel, state, row);
  }
  // The workbench gives all plug-ins the same picture, so that none may write to it.
  pixels.MakeReadOnly();
  answer.assign(static_cast<std::size_t>(length), surroundings.element);
  auto* const answerBytes = reinterpret_cast<unsigned char*>(answer.data());
  const std::size_t answerSize = answer.size() * sizeof(double);
  std::copy_n(answerBytes, answerSize, elements.GetBytes());
  const auto process = isColor ? exports.processColor : exports.processGrayscale;
  const auto start = TClock::now();
  // Nothing else between the two looks at the clock.
  process(pixels.GetBytes(), picture.width, picture.height, stride, reinterpret_cast<double*>(elements.GetBytes()));
  if (time != nullptr) {
    *time = TClock::now() - start;
  }
  // Out of the guarded block, which goes on return.
  std::copy_n(elements.GetBytes(), answerSize, answerBytes);
  return std::nullopt;
}

/// FNV-1a by 64-bit words instead of bytes: it only has to differ where answers differ. Offset and prime are those of
/// the form of 64 bits (Fowler, Noll and Vo).
std::uint64_t Digest(const TAnswer& answer) {
  std::uint64_t digest = 0xcbf29ce484222325;
  for (const std::uint64_t bits : answer) {
    digest = (digest ^ bits) * 0x100000001b3;
  }
  return digest;
}

/// Tells what is wrong with two answers to one picture: "unwritten", "infinite" or "differs", and the details.
void TellFaults(const TAnswer& first, const TAnswer& second, const base::TTell& tell) {
  if (first.size() != second.size()) {
    tell(FormatString("differs %zu numbers, then %zu", first.size(), second.size()));
    return;
  }
  const auto number = [](std::uint64_t bits) { return std::bit_cast<double>(bits); };
  // The first element of each kind: a vector may have sixteen million.
  bool isUnwrittenTold = false;
  bool isInfiniteTold = false;
  bool isDifferenceTold = false;
  for (std::size_t i = 0; i < first.size(); ++i) {
    const bool isUnwritten = first[i] == kFirst.element && second[i] == kSecond.element;
    // An element counts for one fault only, the first in this order.
    const bool isInfinite = !isUnwritten && !(std::isfinite(number(first[i])) && std::isfinite(number(second[i])));
    if (isUnwritten && !std::exchange(isUnwrittenTold, true)) {
      tell(FormatString("unwritten element %zu", i));
    }
    if (isInfinite && !std::exchange(isInfiniteTold, true)) {
      tell(FormatString("infinite element %zu is %g", i,
                        std::isfinite(number(first[i])) ? number(second[i]) : number(first[i])));
    }
    if (!isUnwritten && !isInfinite && first[i] != second[i] && !std::exchange(isDifferenceTold, true)) {
      tell(FormatString("differs element %zu is %.17g, then %.17g", i, number(first[i]), number(second[i])));
    }
  }
}

/// What was lost for each call, judged by the second half of the calls; 0 if nothing, or only once. What grows in one
/// half alone is a cache.
std::size_t LostBytes(const std::vector<base::TMemoryInUse>& history) {
  const auto& start = history.front();
  const auto& middle = history[history.size() / 2];
  const auto& end = history.back();
  const std::size_t calls = history.size() - 1 - history.size() / 2;
  const auto grown = [](std::optional<std::size_t> before, std::optional<std::size_t> after) {
    return before && after && *after > *before ? *after - *before : 0;
  };
  // The smallest leak of every second call is 4000 bytes in 250 of them; a mapping is at least a page.
  // Growth in both halves, since a cache that fills up late must not pass for a leak.
  const std::size_t allocated = grown(middle.allocated, end.allocated);
  const bool isAllocated = allocated >= 8 * calls && grown(start.allocated, middle.allocated) >= allocated / 4;
  const std::size_t mapped = grown(middle.mapped, end.mapped);
  const bool isMapped = mapped >= 2048 * calls && grown(start.mapped, middle.mapped) >= mapped / 4;
  return std::max(isAllocated ? allocated : 0, isMapped ? mapped : 0) / calls;
}

/// One plug-in on the couch. Everything that calls the library runs in a process of its own; the lines that it tells
/// begin with a word that says what they are about.
class TCheckup {
 public:
  TCheckup(const std::string& theFileName, const boost::function<void(const std::string&)>& thePrint, int thePatience)
      : fileName(theFileName), print(thePrint), patience(thePatience) {}

  bool Run() {
    const std::string bareName(base::FileNameOf(fileName));
    if (!base::IsPluginFileName(bareName)) {
      PrintFault("the workbench passes it over: its name does not begin with Feature or has no library ending");
    }
    if (Introduce()) {
      // The later trials need an answer to hold theirs against.
      TryPictures();
      TryLeaks();
      TryTime();
      PrintFindings();
    }
    print(bareName +
          (faults == 0 ? " is sound" : FormatString(" is not sound: %d fault%s", faults, faults == 1 ? "" : "s")));
    return faults == 0;
  }

 private:
  struct TFinding {
    std::vector<std::string> pictures;
    std::string detail;
  };

  void PrintGood(const std::string& text) const { print("ok     " + text); }
  void PrintUntried(const std::string& text) const { print("-      not tried: " + text); }
  void PrintFault(const std::string& text) {
    print("FAULT  " + text);
    ++faults;
  }

  std::string Limit() const { return FormatString("%g s", patience / 1000.0); }

  /// One line names all pictures of a kind of fault, with the detail of the first: a plug-in that leaves its vector
  /// unwritten does so on all eleven.
  void Note(const std::string& kind, const std::string& picture, const std::string& detail) {
    TFinding& finding = findings[kind];
    if (finding.detail.empty()) {
      finding.detail = detail;
    }
    if (std::find(finding.pictures.begin(), finding.pictures.end(), picture) == finding.pictures.end()) {
      finding.pictures.push_back(picture);
    }
  }

  /// Runs `trial` with the library loaded and asked as the workbench does it. What it tells is split behind the first
  /// word for `hear`.
  base::TTrialOutcome Try(const boost::function<void(const TPluginExports&, const base::TTell&)>& trial,
                          const boost::function<void(const std::string&, const std::string&)>& hear) const {
    return base::RunTrial(
        [&](const base::TTell& tell) {
          std::string reason;
          const auto exports = LoadPluginExports(fileName, reason);
          if (!exports) {
            tell("unusable " + reason);
            return;
          }
          // Told step by step, so that a library that ends the process is known to have got so far.
          tell("loaded");
          for (const std::string& symbol : exports->missing) {
            tell("missing " + symbol);
          }
          std::string ownName;
          bool asksGray = false;
          bool asksColor = false;
          reason = AskPlugin(*exports, ownName, asksGray, asksColor);
          if (!reason.empty()) {
            tell("unusable " + reason);
            return;
          }
          tell("name " + ownName);
          tell(asksColor ? "color" : "gray");
          trial(*exports, tell);
        },
        [&hear](const std::string& line) {
          const std::size_t end = std::min(line.find(' '), line.size());
          hear(line.substr(0, end), line.substr(std::min(end + 1, line.size())));
        },
        patience);
  }

  /// Notes how a trial ended that should have returned. True if it did return.
  bool NoteEnd(const base::TTrialOutcome& outcome, const std::string& picture) {
    switch (outcome.end) {
      case base::TTrialEnd::kReturned:
        return true;
      case base::TTrialEnd::kTrespassed:
        Note("trespass", picture, outcome.how);
        break;
      case base::TTrialEnd::kHung:
        Note("hang", picture, {});
        break;
      case base::TTrialEnd::kCrashed:
      case base::TTrialEnd::kNotStarted:
        Note("crash", picture, outcome.how);
    }
    return false;
  }

  /// What the library says of itself. False if nothing else can be tried.
  bool Introduce() {
    std::string stage = "when it is loaded";
    std::string unusable;
    std::string description;
    std::vector<std::string> missing;
    std::string length;
    const auto outcome = Try(
        [](const TPluginExports& exports, const base::TTell& tell) {
          if (exports.getDescription != nullptr) {
            tell("description " + PluginText(exports.getDescription()));
          }
          tell(FormatString("length %d", exports.getFeatureLength()));
        },
        [&](const std::string& word, const std::string& text) {
          if (word == "loaded") {
            stage = "when it is asked what it is";
          } else if (word == "missing") {
            missing.push_back(text);
          } else if (word == "unusable") {
            unusable = text;
          } else if (word == "name") {
            name = text;
          } else if (word == "description") {
            description = text;
          } else if (word == "length") {
            length = text;
          } else {
            isColor = word == "color";
          }
        });
    if (outcome.end == base::TTrialEnd::kNotStarted) {
      PrintFault("cannot be tried: " + outcome.how);
      return false;
    }
    if (!missing.empty()) {
      PrintFault("does not export " + base::Join(missing, ", "));
    } else if (!name.empty()) {
      PrintGood("exports all seven functions");
    }
    if (outcome.end != base::TTrialEnd::kReturned) {
      PrintFault(outcome.end == base::TTrialEnd::kHung ? "hangs " + stage + ": no answer within " + Limit()
                                                       : "crashes " + stage + ": " + outcome.how);
      return false;
    }
    if (!unusable.empty()) {
      // A missing function has its line already.
      if (missing.empty() || unusable.find("does not export") == std::string::npos) {
        PrintFault("cannot be used: " + unusable);
      }
      return false;
    }
    if (name == TFeatureHsv().GetName() || name == TFeatureLbp().GetName()) {
      PrintFault("never runs: a built-in feature is called \"" + name + "\" too");
    } else {
      PrintGood("calls itself \"" + name + "\"" + (description.empty() ? "" : ": " + description));
    }
    PrintGood(FormatString("works on %s, its vector has length %s", isColor ? "color" : "gray levels", length.c_str()));
    return true;
  }

  /// Asks for each picture twice. Where that ends the process, another one goes on behind that picture.
  void TryPictures() {
    std::size_t current = 0;
    while (current < kPictures.size()) {
      // The first function runs in a copy of the process: what it assigns is lost, and only what it tells reaches the
      // second one, which runs here.
      const auto outcome = Try(
          [&](const TPluginExports& exports, const base::TTell& tell) {
            for (std::size_t i = current; i < kPictures.size(); ++i) {
              tell(FormatString("picture %zu", i));
              TAnswer first;
              TAnswer second;
              for (const auto& [surroundings, answer] : {std::pair(&kFirst, &first), std::pair(&kSecond, &second)}) {
                if (const auto reason = Ask(exports, isColor, kPictures[i], *surroundings, *answer)) {
                  tell("length " + *reason);
                  return;
                }
                // The clock starts again.
                tell("half");
              }
              TellFaults(first, second, tell);
              tell(FormatString("answered %llu", static_cast<unsigned long long>(Digest(first))));
            }
          },
          [&](const std::string& word, const std::string& text) {
            if (word == "picture") {
              // Told before the call, so that a crash is known to be of this picture.
              current = std::strtoull(text.c_str(), nullptr, 10);
            } else if (word == "answered") {
              digests[current] = std::strtoull(text.c_str(), nullptr, 10);
            } else if (word == "length" || word == "unwritten" || word == "infinite" || word == "differs") {
              Note(word, kPictures[current].name, text);
            }
          });
      const bool hasReturned = NoteEnd(outcome, kPictures[current].name);
      if (outcome.end == base::TTrialEnd::kHung && current + 1 < kPictures.size()) {
        // Each of them might take as long.
        findings["hang"].detail = "the pictures behind it were not tried";
      }
      // A crash on one picture says nothing of the next one.
      if (hasReturned || outcome.end == base::TTrialEnd::kHung) {
        return;
      }
      ++current;
    }
  }

  /// Asks for one picture a thousand times in a new process, whose first answer must be that of the other process.
  void TryLeaks() {
    if (!digests[kNoisePicture]) {
      return;
    }
    const auto outcome = Try(
        [this](const TPluginExports& exports, const base::TTell& tell) {
          std::vector<base::TMemoryInUse> history;
          history.reserve(kLeakCalls);
          const auto end = TClock::now() + kLeakTime;
          while (history.size() < kLeakCalls && TClock::now() < end) {
            {
              TAnswer answer;
              if (Ask(exports, isColor, kPictures[kNoisePicture], kFirst, answer)) {
                return;
              }
              if (history.empty() && Digest(answer) != *digests[kNoisePicture]) {
                tell("differs another process gets another answer");
              }
            }
            // Restarts the patience of the parent: it is for one call and not for a thousand.
            tell("call");
            history.push_back(base::MemoryInUse());
          }
          if (history.size() >= kFewestLeakCalls) {
            tell(FormatString("calls %zu", history.size()));
            tell(FormatString("lost %zu", LostBytes(history)));
          }
        },
        [this](const std::string& word, const std::string& text) {
          if (word == "differs") {
            Note(word, kPictures[kNoisePicture].name, text);
          } else if (word == "calls") {
            leakCalls = text;
          } else if (word == "lost") {
            lostBytes = text;
          }
        });
    NoteEnd(outcome, FormatString("%s, asked for many times", kPictures[kNoisePicture].name));
  }

  void TryTime() {
    // One that hangs would only use up the patience once more.
    if (!digests[kNoisePicture] || findings.contains("hang")) {
      return;
    }
    const auto outcome = Try(
        [this](const TPluginExports& exports, const base::TTell& tell) {
          // The shortest time counts: what else the machine does can only add to it.
          auto best = TClock::duration::max();
          for (int i = 0; i < kTimedCalls; ++i) {
            TAnswer answer;
            TClock::duration time = {};
            if (Ask(exports, isColor, kMegapixel, kFirst, answer, &time)) {
              return;
            }
            best = std::min(best, time);
            tell("call");
          }
          tell(FormatString("time %.2f", std::chrono::duration<double, std::milli>(best).count()));
        },
        [this](const std::string& word, const std::string& text) {
          if (word == "time") {
            megapixelTime = text;
          }
        });
    NoteEnd(outcome, kMegapixel.name);
  }

  /// One line for a kind of fault. Without a finding it is good if any picture was answered.
  void PrintKind(const char* kind, const char* fault, const std::string& good) {
    const auto found = findings.find(kind);
    if (found != findings.end()) {
      const TFinding& finding = found->second;
      PrintFault(fault + base::Join(finding.pictures, ", ") + (finding.detail.empty() ? "" : ": " + finding.detail));
    } else if (std::none_of(digests.begin(), digests.end(), [](const auto& digest) { return digest.has_value(); })) {
      PrintUntried("whether it " + good);
    } else {
      PrintGood(good);
    }
  }

  void PrintFindings() {
    if (findings.contains("length")) {
      PrintKind("length", "has no length on ", {});
    }
    PrintKind("crash", "crashes on ", "does not crash");
    const std::string inTime = "answers within " + Limit();
    PrintKind("hang", ("does not answer within " + Limit() + " on ").c_str(), inTime);
    PrintKind("trespass", "reads or writes beyond its memory on ", "stays within its memory");
    PrintKind("unwritten", "leaves elements unwritten on ", "writes every element");
    PrintKind("infinite", "gives values that are not finite on ", "gives finite values");
    PrintKind("differs", "gives different answers to ", "gives the same answer to the same picture");
    if (lostBytes.empty()) {
      PrintUntried("whether it loses memory");
    } else if (lostBytes != "0") {
      PrintFault("loses memory: " + lostBytes + " bytes with each call, in " + leakCalls + " calls");
    } else {
      PrintGood("loses no memory in " + leakCalls + " calls");
    }
    if (megapixelTime.empty()) {
      PrintUntried("its time for a megapixel");
    } else {
      PrintGood("takes " + megapixelTime + " ms for a megapixel");
    }
  }

  const std::string fileName;
  const boost::function<void(const std::string&)> print;
  const int patience;
  int faults = 0;
  std::string name;
  bool isColor = false;
  // By kind of fault: one line each, with all pictures on which it was found.
  std::map<std::string, TFinding> findings;
  /// Of the pictures that were answered.
  std::array<std::optional<std::uint64_t>, kPictures.size()> digests;
  std::string lostBytes;
  std::string leakCalls;
  std::string megapixelTime;
};

}  // namespace

bool CheckPlugin(const std::string& fileName, const boost::function<void(const std::string&)>& print,
                 int patienceMilliseconds) {
  return TCheckup(fileName, print, patienceMilliseconds).Run();
}
