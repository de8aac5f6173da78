// The random constants (Zobrist keys) behind every key of a position. They never change: a saved hash file is
// only of use to a program with the same set.
#pragma once

#include "board/types.h"

struct ZobristTables {
    Key piece[2][8][64];
    Key pawn[2][8][64];
    Key castle[16];
    Key excludedTo[64];
    Key excludedFrom[64];
};
extern const ZobristTables zobristTables;

// By colour, piece type and square. Row [0][0] holds the side keys at indices 0 and 1; row [1][0] the
// en-passant keys, by square and not by file.
inline constexpr const Key (&zobrist)[2][8][64] = zobristTables.piece;

// A second set for `Position::pawnKey`. Only pawns and kings have keys here; the other rows are zero, so that
// make may exclusive-or it for every piece without looking at the type.
inline constexpr const Key (&pawnZobrist)[2][8][64] = zobristTables.pawn;

// By the whole `castleLost` byte. Intended: entry 15, no rights at all, is not zero.
inline constexpr const Key (&castleKey)[16] = zobristTables.castle;

// Set a search without one move apart from the ordinary search of the same position, by target and start
// square.
inline constexpr const Key (&excludedToKey)[64] = zobristTables.excludedTo;
inline constexpr const Key (&excludedFromKey)[64] = zobristTables.excludedFrom;

// By colour, type and square colour (1 is dark). Material keys are wrapping sums of these; only bishops
// differ between the two columns, and column 0 gives the keys by which endgame tables are found.
extern const Key matValue[2][8][2];
