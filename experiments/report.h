#pragma once

#include <string>
#include <vector>

#include "experiments/experiment.h"

/// A part of the report. The body is HTML that is well-formed XML as well (see html.h), with headings from the third
/// level on.
struct TReportSection {
  /// Where links lead to: small letters.
  std::string id;
  /// Text of the heading of the second level.
  std::string heading;
  std::string body;
};

/// The report of an experiment as one page that needs no other file: the figures, then `more` in its order.
std::string FormatReport(const TExperiment& experiment, const std::vector<TReportSection>& more);
