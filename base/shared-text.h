#pragma once

#include <string>

#include <boost/flyweight.hpp>
#include <boost/flyweight/no_locking.hpp>
#include <boost/flyweight/no_tracking.hpp>

namespace base {

/// A text that thousands of records have in common, such as the name of a feature or of a concept: the records keep a
/// pointer to the one copy of it, which stays until the program ends. get() has the text.
using TSharedText = boost::flyweight<std::string, boost::flyweights::no_locking, boost::flyweights::no_tracking>;

/// What a record without a text starts with; to copy it saves looking for the empty text.
inline const TSharedText kNoText;

}  // namespace base
