// The transposition table as a node sees it: scores counted from the node's ply, one view for all rules of a
// node, and the form in which results are stored. Depths in half plies.
#pragma once

#include "search/trans_table.h"

// An entry of the transposition table as seen from a ply; all zero if there is none.
struct TableView {
    bool hit = false;
    bool terminal = false;
    int score = 0;
    int depth = 0;
    int bound = 0;
    Move move = NoMove;

    // Whether the score settles a comparison with `beta`.
    bool provesAtLeast(int beta) const { return score >= beta && (bound & LowerBound); }
    bool provesAtMost(int alpha) const { return score <= alpha && (bound & UpperBound); }
};

inline TableView readTable(Key key, int ply) {
    TransData data;
    if (!transTable.probe(key, data)) return {};
    return {true,         data.terminal(), scoreFromTable(data.score(), ply),
            data.depth(), data.bound(),    data.move()};
}

// After a search of the same node: what it has stored. Without an entry the old view keeps all but its move.
inline void rereadTable(TableView& view, Key key, int ply) {
    const TableView now = readTable(key, ply);
    if (now.hit)
        view = now;
    else
        view.move = NoMove;
}

inline void writeTable(Key key, int depth, int score, int flags, Move move, int nodeRank, int ply) {
    transTable.store(key, depth, scoreToTable(score, ply), flags, move, nodeRank);
}

// Stores the result of a node whose window reached from `firstAlpha` to `beta`; a score at its lower end or
// below proves no move.
inline void writeResult(Key key, int depth, int score, int firstAlpha, int beta, Move move, int ply) {
    if (score >= beta)
        writeTable(key, depth, score, LowerBound, move, RankCut, ply);
    else if (score > firstAlpha)
        writeTable(key, depth, score, ExactBound, move, RankPv, ply);
    else
        writeTable(key, depth, score, UpperBound, NoMove, RankAll, ply);
}

// A static score, drawn towards what the table knows of the position.
inline int estimateFrom(const TableView& table, int eval) {
    if (table.bound == ExactBound) return table.score;
    if ((table.bound & LowerBound) && table.score > eval) return table.score;
    if ((table.bound & UpperBound) && table.score < eval) return table.score;
    return eval;
}
