#pragma once

#include <string>
#include <vector>

#include "engine/function.h"

class TVarDatabase;
class TVarImage;

/// searchimage: ranks every image of a database by its distance from a query image, over the features that the first
/// image of the database and the query have in common.
class TFunctionSearchImage : public TFunction {
 public:
  TFunctionSearchImage();
  bool ExecuteWithReturn(TVar& variable, const std::vector<std::string>& params) override;

 private:
  /// Fills featureNames, in the order of the database's first image, and prints them. False if there are none.
  bool SelectFeatures(const TVarDatabase& database, const TVarImage& query);

  /// The features of the latest search.
  std::vector<std::string> featureNames;
};
