#pragma once

#include <cstddef>
#include <string>

#include "experiments/experiment.h"

/// The color that stands for a set in charts, as #rrggbb: visible on white and on black.
const char* ColorOfSet(std::size_t set);

/// The curves of all sets as an element <svg> of a page, drawn by gnuplot; empty if there is no gnuplot. It names no
/// version and no date, and takes the color of its lines and letters from the page.
std::string DrawCurves(const TExperiment& experiment);
