#pragma once

#include <string>
#include <vector>

class TFeatureVectorList;

/// The city-block (L1) distance of each list to the query over the named vectors: the absolute differences of all
/// elements of all those vectors, added in that order, with the query's vectors setting the lengths. A list that lacks
/// a vector or has a shorter one than the query gets infinity, and so does a sum that is not a number. The query holds
/// every named vector.
std::vector<double> GetDistances(const TFeatureVectorList& query, const std::vector<std::string>& featureNames,
                                 const std::vector<const TFeatureVectorList*>& lists);
