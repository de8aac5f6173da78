// Tables that the searches read, built from the options.
#pragma once

#include "board/types.h"

#include <algorithm>

inline constexpr int ReductionDepths = 128;  // rows, by half plies
inline constexpr int ReductionCounts = 64;   // columns, by move count
inline constexpr int MoveCountDepths = 24;

// Late-move reductions in half plies, by improving (1) or not, depth in half plies, and move count; row and
// column 0 are not used. Intended: at depth 1 they are negative or 0; the searches put their own floor under
// the sum.
extern int reduceHigh[2][ReductionDepths][ReductionCounts];
extern int reduceLow[2][ReductionDepths][ReductionCounts];
// Quiet moves allowed before pruning, by improving and depth in half plies.
extern int moveCountTable[2][MoveCountDepths];
extern int historyBase;    // subtracted from a quiet move's stat
extern int futilityStep;   // centipawns a half ply
extern int contBonusStep;  // continuation bonus a half ply

// Thresholds for a third of a move's stat by number of the root move, from index 1.
inline constexpr int RootStatFloors = 400;
extern int rootStatFloor[RootStatFloors];

// Exchange margins of move-loop pruning, in hundredths of a pawn, by reduced depth in half plies; only 0 to
// 16 are reached.
inline constexpr int seeMargin[19] = {-50,  -50,  -50,  -50,  -50,  -50,  -150, -150,  -250, -250,
                                      -350, -350, -450, -550, -650, -750, -950, -1150, -1250};

inline int reductionOf(const int (&table)[2][ReductionDepths][ReductionCounts], bool improving, int depth,
                       int count) {
    return table[improving][std::min(depth, ReductionDepths - 1)][std::min(count, ReductionCounts - 1)];
}

// Bonuses of the history tables by depth in half plies. Intended: nothing is learnt above depth 30.
inline constexpr int LastBonusDepth = 30;
inline int historyBonus(int depth) { return depth <= LastBonusDepth ? 350 * std::max(depth, 2) : 0; }
inline int contBonus(int depth) { return depth <= LastBonusDepth ? contBonusStep * std::max(depth, 2) : 0; }

// Rebuilds all tables from the options and the tree-search mode. Only while the workers are idle.
void buildSearchTables();
