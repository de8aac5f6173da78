#include "tree/leaf_search.h"

#include "search/search.h"
#include "search/search_thread.h"
#include "search/thread_pool.h"
#include "tree/tree_settings.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int FirstDepth = 4;       // half plies
constexpr int FullWindowDepth = 8;  // up to here each depth has the whole window
constexpr int LastDepth = 60;
constexpr int WholeWindow = 32000;  // centipawns
constexpr int FirstDelta = 7;       // centipawns, doubled at each failure

// One depth around `score`, which becomes the result. Each failure moves only the bound that failed. False if
// `mayGoOn` refused another window; `score` is then that of the failed one.
template <class MayGoOn>
bool searchWindows(Position& pos, int depth, int ply, int& score, MayGoOn mayGoOn) {
    Move pv[PvLength];
    int alpha = score - FirstDelta, beta = score + FirstDelta, delta = FirstDelta;
    while (true) {
        const int result = treeAlphaBeta(pos, alpha, beta, depth, ply, pv);
        const bool failedLow = result <= alpha && alpha > -WholeWindow;
        const bool failedHigh = result >= beta && beta < WholeWindow;
        score = result;
        if (!failedLow && !failedHigh) return true;
        if (failedLow)
            alpha = std::max(result - delta, -WholeWindow);
        else
            beta = std::min(result + delta, WholeWindow);
        delta *= 2;
        if (!mayGoOn()) return false;
    }
}

// One depth with the whole window.
int searchWhole(Position& pos, int depth, int ply) {
    Move pv[PvLength];
    return treeAlphaBeta(pos, -WholeWindow, WholeWindow, depth, ply, pv);
}

}  // namespace

// Intended: `ply` is the parent's. The tree has no limit of depth of its own; the search's tables by ply
// have.
static int searchPly(int ply) { return std::min(ply, MaxPly); }

int mctsShallowValue(Position& pos, int ply, bool losing) {
    ply = searchPly(ply);
    int base = pos.inCheck ? 7 : 6;
    if (losing || isUnderPromotion(pos.lastMove)) base -= 2;
    const int limit = base * 2;
    int score = 0;
    for (int depth = FirstDepth; depth <= limit; depth += 2) {
        if (depth <= FullWindowDepth)
            score = searchWhole(pos, depth, ply);
        else
            searchWindows(pos, depth, ply, score, [] { return true; });
    }
    return -score;
}

int leafBudgetSearch(Position& pos, int ply, int number, int budget) {
    ply = searchPly(ply);
    SearchThread& thread = threadOf(pos);
    for (KillerRow* row : {&thread.killers[ply], &thread.killers[ply + 1]}) row->first = row->second = NoMove;
    const std::uint64_t start = thread.nodes;
    const auto spent = [&] { return thread.nodes - start; };

    std::uint64_t share = std::uint64_t(budget);
    if (number >= 2)
        share = std::uint64_t(double(share) * std::pow(treeSettings.mctsBudgetDecay, number - 1));
    if (isUnderPromotion(pos.lastMove)) share >>= 1;
    const std::uint64_t hardLimit = 3 * share;

    int score = 0;
    for (int depth = FirstDepth; depth <= LastDepth && spent() < share && !isStopped(pos); depth += 2) {
        if (depth <= FullWindowDepth)
            score = searchWhole(pos, depth, ply);
        else if (spent() >= hardLimit ||
                 !searchWindows(pos, depth, ply, score, [&] { return spent() < hardLimit; }))
            break;
    }
    return -score;
}
