// The slow evaluation's passed pawns: what the men around them add, and the races of pawn endings.
#include "support/slow_eval.h"

#include <algorithm>

namespace slow {

// Steps of growth with i, the pawn's relative rank less 1: 1, 1, 2, 6, 12, 20 and 1, 2, 5, 10, 17, 26.
static int steep(int i) { return std::max(1, i * (i - 1)); }
static int mild(int i) { return i * i + 1; }

static Pair steepPair(int mg, int eg, int i) { return steep(i) * Pair{mg, eg}; }

// The squares on the pawn's file that lie ahead of it for its owner, or behind it.
static Squares fileAhead(int pawn, int colour) {
    Squares squares;
    for (int to = pawn + forward(colour); to >= 0 && to < 64; to += forward(colour)) squares.insert(to);
    return squares;
}
static Squares fileBehind(int pawn, int colour) { return fileAhead(pawn, 1 - colour); }

// Whether an enemy rook or queen behind the pawn sees it. They are visited from a1 upwards, and those that
// wait for their turn don't stand in the way of the visited one.
static bool chasedFromBehind(const EvalBoard& board, int pawn, int colour, const Squares& everyone) {
    const Squares heavies = common(menOf(board, 1 - colour, "RQ"), fileBehind(pawn, colour));
    Squares waiting = heavies;
    for (const int heavy : heavies) {
        waiting.erase(heavy);
        if (common(between(heavy, pawn), without(everyone, waiting)).empty()) return true;
    }
    return false;
}

// The free way to promotion: who controls which of its squares.
static void judgePath(const EvalBoard& board, int pawn, int colour, const AttackSets& sets, Sheet& sheet) {
    const int enemy = 1 - colour, i = relativeRank(pawn, colour) - 1, stop = pawn + forward(colour);
    const auto own = std::size_t(colour), other = std::size_t(enemy);
    const Squares ownMen = menOf(board, colour, "PNBRQK"), enemyMen = menOf(board, enemy, "PNBRQK");
    const Squares path = fileAhead(pawn, colour);
    Squares danger = common(path, joined(joined(sets.attacks[other], enemyMen), sets.kingAttacks[other]));
    if (chasedFromBehind(board, pawn, colour, joined(ownMen, enemyMen))) danger = path;
    const Squares support = common(path, joined(sets.attacks[own], sets.kingAttacks[own]));
    if (danger.empty()) {
        if (support == path) {
            sheet.add("passerFreeSupported", colour, steepPair(28, 67, i));
        } else {
            sheet.add("passerFree", colour, steepPair(25, 60, i));
        }
    } else if (without(danger, support).empty()) {
        sheet.add("passerDefended", colour, steepPair(25, 36, i));
    }
    if (common(path, ownMen).empty()) sheet.add("passerClearPath", colour, steepPair(1, 3, i));
    if (support.contains(stop) && !danger.contains(stop)) {
        sheet.add("passerStopSupported", colour, steepPair(2, 8, i));
    }
}

static void judgePasser(const EvalBoard& board, int pawn, int colour, const AttackSets& sets, Sheet& sheet) {
    const int enemy = 1 - colour, rank = relativeRank(pawn, colour), i = rank - 1;
    const bool bothQueens = !menOf(board, White, "Q").empty() && !menOf(board, Black, "Q").empty();
    // One single phase has its own values with queens on; this is intended.
    if (board.phase == 36 && bothQueens) {
        sheet.add("passerQueens", colour, {44 * steep(i), 44 * mild(i)});
    } else {
        sheet.add("passerBase", colour, {42 * steep(i), 34 * mild(i)});
    }
    if (rank <= 2) return;
    const int stop = pawn + forward(colour);
    const Squares guards =
        filtered(menOf(board, enemy, "N"), [&](int knight) { return distance(knight, stop) <= 2; });
    if (!guards.empty()) sheet.add("passerKnightGuard", enemy, {0, 50});
    // Men between the rook and the pawn don't matter here; this is intended.
    const Squares rear = fileBehind(pawn, colour);
    if (!common(rear, menOf(board, colour, "R")).empty()) sheet.add("passerRookBehind", colour, {62, 274});
    if (!common(rear, menOf(board, enemy, "R")).empty()) sheet.add("passerRookChases", enemy, {62, 274});
    if (board.man[std::size_t(stop)] == '.') judgePath(board, pawn, colour, sets, sheet);
}

// Pawn endings: the foremost passer, and how near the kings are to the square ahead of each.
static void judgeRaces(const EvalBoard& board, int colour, const std::vector<int>& passed, Sheet& sheet) {
    int foremost = 0;
    for (const int pawn : passed) {
        const int rank = relativeRank(pawn, colour), stop = pawn + forward(colour);
        foremost = std::max(foremost, rank - 1);
        if (rank < 2) continue;
        const int ownSteps = distance(stop, kingOf(board, colour));
        const int enemySteps = distance(stop, kingOf(board, 1 - colour));
        const int own = kingDistanceValue(KingDistance::PawnEndOwn, rank, ownSteps);
        const int enemy = kingDistanceValue(KingDistance::PawnEndEnemy, rank, enemySteps);
        sheet.add("raceOwnKing", colour, {0, own});
        sheet.add("raceEnemyKing", colour, {0, enemy});
    }
    sheet.add("raceForemost", colour, {0, 40 * foremost});
}

void judgePassedPawns(const EvalBoard& board, const PawnFacts& facts, const AttackSets& sets, Sheet& sheet) {
    for (const int colour : {White, Black}) {
        const std::vector<int>& passed = facts.passed[std::size_t(colour)];
        for (const int pawn : passed) judgePasser(board, pawn, colour, sets, sheet);
        if (board.phase == 0) judgeRaces(board, colour, passed, sheet);
    }
}

}  // namespace slow
