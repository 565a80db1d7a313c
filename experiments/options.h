#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "experiments/part.h"

/// A number that a result is held against.
struct TExpectation {
  enum class TRelation { kAtLeast, kAtMost, kEqual };

  /// As it was given.
  std::string text;
  std::string set;
  std::string measure;
  TRelation relation;
  /// As it was written: a figure is equal if it reads the same with as many decimals.
  std::string number;
};

enum class TStep { kAll, kExtract, kRank, kReport };

/// What the command line of tessimar-experiment asks for.
struct TExperimentOptions {
  /// The collection, or with `measure` nothing.
  std::string collection;
  bool hasClasses = false;
  std::vector<std::string> truth;
  /// The names of the sets of features; empty: each feature, and all together.
  std::vector<std::string> features;
  std::vector<std::string> plugins;
  /// File with the names of the queries; empty: all pictures.
  std::string queries;
  bool keepsQuery = false;
  std::uint32_t seed = 1;
  std::size_t depth = 1000;
  /// The types of classifiers to be taught with concepts, and how pictures are cut into segments for that.
  std::vector<std::string> classifiers;
  std::string segments = "grid";
  std::vector<TExpectation> expectations;
  std::string out;
  TStep step = TStep::kAll;
  TPart part;
  bool isQuiet = false;

  /// Rankings of other programs to be measured, and what is relevant.
  std::vector<std::string> runs;
  std::string judgements;

  /// The name and the version of the program.
  std::string version;
};
