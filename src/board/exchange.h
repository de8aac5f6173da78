// Static exchange evaluation (SEE): five evaluators that ask different questions about the captures on one
// square. They reckon with pins in one way only: the answering side's pieces are tested, and only against its
// own king.
#pragma once

#include "board/position.h"

// The square of the cheapest piece of a colour that attacks a square through `occupied` minus `excluded`, in
// the order pawn to king, the lowest square first within a type; NoSquare if there is none.
int leastAttacker(const Position& pos, Colour colour, int square, Bitboard occupied, Bitboard excluded);

// Whether a move loses material. False for en passant, castling and king moves.
bool seeLosing(const Position& pos, Move move);

// Whether a move's exchange value is below a margin, in units of a hundredth of a pawn.
bool seeBelowMargin(const Position& pos, Move move, int margin);

// The exchange value in half pawns; 2 for en passant and castling. Exact only where the captured man's value
// less the mover's is below `threshold`, and the captured man's value is not: else the exchange isn't played
// out, and the value only says on which side of the threshold it lies.
int seeScore(const Position& pos, Move move, int threshold);

// The exchange gain in half pawns, as quiescence and the driver read it; 2 for en passant and castling.
int seeThreat(const Position& pos, Move move);
// Whether it is below `least`, which is sooner found than the gain itself.
bool seeThreatBelow(const Position& pos, Move move, int least);

// False if the piece on the move's start square stands in danger there.
bool seeFromSquareSafe(const Position& pos, Move move);
