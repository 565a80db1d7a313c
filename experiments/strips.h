#pragma once

#include <optional>
#include <string>

#include "experiments/report.h"
#include "experiments/steps.h"

/// The section of the best and the worst queries of each set, with the pictures of their first ranks. Nothing, and the
/// reason, if a picture has changed since its features were extracted.
std::optional<TReportSection> FormatStripSection(const TPlan& plan, const TFeatureTable& table,
                                                 const TCollected& collected, std::string& reason);
