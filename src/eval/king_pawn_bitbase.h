// Who wins king and pawn against king, for every placing of the men, from the rules of chess alone.
#pragma once

// Computes the bitbase; takes a few milliseconds, once at start-up.
void initKingPawnBitbase();

// Whether the side with the pawn wins. Squares as seen with that side's pawn moving down the board, on files
// a to d and ranks 2 to 7; the placing must be legal.
bool kingPawnWins(int strongKing, int pawn, int weakKing, bool strongToMove);
