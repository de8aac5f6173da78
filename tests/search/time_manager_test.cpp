// Deadlines and the end of iterations, from numbers alone.
#include "search/time_manager.h"

#include "search/search_environment.h"

#include <thread>

TEST(TimeLimitsTest, FollowFromTheTarget) {
    const TimeLimits limits = makeTimeLimits(1000, 1.038, 57.504, 600, 0, 99);
    EXPECT_DOUBLE_EQ(limits.hardLimit, 1006.228);
    EXPECT_DOUBLE_EQ(limits.softLimit, 1003.114);
    EXPECT_DOUBLE_EQ(limits.hardFail, 1002.076);
    EXPECT_DOUBLE_EQ(limits.softFail, 1001.557);
    EXPECT_DOUBLE_EQ(limits.easyStop, 1000.7785);
    EXPECT_DOUBLE_EQ(limits.earliestEnd, 1000.07785);
    EXPECT_DOUBLE_EQ(makeTimeLimits(1000, 10, 20, 500, 0, 99).hardLimit, 1020) << "never past the maximum";
    const TimeLimits fixed = makeTimeLimits(1000, 2, NoTimeLimit, 500, 2, 99);
    EXPECT_DOUBLE_EQ(fixed.hardLimit, 1002);
    EXPECT_DOUBLE_EQ(fixed.easyStop, 1002);
}

TEST(EasyShare, WeighsScoreAndChanges) {
    struct Row {
        const char* name;
        IterationFacts facts;  // score, previous score, failed low, move changes, obvious recapture
        double share;
    };
    for (const Row& row : {Row{"calm", {20, 20, false, 0, false}, 0.6},
                           Row{"failed low", {20, 20, true, 0, false}, 548 / 700.0},
                           Row{"neither level nor won", {-51, -51, false, 0, false}, 0.7},
                           Row{"the last such score", {89, 89, false, 0, false}, 0.7},
                           Row{"nearly won", {90, 90, false, 0, false}, 0.6},
                           Row{"a collapse asks for all there is", {20, 400, false, 0, false}, 1.1},
                           Row{"420 - 197.5 falls below the floor", {20, -59, false, 0, false}, 0.32},
                           Row{"changes", {20, 20, false, 2, false}, 1.8},
                           Row{"recapture", {20, 20, false, 0.03, true}, 0.6 * 1.03 * 0.5},
                           Row{"doubtful recapture", {20, 20, false, 0.04, true}, 0.6 * 1.04}})
        EXPECT_DOUBLE_EQ(easyShare(row.facts), row.share) << row.name;
}

class IterationEnd : public SearchTest {
   protected:
    IterationEnd() {
        searchState.rootMoveCount = 30;
        searchState.iterationTarget = 1;
        timeLimits.easyStop = timeLimits.earliestEnd = currentTime() + 100;
    }
    static bool stops(int depth, int score) {
        searchState.stopAfterIteration = false;
        testIterationEnd(depth, score);
        return searchState.stopAfterIteration;
    }
};

TEST_F(IterationEnd, ComesWithTimeWinsAndLoneMoves) {
    EXPECT_FALSE(stops(6, 31990));
    timeLimits.earliestEnd = currentTime() - 1;
    EXPECT_TRUE(stops(6, 25000));
    EXPECT_FALSE(stops(6, 24999));
    searchState.rootMoveCount = 1;
    EXPECT_FALSE(stops(4, 0));
    EXPECT_TRUE(stops(5, 0));
    searchState.infinite = true;
    EXPECT_FALSE(stops(9, 31990)) << "put off in a search without end";
    searchState.infinite = false;
    searchState.iterationTarget = NoTimeLimit;
    EXPECT_FALSE(stops(5, 0)) << "a search without a clock has no reason to hurry";
    timeLimits.easyStop = currentTime() - 1;
    EXPECT_TRUE(stops(5, 0));
}

class Polling : public SearchTest {
   protected:
    Polling() { searchState.rootMoveIndex = 5; }
    // Whether thread 0 is stopped after enough calls for one poll.
    static bool stoppedByPoll() {
        thread().stopFlag = 0;
        for (int i = 0; i < 4096; ++i) periodicCheck();
        return thread().stopFlag & 1;
    }
};

TEST_F(Polling, DeadlinesStopUnlessPondering) {
    EXPECT_FALSE(stoppedByPoll());
    timeLimits.softLimit = currentTime() - 1;
    EXPECT_FALSE(stoppedByPoll());
    searchState.rootMoveIndex = 1;
    EXPECT_TRUE(stoppedByPoll()) << "the soft limit, at the first move";
    searchState.failLowSeen = true;
    EXPECT_FALSE(stoppedByPoll()) << "which doesn't hold";
    timeLimits.hardLimit = currentTime() - 1;
    EXPECT_TRUE(stoppedByPoll());
    searchControl.ponder = true;
    EXPECT_FALSE(stoppedByPoll());
    searchControl.ponder = false;
    EXPECT_TRUE(stoppedByPoll()) << "a hit after the limit ends the search";
}

TEST_F(Polling, AHitAfterTheLastIterationsEndStopsAtOnce) {
    searchState.stopAfterIteration = true;
    searchControl.ponder = true;
    EXPECT_FALSE(stoppedByPoll());
    searchControl.ponder = false;
    EXPECT_TRUE(stoppedByPoll());
}

// The end of input leaves no line behind, and may have come before the search cleared its flag.
TEST_F(Polling, AQuitStopsEvenWithoutALine) {
    searchControl.quitRequested = true;
    EXPECT_TRUE(stoppedByPoll());
}

TEST_F(Polling, RunsAllCommandsOnceInManyCallsUpToAStop) {
    static int waiting, run;
    waiting = 5;
    run = 0;
    searchHost.inputWaiting = [] { return waiting > 0; };
    searchHost.processCommand = [] { --waiting, ++run; };
    EXPECT_FALSE(stoppedByPoll());
    EXPECT_EQ(run, 5);
    waiting = 5;
    searchHost.processCommand = [] {
        --waiting, ++run;
        thread().stopFlag = std::uint8_t(run == 7);
    };
    EXPECT_TRUE(stoppedByPoll());
    EXPECT_EQ(waiting, 3) << "what follows a stop is for later";
}

TEST_F(Polling, NodesAreLimitedAtOnce) {
    searchControl.nodes = 10;
    thread().nodes = std::uint64_t{9};
    EXPECT_FALSE(periodicCheck());
    thread().nodes = std::uint64_t{10};
    searchControl.ponder = true;
    EXPECT_FALSE(periodicCheck()) << "pondering passes every limit";
    searchControl.ponder = false;
    EXPECT_TRUE(periodicCheck());
    EXPECT_TRUE(thread().stopFlag & 1);
}

// Thread 0 may have no processor for a while. Its own nodes count as well.
TEST_F(Polling, AnyThreadMayFindTheNodesUsedUp) {
    makePool(2);
    SearchThread& worker = threadPool.threadRecords[1];
    Position pos = rootOf("");
    threadPool.attachRoot(pos, 1);
    thread().nodes = std::uint64_t{200};
    worker.nodes = std::uint64_t{32};
    EXPECT_FALSE(workerCheck(pos)) << "without a limit";
    searchControl.nodes = 233;
    EXPECT_FALSE(workerCheck(pos));
    searchControl.nodes = 232;
    searchControl.ponder = true;
    EXPECT_FALSE(workerCheck(pos));
    searchControl.ponder = false;
    EXPECT_TRUE(workerCheck(pos));
    EXPECT_TRUE(thread().stopFlag & worker.stopFlag & 1);

    // It naps while a line waits for thread 0, but hears of the end.
    searchControl.linesWaiting = 1;
    EXPECT_TRUE(workerCheck(pos));
    worker.stopFlag = std::uint8_t{0};
    Relaxed<bool> popped = false;
    std::thread main([&] {
        for (int i = 0; i < 1000; ++i) std::this_thread::yield();
        popped = true;
        searchControl.linesWaiting = 0;
    });
    workerCheck(pos);
    EXPECT_TRUE(popped);
    main.join();
    makePool(1);
}
