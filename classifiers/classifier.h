#pragma once

#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include <boost/function.hpp>

#include "images/feature-vector-list.h"

/// A learner of two classes of vectors: it gathers positive and negative examples, trains once on what it has, and then
/// answers for any vector of the same length with a number whose sign is the decision. All vectors of one classifier
/// have one length. Settings are texts with fixed keys and are read at the next training only.
///
/// The classifier belongs to the classifier variable that made it. With copyExamples it owns copies of its examples;
/// otherwise it takes over the vectors it is given, unless SetCopyExamples(false) said that they belong to the caller.
class TClassifier {
 public:
  virtual ~TClassifier();
  TClassifier(const TClassifier&) = delete;
  TClassifier& operator=(const TClassifier&) = delete;

  /// Empties both lists of examples. Training and scaling stay.
  virtual void Clear();

  /// Reads what Save of the same class wrote, from the current position of a binary file that can seek. All sizes are
  /// held against what the file can still hold. False if the file is short, damaged or not of this class; the
  /// classifier is then as it was. The examples stay unless a class says otherwise. The settings are not stored: they
  /// keep their values.
  virtual bool Load(std::FILE* file);

  /// Writes at the current position: int32 dimension, and if that is above 0 the minima and the maxima of all
  /// dimensions as doubles, little-endian. False if not all could be written.
  virtual bool Save(std::FILE* file) const;

  /// Appends an example: a copy if copyExamples is set, so that the caller may reuse the vector at once, otherwise the
  /// vector itself. Null is ignored.
  virtual void AddPositiveExample(TFeatureVector* vector);
  virtual void AddNegativeExample(TFeatureVector* vector);

  /// Learns from all examples in the lists. A class that trains leaves its state as it was if there is no positive
  /// example or if the examples differ in length.
  virtual void Train();

  /// Has Train call `newWatcher` now and then, as often as the library lets it. False asks the training to end early
  /// where that is possible; the classifier then answers with what it has learned so far. Empty for nobody.
  void SetTrainingWatcher(const boost::function<bool()>& newWatcher) { trainingWatcher = newWatcher; }

  /// Above 0 means positive. 0 if untrained, or if the vector has another length than the examples.
  virtual double Classify(const TFeatureVector& vector) const = 0;

  /// How far the vector lies towards the positive examples, in the class's own measure; larger is more positive. Its
  /// sign need not be the decision's. Classify's answer where a class knows nothing finer.
  virtual double Score(const TFeatureVector& vector) const { return Classify(vector); }

  /// The mean square error over the examples that the last training left; nothing if the class knows none or there was
  /// no training.
  virtual std::optional<double> GetTrainingError() const { return std::nullopt; }

  /// From now on training draws its random numbers, if it needs any, from this seed.
  virtual void SetSeed(std::uint32_t value);

  TFeatureVectorList& GetPositiveExamples() { return *positiveExamples; }
  const TFeatureVectorList& GetPositiveExamples() const { return *positiveExamples; }
  TFeatureVectorList& GetNegativeExamples() { return *negativeExamples; }
  const TFeatureVectorList& GetNegativeExamples() const { return *negativeExamples; }

  /// True if every example of both lists has that length, also if there is none.
  bool ExamplesHaveLength(std::uint32_t length) const;

  bool GetCopyExamples() const { return copyExamples; }

  /// Also tells the lists whether the examples in them, those of before included, are theirs to delete.
  void SetCopyExamples(bool flag);

  bool GetNormalize() const { return normalize; }
  void SetNormalize(bool flag) { normalize = flag; }

  const std::string& GetName() const { return name; }

  std::uint32_t GetSettingCount() const { return static_cast<std::uint32_t>(settings.size()); }

  /// The key at that place of the byte-wise order, from 0; empty behind the last.
  std::string GetSettingName(std::uint32_t index) const;

  /// Empty if there is no such key.
  std::string GetSetting(const std::string& key) const;

  /// Any text is accepted as a value. False if there is no such key.
  bool SetSetting(const std::string& key, const std::string& value);

 protected:
  /// The range of the examples in each dimension. The arrays are null for a dimension of 0.
  struct TScaling {
    std::unique_ptr<double[]> minimum;
    std::unique_ptr<double[]> maximum;
    std::int32_t dimension = 0;
  };

  /// The largest dimension that Load believes.
  static constexpr std::int32_t kMaxDimension = 1 << 24;

  TClassifier();

  /// Reads the block that TClassifier::Save writes and changes nothing, so that a derived class can read on and take it
  /// over with SetScaling when all has proved sound. Nothing if the block is damaged.
  static std::optional<TScaling> ReadScaling(std::FILE* file);

  /// A dimension of 0 keeps the arrays, which are not used then.
  void SetScaling(TScaling scaling);

  /// Maps each value of a vector from the range of the examples to -1 to 1, not clamped. A dimension without a range
  /// stays as it is, and so does one that the range does not know.
  void Normalize(double* values, std::uint32_t length) const;
  void Normalize(TFeatureVector& vector) const;

  /// Works out the range over all examples. Without positive examples nothing changes.
  void ComputeNormalization();

  /// Scales the stored vectors in place; a second call scales them again.
  void NormalizeExamples();

  /// True if all examples of both lists have the length of the first positive one. False without positive examples.
  bool HasUniformExamples() const;

  std::unique_ptr<double[]> minimum;
  std::unique_ptr<double[]> maximum;
  std::int32_t dimension = 0;
  std::string name;
  /// Derived classes put their keys with the default values here; none is added or removed later.
  std::map<std::string, std::string> settings;
  const std::unique_ptr<TFeatureVectorList> positiveExamples;
  const std::unique_ptr<TFeatureVectorList> negativeExamples;
  boost::function<bool()> trainingWatcher;
  bool copyExamples = false;
  bool normalize = false;
};
