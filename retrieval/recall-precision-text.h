#pragma once

#include <string>
#include <vector>

#include "retrieval/recall-precision.h"

/// The curve as the text of a file: one line a point, recall and precision with eight decimals each, "%.08f %.08f\r\n".
/// A NaN is written as "nan".
std::string FormatCurve(const std::vector<TRecallPrecisionPoint>& curve);

/// Writes a number from 0 to 1 as printf's "%.08f" does, a NaN as "nan", without a zero behind it. `text` has room for
/// 10 characters; the result is the end of what was written.
char* WriteEightDecimals(double number, char* text);
