// Material judged by whole sets of pieces: a table of known sets, a formula for all others, a small cache
// before both.
#pragma once

#include "board/position.h"

// Fills the table of known material sets. Called once, before `initEvalParameters`.
void initMaterialTable();

// Material in blended units (MaxPhase times material units), White's view. Sets `scale`, the scale
// factor of the whole positional sum; 0 means that only material counts.
int evaluateMaterial(const Position& pos, float& scale);
