// One iteration: the aspiration windows around the last score, on thread 0 and on workers.
#include "base/clock.h"
#include "base/settings.h"
#include "search/limits.h"
#include "search/node.h"
#include "search/search_thread.h"
#include "search/thread_pool.h"
#include "search/time_manager.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

// Offsets of the first window by thread, in centipawns, so that threads see different things first.
constexpr int aspirationUp[16] = {6, 4, 6, 1, 5, 1, 4, 1, 3, 1, 2, 1, 1, 1, 0, 1};
constexpr int aspirationDown[16] = {-6, -4, -1, -6, -1, -5, -1, -4, -1, -3, -1, -2, -1, -1, -1, 0};

constexpr int AcceptedScore = 390;  // centipawns; an unproved fail high below it may end the iteration

struct Window {
    int alpha, beta;
};

// What the windows grow by after a failure, in centipawns: the last step times its growth, from a first one
// that is smaller in deep iterations, whose scores are steadier.
constexpr double DeltaGrowth = 1.4;
int firstDelta(int depth) { return depth <= 9 ? 8 : depth <= 15 ? 7 : 6; }

Window firstWindow(const SearchThread& thread, int threadIndex, int depth) {
    const int base =
        threadIndex == 0 ? thread.iterationScore[depth - 1] : searchState.rootPublishedScore.load();
    const int beta = base + aspirationUp[threadIndex & 15];
    const int alpha = std::min(base + aspirationDown[threadIndex & 15], beta - 1);
    return {std::max(alpha, -NoScore), std::min(beta, NoScore)};
}

// Windows that reach far open fully.
Window widened(Window window) {
    constexpr int FarScore = 700;  // centipawns
    if (window.alpha < -FarScore) window.alpha = -NoScore;
    if (window.beta > FarScore) window.beta = NoScore;
    return window;
}

void keepResult(SearchThread& thread, int depth, int score, const Move* pv) {
    thread.iterationScore[depth] = score;
    std::memcpy(thread.iterationPv[depth], pv, sizeof thread.iterationPv[depth]);
}

// Without aspiration: at low depths, and with several lines wanted, whose scores must all be exact.
void searchOpen(Position& pos, SearchThread& thread, int depth, Move* pv) {
    constexpr int LineMargin = 50;  // centipawns above the last score
    const int halfPlies = OnePly * depth;
    int score;
    if (depth < 2 || settings.multiPv < 2) {
        score = searchRoot(pos, halfPlies, -NoScore, NoScore, pv);
    } else {
        const int beta = thread.iterationScore[depth - 1] + LineMargin;
        score = searchRoot(pos, halfPlies, -NoScore, beta, pv);
        if (!isStopped(pos) && (score >= beta || score < -MateScore))
            score = searchRoot(pos, halfPlies, -NoScore, NoScore, pv);
    }
    if (isStopped(pos)) return;
    keepResult(thread, depth, score, pv);
    if (pos.threadIndex == 0) searchState.failHighAccepted = false;
}

// Whether thread 0 takes a fail high for good without looking how high: right after a fail low, or when time
// is short.
bool acceptsFailHigh(const SearchThread& thread, int depth, int score) {
    if (searchState.analysisSearch || std::abs(score) >= AcceptedScore) return false;
    if (searchState.failLowSeen && !searchState.failHighAccepted) return true;
    const double now = currentTime();
    const bool sameMove = thread.iterationPv[depth][0] == thread.iterationPv[depth - 1][0];
    return now > timeLimits.softLimit || now > timeLimits.hardFail || (now > timeLimits.softFail && sameMove);
}

}  // namespace

void searchIteration(Position& pos, int depth) {
    constexpr int FirstAspiratedDepth = 5;
    SearchThread& thread = threadOf(pos);
    const bool isMain = pos.threadIndex == 0;
    Move pv[PvLength] = {};
    if (isMain) searchState.failLowSeen = false;
    if (depth < FirstAspiratedDepth || settings.multiPv > 1) {
        searchOpen(pos, thread, depth, pv);
        return;
    }
    int delta = firstDelta(depth);
    Window window = firstWindow(thread, pos.threadIndex, depth);
    while (true) {
        const int score = searchRoot(pos, OnePly * depth, window.alpha, window.beta, pv);
        if (isStopped(pos)) return;
        keepResult(thread, depth, score, pv);
        if (score > window.alpha && score < window.beta) {
            if (isMain) searchState.failHighAccepted = searchState.failLowSeen = false;
            return;
        }
        delta = int(delta * DeltaGrowth);
        if (score <= window.alpha) {
            searchState.iterationFailLow = true;
            window = {score - delta, score + delta / 2};
            if (isMain) {
                searchState.failLowSeen = true;
                searchState.failHighAccepted = false;
            }
        } else {
            if (!isMain) return;  // a worker leaves it to the table to tell the others
            if (acceptsFailHigh(thread, depth, score)) {
                searchState.failHighAccepted = true;
                searchState.failLowSeen = false;
                return;
            }
            window = {score - delta / 2, score + delta};
        }
        window = widened(window);
    }
}
