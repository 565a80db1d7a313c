#pragma once

#include "experiments/collection.h"
#include "experiments/concept-measures.h"
#include "experiments/report.h"

/// The figures of all concepts as a table, and for each the three pictures with the most right segments and the three
/// with the fewest, drawn with their segments: all outlined, positive ones with a dot. Pictures are read again; of one
/// that is gone the segments alone are drawn.
TReportSection FormatConceptSection(const TMeasuredConcepts& measured, const TPictureCollection& collection);
