// The search's clock: deadlines, the test at the end of an iteration, and the check that polls from inside.
#pragma once

// The wall clock in seconds since the epoch, to the millisecond.
double currentTime();

struct TimeLimits {
    double hardLimit = 0;    // stops the search whatever else holds, unless pondering
    double softLimit = 0;    // stops it only while the first root move is in progress
    double hardFail = 0;     // for aspiration
    double softFail = 0;     // for aspiration
    double earliestEnd = 0;  // with a win in sight
    double easyStop = 0;     // end of the iteration test
    double maximum = 0;
    double nextReport = 0;   // of the two-second line
};
extern TimeLimits timeLimits;

// Sets the deadlines of a search that began at `searchState.searchStart`; times in seconds.
void setTimeLimits(double target, double maximum, int depthLimit);

// After an iteration on thread 0: computes `easyStop` from the score and the best move's changes.
void updateEasyStop(int depth, int score, int previousScore, int bestMove);

// Tests the flag `stopAfterIteration` at the end of an iteration, and sets it when time is up.
void testIterationEnd(int depth, int score);

// Called at every node of thread 0; polls input and clock once in 4096 calls. True if the search must stop.
bool periodicCheck();
