// What the board's hottest routines need of the search threads that stand above them: counters, history
// tables, caches, and the tables whose lines make prefetches. The owners fill these in; tests fill row 0 with
// plain arrays.
#pragma once

#include "base/relaxed.h"
#include "board/history_tables.h"
#include "board/position.h"
#include "board/types.h"

#include <cstddef>
#include <cstdint>

inline constexpr int MaxThreads = 128;

// One search thread's share, found by Position::threadIndex. A row fills one cache line.
struct alignas(64) ThreadHooks {
    Relaxed<std::uint64_t>* nodes = nullptr;  // raised by every make while the thread is not stopped
    const Relaxed<std::uint8_t>* stopFlag = nullptr;
    std::int32_t* history = nullptr;               // QuietHistory
    CaptureRow* captureHistory = nullptr;          // CaptureHistory
    std::uint16_t* continuationHistory = nullptr;  // ContinuationHistory
    EvalCacheEntry* evalCache = nullptr;
    PawnEntry* pawnHash = nullptr;
    MatCacheEntry* matHash = nullptr;
};
static_assert(sizeof(ThreadHooks) == 64);
extern ThreadHooks threadHooks[MaxThreads];

// Points a record at the tables of a thread, with empty continuations. `threadIndex` is set too.
void attachThread(Position& pos, int threadIndex);

// Entry sizes, in bytes; each table asserts its own.
inline constexpr std::size_t TransBucketSize = 48;
inline constexpr std::size_t EvalEntrySize = 16;
inline constexpr std::size_t PawnEntrySize = 48;

// Where make prefetches. The masks are one less than a power of two. Written only while no search runs.
struct PrefetchBases {
    const char* transBuckets = nullptr;  // null until the transposition table exists
    std::uint64_t transMask = 0;
    std::uint64_t evalMask = 0;  // shared by all threads' caches
    std::uint64_t pawnMask = 0;
};
extern PrefetchBases prefetchBases;

inline void prefetchTrans(Key key) {
    __builtin_prefetch(prefetchBases.transBuckets + (key & prefetchBases.transMask) * TransBucketSize);
}
