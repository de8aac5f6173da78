// What the searches learn about moves: the history counters and their updates, killers and counter moves.
// Each thread has tables of its own, so nothing here is shared.
#pragma once

#include "board/history_tables.h"
#include "search/search_tables.h"
#include "search/search_thread.h"
#include "search/thread_pool.h"

#include <cstdint>

// A tried quiet move as the history tables index it.
struct QuietMove {
    std::uint16_t code;    // board code of the moved piece
    std::uint16_t fromTo;  // low 12 bits of the move
};

inline QuietMove quietMoveOf(const Position& pos, Move move) {
    return {pos.board[fromOf(move)], std::uint16_t(move & FromToMask)};
}

// A counter is drawn towards one side of its centre, the more slowly the farther out it stands. Divisions
// truncate.
template <int centre, int scale, class Counter>
inline void rewardCounter(Counter& counter, int bonus) {
    const int value = counter;
    counter = Counter(value + bonus - (value - centre) * bonus / scale);
}
template <int centre, int scale, class Counter>
inline void penaliseCounter(Counter& counter, int bonus) {
    const int value = counter;
    counter = Counter(value - bonus - (value - centre) * bonus / scale);
}

inline constexpr int HistoryScale = 16000, CaptureScale = 4000;
inline constexpr int CaptureBonusShare = 6;  // captures learn from a sixth of the bonus, in both directions

inline std::int32_t& historyEntry(const Position& pos, QuietMove quiet) {
    return pos.history[historyIndex(quiet.code, quiet.fromTo)];
}
inline int continuationIndex(QuietMove quiet) { return continuationIndex(quiet.code, quiet.fromTo & 63); }

inline void rewardQuiet(const Position& pos, QuietMove quiet, int bonus, int continuationBonus) {
    rewardCounter<HistoryCentre, HistoryScale>(historyEntry(pos, quiet), bonus);
    rewardCounter<HistoryCentre, HistoryScale>(pos.contHist[continuationIndex(quiet)], continuationBonus);
    rewardCounter<HistoryCentre, HistoryScale>(pos.contHist2[continuationIndex(quiet)], continuationBonus);
}
inline void penaliseContinuations(const Position& pos, QuietMove quiet, int continuationBonus) {
    penaliseCounter<HistoryCentre, HistoryScale>(pos.contHist[continuationIndex(quiet)], continuationBonus);
    penaliseCounter<HistoryCentre, HistoryScale>(pos.contHist2[continuationIndex(quiet)], continuationBonus);
}
inline void penaliseQuiet(const Position& pos, QuietMove quiet, int bonus, int continuationBonus) {
    penaliseCounter<HistoryCentre, HistoryScale>(historyEntry(pos, quiet), bonus);
    penaliseContinuations(pos, quiet, continuationBonus);
}

// The quiet and the tactical moves that a node has tried, out of check. Both lists may fill up; later moves
// are then left out of the learning.
class TriedMoves {
   public:
    TriedMoves() {}  // the lists stay unwritten

    void addQuiet(QuietMove quiet) {
        if (quietCount < MaxQuiets) quiets[quietCount++] = quiet;
    }
    void addTactical(Move move) {
        if (tacticalCount < MaxTacticals) tacticals[tacticalCount++] = move;
    }
    bool hasQuiet() const { return quietCount > 0; }
    QuietMove firstQuiet() const { return quiets[0]; }

    // Rewards `best` and penalises the quiet moves listed before it.
    void learnCutoff(const Position& pos, QuietMove best, bool penalise, int bonus,
                     int continuationBonus) const {
        for (int i = 0; penalise && i < quietCount && !isSame(quiets[i], best); ++i)
            penaliseQuiet(pos, quiets[i], bonus, continuationBonus);
        rewardQuiet(pos, best, bonus, continuationBonus);
    }
    // Rewards `best` and penalises every other quiet move of the list, those tried after it too.
    void learnBest(const Position& pos, QuietMove best, int bonus, int continuationBonus) const {
        rewardQuiet(pos, best, bonus, continuationBonus);
        for (int i = 0; i < quietCount; ++i)
            if (!isSame(quiets[i], best)) penaliseQuiet(pos, quiets[i], bonus, continuationBonus);
    }
    // Rewards the winner, if it is a listed capture, and penalises every other one.
    void learnCaptures(const Position& pos, Move winner, int depth) const {
        const int bonus = historyBonus(depth) / CaptureBonusShare;
        auto& table = threadOf(pos).captureHistory;
        for (int i = 0; i < tacticalCount; ++i) {
            const Move move = tacticals[i];
            std::int32_t& counter = table[pos.board[fromOf(move)]][toOf(move)][pos.board[toOf(move)]];
            if (move == winner)
                rewardCounter<CaptureCentre, CaptureScale>(counter, bonus);
            else
                penaliseCounter<CaptureCentre, CaptureScale>(counter, bonus);
        }
    }

   private:
    static constexpr int MaxQuiets = 63;
    static constexpr int MaxTacticals = 31;
    static bool isSame(QuietMove a, QuietMove b) { return a.code == b.code && a.fromTo == b.fromTo; }

    QuietMove quiets[MaxQuiets];
    Move tacticals[MaxTacticals];
    int quietCount = 0, tacticalCount = 0;
};

inline void noteKiller(KillerRow& row, Move move) {
    if (move == row.first) return;
    row.second = row.first;
    row.first = move;
}

// The answer remembered for the move that led here.
inline Move& counterMoveSlot(SearchThread& thread, const Position& pos) {
    return thread.counterMoves[pos.sideToMove()][pos.movedType][pos.lastMove & FromToMask];
}
inline Move counterMoveOf(SearchThread& thread, const Position& pos) {
    return pos.lastMove && pos.movedType ? counterMoveSlot(thread, pos) : NoMove;
}

// A quiet move that refuted the last one.
inline void noteRefutation(SearchThread& thread, const Position& pos, int ply, Move move) {
    counterMoveSlot(thread, pos) = move;
    noteKiller(thread.killers[ply], move);
}

// Two plies on, killers of an earlier sibling's subtree mean nothing.
inline void clearGrandchildKillers(SearchThread& thread, int ply) {
    thread.killers[ply + 2].first = NoMove;
    thread.killers[ply + 2].second = NoMove;
}
