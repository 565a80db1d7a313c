#include "classifiers/svm-model-text.h"

#include <array>

#include "classifiers/text-cursor.h"

namespace {

struct TSvmHead {
  std::uint32_t classCount = 0;
  std::uint32_t vectorCount = 0;
};

bool TakeField(TTextCursor& cursor, std::string_view key) {
  double value = 0.0;
  return cursor.Take(key) && cursor.TakeNumber(value) && cursor.Take("\n");
}

bool TakeKernel(TTextCursor& cursor, std::int32_t& kernelType) {
  if (!cursor.Take("svm_type c_svc\nkernel_type ")) {
    return false;
  }
  if (cursor.Take("linear\n")) {
    // The numbers of the library's own constants LINEAR, POLY and RBF; this file does without its header.
    kernelType = 0;
    return true;
  }
  if (cursor.Take("polynomial\n")) {
    kernelType = 1;
    std::uint32_t degree = 0;
    // The library reads the degree as an int by fscanf, which is undefined for a number out of range (C11, 7.21.6.2).
    return cursor.Take("degree ") && cursor.TakeCount(degree) && degree <= INT32_MAX && cursor.Take("\n") &&
           TakeField(cursor, "gamma ") && TakeField(cursor, "coef0 ");
  }
  // Sigmoid and precomputed kernels, which the library knows too, fail here: the classifier has no setting for them.
  kernelType = 2;
  return cursor.Take("rbf\n") && TakeField(cursor, "gamma ");
}

/// The label of each class, 1 or -1, and each only once.
bool TakeLabels(TTextCursor& cursor, std::uint32_t classCount) {
  std::array<double, 2> labels = {0.0, 0.0};
  if (!cursor.Take("label")) {
    return false;
  }
  for (std::uint32_t i = 0; i < classCount; ++i) {
    if (!cursor.Take(" ")) {
      return false;
    }
    if (cursor.Take("-1")) {
      labels[i] = -1.0;
    } else if (cursor.Take("1")) {
      labels[i] = 1.0;
    } else {
      return false;
    }
  }
  // With one class the second label stays 0, which no class has.
  return cursor.Take("\n") && labels[0] != labels[1];
}

/// The number of support vectors of each class, which together are all there are.
bool TakeVectorCounts(TTextCursor& cursor, const TSvmHead& head) {
  // 64 bits: two counts that wrapped around at 32 could agree with the total.
  std::uint64_t sum = 0;
  if (!cursor.Take("nr_sv")) {
    return false;
  }
  for (std::uint32_t i = 0; i < head.classCount; ++i) {
    std::uint32_t count = 0;
    if (!cursor.Take(" ") || !cursor.TakeCount(count)) {
      return false;
    }
    sum += count;
  }
  return cursor.Take("\n") && sum == head.vectorCount;
}

bool TakeHead(TTextCursor& cursor, TSvmHead& head) {
  double threshold = 0.0;
  if (!cursor.Take("nr_class ") || !cursor.TakeCount(head.classCount) || head.classCount < 1 || head.classCount > 2 ||
      !cursor.Take("\ntotal_sv ") || !cursor.TakeCount(head.vectorCount) || !cursor.Take("\nrho")) {
    return false;
  }
  // Two classes have one threshold between them, one class has none.
  if (head.classCount == 2 && !(cursor.Take(" ") && cursor.TakeNumber(threshold))) {
    return false;
  }
  // One class is never told from another, so that it has no support vectors. Probabilities (probA and probB, behind the
  // labels) are refused, as the classifier trains without them.
  return cursor.Take("\n") && TakeLabels(cursor, head.classCount) && TakeVectorCounts(cursor, head) &&
         (head.classCount == 2 || head.vectorCount == 0) && cursor.Take("SV\n");
}

/// One line: a coefficient, then "index:value " for each element.
bool TakeVector(TTextCursor& cursor, std::uint32_t& length) {
  double number = 0.0;
  if (!cursor.TakeNumber(number) || !cursor.Take(" ")) {
    return false;
  }
  for (length = 0; !cursor.Take("\n"); ++length) {
    std::uint32_t index = 0;
    if (!cursor.TakeCount(index) || index != length || !cursor.Take(":") || !cursor.TakeNumber(number) ||
        !cursor.Take(" ")) {
      return false;
    }
  }
  return true;
}

}  // namespace

std::optional<TSvmModelFacts> ParseSvmModel(std::string_view text) {
  TTextCursor cursor(text);
  TSvmModelFacts facts;
  TSvmHead head;
  // In the order in which svm_save_model writes the fields. The library itself is less strict; a text in another one
  // was not written by a classifier.
  if (!TakeKernel(cursor, facts.kernelType) || !TakeHead(cursor, head)) {
    return std::nullopt;
  }
  for (std::uint32_t i = 0; i < head.vectorCount; ++i) {
    std::uint32_t length = 0;
    // A row of another length would be read past its end by the fast decision.
    if (!TakeVector(cursor, length) || length == 0 || (i > 0 && length != facts.length)) {
      return std::nullopt;
    }
    facts.length = length;
  }
  return cursor.AtEnd() ? std::optional(facts) : std::nullopt;
}
