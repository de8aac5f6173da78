// The tree on one thread: values, the nodes of the root, the shape of grown trees, and the end of a full
// store.
#include "tree/tree_environment.h"

TEST(TreeValues, BridgeScores) {
    EXPECT_NEAR(scoreToValue(31997), 0.999105, 1e-6);
    EXPECT_NEAR(scoreToValue(100), 0.766738, 1e-6);
    EXPECT_NEAR(scoreToValue(-300), 0.092773, 1e-6);
    EXPECT_EQ(valueToScore(scoreToValue(10)), 9);
    EXPECT_EQ(valueToScore(scoreToValue(100)), 99);
}

struct Shape {
    int inner = 0, withoutDraws = 0;
};

// Every inner node below: its children's visits against its own, their priors, and what is left in flight.
static void checkShape(const MctsNode& parent, Position& pos, int ply, Shape& shape) {
    if (!parent.child()) return;
    ++shape.inner;
    double priors = 0.0, policy = 0.0;
    std::uint64_t visits = 0;
    bool drawn = false;
    for (MctsNode* child = parent.child(); child; child = child->sibling()) {
        Position made;
        ASSERT_TRUE(makeMove(&pos, &made, child->move));
        drawn |= isTreeDraw(pos, made, ply);
        visits += child->visitCount() - 1;
        priors += double(child->prior.load());
        EXPECT_NEAR(child->visitWeight, double(child->visitCount()), 1e-6);
        EXPECT_FALSE(child->isBusy());
        EXPECT_GE(child->mean(), 0.0);
        EXPECT_LE(child->mean(), 1.0);
        // Where the first value still stands the prior is its square, times the same factor for all.
        if (child->visitCount() == 1) {
            const double factor = double(child->prior.load()) / (child->valueSum * child->valueSum);
            if (policy == 0.0) policy = factor;
            EXPECT_NEAR(factor / policy, 1.0, 1e-4);
        }
        checkShape(*child, made, ply + 1, shape);
    }
    EXPECT_NEAR(priors, 1.0, 1e-5);
    // A node has three visits of its own and a child one; draws on their first visits count for the parent
    // only.
    EXPECT_LE(visits, parent.visitCount() - 3);
    if (drawn) return;
    EXPECT_EQ(visits, parent.visitCount() - 3);
    ++shape.withoutDraws;
}

TEST_F(TreeTest, ChildrensVisitsAddUpAtEveryNode) {
    const struct {
        const char* fen;
        int playouts, inner;
    } rows[] = {{"r1bqkbnr/pppp1ppp/2n5/4p3/4P3/5N2/PPPP1PPP/RNBQKB1R w KQkq -", 100, 4},
                {"8/5pk1/4p1p1/7p/7P/4PP2/5KP1/8 w - - 0 1", 300, 20}};
    for (const auto& row : rows) {
        std::vector<double> sums[2];
        for (std::vector<double>& grown : sums) {
            forgetEverything();
            Position root = rootOf(row.fen);
            prepare(root);
            double values = node(0).valueSum;
            for (int i = 0; i < searchState.rootMoveCount; ++i) {
                EXPECT_EQ(child(i).move, thread().rootMoves[i].move);
                EXPECT_EQ(child(i).sibling(), i + 1 < searchState.rootMoveCount ? &child(i + 1) : nullptr);
                values -= 1.0 - child(i).valueSum;
            }
            EXPECT_NEAR(values, 0.0, 1e-9) << "the root's sum is the other side's";
            for (int i = 0; i < row.playouts; ++i) {
                const PlayoutResult result = mctsPlayout(&node(0), root, 0);
                node(0).visits.fetch_add(result.credited);
            }
            for (int i = 0; i < mctsTable.nodeCount; ++i) grown.push_back(node(i).valueSum);
            Shape shape;
            checkShape(node(0), root, 0, shape);
            EXPECT_GT(shape.withoutDraws, row.inner) << "of " << shape.inner << " inner nodes: " << row.fen;
            EXPECT_GT(treeState.mctsSelDepth, 1);
            // Expansion counts first and writes then: the record behind the root's children stays empty.
            EXPECT_NE(node(searchState.rootMoveCount + 2).move, NoMove);
        }
        EXPECT_EQ(sums[0], sums[1]) << "the same playouts grow the same tree";
    }
}

// The search ends with the store, without a stop, and answers with the greatest sum: the knight's promotion
// mates and has the best mean, but a smaller sum than other wins.
TEST_F(TreeTest, AFullStoreEndsTheSearch) {
    treeReports.bestMove = [](Move best, Move) { seen.answer = best; };
    Position root = rootOf("8/5P1k/6pp/8/8/1B6/1B6/6K1 w - -");
    searchState.rootMoveCount = listMoves(root, thread().rootMoves);
    mctsTable.capacity = 400;
    poison(400);
    searchControl.moveTime = 1;  // no leader ends it
    mctsDriver(root, false, 0.001);
    EXPECT_GT(mctsTable.nodeCount.load(), 200);
    EXPECT_TRUE(isPoisoned(400));
    EXPECT_FALSE(isMainStopped());
    double greatest = 0.0;
    for (int i = 0; i < searchState.rootMoveCount; ++i)
        greatest = std::max(greatest, child(i).valueSum.load());
    EXPECT_EQ(childBy(moveText(seen.answer)).valueSum, greatest);
    EXPECT_NE(moveText(seen.answer), "f7f8n");
}
