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
    // In targets after the start.
    constexpr double SoftLimitAt = 3, HardFailAt = 2, SoftFailAt = 1.5;
    constexpr double FirstEasyStopAt = 0.75;  // before any iteration has told what the move deserves
    constexpr double EarliestEndAt = 0.075;
    constexpr double LaterShare = 3.3;          // of the maximum, for what iterations may ask
    constexpr double WithoutDepthsShare = 0.5;  // of the hard limit, as a time of the clock
    TimeLimits limits;
    limits.hardLimit = std::min(start + maximum, start + extendPercent / 100.0 * target);
    limits.softLimit = start + SoftLimitAt * target;
    limits.hardFail = start + HardFailAt * target;
    limits.softFail = start + SoftFailAt * target;
    if (fixed != 0) {
        limits.hardLimit = limits.easyStop = limits.earliestEnd = start + target;
    } else if (depthLimit < 1) {
        limits.easyStop = limits.hardLimit * WithoutDepthsShare;
    } else {
        limits.easyStop = start + FirstEasyStopAt * target;
        limits.earliestEnd = start + EarliestEndAt * target;
    }
    limits.maximum = maximum / LaterShare;
    return limits;
}

double easyShare(const IterationFacts& facts) {
    // Points, of which a target has so many. A score that falls wants more time, one that rises less.
    constexpr double PointsOfTarget = 700, CalmPoints = 420, PointsPerCentipawn = 2.5;
    constexpr double FailLowPoints = 128, UndecidedPoints = 70;
    constexpr double LeastPoints = 224, MostPoints = 770;
    constexpr double LeastShare = 0.32;
    // Centipawns: neither level nor won.
    constexpr int LeastUndecided = 51, MostUndecided = 89;
    // The obvious move needs half the time while hardly another has been thought better.
    constexpr double MostObviousChanges = 0.03, ObviousFactor = 0.5;
    const int magnitude = std::abs(facts.score);
    double points = CalmPoints - PointsPerCentipawn * (facts.score - facts.previousScore);
    if (facts.failedLow) points += FailLowPoints;
    if (magnitude >= LeastUndecided && magnitude <= MostUndecided) points += UndecidedPoints;
    points = std::min(points, MostPoints);
    double share = points >= LeastPoints ? points / PointsOfTarget : LeastShare;
    share *= facts.moveChanges + 1;
    if (facts.obviousRecapture && facts.moveChanges <= MostObviousChanges) share *= ObviousFactor;
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
    constexpr int OnlyMoveDepth = 5;  // plies, enough for a score to show
    const bool onlyMove = depth >= OnlyMoveDepth && searchState.rootMoveCount < 2;
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
    constexpr double Interval = 2;  // seconds
    if (now <= timeLimits.nextReport || searchControl.benchMode) return;
    timeLimits.nextReport = now + Interval;
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
