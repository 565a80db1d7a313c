#include "experiments/feature-files.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <map>
#include <memory>
#include <string_view>
#include <unordered_set>
#include <utility>

#include <boost/filesystem.hpp>

#include "base/console.h"
#include "base/file.h"
#include "base/format-string.h"
#include "base/native-path.h"
#include "base/text.h"
#include "experiments/digest.h"
#include "experiments/encoding.h"
#include "images/feature-vector.h"
#include "images/image-gray.h"
#include "images/image-rgb.h"

namespace {

/// No larger picture is decoded.
constexpr std::uint64_t kMostBytes = std::numeric_limits<std::int32_t>::max();
constexpr const char* kUnfinished = ".unfinished";
constexpr const char* kUnreadable = "cannot be read as a picture";
/// In place of the digest of a file that cannot be opened.
constexpr const char* kNoDigest = "-";

/// The names of the files of a part.
struct TPartPaths {
  TPartPaths(const std::string& directory, const TPart& part, const char* theEnding)
      : start(base::WithTrailingSeparator(directory)), end(part.GetMark()), ending(theEnding) {}

  std::string Of(const std::string& feature) const { return start + feature + end + ".npy" + ending; }
  std::string Pictures() const { return start + "pictures" + end + ".txt" + ending; }
  std::string Digest() const { return start + "digest" + end + ".txt" + ending; }

  std::string start;
  std::string end;
  const char* ending;
};

/// What is known of a picture.
struct TPictureLine {
  std::string name;
  std::string digest;
  std::string damage;

  std::string Format() const { return EncodeField(name) + "\t" + digest + "\t" + EncodeField(damage) + "\n"; }
};

/// The whole lines of a text.
std::vector<std::string> WholeLines(std::string_view text) {
  std::vector<std::string> lines;
  for (std::size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
    lines.emplace_back(text.substr(0, end));
    text.remove_prefix(end + 1);
  }
  return lines;
}

std::vector<std::string> Fields(std::string_view line) {
  std::vector<std::string> fields;
  for (std::size_t tab = line.find('\t'); tab != std::string_view::npos; tab = line.find('\t')) {
    fields.emplace_back(line.substr(0, tab));
    line.remove_prefix(tab + 1);
  }
  fields.emplace_back(line);
  return fields;
}

/// The files of a part as they are on disk.
struct TStoredPart {
  std::vector<TPictureLine> pictures;
  /// By feature: where it comes from.
  std::map<std::string, std::string> origins;
  std::map<std::string, TNpyFile> files;
  /// SHA-256 of the pictures' lines, as digest.txt has it.
  std::string picturesDigest;
  std::string picturesBytes;

  /// The stored vector of a feature; null if there is none of that origin.
  const double* FindRow(const TFeatureSource& source, std::size_t picture) const {
    const auto origin = origins.find(source.feature->GetName());
    const auto file = files.find(source.feature->GetName());
    const bool isThere = origin != origins.end() && origin->second == source.origin && file != files.end() &&
                         picture < file->second.GetRows() && file->second.GetColumns() > 0;
    return isThere ? file->second.GetRow(picture) : nullptr;
  }
};

/// Nothing if there is no such part.
std::optional<TStoredPart> OpenPart(const TPartPaths& paths) {
  auto pictures = base::IsRegularFile(paths.Pictures()) ? base::ReadFile(paths.Pictures()) : std::nullopt;
  const auto digest = base::IsRegularFile(paths.Digest()) ? base::ReadFile(paths.Digest()) : std::nullopt;
  if (!pictures || !digest) {
    return std::nullopt;
  }
  TStoredPart part;
  for (const std::string& line : WholeLines(*pictures)) {
    const auto fields = Fields(line);
    // A line that was cut off has no line end and is no whole line; one that has it and is of another form was not
    // written here.
    if (fields.size() != 3) {
      return std::nullopt;
    }
    part.pictures.push_back({Decode(fields[0]), fields[1], Decode(fields[2])});
  }
  part.picturesBytes = std::move(*pictures);
  for (const std::string& line : WholeLines(*digest)) {
    const auto fields = Fields(line);
    // The last line, the digest of the list of pictures. It is missing from a part that was not finished, whose digest
    // then stays empty.
    if (fields.size() == 1) {
      part.picturesDigest = fields[0];
    } else {
      const std::string feature = Decode(fields[0]);
      part.origins[feature] = fields[1];
      if (const auto file = TNpyFile::Open(paths.Of(feature))) {
        part.files.emplace(feature, *file);
      }
    }
  }
  return part;
}

/// A part that an extraction finished, with only what is as that left it. Nothing of a changed list can be trusted, and
/// no row of a table that is not as long as the list.
std::optional<TStoredPart> OpenFinishedPart(const TPartPaths& paths) {
  auto part = OpenPart(paths);
  if (!part || DigestOf(part->picturesBytes) != part->picturesDigest) {
    return std::nullopt;
  }
  std::erase_if(part->files, [&](const auto& each) {
    return !each.second.IsComplete() || each.second.GetRows() != part->pictures.size();
  });
  return part;
}

struct TFileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using TFilePointer = std::unique_ptr<std::FILE, TFileCloser>;

/// A text that grows line by line, each on disk before the next step.
class TTextWriter {
 public:
  explicit TTextWriter(const std::string& thePath)
      : path(thePath), file(std::fopen(thePath.c_str(), "wb")), failed(!file) {}

  void Write(const std::string& text) {
    // Flushed at once: what an end by force leaves behind is every row up to a line of the list, and the next start
    // goes on from there. fflush hands the bytes to the system, which outlives this program.
    failed =
        failed || std::fwrite(text.data(), 1, text.size(), file.get()) != text.size() || std::fflush(file.get()) != 0;
  }

  bool Close() {
    failed = (file && std::fclose(file.release()) != 0) || failed;
    return !failed;
  }

  bool HasFailed() const { return failed; }
  const std::string& GetPath() const { return path; }

 private:
  std::string path;
  TFilePointer file;
  bool failed;
};

/// The rows of one feature. How long they are shows with the first vector; rows without one wait until then.
class TRowWriter {
 public:
  TRowWriter(const std::string& path, std::size_t theRows) : text(path), rows(theRows) {}

  std::size_t GetLength() const { return length; }

  /// The vector must be as long as those before.
  void Add(const double* vector, std::size_t newLength) {
    if (length == 0) {
      Begin(newLength);
    }
    text.Write(std::string(reinterpret_cast<const char*>(vector), length * sizeof(double)));
  }

  void AddMissing() {
    if (length == 0) {
      ++missing;
    } else {
      text.Write(MissingRow());
    }
  }

  bool Finish() {
    if (length == 0) {
      // No picture gave a vector: a table of so many rows without columns.
      text.Write(NpyHeader(rows, 0));
    }
    return text.Close();
  }

  const TTextWriter& GetFile() const { return text; }

 private:
  void Begin(std::size_t newLength) {
    length = newLength;
    text.Write(NpyHeader(rows, length));
    for (; missing > 0; --missing) {
      text.Write(MissingRow());
    }
  }

  std::string MissingRow() const {
    const std::vector<double> row(length, std::numeric_limits<double>::quiet_NaN());
    return {reinterpret_cast<const char*>(row.data()), length * sizeof(double)};
  }

  TTextWriter text;
  std::size_t rows;
  std::size_t length = 0;
  std::size_t missing = 0;
};

/// Writes a part, first under the names of unfinished files.
class TPartWriter {
 public:
  TPartWriter(const std::vector<TFeatureSource>& theSources, const TPartPaths& unfinished, std::size_t rows)
      : sources(theSources), pictures(unfinished.Pictures()), digest(unfinished.Digest()) {
    for (const TFeatureSource& source : theSources) {
      writers.push_back(std::make_unique<TRowWriter>(unfinished.Of(source.feature->GetName()), rows));
      digest.Write(EncodeField(source.feature->GetName()) + "\t" + source.origin + "\n");
    }
  }

  TRowWriter& GetRows(std::size_t source) { return *writers[source]; }

  /// Comes behind the vectors: a picture with a line has them all.
  void AddLine(const TPictureLine& line) {
    pictures.Write(line.Format());
    sum.Add(line.Format());
  }

  /// The first file that could not be written; empty if all could.
  std::string FailedFile() const {
    for (const auto& writer : writers) {
      if (writer->GetFile().HasFailed()) {
        return writer->GetFile().GetPath();
      }
    }
    return pictures.HasFailed() ? pictures.GetPath() : digest.HasFailed() ? digest.GetPath() : std::string();
  }

  /// Puts the files in their places, the pictures last. The file that refuses; empty if none does.
  std::string Finish(const TPartPaths& finished) {
    digest.Write(sum.Finish() + "\n");
    for (std::size_t i = 0; i < sources.size(); ++i) {
      if (!writers[i]->Finish() || !Rename(writers[i]->GetFile(), finished.Of(sources[i].feature->GetName()))) {
        return writers[i]->GetFile().GetPath();
      }
    }
    // The list of pictures comes last: a part without it does not exist for a reader, so that features of an unfinished
    // extraction are never taken for whole.
    for (auto [file, path] : {std::pair(&digest, finished.Digest()), std::pair(&pictures, finished.Pictures())}) {
      if (!file->Close() || !Rename(*file, path)) {
        return file->GetPath();
      }
    }
    return {};
  }

 private:
  static bool Rename(const TTextWriter& file, const std::string& path) {
    boost::system::error_code error;
    boost::filesystem::rename(file.GetPath(), path, error);
    return !error;
  }

  const std::vector<TFeatureSource>& sources;
  std::vector<std::unique_ptr<TRowWriter>> writers;
  TTextWriter pictures;
  TTextWriter digest;
  TDigest sum;
};

bool IsNotANumber(const double* vector, std::size_t length) {
  return std::any_of(vector, vector + length, [](double number) { return std::isnan(number); });
}

/// Extracts the features of one part.
class TExtraction {
 public:
  TExtraction(const TPictureCollection& theCollection, const std::vector<TFeatureSource>& theSources, const TPart& part,
              const std::string& directory, std::string& theReason)
      : collection(theCollection),
        sources(theSources),
        share(part.ShareOf(theCollection.names.size())),
        finished(directory, part, ""),
        unfinished(directory, part, kUnfinished),
        reason(theReason) {}

  TStepOutcome Run(TProgress& progress) {
    source = OpenPart(unfinished);
    const auto complete = OpenFinishedPart(finished);
    // Of an unfinished and a finished part the one with more pictures: it saves more of the work.
    if (!source || (complete && source->pictures.size() < complete->pictures.size())) {
      source = complete;
    }
    for (std::size_t row = 0; row < share.second - share.first; ++row) {
      if (!AddPicture(row)) {
        reason = FormatString("File '%s' cannot be written", writer->FailedFile().c_str());
        return TStepOutcome::kFailed;
      }
      if (base::Interrupted()) {
        return TStepOutcome::kInterrupted;
      }
      progress.Advance();
    }
    if (!writer && !IsWholeSource()) {
      BeginWriting(share.second - share.first);
    }
    const std::string failedFile = writer ? writer->Finish(finished) : std::string();
    reason = failedFile.empty() ? std::string() : FormatString("File '%s' cannot be written", failedFile.c_str());
    return failedFile.empty() ? TStepOutcome::kDone : TStepOutcome::kFailed;
  }

 private:
  /// True if every feature is there, finished, for exactly these pictures.
  bool IsWholeSource() const {
    const auto stored = OpenFinishedPart(finished);
    return stored && stored->pictures.size() == share.second - share.first &&
           stored->origins.size() == sources.size() &&
           std::all_of(sources.begin(), sources.end(), [&](const TFeatureSource& each) {
             const auto file = stored->files.find(each.feature->GetName());
             const auto origin = stored->origins.find(each.feature->GetName());
             return file != stored->files.end() && origin->second == each.origin;
           });
  }

  /// False if something could not be written.
  bool AddPicture(std::size_t row) {
    const std::size_t picture = share.first + row;
    TPictureLine line = {collection.names[picture], kNoDigest, ""};
    const bool isThere = reader.Read(collection.GetPath(picture), kMostBytes) == base::TReadOutcome::kRead;
    if (isThere) {
      line.digest = DigestOf(reader.GetBytes());
    }
    const TPictureLine* known = source && row < source->pictures.size() ? &source->pictures[row] : nullptr;
    // The bytes decide, and neither the time nor the size: a digest is what makes an extraction repeatable.
    if (known != nullptr && (known->name != line.name || known->digest != line.digest)) {
      known = nullptr;
    }
    // What could not be read then is tried again: the same bytes may have met a lack of memory or of time.
    const bool isKept =
        known != nullptr && (known->damage == kUnreadable ? !ReadPicture(row, isThere) : HasAllRows(row));
    // Nothing new so far: the files that are there may be all that is wanted.
    if (!writer && isKept) {
      return true;
    }
    if (!writer) {
      BeginWriting(row);
    }
    if (isKept) {
      CopyRow(row);
    } else {
      Compute(row, isThere, line);
    }
    return writer->FailedFile().empty();
  }

  bool HasAllRows(std::size_t row) const {
    return std::all_of(sources.begin(), sources.end(),
                       [&](const TFeatureSource& each) { return source->FindRow(each, row) != nullptr; });
  }

  /// Takes over what was kept so far. The files that it lies in stay readable: they are mapped.
  void BeginWriting(std::size_t kept) {
    for (const TFeatureSource& each : sources) {
      // Removed and not overwritten: the old contents stay mapped as long as somebody reads them, while truncating a
      // mapped file would end the program at the next read.
      std::remove(unfinished.Of(each.feature->GetName()).c_str());
    }
    writer = std::make_unique<TPartWriter>(sources, unfinished, share.second - share.first);
    for (std::size_t row = 0; row < kept; ++row) {
      CopyRow(row);
    }
  }

  void CopyRow(std::size_t row) {
    for (std::size_t i = 0; i < sources.size(); ++i) {
      const double* stored = source->FindRow(sources[i], row);
      if (stored == nullptr || source->pictures[row].damage == kUnreadable) {
        writer->GetRows(i).AddMissing();
      } else {
        writer->GetRows(i).Add(stored, source->files.at(sources[i].feature->GetName()).GetColumns());
      }
    }
    writer->AddLine(source->pictures[row]);
  }

  /// False if the bytes that were read last are no picture.
  bool ReadPicture(std::size_t row, bool isThere) {
    const auto bytes = reader.GetBytes();
    return isThere && color.LoadFromMemory(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(),
                                           collection.names[share.first + row]);
  }

  void Compute(std::size_t row, bool isThere, TPictureLine& line) {
    if (!ReadPicture(row, isThere)) {
      line.damage = kUnreadable;
      for (std::size_t i = 0; i < sources.size(); ++i) {
        writer->GetRows(i).AddMissing();
      }
      writer->AddLine(line);
      return;
    }
    if (std::any_of(sources.begin(), sources.end(), [](const auto& each) { return each.feature->NeedsGrayscale(); })) {
      color.ToGray(gray);
    }
    std::vector<std::string> faults;
    if (color.IsDamaged()) {
      faults.emplace_back("is damaged: only a part of it could be read");
    }
    for (std::size_t i = 0; i < sources.size(); ++i) {
      const std::string fault = ComputeFeature(*sources[i].feature, writer->GetRows(i));
      if (!fault.empty()) {
        faults.push_back(FormatString("feature '%s' %s", sources[i].feature->GetName().c_str(), fault.c_str()));
      }
    }
    line.damage = base::Join(faults, "; ");
    writer->AddLine(line);
  }

  /// What is wrong with the vector; empty if nothing is.
  std::string ComputeFeature(const TFeature& feature, TRowWriter& rows) {
    const bool computed =
        feature.NeedsColor() ? feature.ProcessColor(color, vector) : feature.ProcessGrayscale(gray, vector);
    if (!computed || vector.GetLength() == 0) {
      rows.AddMissing();
      return "has an invalid length";
    }
    // A table has one number of columns, and a distance needs equal lengths.
    if (rows.GetLength() != 0 && rows.GetLength() != vector.GetLength()) {
      rows.AddMissing();
      return FormatString("has %u numbers and not %zu as before", vector.GetLength(), rows.GetLength());
    }
    // A NaN is stored as it is. Its picture then ranks last everywhere, and the list of damage says why.
    rows.Add(vector.GetData(), vector.GetLength());
    return IsNotANumber(vector.GetData(), vector.GetLength()) ? "gives what is not a number" : "";
  }

  const TPictureCollection& collection;
  const std::vector<TFeatureSource>& sources;
  const std::pair<std::size_t, std::size_t> share;
  const TPartPaths finished;
  const TPartPaths unfinished;
  std::string& reason;
  /// What an earlier start left.
  std::optional<TStoredPart> source;
  /// Made as soon as something is new.
  std::unique_ptr<TPartWriter> writer;
  base::TFileReader reader;
  TImageRGB color;
  TImageGray gray;
  TFeatureVector vector;
};

/// Removes what was made in another number of parts, or of features that were not asked for: it is stale now.
void RemoveStaleFiles(const std::string& directory, const std::vector<TFeatureSource>& sources, const TPart& part) {
  // What may stand here, other parts that are under way included. Names are compared as wholes: a feature may be called
  // like the mark of a part.
  std::unordered_set<std::string> fresh;
  for (std::size_t number = 1; number <= part.count; ++number) {
    for (const char* ending : {"", kUnfinished}) {
      const TPartPaths paths(directory, {number, part.count}, ending);
      fresh.insert({paths.Pictures(), paths.Digest()});
      for (const TFeatureSource& each : sources) {
        fresh.insert(paths.Of(each.feature->GetName()));
      }
    }
  }
  const std::string start = base::WithTrailingSeparator(directory);
  for (const std::string& name : base::ListFiles(directory).value_or(std::vector<std::string>())) {
    if (!fresh.contains(start + name)) {
      std::remove((start + name).c_str());
    }
  }
}

}  // namespace

TStepOutcome ExtractFeatures(const TPictureCollection& collection, const std::vector<TFeatureSource>& sources,
                             const TPart& part, const std::string& directory, TProgress& progress,
                             std::string& reason) {
  if (!base::MakeWritableDirectory(directory)) {
    reason = FormatString("Directory '%s' cannot be written", directory.c_str());
    return TStepOutcome::kFailed;
  }
  const auto [begin, end] = part.ShareOf(collection.names.size());
  progress.Begin("Pictures:", end - begin);
  TExtraction extraction(collection, sources, part, directory, reason);
  const TStepOutcome outcome = extraction.Run(progress);
  progress.End();
  if (outcome == TStepOutcome::kDone) {
    RemoveStaleFiles(directory, sources, part);
  }
  return outcome;
}

bool TFeatureTable::AddPart(const TPictureCollection& collection, const std::vector<TFeatureSource>& sources,
                            const TPart& part, const std::string& directory, TDigest& collected, std::string& reason) {
  const auto refuse = [&](const std::string& what) {
    reason = FormatString("The part %zu of %zu of the features in '%s' %s", part.number, part.count, directory.c_str(),
                          what.c_str());
    return false;
  };
  const TPartPaths paths(directory, part, "");
  auto stored = OpenPart(paths);
  if (!stored) {
    return refuse("is missing; run the step extract for it");
  }
  const auto [begin, end] = part.ShareOf(collection.names.size());
  if (stored->pictures.size() != end - begin || DigestOf(stored->picturesBytes) != stored->picturesDigest) {
    return refuse("is not of this collection; run the step extract again");
  }
  for (std::size_t row = 0; row < stored->pictures.size(); ++row) {
    const TPictureLine& line = stored->pictures[row];
    if (line.name != collection.names[begin + row]) {
      return refuse("is not of this collection; run the step extract again");
    }
    damages.push_back(line.damage);
    pictureDigests.push_back(line.digest);
    // Names in their order and digests of contents: two collections with the same digest give the same results.
    collected.Add(EncodeField(line.name) + "\t" + line.digest + "\n");
  }
  for (std::size_t i = 0; i < sources.size(); ++i) {
    const std::string& name = sources[i].feature->GetName();
    const auto origin = stored->origins.find(name);
    const auto file = stored->files.find(name);
    if (origin != stored->origins.end() && origin->second != sources[i].origin) {
      return refuse(FormatString("has the feature '%s' of another version; run the step extract again", name.c_str()));
    }
    if (origin == stored->origins.end() || file == stored->files.end() || !file->second.IsComplete() ||
        file->second.GetRows() != end - begin) {
      return refuse(FormatString("lacks the feature '%s'; run the step extract again", name.c_str()));
    }
    TFeatureRows& rows = features[i];
    if (file->second.GetColumns() != 0) {
      if (rows.length != 0 && rows.length != file->second.GetColumns()) {
        return refuse(FormatString("has vectors of another length for the feature '%s'", name.c_str()));
      }
      rows.length = file->second.GetColumns();
    }
    for (std::size_t row = 0; row < end - begin; ++row) {
      // A part in which no picture could be read has no columns. Open fills its rows, when the length is
      // known from another part.
      rows.rows.push_back(file->second.GetColumns() == 0 ? nullptr : file->second.GetRow(row));
    }
    files.push_back(file->second);
  }
  return true;
}

std::optional<TFeatureTable> TFeatureTable::Open(const TPictureCollection& collection,
                                                 const std::vector<TFeatureSource>& sources,
                                                 const std::string& directory, std::string& reason) {
  // As many parts as the files themselves say, in whatever number they were extracted.
  const std::size_t partCount = CountOfFeatureParts(directory);
  TFeatureTable table;
  table.features.resize(sources.size());
  TDigest digest;
  for (std::size_t number = 1; number <= partCount; ++number) {
    if (!table.AddPart(collection, sources, {number, partCount}, directory, digest, reason)) {
      return std::nullopt;
    }
  }
  for (TFeatureRows& rows : table.features) {
    // A feature that gave no picture a vector gets one number, so that its distances are infinite and not 0.
    rows.length = std::max<std::size_t>(rows.length, 1);
    // One row of NaN serves every picture and every feature.
    table.notANumber.resize(std::max(table.notANumber.size(), rows.length), std::numeric_limits<double>::quiet_NaN());
  }
  for (TFeatureRows& rows : table.features) {
    std::replace(rows.rows.begin(), rows.rows.end(), static_cast<const double*>(nullptr),
                 static_cast<const double*>(table.notANumber.data()));
  }
  table.digest = digest.Finish();
  return table;
}

std::size_t CountOfFeatureParts(const std::string& directory) {
  std::size_t count = 1;
  for (const std::string& name : base::ListFiles(directory).value_or(std::vector<std::string>())) {
    std::size_t named = 1;
    // The list of a part, and no table of a feature that is called so.
    if (name.ends_with(".txt") && std::sscanf(name.c_str(), "pictures.%*u-of-%zu", &named) == 1) {
      count = std::max(count, named);
    }
  }
  return count;
}

bool TFeatureTable::IsReadable(std::size_t picture) const {
  return damages[picture] != kUnreadable;
}

bool TFeatureTable::IsCurrent(const TPictureCollection& collection, std::size_t begin, std::size_t end,
                              std::size_t& changed) const {
  base::TFileReader reader;
  for (changed = begin; changed < end; ++changed) {
    const bool isThere = reader.Read(collection.GetPath(changed), kMostBytes) == base::TReadOutcome::kRead;
    if (pictureDigests[changed] != (isThere ? DigestOf(reader.GetBytes()) : kNoDigest)) {
      return false;
    }
  }
  return true;
}
