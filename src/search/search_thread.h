// One search thread's record: everything that a search keeps between nodes, iterations and searches. All
// tables stand in the record, so that one allocation holds them.
#pragma once

#include "base/large_table.h"
#include "base/relaxed.h"
#include "board/history_tables.h"
#include "board/move.h"
#include "board/position.h"

#include <pthread.h>

inline constexpr int MaxIteration = 152;  // rows: depths that `go depth` may name, and one behind
inline constexpr int PvLength = 64;       // words of a line, its end included
inline constexpr int KillerRows = 202;    // plies that a search can reach, and two
inline constexpr int MaxPly = 190;        // from here on a node returns its static score

// What history counters start from and are drawn back to.
inline constexpr int HistoryCentre = 16000, CaptureCentre = 8000;

// Killers of one ply.
struct KillerRow {
    Move first, second;
    Move evasion;  // in check
};

struct SearchThread {
    Relaxed<int> iterationDepth;                // plies; 0: idle
    std::int32_t iterationScore[MaxIteration];  // of each finished or running iteration
    Move iterationPv[MaxIteration][PvLength];   // zero-terminated
    RootMove rootMoves[MaxListMoves];           // ended by a zero move
    Relaxed<std::uint64_t> nodes;               // of the current search; one writer
    KillerRow killers[KillerRows];              // by ply
    QuietHistory history;                       // around HistoryCentre
    CaptureHistory captureHistory;              // around CaptureCentre
    Move counterMoves[2][7][FromToCount];       // by side to move, type and from-to of the move before
    ContinuationHistory continuationHistory;    // around HistoryCentre
    LargeTable<MatCacheEntry> matHash;
    LargeTable<PawnEntry> pawnHash;
    LargeTable<EvalCacheEntry> evalCache;
    pthread_t worker;
    bool hasWorker;                  // never for thread 0
    bool hasHistory;                 // the histories hold values
    bool startFlag;                  // guarded by the pool's start mutex
    Relaxed<std::uint8_t> stopFlag;  // written by exchange, read at every node

    // Sets every region but the histories to its initial value and publishes the record to the board's
    // routines.
    void init(int index);
    void resetHistory();  // history, capture history and continuation history
    void clearKillers();  // killers and counter moves
    // Also gives a new record's histories their values. On the thread that will use all of them, so that it
    // touches the pages first. Ends the process if memory runs out.
    void allocateCaches(int index);
    void freeCaches();
    template <class Visit>  // of the LargeMemory behind each cache
    void forEachCache(Visit visit) {
        visit(matHash.pages());
        visit(pawnHash.pages());
        visit(evalCache.pages());
    }
    // Forgets every cached evaluation. Only while the thread is idle.
    void clearEvalCache();
};
