// The pool of search threads: creation, waking, the barrier at the end of each search, resizing. Thread 0 is
// the main thread; the others are workers, which sleep between searches.
// Lazy SMP: all threads search the same root, and share little but the transposition table.
#pragma once

#include "board/position.h"
#include "search/search_thread.h"

#include <functional>

class ThreadPool {
   public:
    // (Re)builds the records, caches and workers for `threadCount` threads; with `create` false only tears
    // down.
    void resize(bool create);
    // Stops all workers and rebuilds the pool for the `Threads` option.
    void restart();
    // The same for the `Table Memory` option, whose value this is.
    void restartWithTableMemory(int megabytes);
    // `restart`, and says so on the interface.
    void restartForOption();
    // Leaves no worker running.
    void stopWorkers();

    // Publishes a root and its list, which a zero move ends, for the workers. Only while they are idle.
    void publishRoot(const Position& root, const RootMove* rootMoves);
    // Wakes all workers on the published root, at a depth in plies.
    void wakeWorkers(int depth);
    // Thread 0 has gone on to another depth.
    void publishDepth(int depth) { searchDepthNow = depth; }
    // Ends the search that `wakeWorkers` began; all workers are idle afterwards.
    void finishSearch();
    // Thread 0 waits until every worker has left the search. Doesn't wait for a barrier that nobody armed.
    void barrierWait();

    // Runs a job once on each thread, with the thread's index, side by side, and returns when all are done.
    // Only while no search runs.
    void runOnAllThreads(const std::function<void(int)>& job);

    // Sets every thread's stop flag by atomic exchange. Any thread may call it at any time.
    void stopAllThreads();
    // The same from inside a search, where the records stay and no lock is taken.
    void stopSearch();

    // Nodes of the current search; a worker's share may be a moment old.
    std::uint64_t totalNodes();
    // For the next search, while the workers are idle: node limits count from the first node on.
    void clearNodes();

    // Points a root record at the tables of a thread, with no continuation behind it.
    void attachRoot(Position& root, int threadIndex);

    // Forgets what the threads have cached of evaluations, after the parameters have changed. Only while no
    // search runs.
    void clearEvalCaches();
    // Before a search: caches that were not made ready stay on small pages.
    void settleCaches();

    // Read by all; written by the functions above alone. Tests build pools of other sizes.
    LargeTable<SearchThread> threadRecords;  // one allocation; none while no pool exists
    int threadRecordCount = 0;
    int threadCount = 1;         // in use; follows the `Threads` option
    int tableMemoryInUse = 128;  // megabytes of all threads' caches; follows the `Table Memory` option

    Relaxed<int> searchDepthNow = 0;  // the depth of thread 0 in plies, for workers; 0: nothing to do
    Position searchRootPosition;
    RootMove searchRootMoves[MaxListMoves];
    Relaxed<std::uint32_t> poolQuit = 0;  // not 0: workers leave their loop

   private:
    void makeRecords();
    void freeRecords();
    void sizeCaches();
    void startWorker(int index);
    void setPoolQuit(std::uint32_t value);

    bool evalCachesUsed = false;
};
extern ThreadPool threadPool;

inline SearchThread& threadOf(const Position& pos) {
    return threadPool.threadRecords[std::size_t(pos.threadIndex)];
}
inline bool isStopped(const Position& pos) { return threadOf(pos).stopFlag & 1; }
// Thread 0's flag ends the search as a whole.
inline bool isMainStopped() { return threadPool.threadRecords[0].stopFlag & 1; }
inline void stopMainThread() { threadPool.threadRecords[0].stopFlag.exchange(1); }
