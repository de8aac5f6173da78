// The tree on one thread: values, the nodes of the root, budgets, and the end of a full store.
#include "tree/tree_environment.h"

TEST(TreeValues, BridgeScores) {
    EXPECT_NEAR(scoreToValue(31997), 0.999105, 1e-6);
    EXPECT_NEAR(scoreToValue(100), 0.766738, 1e-6);
    EXPECT_NEAR(scoreToValue(-300), 0.092773, 1e-6);
    EXPECT_EQ(valueToScore(scoreToValue(10)), 9);
    EXPECT_EQ(valueToScore(scoreToValue(100)), 99);
}

TEST_F(TreeTest, TheRootsChildrenStandInListOrder) {
    Position root = rootOf("");
    prepare(root);
    EXPECT_EQ(MctsTable::nodeCount.load(), 21);
    EXPECT_EQ(MctsTable::nodes[0].visitCount(), 3u);
    double priors = 0, values = 0;
    const MctsNode* linked = MctsTable::nodes[0].child();
    for (int i = 0; i < 20; ++i, linked = linked->sibling()) {
        EXPECT_EQ(linked, &child(i));
        EXPECT_EQ(child(i).move, thread().rootMoves[i].move);
        EXPECT_EQ(child(i).visitCount(), 1u);
        priors += double(child(i).prior);
        values += 1.0 - child(i).valueSum;
    }
    EXPECT_EQ(linked, nullptr);
    EXPECT_NEAR(priors, 1.0, 1e-5);
    EXPECT_NEAR(MctsTable::nodes[0].valueSum, values, 1e-9);
}

// A value speaks for the side that moved into the node: taking the queen is good, losing it bad.
TEST_F(TreeTest, ValuesSpeakForTheMover) {
    Position root = rootOf("6k1/5ppp/8/3q4/8/2N5/5PPP/6K1 w - -");
    prepare(root);
    EXPECT_GT(childBy("c3d5").valueSum, 0.9);
    EXPECT_LT(childBy("c3b1").valueSum, 0.2);
    Position mating = rootOf("6k1/5ppp/8/8/8/8/8/K2R4 w - -");
    prepare(mating);
    EXPECT_GT(childBy("d1d8").valueSum, 0.999);
}

TEST_F(TreeTest, ThirdRepetitionsAreWorthAHalf) {
    const std::vector<Position> line = SearchTest::play(
        "7k/8/8/8/8/8/8/K2R4 w - -", {"d1d2", "h8g8", "d2d1", "g8h8", "d1d2", "h8g8", "d2d1", "g8h8"});
    Position root = line.back();
    prepare(root);
    EXPECT_EQ(childBy("d1d2").valueSum, 0.5);
    EXPECT_GT(childBy("d1d7").valueSum, 0.6);
}

TEST_F(TreeTest, TheSamePlayoutsGrowTheSameTree) {
    const auto grow = [this] {
        forgetEverything();
        Position root = rootOf("r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -");
        prepare(root);
        runPlayouts(root, 60);
        std::vector<double> sums;
        for (int i = 0; i < MctsTable::nodeCount; ++i) sums.push_back(MctsTable::nodes[i].valueSum);
        return sums;
    };
    const std::vector<double> first = grow();
    EXPECT_GT(first.size(), 60u);
    EXPECT_EQ(first, grow());
}

TEST_F(TreeTest, BudgetsShrinkForLaterSiblings) {
    Position pos = rootOf("r1bq1rk1/pp2bppp/2n1pn2/2pp4/2P5/1P3NP1/PB1PPPBP/RN1Q1RK1 w - -");
    const auto spent = [&](int number, int budget) {
        forgetEverything();
        leafBudgetSearch(pos, 1, number, budget);
        return nodes();
    };
    EXPECT_GE(spent(1, 20000), 20000u);
    EXPECT_LT(spent(15, 20000), spent(1, 20000));
    EXPECT_LT(spent(1, 1), 20000u) << "a tiny budget ends after the first depth";
}

// ---- The full store ----

TEST_F(TreeTest, NothingIsWrittenBeyondTheCapacity) {
    Position root = rootOf(Middlegame);
    prepare(root);
    const int capacity = MctsTable::capacity = MctsTable::nodeCount + 50;
    poison(capacity);
    runPlayouts(root, 150);
    EXPECT_GT(MctsTable::nodeCount.load(), capacity);
    EXPECT_TRUE(isPoisoned(capacity));
    for (int i = 0; i < searchState.rootMoveCount; ++i) {
        EXPECT_NEAR(child(i).visitWeight, double(child(i).visitCount()), 1e-6);
        EXPECT_FALSE(child(i).isBusy());
    }
}

// The search ends with the store, without a stop; an infinite one keeps its answer until the stop comes.
TEST_F(TreeTest, AFullStoreEndsTheSearch) {
    treeReports.bestMove = [](Move best, Move) { seen.answer = best; };
    searchHost.waitForInput = [] {
        if (seen.waits++ == 0) seen.stoppedBefore = isMainStopped();
        if (seen.waits < 5) return;
        seen.answeredBefore = seen.answer != NoMove;
        stopMainThread();
    };
    for (const bool infinite : {false, true}) {
        thread().stopFlag = 0;
        seen = Seen{};
        // The knight's promotion mates and has the best mean, but a smaller sum than other wins.
        Position root = rootOf("8/5P1k/6pp/8/8/1B6/1B6/6K1 w - -");
        prepare(root);
        MctsTable::capacity = 400;
        poison(400);
        searchState.infinite = infinite;
        searchControl.moveTime = 1;  // no leader ends it
        mctsDriver(root, infinite, 0.001);
        EXPECT_GT(MctsTable::nodeCount.load(), 200);
        EXPECT_TRUE(isPoisoned(400));
        EXPECT_EQ(seen.waits, infinite ? 5 : 0);
        EXPECT_FALSE(seen.stoppedBefore);
        EXPECT_FALSE(seen.answeredBefore);
        double greatest = 0.0;
        for (int i = 0; i < searchState.rootMoveCount; ++i)
            greatest = std::max(greatest, child(i).valueSum.load());
        EXPECT_EQ(childBy(moveText(seen.answer)).valueSum, greatest);
        EXPECT_NE(moveText(seen.answer), "f7f8n");
    }
}
