// The piece-square values. Make adds and subtracts them; the evaluation's parameter set-up fills them.
#pragma once

#include "board/score.h"

// By board code and square, in lane units. Black's entries are already negated, so that a sum over the board
// is White minus Black; codes without a piece hold 0.
extern Score PieceSquare[16][64];
