// The pool of search threads without the driver: sizes, waking and ending searches, tearing down.
#include "eval/caches.h"
#include "search/search_environment.h"
#include "search/table_memory.h"

#include <mutex>
#include <thread>

class Pool : public SearchTest {
   protected:
    ~Pool() override {
        threadPool.tableMemoryInUse = 4;
        makePool(1);
    }

    static SearchThread& record(int index) { return threadPool.threadRecords[index]; }

    // Publishes a root with all its moves, as the driver does.
    static void publish(const std::string& fen) {
        threadPool.searchRootPosition = rootOf(fen);
        listMoves(threadPool.searchRootPosition, threadPool.searchRootMoves);
    }
    // Wakes the workers, lets each of them search some nodes unless it is brief, and ends the search.
    static void searchAWhile(int depth, bool brief = false) {
        threadPool.wakeWorkers(depth);
        for (int i = 1; i < threadPool.threadCount && !brief; ++i)
            while (record(i).nodes < 100u) std::this_thread::yield();
        threadPool.finishSearch();
    }
    static void expectIdle() {
        const std::uint64_t nodesBefore = threadPool.totalNodes();
        for (int i = 0; i < threadPool.threadRecordCount; ++i) {
            EXPECT_EQ(record(i).iterationDepth, 0) << i;
            EXPECT_EQ(record(i).stopFlag, 0) << i;
        }
        for (int i = 0; i < 200; ++i) std::this_thread::yield();  // whoever is not idle goes on
        EXPECT_EQ(threadPool.totalNodes(), nodesBefore);
    }
};

TEST_F(Pool, WakesAndEndsSearchesOnEveryNumberOfThreads) {
    for (const int threads : {2, 4, 1, 3, 4}) {
        makePool(threads);
        publish("r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -");
        for (int i = 0; i < 10; ++i) {
            searchAWhile(1 + i % 3, i % 2 == 0);
            expectIdle();
        }
    }
}

TEST_F(Pool, NobodySearchesTheOldRootWhenItIsTornDown) {
    makePool(4);
    publish("");
    searchAWhile(5);
    for (int i = 1; i < 4; ++i) record(i).nodes = 0;
    threadPool.stopWorkers();
    for (int i = 1; i < 4; ++i) {
        EXPECT_EQ(record(i).nodes, 0u);
        EXPECT_FALSE(record(i).hasWorker);
        EXPECT_EQ(record(i).evalCache.data(), nullptr);
    }
    EXPECT_EQ(threadPool.poolQuit, 0u);
    threadPool.stopWorkers();  // with nobody left
    threadPool.resize(false);
    EXPECT_EQ(threadPool.threadRecords.data(), nullptr);
    EXPECT_EQ(threadPool.threadRecordCount, 0);
    threadPool.resize(false);
    threadPool.stopWorkers();
    threadPool.barrierWait();  // nobody armed it
    makePool(2);
    searchAWhile(2);
    expectIdle();
}

TEST_F(Pool, WorkersKeepTheirHistoryFromSearchToSearch) {
    makePool(2);
    publish("");
    SearchThread& worker = record(1);
    // Codes and plies that no search of this root reaches.
    worker.history[15][4095] = 123;
    worker.captureHistory[15][63][15] = 456;
    worker.continuationHistory[959][15][63] = 789;
    worker.counterMoves[1][6][4095] = 1;
    worker.killers[KillerRows - 1].evasion = 1;
    searchAWhile(1);
    EXPECT_EQ(worker.captureHistory[15][63][15], 456);
    EXPECT_EQ(worker.continuationHistory[959][15][63], 789);
    EXPECT_EQ(worker.counterMoves[1][6][4095], NoMove);
    EXPECT_EQ(worker.killers[KillerRows - 1].evasion, NoMove);
    makePool(2);
    EXPECT_EQ(record(1).history[15][4095], 123) << "a pool of the same size keeps the records";
    makePool(3);
    EXPECT_EQ(record(1).history[15][4095], 16000);
}

TEST_F(Pool, AWorkerTakesTheDepthOfThreadZero) {
    makePool(2);
    publish("");
    threadPool.wakeWorkers(7);
    SearchThread& worker = record(1);
    while (worker.iterationDepth != 7) std::this_thread::yield();
    threadPool.publishDepth(3);
    while (worker.iterationDepth != 3) std::this_thread::yield();
    threadPool.finishSearch();
    expectIdle();
}

TEST_F(Pool, RunsAJobOnceOnEachThread) {
    for (const int threads : {1, 4, 2}) {
        makePool(threads);
        publish("");
        for (int i = 0; i < 20; ++i) {
            std::vector<int> runs(std::size_t(threads), 0);
            std::set<std::thread::id> runners;
            std::mutex runnersMutex;
            const bool stopped = i % 2 == 0;  // as by the end of input
            if (stopped) threadPool.stopAllThreads();
            threadPool.runOnAllThreads([&](int index) {
                ++runs[std::size_t(index)];
                const std::lock_guard lock(runnersMutex);
                runners.insert(std::this_thread::get_id());
            });
            EXPECT_EQ(runs, std::vector<int>(std::size_t(threads), 1));
            EXPECT_EQ(runners.size(), std::size_t(threads));
            EXPECT_TRUE(runners.contains(std::this_thread::get_id()));
            for (int k = 0; k < threads; ++k) EXPECT_EQ(record(k).stopFlag, stopped ? 1 : 0) << "left alone";
            searchAWhile(2, true);
            record(0).stopFlag = 0;
            expectIdle();
        }
    }
    threadPool.stopWorkers();
    int runs = 0;
    threadPool.runOnAllThreads([&](int) { ++runs; });
    EXPECT_EQ(runs, 1) << "no worker is there";
}

TEST_F(Pool, TouchesTheCachesOfAllThreadsAndTheTables) {
    LargeMemory table;
    ASSERT_TRUE(table.allocate(50 << 20));
    for (const int threads : {1, 3}) {
        makePool(threads);
        touchTables({&table}, [] { return false; });
        EXPECT_EQ(table.touchedBytes(), 0u) << "nobody may go on";
        touchTables({&table}, [] { return true; });
        EXPECT_EQ(table.touchedBytes(), table.size());
        for (int i = 0; i < threads; ++i)
            record(i).forEachCache(
                [&](const LargeMemory& memory) { EXPECT_EQ(memory.touchedBytes(), memory.size()) << i; });
        table.allocate(50 << 20);
    }
    table.free();
}

TEST_F(Pool, ForgetsEvaluationsOnAllThreads) {
    makePool(2);
    for (const bool ready : {false, true}) {
        if (ready) touchTables({}, [] { return true; });
        rootOf("");  // the caches are in use
        for (const int index : {0, 1}) record(index).evalCache[prefetchBases.evalMask].key = 1;
        threadPool.clearEvalCaches();
        for (const int index : {0, 1}) EXPECT_EQ(record(index).evalCache[prefetchBases.evalMask].key, 0u);
    }
}

// The main thread wipes the workers' caches between searches, and they free them at their end, which may come
// right behind a search: for the thread sanitizer.
TEST_F(Pool, CachesChangeHandsInOrder) {
    publish("");
    for (int i = 0; i < 30; ++i) {
        makePool(2 + i % 3);
        rootOf("");  // the caches are in use
        searchAWhile(1, true);
        if (i % 2 == 0)
            threadPool.settleCaches();  // by the main thread, the other by each worker
        else
            threadPool.clearEvalCaches();
    }
}

// The input thread raises the flags whenever the input ends, also while the records are being replaced.
TEST_F(Pool, StopsComeAtAnyMoment) {
    Relaxed<bool> done = false;
    std::thread other([&] {
        while (!done) {
            threadPool.stopAllThreads();
            std::this_thread::yield();
        }
    });
    publish("");
    for (int i = 0; i < 20; ++i) {
        makePool(1 + i % 4);
        searchAWhile(1, true);
    }
    done = true;
    other.join();
    makePool(2);
    searchAWhile(1);
    expectIdle();
}
