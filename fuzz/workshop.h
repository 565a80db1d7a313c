#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "tests/support/scratch-directory.h"

// What the targets share that work in a directory: workshop.cpp calls them, in an empty directory and with what
// sessions need: the toolkit's application object without a screen, nothing on standard output, and no gnuplot. What an
// input leaves there is removed behind it. A target defines these two.

/// Makes the files that are there for each input. Called once.
void FillWorkshop();
void TryInput(const std::uint8_t* data, std::size_t size);

/// Runs a script of the working directory as tessimar-batch does, with all its tables, and before each line completes
/// it and goes through the history as the keys do. A session ends after a hundred lines, and what takes longer than
/// some seconds is interrupted as by Ctrl-C. False if that happened.
bool RunSession(const std::string& script);

/// Three pictures in photos/, two in others/, query.png, and what can go wrong with pictures.
void MakeTinyPictures();
