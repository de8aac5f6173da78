// Tests on single moves and on positions in check.
#pragma once

#include "board/position.h"

// Whether a clean move from a hash table or killer slot is pseudo-legal here. A promotion flag on a pawn that
// doesn't promote passes. The safety of the own king is make's concern. False for move 0.
bool isValidMove(const Position& pos, Move move);

// Whether a pseudo-legal move gives check.
bool givesCheckQuick(const Position& pos, Move move);

// Whether the side to move, which must be in check, has a legal move.
bool hasLegalMove(const Position& pos);

// False for a record that no legal game can hold and that the rest of the program must not work on: not
// exactly one king a side, a pawn on a back rank, or the side not to move in check.
bool isPlayable(const Position& pos);
