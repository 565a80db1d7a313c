// What the tests of the classifiers share: examples, and how classifiers are stored, damaged and restored.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "classifiers/classifier.h"
#include "tests/support/scratch-directory.h"

using TValues = std::vector<double>;

TFile BinaryFile();

std::unique_ptr<TFeatureVector> Vector(const TValues& values);

TValues ValuesOf(const TFeatureVector& vector);

/// Gives the classifier copies of its own.
void Teach(TClassifier& classifier, const std::vector<TValues>& positives, const std::vector<TValues>& negatives);

double Answer(const TClassifier& classifier, const TValues& values);

/// The answers on a grid of pairs, by their bits. The grid keeps off the boundaries of symmetric examples: the library
/// that stores support vectors rounds them to eight digits.
std::vector<std::uint64_t> AnswerBits(const TClassifier& classifier);

std::string BytesOf(std::uint64_t number, int size);

std::string Int(std::int32_t value);

/// A text behind its length.
std::string Counted(const std::string& text);

std::string Doubles(const TValues& values);

/// What Save writes, here into a file that something else has written to before.
std::string Stored(const TClassifier& classifier);

/// Loads the bytes from the middle of a file. What is read up to is checked too.
bool Restore(TClassifier& classifier, const std::string& bytes, const std::string& behind = "");

std::string Replaced(std::string text, const std::string& from, const std::string& to);

std::ptrdiff_t CountFiles();

/// A stored classifier in parts: `head`, the length of `text`, and that text. Each edit, "from > to", spoils the text.
void ExpectToRefuseEdits(TClassifier& classifier, const std::string& head, const std::string& text,
                         const std::vector<std::string>& edits);

/// Nothing short of the whole file loads, and no changed byte does harm: what is refused leaves the answers as they
/// were, what is accepted can answer.
void ExpectToSurviveDamage(TClassifier& classifier, const std::string& sound);

inline const std::vector<TValues> kPositives = {{1.0, 0.5}, {0.5, 1.0}, {1.5, 1.0}};
inline const std::vector<TValues> kNegatives = {{3.0, 3.5}, {2.5, 3.0}, {3.5, 2.5}, {3.0, 3.0}};

/// kPositives and kNegatives between -1 and 1: both columns go from 0.5 to 3.5.
TValues ScaledByHand(TValues values);
