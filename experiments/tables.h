#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "experiments/concept-measures.h"
#include "experiments/experiment.h"

/// The results as tables: a line of column names, then lines of fields with TABs between them, ended by LF. Numbers
/// have eight decimals, counts none; names are written by EncodeField, qids as they are in the runs.

/// set qid picture tag relevant ap p1 p5 p10 p20 rprec rr ndcg10 recall100 ap_ranks. This table is large, so that its
/// rows come set by set behind the line of column names.
std::string FormatTopicsHeading();
std::string FormatTopics(const TExperiment& experiment, std::size_t set);
/// set tag measure topics mean low high
std::string FormatSummary(const TExperiment& experiment);
/// a b difference low high wins ties losses p p_holm
std::string FormatComparisons(const TExperiment& experiment);
/// set recall precision
std::string FormatCurves(const TExperiment& experiment);
/// tag classifier features taught asked segments tp fp tn fn auc_fraction auc_score mse. `taught` and `asked` count
/// pictures, `segments` to `fn` those of the pictures asked; mse is empty for a classifier without.
std::string FormatConcepts(const TMeasuredConcepts& measured);
/// tag classifier picture x y width height score positive, positive being 1 or 0. This table is large, so that its rows
/// come concept by concept behind the line of column names. Names are those of the collection.
std::string FormatSegmentsHeading();
std::string FormatSegments(const TMeasuredConcept& measured, const std::vector<std::string>& names);
/// file line reason
std::string FormatDamage(const TDamageList& damage);
