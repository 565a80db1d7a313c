#include "batch/tables.h"

#include <string_view>

#include "base/file.h"
#include "base/format-string.h"
#include "base/native-path.h"
#include "base/text.h"
#include "engine/var-list.h"
#include "experiments/encoding.h"
#include "experiments/file-name.h"
#include "experiments/run-file.h"
#include "images/var-database.h"
#include "images/var-image.h"
#include "retrieval/var-database-index.h"

namespace {

/// A variable's name as a file name: variables may be called anything, "../a" included.
std::string EncodeForFileName(std::string_view name) {
  // No capitals: variables have none, and on file systems that fold case two names would be one.
  // No full stop, so that no name is "..", or hidden. No percent sign, so that two names never give one file.
  constexpr std::string_view kPlain = "abcdefghijklmnopqrstuvwxyz0123456789_-";
  std::string encoded;
  for (const char character : name) {
    if (kPlain.find(character) != std::string_view::npos) {
      encoded += character;
    } else {
      encoded += FormatString("%%%02X", static_cast<unsigned int>(static_cast<unsigned char>(character)));
    }
  }
  return encoded;
}

void AppendSegments(const std::string& variable, const TVarImage& image, std::string& table) {
  for (const auto& segment : image.GetSegments()) {
    const auto& rect = dynamic_cast<const TImageSegmentRect&>(*segment);
    // Tables of a session write \t, \n and \\; those of an experiment write %XX.
    table += base::EscapeField(variable) + '\t' + base::EscapeField(image.GetFilename());
    table += FormatString("\t%d\t%d\t%d\t%d\t", rect.GetX(), rect.GetY(), rect.GetWidth(), rect.GetHeight());
    table += base::EscapeField(rect.GetLabel()) + '\t' +
             base::EscapeField(base::Join(rect.GetFeatures().GetNames(), ",")) + '\n';
  }
}

std::string FormatRanking(const TVarDatabaseIndex& index, const TVarList& varList) {
  std::string reason;
  // Without its database a ranking still has its numbers; only what the database knows of its images is missing.
  const TVarDatabase* database = index.FindDatabase(varList, reason);
  std::string table = "rank\timageIndex\tdistance\tfile\ttags\n";
  int rank = 0;
  for (const TDatabaseIndexEntry& entry : index.GetEntries()) {
    // 17 digits give back the same double; positions count from 0, ranks from 1.
    // An infinite distance reads "inf", which strtod and most other readers of numbers take.
    table += FormatString("%d\t%d\t%.17g\t", ++rank, entry.imageIndex, entry.distance);
    if (database != nullptr) {
      const TVarImage& image = *database->GetImages()[static_cast<std::size_t>(entry.imageIndex)];
      table += base::EscapeField(image.GetFilename()) + "\t" + base::EscapeField(image.JoinTags(",")) + "\n";
    } else {
      table += "\t\n";
    }
  }
  return table;
}

/// The path below the database's location, or the whole path of a picture that lies elsewhere.
std::string NameBelow(const std::string& location, const std::string& path) {
  return path.starts_with(location) ? path.substr(location.size()) : path;
}

/// Without its database a ranking knows no names: there is no run then.
std::string FormatRun(const TVarDatabaseIndex& index, const TVarList& varList) {
  std::string reason;
  const TVarDatabase* database = index.FindDatabase(varList, reason);
  if (database == nullptr) {
    return {};
  }
  const std::string& location = database->GetLocation();
  const std::string query = index.GetImageName().empty() ? index.GetName() : NameBelow(location, index.GetImageName());
  std::string run;
  std::size_t rank = 0;
  for (const TDatabaseIndexEntry& entry : index.GetEntries()) {
    const TVarImage& image = *database->GetImages()[static_cast<std::size_t>(entry.imageIndex)];
    // EncodeName leaves no blank, by which the fields of a run are parted.
    run += FormatRunLine(EncodeName(query), EncodeName(NameBelow(location, image.GetFilename())), ++rank,
                         index.GetEntries().size(), EncodeSet(index.GetName()));
  }
  return run;
}

/// Calls `format` for each ranking and writes what it gives to a file. The first file that could not be written.
template <typename TFormat>
std::string WriteIndices(const TVarList& varList, const std::string& directory, const char* ending,
                         const TFormat& format) {
  for (const auto& variable : varList.GetVariables()) {
    if (const auto* index = dynamic_cast<const TVarDatabaseIndex*>(variable.get())) {
      std::string file =
          base::WithTrailingSeparator(directory) + FitFileName(EncodeForFileName(index->GetName()), ending);
      const std::string text = format(*index, varList);
      // An empty text too: a run of that name from an earlier session must not stay beside rankings of this one.
      if (!base::ReplaceFile(file, text.data(), text.size())) {
        return file;
      }
    }
  }
  return {};
}

}  // namespace

std::string FormatVariables(const TVarList& varList) {
  std::string table = "name\ttype\tdescription\n";
  for (const auto& variable : varList.GetVariables()) {
    table += base::EscapeField(variable->GetName()) + '\t' + variable->GetType() + '\t' +
             base::EscapeField(variable->GetDescription()) + '\n';
  }
  return table;
}

std::string FormatSegments(const TVarList& varList) {
  std::string table = "variable\tpicture\tx\ty\twidth\theight\tlabel\tfeatures\n";
  for (const auto& variable : varList.GetVariables()) {
    if (const auto* image = dynamic_cast<const TVarImage*>(variable.get())) {
      AppendSegments(image->GetName(), *image, table);
    } else if (const auto* database = dynamic_cast<const TVarDatabase*>(variable.get())) {
      for (const auto& member : database->GetImages()) {
        AppendSegments(database->GetName(), *member, table);
      }
    }
  }
  return table;
}

std::string WriteRankings(const TVarList& varList, const std::string& directory) {
  return WriteIndices(varList, directory, ".tsv", FormatRanking);
}

std::string WriteRuns(const TVarList& varList, const std::string& directory) {
  return WriteIndices(varList, directory, ".run", FormatRun);
}
