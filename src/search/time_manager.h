// The search's clock: deadlines, the test at the end of an iteration, and the check that polls from inside.
// Times are seconds since the epoch, durations seconds.
#pragma once

#include "board/position.h"

// Since the current search began, but a millisecond at least, so that rates can be formed.
double elapsedSeconds();

struct TimeLimits {
    double hardLimit = 0;    // stops the search whatever else holds, unless pondering
    double softLimit = 0;    // stops it only while the first root move is in progress
    double hardFail = 0;     // for aspiration
    double softFail = 0;     // for aspiration
    double earliestEnd = 0;  // with a win in sight
    double easyStop = 0;     // end of the iteration test
    double maximum = 0;      // a duration
    double nextReport = 0;   // of the two-second line
};
extern TimeLimits timeLimits;

// The deadlines of a search that began at `start`. `extendPercent` is the hard limit as per cent of the
// target; `fixed` is the time of a search for a fixed time, else 0; `depthLimit` in plies.
TimeLimits makeTimeLimits(double start, double target, double maximum, int extendPercent, double fixed,
                          int depthLimit);

// What the end of an iteration tells about the time that the move deserves.
struct IterationFacts {
    int score;              // centipawns
    int previousScore;      // of the iteration before; the same as `score` at depth 1
    bool failedLow;         // the root failed low in this iteration
    double moveChanges;     // new best moves, halved at each iteration
    bool obviousRecapture;  // the best move is the one that looked obvious at the start
};

// The share of the target after which no further iteration begins.
double easyShare(const IterationFacts& facts);

// After an iteration on thread 0: sets `easyStop` from its facts.
void updateEasyStop(const IterationFacts& facts);

// At the end of an iteration: sets `searchState.stopAfterIteration` when another one is not worth its time.
void testIterationEnd(int depth, int score);

// Called at every node of thread 0; polls input and clock once in 4096 calls. True if the search must stop.
bool periodicCheck();

// Called at every node of a worker, and where it waits. Thread 0 looks after all else, but where threads are
// more than processors it may have none for a while: so every thread knows the limit of nodes, looked at once
// in some nodes since all counters are read, and makes way for thread 0 while input waits. True if the search
// must stop.
bool workerCheck(const Position& pos);
