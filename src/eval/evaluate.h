// The static score of a position.
#pragma once

#include "board/position.h"

// The score in centipawns from the side to move's view. The window serves an early exit only: outside it the
// score may be an estimate, which is not cached. Both kings must be on the board. Writes `pos.psqBlend`.
int evaluate(Position& pos, int alpha, int beta);

// The window that never leaves early.
inline constexpr int OpenEvalBound = 35000;
