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
#include <optional>

namespace {

// Scores in centipawns by a result's index. A clean result stands for a mate that no search has seen yet.
constexpr int CleanWin = MateBound - 1;
constexpr int ScoreOfResult[5] = {-CleanWin, -2, 0, 2, CleanWin};

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

// The distance by a move, seen by the side that makes it; nothing if a probe fails.
std::optional<int> distanceAfter(const Position& child) {
    int value;
    if (child.halfmoveClock != 0) {
        const std::optional<int> reply = tbProbeDtz(child);
        if (!reply) return std::nullopt;
        value = *reply > 0 ? -*reply - 1 : *reply < 0 ? 1 - *reply : 0;
    } else {
        const WdlProbe reply = tbProbeWdl(child);
        if (reply.state == ProbeState::Failed) return std::nullopt;
        value = wdlToDtz[indexOfWdl(-reply.value)];
    }
    const bool mates = value == 2 && child.inCheck && !hasLegalMove(child);
    return mates ? 1 : value;
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
    const Wdl result = dtz > 0 ? (inTime ? WdlWin : WdlCursedWin) : (inTime ? WdlLoss : WdlBlessedLoss);
    if (result == WdlCursedWin && dtz <= 100) return (200 - clock - dtz) / 2;
    if (result == WdlBlessedLoss && dtz >= -100) return -((200 - clock + dtz) / 2);
    return ScoreOfResult[indexOfWdl(result)];
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

int tbRootProbeDtz(const Position& pos, RootMove* list, int* score) {
    if (pos.castleLost != NoCastlingRights) return 0;  // tables know no castling
    const int clock = pos.halfmoveClock;
    const bool repeated = positionHasRepeated(pos);
    const std::optional<int> dtz = tbProbeDtz(pos);
    if (!dtz) return 0;
    TbRootList moves;
    const bool judged = collectMoves(pos, moves, [=](const Position& child, TbRootMove& entry) {
        const std::optional<int> value = distanceAfter(child);
        if (!value) return false;
        entry.tbValue = *value;
        entry.tbRank = rankOfDistance(*value, clock, repeated);
        return true;
    });
    if (!judged) return 0;
    *score = scoreOfDistance(*dtz, clock);
    filterByDistance(moves, *dtz, clock, repeated);
    moves.sort();
    return moves.copyTo(list);
}

int tbRootProbeWdl(const Position& pos, RootMove* list, int* score) {
    if (pos.castleLost != NoCastlingRights) return 0;
    const WdlProbe root = tbProbeWdl(pos);
    if (root.state == ProbeState::Failed) return 0;
    TbRootList moves;
    int best = WdlLoss;
    const bool judged = collectMoves(pos, moves, [&best](const Position& child, TbRootMove& entry) {
        const WdlProbe reply = tbProbeWdl(child);
        if (reply.state == ProbeState::Failed) return false;
        const Wdl result = -reply.value;
        entry.tbValue = settings.syzygy50MoveRule ? result
                        : result > WdlDraw        ? WdlWin
                        : result < WdlDraw        ? WdlLoss
                                                  : WdlDraw;
        best = std::max(best, entry.tbValue);
        return true;
    });
    if (!judged) return 0;
    *score = ScoreOfResult[indexOfWdl(root.value)];
    moves.keepIf([best](const TbRootMove& m) { return m.tbValue == best; });
    return moves.copyTo(list);
}
