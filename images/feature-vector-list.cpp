#include "images/feature-vector-list.h"

#include <algorithm>

TFeatureVectorList::~TFeatureVectorList() {
  Clear();
}

TFeatureVector* TFeatureVectorList::Find(const std::string& name) const {
  // In order and not by a table of names: an image has two features as a rule.
  const auto found =
      std::find_if(items.begin(), items.end(), [&](const auto* item) { return item->GetName() == name; });
  return found == items.end() ? nullptr : *found;
}

void TFeatureVectorList::Remove(const std::string& name) {
  // From the end, so that erasing moves nothing that is still to be looked at.
  for (std::size_t i = items.size(); i-- > 0;) {
    if (items[i]->GetName() == name) {
      if (ownsItems) {
        delete items[i];
      }
      items.erase(items.begin() + static_cast<std::ptrdiff_t>(i));
      ++revision;
    }
  }
}

void TFeatureVectorList::Clear() {
  if (ownsItems) {
    for (TFeatureVector* item : items) {
      delete item;
    }
  }
  items.clear();
  ++revision;
}

std::vector<std::string> TFeatureVectorList::GetNames() const {
  std::vector<std::string> names;
  names.reserve(items.size());
  for (const TFeatureVector* item : items) {
    names.push_back(item->GetName());
  }
  return names;
}
