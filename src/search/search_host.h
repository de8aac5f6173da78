// What a search asks of the program around it. The shell and the tree search fill the pointers in; the
// defaults make a silent search.
#pragma once

#include "board/position.h"

// What the score of a report says of the true one.
enum ReportBound : int { ReportExact = 0, ReportLower = 1, ReportUpper = 2 };

// The default of `log`: a lambda can't take a variable argument list.
inline void silentLog(const char*, ...) {}

struct SearchHost {
    // Input. `waitForInput` returns when a line may be there, after some milliseconds at most.
    bool (*inputWaiting)() = [] { return false; };
    void (*processCommand)() = [] {};
    void (*waitForInput)() = [] {};

    // Reports. Depths in plies; scores in centipawns from the side to move's view; `bound` is a ReportBound.
    void (*reportDepth)(int depth, int score, const Move* pv, int bound) = [](int, int, const Move*, int) {};
    void (*reportMultiPvLine)(int index, int depth, int score, const Move* pv) = [](int, int, int,
                                                                                    const Move*) {};
    void (*reportDepthEnd)(int depth) = [](int) {};
    void (*reportSearchEnd)() = [] {};
    void (*reportNodes)() = [] {};  // the two-second line
    void (*reportCurrentMove)(Move move, int number) = [](Move, int) {};
    void (*reportBookMove)(Move move) = [](Move) {};
    void (*reportBestMove)(Move best, Move ponder) = [](Move, Move) {};  // 0: none
    [[gnu::format(printf, 1, 2)]] void (*log)(const char* format, ...) = silentLog;
    bool (*isLogging)() = [] { return false; };

    // The end of a search: what was held back during it is carried out.
    void (*searchOver)() = [] {};
    // A quit was read: ends the process with status 0. Returns only in tests.
    void (*shutDown)() = [] {};

    // The tree search, null while there is none: the end of the last search's tree; the whole run on thread
    // 0, to the answer; the loop on a worker, with the worker's own root; and the two-second report.
    void (*dropTree)() = [] {};
    void (*runTree)(Position& root, bool infinite, double seconds) = nullptr;
    void (*treeWorker)(Position& root) = [](Position&) {};
    void (*reportTree)() = [] {};
};
inline SearchHost searchHost;
