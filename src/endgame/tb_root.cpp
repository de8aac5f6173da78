#include "endgame/tb_root.h"

#include "base/settings.h"
#include "board/attacks.h"
#include "board/castling.h"
#include "board/insertion_sort.h"
#include "board/legality.h"
#include "board/make_move.h"
#include "board/movegen.h"
#include "endgame/tb_probe.h"

#include <algorithm>

namespace {

// Scores in centipawns by result + 2. A clean result stands for a mate that no search has seen yet.
constexpr int CleanWin = MateBound - 1;
constexpr int ScoreOfResult[5] = {-CleanWin, -2, 0, 2, CleanWin};

constexpr int CursedWin = 1, BlessedLoss = -1;
constexpr int RankBase = 1000;
constexpr int NoWin = 65535;

// A root move at work. Values are from the side to move's view.
struct TbRootMove {
    Move move;
    int tbValue;  // plies to the zeroing move, signed as the result; or the result itself
    int tbRank;   // higher is tried earlier
};

struct TbRootList {
    TbRootMove moves[MaxListMoves];
    int count = 0;

    template <class Keep>
    void keepIf(Keep keep) {
        count =
            int(std::remove_if(moves, moves + count, [&](const TbRootMove& m) { return !keep(m); }) - moves);
    }
    // Falling ranks, then falling values, the generator's order among equals.
    void sort() { insertionSort(moves, count, goesBefore); }
    int copyTo(RootMove* list) const {
        for (int i = 0; i < count; ++i) list[i] = {moves[i].move, moves[i].tbValue, 0};
        list[count] = {};
        return count;
    }

   private:
    static bool goesBefore(const TbRootMove& a, const TbRootMove& b) {
        return a.tbRank != b.tbRank ? a.tbRank > b.tbRank : a.tbValue > b.tbValue;
    }
};

// Calls `judge(child, move)` for each legal move and collects what it fills in; false as soon as one can't be
// judged.
template <class Judge>
bool collectMoves(const Position& pos, TbRootList& list, Judge judge) {
    Move moves[MaxListMoves];
    Position child;
    const int count = genAllMoves(pos, moves);
    for (int i = 0; i < count; ++i) {
        const Move move = cleanMove(moves[i]);
        if (!makeMove(&pos, &child, move)) continue;
        child.inCheck = isInCheck(child);
        TbRootMove& entry = list.moves[list.count++];
        entry = {move, 0, 0};
        if (!judge(child, entry)) return false;
    }
    return true;
}

// The distance by a move, seen by the side that makes it. False if a probe fails.
bool distanceAfter(Position& child, int* value) {
    int success;
    if (child.halfmoveClock != 0) {
        const int d = tbProbeDtz(child, &success);
        *value = d > 0 ? -d - 1 : d < 0 ? 1 - d : 0;
    } else {
        *value = wdlToDtz[2 - tbProbeWdl(child, &success)];
    }
    if (success == 0) return false;
    if (*value == 2 && child.inCheck && !hasLegalMove(child)) *value = 1;  // mate
    return true;
}

// All wins that the clock allows are alike, unless the game has begun to go round in circles.
int rankOfDistance(int value, int clock, bool repeated) {
    if (value == 0) return 0;
    if (value < 0) return clock - 2 * value < 100 ? -RankBase : clock - RankBase - value;
    return RankBase - (!repeated && value + clock <= 99 ? 0 : value + clock);
}

// The score of a root from its distance and the counter. Results that the fifty-move rule spoils by little
// are worth more than those that it spoils by far.
int scoreOfDistance(int dtz, int clock) {
    if (dtz == 0) return 0;
    const bool inTime = (dtz > 0 ? dtz : -dtz) + clock < 101;
    const int result = dtz > 0 ? (inTime ? 2 : CursedWin) : (inTime ? -2 : BlessedLoss);
    if (result == CursedWin && dtz <= 100) return (200 - clock - dtz) / 2;
    if (result == BlessedLoss && dtz >= -100) return -((200 - clock + dtz) / 2);
    return ScoreOfResult[result + 2];
}

void filterByDistance(TbRootList& list, int dtz, int clock, bool repeated) {
    if (dtz < 0) {
        int best = 0;
        for (int i = 0; i < list.count; ++i) best = std::min(best, list.moves[i].tbValue);
        if (clock - 2 * best >= 100) list.keepIf([best](const TbRootMove& m) { return m.tbValue == best; });
    } else if (dtz == 0) {
        list.keepIf([](const TbRootMove& m) { return m.tbValue == 0; });
    } else {
        int fastest = NoWin;
        for (int i = 0; i < list.count; ++i)
            if (list.moves[i].tbValue > 0) fastest = std::min(fastest, list.moves[i].tbValue);
        // Intended: every win within the clock stays, and the search chooses among them.
        const int limit = !repeated && fastest + clock < 100 ? 99 - clock : fastest;
        list.keepIf([limit](const TbRootMove& m) { return m.tbValue > 0 && m.tbValue <= limit; });
    }
}

}  // namespace

bool positionHasRepeated(const Position& pos) {
    for (const Position* x = &pos; x; x = x->prev) {
        for (const Position* y = x; y->prev && y->prev->prev;) {
            y = y->prev->prev;
            if (y->key == x->key) return true;
            // Intended: a zeroing move that is met ends the whole walk, though the positions after it could
            // still hold a repetition that an earlier start would find.
            if (y->halfmoveClock == 0) return false;
        }
    }
    return false;
}

int tbRootProbeDtz(Position& pos, RootMove* list, int* score) {
    if (pos.castleLost != NoCastlingRights) return 0;  // tables know no castling
    const int clock = pos.halfmoveClock;
    const bool repeated = positionHasRepeated(pos);
    int success;
    const int dtz = tbProbeDtz(pos, &success);
    if (success == 0) return 0;
    TbRootList moves;
    const bool judged = collectMoves(pos, moves, [=](Position& child, TbRootMove& entry) {
        if (!distanceAfter(child, &entry.tbValue)) return false;
        entry.tbRank = rankOfDistance(entry.tbValue, clock, repeated);
        return true;
    });
    if (!judged) return 0;
    *score = scoreOfDistance(dtz, clock);
    filterByDistance(moves, dtz, clock, repeated);
    moves.sort();
    return moves.copyTo(list);
}

int tbRootProbeWdl(Position& pos, RootMove* list, int* score) {
    if (pos.castleLost != NoCastlingRights) return 0;
    int success;
    const int wdl = tbProbeWdl(pos, &success);
    if (success == 0) return 0;
    TbRootList moves;
    int best = -2;
    const bool judged = collectMoves(pos, moves, [&best](Position& child, TbRootMove& entry) {
        int childSuccess;
        const int result = -tbProbeWdl(child, &childSuccess);
        entry.tbValue = settings.syzygy50MoveRule ? result : result > 0 ? 2 : result < 0 ? -2 : 0;
        best = std::max(best, entry.tbValue);
        return childSuccess != 0;
    });
    if (!judged) return 0;
    *score = ScoreOfResult[wdl + 2];
    moves.keepIf([best](const TbRootMove& m) { return m.tbValue == best; });
    return moves.copyTo(list);
}
