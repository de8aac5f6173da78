// The slow evaluation's passed pawns: what the men around them add, and the races of pawn endings.
#include "support/slow_eval.h"

#include <algorithm>

namespace slow {

// 1, 1, 2, 6, 12, 20.
static int steep(int i) { return std::max(1, i * (i - 1)); }

Pair passerValue(int i, int mg, int eg) { return {mg * steep(i), eg * (i * i + 1)}; }

// Whether an enemy rook or queen behind the pawn sees it. They are visited from a1 upwards, and those that
// wait for their turn don't stand in the way of the visited one.
static bool isChased(const Army& us, const Army& them, int pawn) {
    Squares waiting = (them.rooks | them.queens) & them.fileAhead(pawn);
    while (!waiting.empty()) {
        const int heavy = *waiting.begin();
        waiting.erase(heavy);
        if (!meet(between(heavy, pawn), us.everyone - waiting)) return true;
    }
    return false;
}

// The free way to promotion: who controls which of its squares.
static void judgePath(const Army& us, const Army& them, int pawn) {
    const int growth = steep(us.rank(pawn) - 1), stop = us.ahead(pawn);
    const Squares path = us.fileAhead(pawn), support = path & us.allAttacks;
    const Squares danger = isChased(us, them, pawn) ? path : path & (them.allAttacks | them.men);
    if (danger.empty() && support == path)
        us.add("passerFreeSupported", growth * Pair{28, 67});
    else if (danger.empty())
        us.add("passerFree", growth * Pair{25, 60});
    else if ((danger - support).empty())
        us.add("passerDefended", growth * Pair{25, 36});
    if (!meet(path, us.men)) us.add("passerClearPath", growth * Pair{1, 3});
    if ((support - danger).contains(stop)) us.add("passerStopSupported", growth * Pair{2, 8});
}

static void judgePasser(const Army& us, const Army& them, int pawn) {
    // One single phase has its own values with queens on; this is intended.
    if (us.board.phase == 36 && !us.queens.empty() && !them.queens.empty())
        us.add("passerQueens", passerValue(us.rank(pawn) - 1, 44, 44));
    else
        us.add("passerBase", passerValue(us.rank(pawn) - 1));
    if (us.rank(pawn) <= 2) return;
    const auto isNear = [&](int knight) { return distance(knight, us.ahead(pawn)) <= 2; };
    if (!them.knights.where(isNear).empty()) them.add("passerKnightGuard", {0, 50});
    // Men between the rook and the pawn don't matter here; this is intended.
    const Squares rear = them.fileAhead(pawn);
    if (meet(rear, us.rooks)) us.add("passerRookBehind", {62, 274});
    if (meet(rear, them.rooks)) them.add("passerRookChases", {62, 274});
    if (!us.everyone.contains(us.ahead(pawn))) judgePath(us, them, pawn);
}

// Pawn endings: the foremost passer, and how near the kings are to the square ahead of each.
static void judgeRaces(const Army& us, const Army& them) {
    int foremost = 0;
    for (const int pawn : us.passed) {
        const int rank = us.rank(pawn), stop = us.ahead(pawn);
        foremost = std::max(foremost, rank - 1);
        if (rank < 2) continue;
        us.add("raceOwnKing", {0, distanceValue(-12, rank, distance(stop, us.king))});
        us.add("raceEnemyKing", {0, distanceValue(15, rank, distance(stop, them.king))});
    }
    us.add("raceForemost", {0, 40 * foremost});
}

void judgePassers(Army& us, Army& them) {
    for (const int pawn : us.passed) judgePasser(us, them, pawn);
    if (us.board.phase == 0) judgeRaces(us, them);
}

}  // namespace slow
