// Late move reductions: what root, full-window and zero-window nodes have in common when they search a late
// move less deep. All in half plies.
#pragma once

#include "board/exchange.h"
#include "board/history_tables.h"
#include "search/limits.h"
#include "search/move_questions.h"
#include "search/search_tables.h"

inline constexpr int LeastReduction = 2;     // a smaller sum is no reduction
inline constexpr int StatPerHalfPly = 9600;  // of a quiet move's stat, for one off its reduction

// A line that turns for the worse is reduced more, one that turns for the better less: the signs of a quiet
// move's stat and of the stat that the node before has noted last are compared. Not in the tree search.
inline int reductionByTurn(const Position& pos, int stat) {
    constexpr int TurnStep = 2;
    if (searchState.treeSearchActive) return 0;
    const int before = pos.prev ? pos.prev->moveStat : 0;  // a record from a FEN has none
    if (stat < 0 && before >= 0) return TurnStep;
    if (stat >= 0 && before < 0) return -TurnStep;
    return 0;
}

// What a quiet move's history adds to its reduction. Notes the move's stat for the child. The division
// truncates.
inline int reductionByHistory(Position& pos, Move move) {
    const int stat = quietStat(pos, move) - searchTables.historyBase;
    pos.moveStat = stat;
    return reductionByTurn(pos, stat) - stat / StatPerHalfPly;
}

// With many pieces about, a piece that stands in danger may well have to move: such a move is reduced by
// `EscapeRelief` less.
inline constexpr int EscapeRelief = 2;
inline constexpr int EscapeDepth = 15;  // in the principal variation up to this depth only
inline bool escapesDanger(const Position& pos, int phase, Move move) {
    constexpr int ManyPiecesPhase = 48;  // above it
    return phase > ManyPiecesPhase && movesOfficer(pos, move) && !seeFromSquareSafe(pos, move);
}
