#include "engine/completion.h"

#include <algorithm>
#include <array>
#include <set>
#include <string_view>

#include "base/native-path.h"
#include "base/text.h"
#include "classifiers/classifier-types.h"
#include "classifiers/classifier.h"
#include "classifiers/var-classifier.h"
#include "engine/function-list.h"
#include "engine/function.h"
#include "engine/var-list.h"
#include "engine/var.h"
#include "features/feature-list.h"
#include "segmentation/segmentation-methods.h"

namespace {

using TNames = std::set<std::string>;

enum class TKind { kFile, kDirectory, kFeature, kMethod, kClassifier, kSetting, kFreeText };

struct TPlace {
  std::string_view function;
  /// Counted from 1.
  int parameter;
  TKind kind;
};

/// What the strings of the commands are; those that are not listed are files.
constexpr std::array<TPlace, 14> kPlaces = {{{"updatefeature", 2, TKind::kFeature},
                                             {"removefeature", 2, TKind::kFeature},
                                             {"loadfeature", 2, TKind::kFeature},
                                             {"savefeature", 2, TKind::kFeature},
                                             {"segmentimage", 2, TKind::kMethod},
                                             {"createclassifier", 1, TKind::kClassifier},
                                             {"getclassifiersetting", 2, TKind::kSetting},
                                             {"setclassifiersetting", 2, TKind::kSetting},
                                             {"setclassifiersetting", 3, TKind::kFreeText},
                                             {"findvisualconceptlocations", 3, TKind::kFreeText},
                                             {"updatevisualconcepttags", 3, TKind::kFreeText},
                                             {"searchtags", 2, TKind::kFreeText},
                                             {"evaluateindex", 2, TKind::kFreeText},
                                             {"loaddatabase", 1, TKind::kDirectory}}};

TKind KindOf(std::string_view function, int parameter) {
  const auto* const place = std::find_if(kPlaces.begin(), kPlaces.end(), [&](const TPlace& each) {
    return each.function == function && each.parameter == parameter;
  });
  return place == kPlaces.end() ? TKind::kFile : place->kind;
}

bool CanBeSaid(const std::string& filename) {
  // The characters at which the parser cuts, even between double quotes, and control characters, which no key types.
  return std::none_of(filename.begin(), filename.end(), [](char character) {
    return std::string_view("\",)").find(character) != std::string_view::npos ||
           static_cast<unsigned char>(character) < ' ';
  });
}

/// The entries of the directory that `typed` leads into, with `typed` up to there in front and directories with a slash
/// behind.
TNames FilesBehind(const std::string& typed, bool onlyDirectories) {
  const std::string directory = typed.substr(0, typed.size() - base::FileNameOf(typed).size());
  // As in shells: names with a full stop in front are for whoever has typed one.
  const bool showsHidden = base::FileNameOf(typed).starts_with('.');
  const std::string searched = directory.empty() ? "." : directory;
  // Both listings resolve the case of the directory as the command itself will do it.
  const auto files = base::ListFiles(searched).value_or(std::vector<std::string>());
  // Two listings of the directory cost less than asking for the kind of each entry. A file that is made between the two
  // looks like a directory, which costs a wrong slash and nothing else.
  const std::set<std::string> isFile(files.begin(), files.end());
  TNames names;
  for (const std::string& entry : base::ListDirectory(searched).value_or(std::vector<std::string>())) {
    const bool isDirectory = !isFile.contains(entry);
    if ((isDirectory || !onlyDirectories) && (showsHidden || !entry.starts_with('.')) && CanBeSaid(entry)) {
      names.insert(directory + entry + (isDirectory ? "/" : ""));
    }
  }
  return names;
}

TNames SettingsOf(const std::string& variable, const TVarList& variables) {
  TNames names;
  const auto* classifier = dynamic_cast<const TVarClassifier*>(variables.Find(variable));
  if (classifier != nullptr && classifier->GetClassifier() != nullptr) {
    for (std::uint32_t i = 0; i < classifier->GetClassifier()->GetSettingCount(); ++i) {
      names.insert(classifier->GetClassifier()->GetSettingName(i));
    }
  }
  return names;
}

/// The text without blanks and tabs, in lower case, as the parser takes what stands outside of double quotes.
std::string Prepared(std::string_view text) {
  std::string prepared = base::FoldCase(std::string(text));
  std::erase_if(prepared, [](char character) { return character == ' ' || character == '\t'; });
  return prepared;
}

/// What fits into the double quotes that opened last. `call` is the text in front of them.
TNames StringCandidates(std::string_view call, const std::string& typed, const TVarList& variables,
                        const TFeatureList& features) {
  const std::string prepared = Prepared(call);
  // In front of the bracket stands the command, or "destination=command".
  const std::size_t bracket = std::min(prepared.find('('), prepared.size());
  const std::size_t equals = prepared.find('=');
  const std::size_t start = equals < bracket ? equals + 1 : 0;
  const std::string parameters = bracket < prepared.size() ? prepared.substr(bracket + 1) : std::string();
  // By all commas, as the parser cuts: one within an earlier pair of quotes counts too.
  const int position = 1 + static_cast<int>(std::count(parameters.begin(), parameters.end(), ','));
  TNames names;
  switch (const TKind kind = KindOf(std::string_view(prepared).substr(start, bracket - start), position)) {
    case TKind::kFeature:
      for (const auto& feature : features.GetFeatures()) {
        names.insert(feature->GetName());
      }
      return names;
    case TKind::kMethod:
      return {std::string(kGridMethod), std::string(kSiftMethod)};
    case TKind::kClassifier:
      for (const TClassifierType& type : ClassifierTypes()) {
        names.insert(type.name);
      }
      return names;
    case TKind::kSetting:
      return SettingsOf(parameters.substr(0, parameters.find(',')), variables);
    case TKind::kFreeText:
      return {};
    default:
      return FilesBehind(typed, kind == TKind::kDirectory);
  }
}

/// What fits outside of double quotes behind `front`.
TNames WordCandidates(std::string_view front, const TFunctionList& functions, const TVarList& variables) {
  const std::string_view leading = base::Trim(front);
  const bool isHelp = leading == "help";
  const bool isInBrackets = front.find('(') != std::string_view::npos;
  TNames names;
  if (!isHelp) {
    for (const auto& variable : variables.GetVariables()) {
      names.insert(variable->GetName());
    }
  }
  if (isInBrackets) {
    return names;
  }
  for (const auto& function : functions.GetFunctions()) {
    names.insert(function->GetName() + (isHelp ? "" : "("));
  }
  if (leading.empty()) {
    names.insert("help");
  }
  return names;
}

}  // namespace

TCompletion CompleteCommand(const std::string& before, const TFunctionList& functions, const TVarList& variables,
                            const TFeatureList& features) {
  // Quotes pair up from the left here, since what is typed so far has an end that is still open.
  const bool isQuoted = std::count(before.begin(), before.end(), '"') % 2 == 1;
  TCompletion completion;
  // npos + 1 is 0: without a separator the word begins with the line.
  completion.start = (isQuoted ? before.rfind('"') : before.find_last_of("=(,) \t\"")) + 1;
  const std::string_view front = std::string_view(before).substr(0, completion.start);
  const std::string typed = before.substr(completion.start);
  const TNames names =
      isQuoted ? StringCandidates(front, typed, variables, features) : WordCandidates(front, functions, variables);
  const std::string folded = base::FoldCase(typed);
  for (const std::string& name : names) {
    // As the parser folds, so that "Up" completes to "updatefeature(".
    if (base::FoldCase(name).starts_with(folded)) {
      completion.candidates.push_back(name);
    }
  }
  return completion;
}
