#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <boost/container/small_vector.hpp>

#include "images/feature-vector.h"

/// The vectors of one image segment, or the examples of a classifier, in order of insertion. Whether the list owns its
/// vectors is switched at run time: it does after construction, and then deletes them in Remove, Clear and its
/// destructor; a list that does not own them leaves that to whoever gave them.
class TFeatureVectorList {
 public:
  // An image has two features as a rule: these need no block of memory of their own.
  using TItems = boost::container::small_vector<TFeatureVector*, 2>;

  TFeatureVectorList() = default;
  ~TFeatureVectorList();
  TFeatureVectorList(const TFeatureVectorList&) = delete;
  TFeatureVectorList& operator=(const TFeatureVectorList&) = delete;

  /// Appends the vector. A list that owns its items takes the vector over; otherwise it must outlive its stay here.
  void Add(TFeatureVector* vector) {
    // Without memory for its place the vector goes, as any other that is taken over.
    std::unique_ptr<TFeatureVector> taken(ownsItems ? vector : nullptr);
    items.push_back(vector);
    static_cast<void>(taken.release());
    ++revision;
  }

  /// Has `fill` fill the vector of that name. One that is there keeps its place: the order of features decides the
  /// order of sums in a search. A new one is added, which needs a list that owns its items, unless `fill` returns
  /// false. Returns what `fill` does.
  template <typename TFill>
  bool Fill(const std::string& name, const TFill& fill) {
    if (TFeatureVector* known = Find(name)) {
      return fill(*known);
    }
    auto added = std::make_unique<TFeatureVector>();
    added->SetName(name);
    const bool isFilled = fill(*added);
    if (isFilled) {
      Add(added.release());
    }
    return isFilled;
  }

  /// The first vector of exactly this name, or null.
  TFeatureVector* Find(const std::string& name) const;

  /// Takes out every vector of that name. The others keep their order.
  void Remove(const std::string& name);

  void Clear();

  const TItems& GetItems() const { return items; }

  /// The names of the vectors, in order.
  std::vector<std::string> GetNames() const;

  bool GetOwnsItems() const { return ownsItems; }
  void SetOwnsItems(bool flag) {
    ownsItems = flag;
    ++revision;
  }

  /// Another number after every change of the list: what was worked out from its vectors is to be worked out anew.
  std::uint32_t GetRevision() const { return revision; }

 private:
  TItems items;
  bool ownsItems = true;
  std::uint32_t revision = 0;
};
