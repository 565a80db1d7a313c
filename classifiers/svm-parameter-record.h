#pragma once

#include <cstdio>
#include <optional>

#include <svm.h>

// The parameters of a support vector machine in a file: 96 bytes, the offsets being those of the fields of
// svm_parameter where pointers have 32 bits. Pointers and padding are 0.

/// Nothing if the record is short, or of parameters with which the classifier cannot train.
std::optional<svm_parameter> ReadSvmParameters(std::FILE* file);

/// False if not all could be written.
bool WriteSvmParameters(std::FILE* file, const svm_parameter& parameters);
