// The tree on one thread: values, the nodes of the root, playouts and what they credit.
#include "search/search_environment.h"
#include "tree/leaf_search.h"
#include "tree/playout.h"
#include "tree/tree_driver.h"
#include "tree/tree_values.h"

#include <cmath>
#include <cstring>

class TreeTest : public SearchTest {
   protected:
    TreeTest() {
        if (!MctsTable::nodes) installTreeSearch();
        treeSearchActive = true;
        buildSearchTables();
    }

    // Prepares the tree of a position whose root list is every legal move. Budgets are those of a very short
    // search.
    void prepare(Position& root) {
        root.nullFloor = -8;
        Move list[MaxListMoves];
        const int count = genAllMoves(root, list);
        RootMove* rootMoves = thread().rootMoves;
        int kept = 0;
        Position child;
        for (int i = 0; i < count; ++i)
            if (makeMove(&root, &child, cleanMove(list[i]))) rootMoves[kept++] = {cleanMove(list[i]), 0, 0};
        rootMoves[kept] = RootMove{};
        searchState.rootMoveCount = kept;
        prepareTree(root, 0.001);
    }

    static const MctsNode& child(int index) { return MctsTable::nodes[index + 1]; }
    static const MctsNode& childBy(const std::string& text) {
        for (int i = 0; i < searchState.rootMoveCount; ++i)
            if (moveText(child(i).move) == text) return child(i);
        ADD_FAILURE() << text;
        return child(0);
    }
    static void runPlayouts(Position& root, int playouts) {
        for (int i = 0; i < playouts; ++i) {
            const PlayoutResult result = mctsPlayout(&MctsTable::nodes[0], root, 0);
            if (!result.credited) continue;
            MctsTable::nodes[0].valueSum.add(result.value);
            MctsTable::nodes[0].visitWeight.add(1.0);
            MctsTable::nodes[0].visits.fetch_add(1);
        }
    }
};

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

TEST_F(TreeTest, VisitsAddUpAndNothingStaysInFlight) {
    Position root = rootOf("r1bqkbnr/pppp1ppp/2n5/4p3/4P3/5N2/PPPP1PPP/RNBQKB1R w KQkq -");
    prepare(root);
    runPlayouts(root, 300);
    std::uint64_t visits = 0;
    for (int i = 0; i < searchState.rootMoveCount; ++i) {
        visits += child(i).visitCount();
        // Each completed visit weighs one; the 0.2 of a descent is taken back or made whole.
        EXPECT_NEAR(child(i).visitWeight, double(child(i).visitCount()), 1e-5);
        EXPECT_GE(child(i).mean(), 0.0);
        EXPECT_LE(child(i).mean(), 1.0);
    }
    EXPECT_EQ(visits - std::uint64_t(searchState.rootMoveCount), MctsTable::nodes[0].visitCount() - 3);
    EXPECT_GT(mctsSelDepth, 1);
    EXPECT_FALSE(MctsTable::nodes[0].isBusy());
    // Expansion counts first and writes then: the record behind the root's children stays empty.
    EXPECT_NE(MctsTable::nodes[searchState.rootMoveCount + 2].move, NoMove);
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
