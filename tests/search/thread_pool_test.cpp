// The pool of search threads without the driver: sizes, waking and ending searches, tearing down.
#include "eval/caches.h"
#include "search/search_environment.h"

#include <thread>

class Pool : public SearchTest {
   protected:
    ~Pool() override {
        ThreadPool::tableMemoryInUse = 4;
        makePool(1);
    }

    static void makePool(int threads) {
        ThreadPool::stopWorkers();
        threadCount = threads;
        ThreadPool::resize(true);
    }
    static SearchThread& record(int index) { return ThreadPool::threadRecords[index]; }

    // Publishes a root with all its moves, as the driver does.
    static void publish(const std::string& fen) {
        ThreadPool::searchRootPosition = rootOf(fen);
        listMoves(ThreadPool::searchRootPosition, ThreadPool::searchRootMoves);
    }
    // Wakes the workers, lets each of them search some nodes unless it is brief, and ends the search.
    static void searchAWhile(int depth, bool brief = false) {
        ThreadPool::searchDepthNow = depth;
        ThreadPool::wakeWorkers();
        for (int i = 1; i < threadCount && !brief; ++i)
            while (record(i).nodes < 100u) std::this_thread::yield();
        ThreadPool::finishSearch();
    }
    static void expectIdle() {
        const std::uint64_t nodesBefore = ThreadPool::totalNodes();
        for (int i = 0; i < ThreadPool::threadRecordCount; ++i) {
            EXPECT_EQ(record(i).iterationDepth, 0) << i;
            EXPECT_EQ(record(i).stopFlag, 0) << i;
        }
        for (int i = 0; i < 200; ++i) std::this_thread::yield();  // whoever is not idle goes on
        EXPECT_EQ(ThreadPool::totalNodes(), nodesBefore);
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
    ThreadPool::stopWorkers();
    for (int i = 1; i < 4; ++i) {
        EXPECT_EQ(record(i).nodes, 0u);
        EXPECT_FALSE(record(i).hasWorker);
        EXPECT_EQ(record(i).evalCache, nullptr);
    }
    EXPECT_EQ(ThreadPool::poolQuit, 0u);
    ThreadPool::stopWorkers();  // with nobody left
    ThreadPool::resize(false);
    EXPECT_EQ(ThreadPool::threadRecords, nullptr);
    EXPECT_EQ(ThreadPool::threadRecordCount, 0);
    ThreadPool::resize(false);
    ThreadPool::stopWorkers();
    ThreadPool::barrierWait();  // nobody armed it
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
    ThreadPool::searchDepthNow = 7;
    ThreadPool::wakeWorkers();
    SearchThread& worker = record(1);
    while (worker.iterationDepth != 7) std::this_thread::yield();
    ThreadPool::searchDepthNow = 3;
    while (worker.iterationDepth != 3) std::this_thread::yield();
    ThreadPool::finishSearch();
    expectIdle();
}

// The input thread raises the flags whenever the input ends, also while the records are being replaced.
TEST_F(Pool, StopsComeAtAnyMoment) {
    Relaxed<bool> done = false;
    std::thread other([&] {
        while (!done) {
            ThreadPool::stopAllThreads();
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
