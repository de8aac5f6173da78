// Endings that material alone can't judge. Each handler returns material units from White's view and sets
// `scale`, the multiplier of the positional sum.
#pragma once

#include "board/position.h"

int mateWithBishopKnight(const Position& pos, float& scale);  // bishop and knight against the bare king
int knightPawnEnding(const Position& pos, float& scale);      // knight and pawn against the bare king
int rookPawnEnding(const Position& pos, float& scale);        // rook and pawn against rook
int kingPawnEnding(const Position& pos, float& scale);        // pawn against the bare king

// A score of a position where the bishop can't control its rook's pawn's promotion square and the enemy king
// holds the corner is cut to 30. Intended: of two bishops only the one on the lowest square is looked at.
// `value` in tenths of a centipawn, White's view, and so is what comes back.
int wrongBishop(const Position& pos, int value);
