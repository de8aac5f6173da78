// What a search asks of the program around it. The shell fills the pointers in; the defaults make a silent search.
#pragma once

#include "board/position.h"

// The default of `log`: a lambda can't take a variable argument list.
inline void silentLog(const char*, ...) {}

struct SearchHost {
    bool (*inputWaiting)() = [] { return false; };
    void (*processCommand)() = [] {};
    void (*waitForInput)() = [] {};  // blocks until input may be there, at most some milliseconds
    // Bounds: 0 exact, 1 lower bound, 2 upper bound. Scores from the side to move's view.
    void (*reportDepth)(int depth, int score, const Move* pv, int bound) = [](int, int, const Move*, int) {};
    void (*reportMultiPvLine)(int index, int depth, int score, const Move* pv) = [](int, int, int, const Move*) {};
    void (*reportDepthEnd)(int depth) = [](int) {};
    void (*reportSearchEnd)() = [] {};
    void (*reportNodes)() = [] {};                              // the two-second line
    void (*reportCurrentMove)(Move move, int number) = [](Move, int) {};
    void (*reportThreads)(int count) = [](int) {};
    void (*reportBookMove)(Move move) = [](Move) {};
    void (*reportBestMove)(const char* best, const char* ponder) = [](const char*, const char*) {};  // null: none
    [[gnu::format(printf, 1, 2)]] void (*log)(const char* format, ...) = silentLog;
    // Options held back during a search are applied, at its end.
    void (*searchOver)() = [] {};
    // The tree search: its whole run on thread 0, its loop on a worker, and its two-second report.
    void (*runTree)(Position& root, bool infinite, double seconds) = [](Position&, bool, double) {};
    void (*treeWorker)(int threadIndex) = [](int) {};
    void (*reportTree)() = [] {};
};
inline SearchHost searchHost;
