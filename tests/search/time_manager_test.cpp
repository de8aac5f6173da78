// Deadlines and the end of iterations, from numbers alone.
#include "search/time_manager.h"

#include "search/limits.h"
#include "search/search_environment.h"
#include "search/thread_pool.h"

#include <gtest/gtest.h>

TEST(TimeLimitsTest, FollowFromTheTarget) {
    const TimeLimits limits = makeTimeLimits(1000, 1.038, 57.504, 600, 0, 99);
    EXPECT_DOUBLE_EQ(limits.hardLimit, 1006.228);
    EXPECT_DOUBLE_EQ(limits.softLimit, 1003.114);
    EXPECT_DOUBLE_EQ(limits.hardFail, 1002.076);
    EXPECT_DOUBLE_EQ(limits.softFail, 1001.557);
    EXPECT_DOUBLE_EQ(limits.easyStop, 1000.7785);
    EXPECT_DOUBLE_EQ(limits.earliestEnd, 1000.07785);
    EXPECT_DOUBLE_EQ(makeTimeLimits(1000, 10, 20, 500, 0, 99).hardLimit, 1020);
    EXPECT_DOUBLE_EQ(makeTimeLimits(1000, 20, NoTimeLimit, 262, 0, 99).hardLimit, 1052.4);
    const TimeLimits fixed = makeTimeLimits(1000, 2, NoTimeLimit, 500, 2, 99);
    EXPECT_DOUBLE_EQ(fixed.hardLimit, 1002);
    EXPECT_DOUBLE_EQ(fixed.easyStop, 1002);
}

TEST(EasyShare, WeighsScoreAndChanges) {
    const IterationFacts calm{
        .score = 20, .previousScore = 20, .failedLow = false, .moveChanges = 0, .obviousRecapture = false};
    EXPECT_DOUBLE_EQ(easyShare(calm), 0.6);
    IterationFacts facts = calm;
    facts.failedLow = true;
    EXPECT_DOUBLE_EQ(easyShare(facts), 548 / 700.0);
    facts = calm;
    facts.score = facts.previousScore = -51;
    EXPECT_DOUBLE_EQ(easyShare(facts), 0.7);
    facts.score = facts.previousScore = 90;
    EXPECT_DOUBLE_EQ(easyShare(facts), 0.6);
    facts = calm;
    facts.previousScore = 400;  // a collapse asks for all the time there is
    EXPECT_DOUBLE_EQ(easyShare(facts), 1.1);
    facts.previousScore = -59;  // 420 - 197.5 falls below the floor
    EXPECT_DOUBLE_EQ(easyShare(facts), 0.32);
    facts = calm;
    facts.moveChanges = 2;
    EXPECT_DOUBLE_EQ(easyShare(facts), 1.8);
    facts = calm;
    facts.obviousRecapture = true;
    facts.moveChanges = 0.03;
    EXPECT_DOUBLE_EQ(easyShare(facts), 0.6 * 1.03 * 0.5);
    facts.moveChanges = 0.04;
    EXPECT_DOUBLE_EQ(easyShare(facts), 0.6 * 1.04);
}

class IterationEnd : public SearchTest {
   protected:
    IterationEnd() {
        searchState.stopAfterIteration = false;
        searchState.infinite = false;
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
    searchState.iterationTarget = NoTimeLimit;
    EXPECT_FALSE(stops(5, 0)) << "a search without a clock has no reason to hurry";
    timeLimits.easyStop = currentTime() - 1;
    EXPECT_TRUE(stops(5, 0));
}

TEST_F(IterationEnd, IsPutOffInASearchWithoutEnd) {
    searchState.infinite = true;
    searchState.rootMoveCount = 1;
    timeLimits.earliestEnd = currentTime() - 1;
    EXPECT_FALSE(stops(9, 31990));
}

class Polling : public SearchTest {
   protected:
    Polling() {
        searchControl.ponder = false;
        searchControl.nodes = NoNodeLimit;
        searchState.stopAfterIteration = false;
        searchState.failLowSeen = false;
        searchState.rootMoveIndex = 5;
    }
    ~Polling() override {
        searchControl.nodes = NoNodeLimit;
        thread().stopFlag = 0;
    }
    // Whether thread 0 is stopped after enough calls for one poll.
    static bool stoppedByPoll() {
        thread().stopFlag = 0;
        for (int i = 0; i < 4096; ++i) periodicCheck();
        return thread().stopFlag & 1;
    }
};

TEST_F(Polling, StopsAtTheHardLimitUnlessPondering) {
    EXPECT_FALSE(stoppedByPoll());
    timeLimits.hardLimit = currentTime() - 1;
    EXPECT_TRUE(stoppedByPoll());
    searchControl.ponder = true;
    EXPECT_FALSE(stoppedByPoll());
    searchControl.ponder = false;
    EXPECT_TRUE(stoppedByPoll()) << "a hit after the limit ends the search";
}

TEST_F(Polling, TheSoftLimitStopsOnlyTheFirstMoveThatHolds) {
    timeLimits.softLimit = currentTime() - 1;
    EXPECT_FALSE(stoppedByPoll());
    searchState.rootMoveIndex = 1;
    EXPECT_TRUE(stoppedByPoll());
    searchState.failLowSeen = true;
    EXPECT_FALSE(stoppedByPoll());
    searchState.failLowSeen = false;
}

TEST_F(Polling, AHitAfterTheLastIterationsEndStopsAtOnce) {
    searchState.stopAfterIteration = true;
    searchControl.ponder = true;
    EXPECT_FALSE(stoppedByPoll());
    searchControl.ponder = false;
    EXPECT_TRUE(stoppedByPoll());
    searchState.stopAfterIteration = false;
}

// The end of input leaves no line behind, and may have come before the search cleared its flag.
TEST_F(Polling, AQuitStopsEvenWithoutALine) {
    searchHost.inputWaiting = [] { return false; };
    searchControl.quitRequested = true;
    EXPECT_TRUE(stoppedByPoll());
    searchControl.quitRequested = false;
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
    thread().stopFlag = std::uint8_t{0};
}

TEST_F(Polling, NodesAreLimitedAtOnce) {
    searchControl.nodes = 10;
    thread().nodes = std::uint64_t{9};
    EXPECT_FALSE(periodicCheck());
    thread().nodes = std::uint64_t{10};
    EXPECT_TRUE(periodicCheck());
    EXPECT_TRUE(thread().stopFlag & 1);
    thread().stopFlag = 0;
    searchControl.ponder = true;
    EXPECT_FALSE(periodicCheck()) << "pondering passes every limit";
    searchControl.ponder = false;
    EXPECT_TRUE(periodicCheck());
}
