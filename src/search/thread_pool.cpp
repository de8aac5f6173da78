// Workers sleep on one condition until a search starts them, and leave it through a barrier at which thread 0
// alone waits. The records of all threads are one block of memory, made anew when their number changes.
#include "search/thread_pool.h"

#include "base/output.h"
#include "base/settings.h"
#include "base/start_thread.h"
#include "board/thread_hooks.h"
#include "search/limits.h"
#include "search/search.h"
#include "search/search_host.h"

#include <bit>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>

// Never destroyed, nor are the locks: workers may still sleep on them while the process ends.
ThreadPool threadPool;

namespace {

// No thread holds two of these at once; the search itself takes none.
struct PoolLocks {
    std::mutex startMutex;  // guards every `startFlag`, `poolQuit` and `job`
    std::condition_variable startCondition;
    const std::function<void(int)>* job = nullptr;  // for the workers instead of a search
    std::mutex barrierMutex;                        // guards the numbers below
    std::condition_variable barrierCondition;
    int barrierCount = 0;
    int barrierGeneration = 0;
    int workersReady = 0;     // workers that have their caches
    std::mutex recordsMutex;  // the input thread may raise stop flags while the records are being replaced
};
PoolLocks& locks = *new PoolLocks;

// ---- Workers ----

void leaveBarrier() {
    const std::lock_guard lock(locks.barrierMutex);
    if (locks.barrierCount > 0 && --locks.barrierCount == 0) locks.barrierCondition.notify_all();
}

void copyRoot(SearchThread& thread, Position& root, int index) {
    root = threadPool.searchRootPosition;
    threadPool.attachRoot(root, index);
    std::memcpy(thread.rootMoves, threadPool.searchRootMoves, sizeof thread.rootMoves);
    thread.clearKillers();
}

// Deepens beside thread 0. A worker that is early doesn't run ahead: it takes the depth that thread 0 has
// reached.
void deepenBeside(SearchThread& thread, Position& root, int depth) {
    constexpr int LastDepth = 98;
    thread.iterationDepth = 0;
    thread.iterationScore[1] = thread.iterationScore[0];
    thread.iterationDepth = depth;
    while (true) {
        const int current = thread.iterationDepth;
        searchIteration(root, current);
        if (threadPool.poolQuit || (thread.stopFlag & 1)) return;
        thread.iterationDepth = current + 1;
        if (current > LastDepth || std::abs(thread.iterationScore[current]) >= MateBound) return;
        thread.iterationScore[current + 1] = thread.iterationScore[current];
        const int next = threadPool.searchDepthNow;
        if (next <= 0) return;
        thread.iterationDepth = next;
    }
}

void workerMain(int index) {
    SearchThread& thread = threadPool.threadRecords[index];
    thread.allocateCaches(index);
    {
        const std::lock_guard lock(locks.barrierMutex);
        ++locks.workersReady;
        locks.barrierCondition.notify_all();
    }
    Position root;
    while (true) {
        const std::function<void(int)>* job;
        {
            std::unique_lock lock(locks.startMutex);
            locks.startCondition.wait(lock, [&] { return thread.startFlag; });
            thread.startFlag = false;
            job = locks.job;
        }
        if (job) {
            (*job)(index);
            leaveBarrier();
            continue;
        }
        const int depth = threadPool.searchDepthNow;
        if (depth > 0) {
            copyRoot(thread, root, index);
            if (searchState.treeSearchActive)
                searchHost.treeWorker(root);
            else
                deepenBeside(thread, root, depth);
        } else {
            thread.iterationScore[0] = 0;
        }
        thread.iterationDepth = 0;
        leaveBarrier();
        // Under the lock: what this worker frees now was used by the thread that sets the word.
        const std::lock_guard lock(locks.startMutex);
        if (threadPool.poolQuit) break;
    }
    thread.freeCaches();
}

void* workerEntry(void* argument) {
    workerMain(int(reinterpret_cast<std::intptr_t>(argument)));
    return nullptr;
}

// Entries of a cache for a share of memory in bytes, less one: a mask that reaches the next power of two.
std::uint64_t maskFor(double bytes, std::uint64_t divisor) {
    return std::bit_ceil(std::uint64_t(bytes) / divisor) - 1;
}

void armBarrier() {
    const std::lock_guard lock(locks.barrierMutex);
    ++locks.barrierGeneration;
    if (locks.barrierCount > 0) locks.barrierCondition.notify_all();
    locks.barrierCount = threadPool.threadCount;
}

void startWorkers(std::uint8_t stopFlag) {
    {
        const std::lock_guard lock(locks.startMutex);
        for (int i = 1; i < threadPool.threadRecordCount; ++i) {
            threadPool.threadRecords[i].stopFlag.exchange(stopFlag);
            threadPool.threadRecords[i].startFlag = true;
        }
    }
    locks.startCondition.notify_all();
}

// They come and go together.
bool hasWorkers() { return threadPool.threadRecordCount > 1 && threadPool.threadRecords[1].hasWorker; }

}  // namespace

void ThreadPool::startWorker(int index) {
    SearchThread& thread = threadRecords[index];
    if (thread.hasWorker) std::abort();
    thread.worker = startThread("start a search thread", SearchStackBytes, workerEntry,
                                reinterpret_cast<void*>(std::intptr_t{index}));
    thread.hasWorker = true;
}

// ---- Records ----

void ThreadPool::freeRecords() {
    for (int i = threadRecordCount - 1; i >= 0; --i) {
        if (threadRecords[i].hasWorker) std::abort();
        threadRecords[i].freeCaches();
    }
    const std::lock_guard lock(locks.recordsMutex);
    threadRecords.free();
    threadRecordCount = 0;
}

// The count comes last and under the lock: nobody looks at a record before that.
void ThreadPool::makeRecords() {
    threadRecords.allocate(std::size_t(threadCount), "thread records");
    threadRecords.pages().askForHugePages();  // all of it is written at once
    for (int i = 0; i < threadCount; ++i) (new (&threadRecords[i]) SearchThread)->init(i);
    const std::lock_guard lock(locks.recordsMutex);
    threadRecordCount = threadCount;
}

// The option's memory is shared out: nearly half goes to pawn tables, what they leave to evaluation caches.
void ThreadPool::sizeCaches() {
    constexpr double PawnShare = 0.45;
    constexpr double MatCacheBytes = 65536;
    const double memory = double(std::uint64_t(tableMemoryInUse) << 20) - MatCacheBytes;
    prefetchBases.pawnMask = maskFor(memory * PawnShare / threadCount, 2 * PawnEntrySize);
    const double pawnBytes = double((prefetchBases.pawnMask + 1) * PawnEntrySize);
    prefetchBases.evalMask = maskFor((memory - pawnBytes) / threadCount, 2 * EvalEntrySize);
}

void ThreadPool::resize(bool create) {
    const bool keep = create && threadRecordCount == threadCount;
    if (threadRecordCount > 0 && !keep) freeRecords();
    if (threadRecordCount == 0 && create) makeRecords();
    if (threadRecordCount > 0) threadRecords[0].freeCaches();
    if (!create) return;
    sizeCaches();
    evalCachesUsed = false;
    threadRecords[0].allocateCaches(0);
    locks.workersReady = 0;
    for (int i = 1; i < threadCount; ++i) startWorker(i);
    std::unique_lock lock(locks.barrierMutex);
    locks.barrierCondition.wait(lock, [this] { return locks.workersReady == threadCount - 1; });
}

void ThreadPool::restart() {
    stopWorkers();
    threadCount = settings.threads;
    resize(true);
}

void ThreadPool::restartWithTableMemory(int megabytes) {
    tableMemoryInUse = megabytes;
    restart();
}

void ThreadPool::restartForOption() {
    restart();
    sendLine("info string Threads now set to %d\n", threadCount);
}

// ---- One search ----

void ThreadPool::publishRoot(const Position& root, const RootMove* rootMoves) {
    searchRootPosition = root;
    std::memcpy(searchRootMoves, rootMoves, sizeof searchRootMoves);
}

void ThreadPool::wakeWorkers(int depth) {
    searchDepthNow = depth;
    armBarrier();
    startWorkers(0);
}

void ThreadPool::barrierWait() {
    std::unique_lock lock(locks.barrierMutex);
    if (locks.barrierCount < 1) return;
    if (--locks.barrierCount == 0) {
        locks.barrierCondition.notify_all();
        return;
    }
    const int generation = locks.barrierGeneration;
    locks.barrierCondition.wait(
        lock, [&] { return locks.barrierCount == 0 || locks.barrierGeneration != generation; });
}

void ThreadPool::finishSearch() {
    for (int i = 1; i < threadRecordCount; ++i) threadRecords[i].stopFlag.exchange(1);
    barrierWait();
    for (int i = 1; i < threadRecordCount; ++i) threadRecords[i].stopFlag.exchange(0);
}

// Starts the workers as a search does, but leaves the stop flags alone: one that the end of input has raised
// counts for what comes next.
void ThreadPool::runOnAllThreads(const std::function<void(int)>& job) {
    if (!hasWorkers()) {
        job(0);
        return;
    }
    armBarrier();
    {
        const std::lock_guard lock(locks.startMutex);
        locks.job = &job;
        for (int i = 1; i < threadRecordCount; ++i) threadRecords[i].startFlag = true;
    }
    locks.startCondition.notify_all();
    job(0);
    barrierWait();
    const std::lock_guard lock(locks.startMutex);
    locks.job = nullptr;
}

void ThreadPool::setPoolQuit(std::uint32_t value) {
    const std::lock_guard lock(locks.startMutex);
    poolQuit.exchange(value);
}

void ThreadPool::stopWorkers() {
    if (!hasWorkers()) return;
    armBarrier();
    setPoolQuit(1);
    searchDepthNow = 0;  // before the flags, so that nobody starts on an old root
    startWorkers(1);
    // The barrier isn't waited at: a worker that has just left the last search's may go without passing it.
    for (int i = 1; i < threadRecordCount; ++i) {
        if (!threadRecords[i].hasWorker) continue;
        pthread_join(threadRecords[i].worker, nullptr);
        threadRecords[i].hasWorker = false;
        threadRecords[i].startFlag = false;
        threadRecords[i].stopFlag.exchange(0);
    }
    locks.barrierCount = 0;
    setPoolQuit(0);
}

void ThreadPool::stopSearch() {
    for (int i = 0; i < threadRecordCount; ++i) threadRecords[i].stopFlag.exchange(1);
}

void ThreadPool::stopAllThreads() {
    const std::lock_guard lock(locks.recordsMutex);
    stopSearch();
}

std::uint64_t ThreadPool::totalNodes() {
    std::uint64_t sum = 0;
    for (int i = 0; i < threadRecordCount; ++i) sum += threadRecords[i].nodes;
    return sum;
}

void ThreadPool::clearNodes() {
    for (int i = 0; i < threadRecordCount; ++i) threadRecords[i].nodes = 0;
}

void ThreadPool::attachRoot(Position& root, int threadIndex) {
    if (threadIndex == 0) evalCachesUsed = true;
    attachThread(root, threadIndex);
}

void ThreadPool::settleCaches() {
    for (int i = 0; i < threadRecordCount; ++i)
        threadRecords[i].forEachCache([](LargeMemory& memory) { memory.settle(); });
}

void ThreadPool::clearEvalCaches() {
    if (!evalCachesUsed) return;
    runOnAllThreads([this](int index) { threadRecords[index].clearEvalCache(); });
    evalCachesUsed = false;
}
