// Single playouts on small trees planted by hand.
#include "tree/tree_environment.h"

class Playout : public TreeTest {
   protected:
    // Visits, weight and sum of a node, the latter two within what additions of 0.2 may blur.
    static void expectNumbers(const MctsNode& of, std::uint64_t visits, double sum) {
        EXPECT_EQ(of.visitCount(), visits);
        EXPECT_NEAR(of.visitWeight, double(visits), 1e-12);
        EXPECT_NEAR(of.valueSum, sum, 1e-12);
        EXPECT_FALSE(of.isBusy());
    }
};

// The end of the game has no mark: each visit looks for moves again. The value is the mover's and turns over
// on the way up.
TEST_F(Playout, TerminalNodesAreTestedAtEachVisit) {
    const struct {
        const char *fen, *move;
        double value;
    } rows[] = {{"6k1/5ppp/8/8/8/8/8/K2R4 w - -", "d1d8", scoreToValue(31997)},
                {"7k/5K2/8/8/8/8/8/6Q1 w - -", "g1g6", 0.5}};
    for (const auto& row : rows) {
        Position pos = rootOf(row.fen);
        MctsNode& parent = plantRoot(9);
        MctsNode& last = plantChild(parent, pos, row.move, 3, 0.25);
        for (int visit = 1; visit <= 3; ++visit) {
            const PlayoutResult result = mctsPlayout(&parent, pos, 2);
            EXPECT_TRUE(result.credited);
            EXPECT_EQ(result.value, 1.0 - row.value);
            expectNumbers(last, 3 + std::uint64_t(visit), 0.75 + visit * row.value);
            EXPECT_EQ(last.child(), nullptr);
            EXPECT_EQ(mctsTable.nodeCount.load(), 1);
        }
        mctsPlayout(&last, pos, 3);
        EXPECT_NE(last.child(), nullptr) << "with moves it gets children";
    }
}

// A draw that is met before the third visit leaves the visits, so that it is met again in the same state.
TEST_F(Playout, DrawsBeforeTheThirdVisitDoNotCount) {
    Position pos = rootOf("7k/8/8/8/8/8/8/K2R4 w - -");
    pos.halfmoveClock = 99;
    for (const std::uint64_t visits : {1u, 2u, 3u}) {
        MctsNode& parent = plantRoot(9);
        MctsNode& drawn = plantChild(parent, pos, "d1d2", visits, 0.9);
        for (std::uint64_t repeat = 1; repeat <= 2; ++repeat) {
            const PlayoutResult result = mctsPlayout(&parent, pos, 1);
            EXPECT_TRUE(result.credited);
            EXPECT_EQ(result.value, 0.5);
            if (visits < 3)
                expectNumbers(drawn, visits, 0.5 * double(visits));
            else
                expectNumbers(drawn, visits + repeat, 2.7 + 0.5 * double(repeat));
        }
    }
    EXPECT_EQ(nodes(), 6u) << "the moves are made, and nothing is searched";
    pos = rootOf("6k1/5ppp/8/8/8/8/8/K2R4 w - -");
    pos.halfmoveClock = 99;
    MctsNode& parent = plantRoot(9);
    MctsNode& mate = plantChild(parent, pos, "d1d8", 1, 0.5);
    EXPECT_LT(mctsPlayout(&parent, pos, 1).value, 0.001) << "a mate on the hundredth half-move is no draw";
    EXPECT_EQ(mate.visitCount(), 2u);
}

TEST_F(Playout, OneRepetitionDrawsOnlyFarFromTheRoot) {
    std::vector<Position> line = play("7k/8/8/8/8/8/8/K2R4 w - -", {"d1d2", "h8g8", "d2d1", "g8h8", "d1d2",
                                                                    "h8g8", "d2d1", "g8h8", "d1d2"});
    for (const int ply : {0, 1, 2}) {
        EXPECT_FALSE(isTreeDraw(line[2], line[3], ply));
        EXPECT_EQ(isTreeDraw(line[4], line[5], ply), ply == 2);
        EXPECT_TRUE(isTreeDraw(line[8], line[9], ply));
    }
}

// The second and the third visit each replace the sum by their own value times the visits.
TEST_F(Playout, BudgetSearchesReplaceTheSum) {
    std::vector<Position> line = play(Middlegame, {"c4d5"});
    treeSettings.mctsFirstBudget = 2000;
    treeSettings.mctsSecondBudget = 12000;
    const auto search = [&](int ply, int number, int budget) {
        forgetEverything();
        const int score = leafBudgetSearch(line[1], ply, number, budget);
        return std::pair(float(scoreToValue(score)), nodes());
    };
    // A playout to the only child in the state of before, which is the `number`th to be measured.
    const auto expectSearch = [&](int ply, std::uint64_t visits, std::pair<float, std::uint64_t> wanted) {
        forgetEverything();
        MctsNode& leaf = *node(0).child();
        leaf.visits.store(visits);
        leaf.visitWeight = double(visits);
        leaf.valueSum = 55.0;
        const PlayoutResult result = mctsPlayout(&node(0), line[0], ply);
        EXPECT_TRUE(result.credited);
        EXPECT_EQ(result.value, 1.0 - double(wanted.first));
        EXPECT_EQ(nodes(), wanted.second + 1) << "its own move, and the search";
        expectNumbers(leaf, visits + 1, double(float(visits + 1) * wanted.first));
    };
    plantChild(plantRoot(9), line[0], "c4d5", 1, 0.0);
    const auto first = search(3, 1, treeSettings.mctsFirstBudget),
               second = search(3, 1, treeSettings.mctsSecondBudget);
    EXPECT_LT(first.second, second.second);
    expectSearch(3, 1, first);
    expectSearch(3, 2, second);

    // Flags of moves that can't win any more move the running number on, at the root and nowhere else.
    for (int i = 0; i < 30; ++i) treeState.mctsPruned[i] = true;
    const auto late = search(0, 31, treeSettings.mctsSecondBudget);
    EXPECT_LT(late.second, second.second);
    expectSearch(0, 2, late);
    expectSearch(3, 2, second);
    // Past the last flag there are none, and the number is too large for any budget.
    for (Relaxed<bool>& pruned : treeState.mctsPruned) pruned = true;
    expectSearch(0, 2, {0.5f, 0});
}

// A descent weighs a fifth of a visit while it lasts, and nothing once it has failed.
TEST_F(Playout, FailedDescentsLeaveNoTrace) {
    std::vector<Position> line = play(Middlegame, {"c4d5"});
    const auto playoutWith = [&](bool busy) {
        thread().stopFlag = 0;
        MctsNode& first = plantChild(plantRoot(9), line[0], "c4d5", 4, 0.5);
        plantChild(first, line[1], "e6d5", 3, 0.5).busy.store(busy);
        return mctsPlayout(&node(0), line[0], 0).credited;
    };
    const auto expectNoTrace = [] {
        expectNumbers(node(1), 4, 2.0);
        expectNumbers(node(2), 3, 1.5);
    };
    searchHost.inputWaiting = [] {
        if (seen.waits++ == 0) seen.weightInFlight = node(1).visitWeight;
        return seen.waits % 2 == 1;
    };

    // Another thread expands the next node: the playout waits until a stop comes.
    searchHost.processCommand = stopMainThread;
    EXPECT_FALSE(playoutWith(true));
    EXPECT_NEAR(seen.weightInFlight, 4.0 + double(treeSettings.mctsVirtualVisit), 1e-12);
    node(2).busy.store(0);
    expectNoTrace();

    // The other thread ends, and the playout goes on where it waited.
    searchHost.processCommand = [] { node(2).busy.store(0); };
    EXPECT_TRUE(playoutWith(true));
    EXPECT_EQ(node(1).visitCount(), 5u);
    EXPECT_EQ(node(2).visitCount(), 4u);
    EXPECT_NE(node(2).child(), nullptr);

    // No record is left for the next node's children.
    mctsTable.capacity = 3;
    poison(3);
    EXPECT_FALSE(playoutWith(false));
    expectNoTrace();
    EXPECT_TRUE(isPoisoned(3));

    // A node that is being expanded turns a walk away at once and stays its owner's.
    node(1).busy.store(1);
    EXPECT_FALSE(mctsPlayout(&node(1), line[1], 1).credited);
    EXPECT_TRUE(node(1).isBusy());
}

// While a node is expanded another thread may have visited the new child: its fourth visit is worth what the
// end of the game would be in the parent, and later ones descend.
TEST_F(Playout, ChildrenMayBeVisitedMeanwhile) {
    Position pos = rootOf("6k1/5ppp/8/3q4/8/2N5/5PPP/6K1 w - -");
    searchHost.inputWaiting = [] {
        if (node(1).visitCount() == 1) node(1).visits.store(std::uint64_t(seen.waits));
        return false;
    };
    for (const int visits : {3, 4}) {
        forgetEverything();
        seen.waits = visits;
        MctsNode& parent = plantRoot(3);
        const PlayoutResult result = mctsPlayout(&parent, pos, 2);
        EXPECT_EQ(moveText(node(1).move), "c3d5");
        EXPECT_EQ(node(1).visitCount(), std::uint64_t(visits) + 1);
        EXPECT_NEAR(node(1).visitWeight, 2.0, 1e-12);
        EXPECT_EQ(node(1).child() != nullptr, visits == 4);
        EXPECT_TRUE(visits == 4 || (result.value == 0.5 && node(1).valueSum == 2.0));
    }
}

// A search that a stop has cut short says nothing: the visit is taken back, and the sum stays as it was.
TEST_F(Playout, AStoppedSearchLeavesNoTrace) {
    std::vector<Position> line = play(Middlegame, {"c4d5"});
    treeSettings.mctsFirstBudget = treeSettings.mctsSecondBudget = 100000000;
    searchHost.inputWaiting = [] { return true; };
    searchHost.processCommand = stopMainThread;
    for (const std::uint64_t visits : {1u, 2u}) {
        forgetEverything();
        MctsNode& leaf = plantChild(plantRoot(9), line[0], "c4d5", visits, 0.1);
        EXPECT_FALSE(mctsPlayout(&node(0), line[0], 1).credited);
        EXPECT_TRUE(isMainStopped());
        expectNumbers(leaf, visits, 0.1 * double(visits));
    }
}

// Thread 0 ends a search without a flag of its own where the store is full: a worker's flag speaks for it.
TEST_F(Playout, AWorkersOwnFlagCounts) {
    makePool(2);
    std::vector<Position> line = play(Middlegame, {"c4d5"});
    threadPool.attachRoot(line[0], 1);
    threadPool.threadRecords[1].stopFlag = 1;
    for (const std::uint64_t visits : {1u, 2u, 3u}) {
        MctsNode& leaf = plantChild(plantRoot(9), line[0], "c4d5", visits, 0.1);
        EXPECT_FALSE(mctsPlayout(&node(0), line[0], 1).credited);
        EXPECT_FALSE(isMainStopped());
        expectNumbers(leaf, visits, 0.1 * double(visits));
        if (visits < 3) continue;
        EXPECT_EQ(leaf.child()->valueSum, 0.0) << "nor has a new child a value";
        EXPECT_EQ(leaf.child()->sibling(), nullptr);
    }
    makePool(1);
}
