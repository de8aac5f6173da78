#include "search/time_manager.h"

#include "base/clock.h"
#include "search/limits.h"
#include "search/search_host.h"
#include "search/thread_pool.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <thread>

TimeLimits timeLimits;

double elapsedSeconds() { return std::max(currentTime() - searchState.searchStart, 0.001); }

TimeLimits makeTimeLimits(double start, double target, double maximum, int extendPercent, double fixed,
                          int depthLimit) {
    constexpr double LaterShare = 3.3;  // of the maximum, for what iterations may ask
    TimeLimits limits;
    limits.hardLimit = std::min(start + maximum, start + extendPercent / 100.0 * target);
    limits.softLimit = start + 3 * target;
    limits.hardFail = start + 2 * target;
    limits.softFail = start + 1.5 * target;
    if (fixed != 0) {
        limits.hardLimit = limits.easyStop = limits.earliestEnd = start + target;
    } else if (depthLimit < 1) {
        limits.easyStop = limits.hardLimit * 0.5;
    } else {
        limits.easyStop = start + 0.75 * target;
        limits.earliestEnd = start + 0.075 * target;
    }
    limits.maximum = maximum / LaterShare;
    return limits;
}

double easyShare(const IterationFacts& facts) {
    const int magnitude = std::abs(facts.score);
    double points = 420 - 2.5 * (facts.score - facts.previousScore);
    if (facts.failedLow) points += 128;
    if (magnitude >= 51 && magnitude <= 89) points += 70;  // neither level nor won
    points = std::min(points, 770.0);
    double share = points >= 224 ? points / 700 : 0.32;
    share *= facts.moveChanges + 1;
    if (facts.obviousRecapture && facts.moveChanges <= 0.03) share *= 0.5;
    return share;
}

void updateEasyStop(const IterationFacts& facts) {
    const double share = easyShare(facts);
    if (!isMainStopped()) {
        const double start = searchState.searchStart;
        const double wanted = share * searchState.iterationTarget;
        // Intended: a duration is compared with a time of the clock, so the cap never acts.
        const double cap = start + timeLimits.maximum;
        timeLimits.easyStop = wanted > cap ? cap : start + wanted;
    }
    searchHost.log("easy: %12.2f\n", share);
}

void testIterationEnd(int depth, int score) {
    constexpr int ClearWin = 25000;            // centipawns; a mate or the next thing to it
    constexpr double LongestTimed = 31000000;  // milliseconds; a larger target is no clock
    const double now = currentTime();
    if (now > timeLimits.easyStop) searchState.stopAfterIteration = true;
    if (searchState.infinite) return;
    if (std::abs(score) >= ClearWin && now > timeLimits.earliestEnd) searchState.stopAfterIteration = true;
    const bool onlyMove = depth >= 5 && searchState.rootMoveCount < 2;
    if (onlyMove && searchState.iterationTarget * 1000 <= LongestTimed) searchState.stopAfterIteration = true;
}

// Runs all lines that have come, so that a long queue doesn't delay its end; but what follows a stop is for
// later. A quit may also come without a line: at the end of input, even one that ended before this search
// began.
static void runWaitingCommands() {
    bool goesOn = true;
    while (goesOn && searchHost.inputWaiting()) {
        searchHost.processCommand();
        goesOn = !searchControl.quitRequested && !isMainStopped();
    }
    if (searchControl.quitRequested) threadPool.stopAllThreads();
}

// Deadlines have no effect while pondering. A ponder hit after the time of the last iteration's end stops at
// once.
static void testDeadlines(double now) {
    if (searchControl.ponder) return;
    const bool firstMoveHolds = searchState.rootMoveIndex == 1 && !searchState.failLowSeen;
    if (searchState.stopAfterIteration || now >= timeLimits.hardLimit ||
        (now >= timeLimits.softLimit && firstMoveHolds))
        stopMainThread();
}

static void reportEveryTwoSeconds(double now) {
    if (now <= timeLimits.nextReport || searchControl.benchMode) return;
    timeLimits.nextReport = now + 2.0;
    if (searchState.treeSearchActive)
        searchHost.reportTree();
    else
        searchHost.reportNodes();
}

// Pondering passes the limit.
static bool hasNodeLimit() { return searchControl.nodes != NoNodeLimit && !searchControl.ponder; }

// Ends the search on every thread when the limit of nodes has been reached.
static bool stopsByNodes() {
    if (threadPool.totalNodes() < searchControl.nodes) return false;
    threadPool.stopSearch();
    return true;
}

// Sleeps while a line waits for thread 0. Long enough a nap for thread 0 to act on the line, and to tell the
// others, before they want the processors back.
static void makeWay(const SearchThread& worker) {
    constexpr std::chrono::milliseconds Nap(2);
    while (searchControl.linesWaiting > 0 && !(worker.stopFlag & 1)) std::this_thread::sleep_for(Nap);
}

bool workerCheck(const Position& pos) {
    constexpr std::uint64_t NodesBetweenChecks = 16;  // a power of two
    if (searchControl.linesWaiting > 0) makeWay(threadOf(pos));
    return hasNodeLimit() && (threadOf(pos).nodes & (NodesBetweenChecks - 1)) == 0 && stopsByNodes();
}

bool periodicCheck() {
    constexpr unsigned CallsBetweenChecks = 4096;
    static unsigned calls = 0;
    if (hasNodeLimit() && stopsByNodes()) return true;
    if (++calls % CallsBetweenChecks != 0) return false;
    runWaitingCommands();
    if (isMainStopped() && !searchControl.ponder) return true;
    const double now = currentTime();
    testDeadlines(now);
    reportEveryTwoSeconds(now);
    return false;
}
