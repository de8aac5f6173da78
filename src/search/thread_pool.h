// The pool of search threads: creation, waking, the barrier at the end of each search, resizing.
#pragma once

#include "board/position.h"
#include "search/search_thread.h"

namespace ThreadPool {

extern SearchThread* threadRecords;  // one allocation; null while no pool exists
extern int threadRecordCount;
extern int threadCount;  // in use; follows the `Threads` option

extern Relaxed<int> searchDepthNow;  // the depth of thread 0, for workers; 0: nothing to do
extern Position searchRootPosition;  // written by thread 0 only while all workers are idle
extern RootMove searchRootMoves[MaxListMoves];
extern Relaxed<std::uint32_t> poolQuit;

// (Re)builds the records, caches and workers for `threadCount` threads; with `create` false only tears down.
void resize(bool create);
// Stops all workers and rebuilds the pool for the `Threads` option.
void restart();
// Leaves no worker running.
void stopWorkers();

// One search: wakes all workers on the published root; and ends it, after which all of them are idle.
void wakeWorkers();
void finishSearch();
void barrierWait();

// Sets every thread's stop flag by atomic exchange. Any thread may call it.
void stopAllThreads();

std::uint64_t totalNodes();

// Points a root record at the tables of a thread.
void attachRoot(Position& root, int threadIndex);

}  // namespace ThreadPool

using ThreadPool::threadCount;

inline SearchThread& threadOf(const Position& pos) {
    return ThreadPool::threadRecords[std::size_t(pos.threadIndex)];
}
inline bool isStopped(const Position& pos) { return threadOf(pos).stopFlag & 1; }
