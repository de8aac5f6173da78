// Facts about full-window, zero-window and quiescence nodes that can be seen from outside: bounds by mate
// distance, terminal positions, excluded moves, draws by rule, mates, and what the options take away.
#include "search/node.h"
#include "search/search_environment.h"

namespace {

class NodeSearch : public SearchTest {
   protected:
    // At ply 0 the root search, over all legal moves.
    static int full(Position pos, int depth, int ply = 1, int alpha = -32001, int beta = 32001) {
        giveAncestors(pos);
        if (ply > 0) return searchFullWindow(pos, alpha, beta, depth, ply, line, Deepening::Allowed);
        listMoves(pos, thread().rootMoves);
        return searchRoot(pos, depth, alpha, beta, line);
    }
    static int zero(Position pos, int beta, int depth, int ply = 1, Move excluded = NoMove) {
        giveAncestors(pos);
        return searchZeroWindow(pos, {.beta = beta, .depth = depth, .ply = ply, .excluded = excluded}, line);
    }
    static int quiescence(Position pos, int qDepth) {
        return searchQuiescence(pos, -32001, 32001, qDepth, 1, line);
    }
    // Nodes from ply 2 on have two records behind them.
    static void giveAncestors(Position& pos) {
        if (pos.prev) return;
        for (Position& ancestor : ancestors) {
            ancestor = pos;
            ancestor.key = 0;
            ancestor.staticEval = NoScore;
        }
        ancestors[0].prev = &ancestors[1];
        pos.prev = &ancestors[0];
    }
    static bool isStored(const Position& pos) { return transTable.probe(pos.key, data); }
    static inline Position ancestors[2];
    static inline Move line[PvLength];
    static inline TransData data;
};

TEST_F(NodeSearch, MateAndStalemateAreFinal) {
    for (const std::string& fen : {Mated, Stalemated}) {
        const Position pos = rootOf(fen);
        const int stored = fen == Mated ? -MateScore : 0, score = fen == Mated ? 3 - MateScore : 0;
        for (const bool fullWindow : {true, false}) {
            transTable.clear();
            EXPECT_EQ(fullWindow ? full(pos, 2, 3) : zero(pos, 100, 2, 3), score) << fen;
            ASSERT_TRUE(isStored(pos));
            EXPECT_TRUE(data.terminal());
            EXPECT_EQ(data.score(), stored) << "as a distance from the node";
        }
        EXPECT_EQ(full(pos, 4, 0), stored);
    }
    const Position pos = rootOf(Middlegame);
    transTable.store(pos.key, 2, 77, TerminalFlags, NoMove, 0);
    EXPECT_EQ(full(pos, 40), 77) << "an entry of such a position ends any node";
}

// The root always has a line to show, if a move there is all that fails low.
TEST_F(NodeSearch, AFailedLowNodeKeepsALineAtPly1Alone) {
    const Position pos = rootOf(Middlegame);
    for (const int ply : {1, 2}) {
        transTable.clear();
        EXPECT_LE(full(pos, 6, ply, 900, 910), 900);
        EXPECT_EQ(line[0] != NoMove, ply == 1);
    }
}

// The lost side may repeat: once is a draw inside the tree, but at the root and at ply 1 it takes two.
TEST_F(NodeSearch, RepetitionsDrawByPly) {
    const auto chain = play("6k1/5ppp/8/3q4/8/8/8/K7 w - -",
                            {"a1b1", "g8h8", "b1a1", "h8g8", "a1b1", "g8h8", "b1a1", "h8g8"});
    for (const std::size_t plies : {4u, 8u})
        for (const int ply : {0, 1, 2}) {
            SCOPED_TRACE(testing::Message() << plies << " plies, at ply " << ply);
            const Position& pos = chain[plies];
            const bool drawn = plies == 8 || ply == 2;
            transTable.clear();
            const int score = full(pos, 4, ply);
            EXPECT_TRUE(drawn ? score == 0 && moveText(line[0]) == "a1b1" : score < -500) << score;
            if (ply == 0) continue;
            transTable.clear();
            EXPECT_EQ(zero(pos, 0, 4, ply) == 0, drawn);
            EXPECT_EQ(isStored(pos), !drawn) << "a draw by rule isn't for the table";
        }
}

// On the hundredth half-move a mate still counts; every other quiet move draws.
TEST_F(NodeSearch, AMateOnTheHundredthHalfMoveCounts) {
    Position pos = rootOf("6k1/5ppp/8/8/8/8/5PPP/R5K1 w - -");
    Position other = rootOf("6k1/5pp1/7p/8/8/8/8/R5K1 w - -");
    other.halfmoveClock = 99;
    for (const int ply : {0, 1}) {
        transTable.clear();
        pos.halfmoveClock = 99;
        EXPECT_EQ(full(pos, 4, ply), MateScore - 1 - ply);
        EXPECT_EQ(moveText(line[0]), "a1a8");
        EXPECT_EQ(zero(pos, MateScore - 2, 8), MateScore - 2);
        transTable.clear();
        pos.halfmoveClock = 100;
        EXPECT_LT(full(pos, 4, ply), MateBound) << "a half-move too late";
        EXPECT_EQ(full(other, 4, ply), 0) << "no pawn to push and no mate";
    }
}

TEST_F(NodeSearch, PruningOptionsSaveNodes) {
    const auto nodesFor = [](bool lmr, bool nullMove) {
        forgetEverything();
        searchState.useLmr = lmr;
        searchState.nullMovePruning = nullMove;
        full(rootOf(Middlegame), 12);
        return nodes();
    };
    const auto both = nodesFor(true, true);
    EXPECT_EQ(both, nodesFor(true, true)) << "one thread repeats itself exactly";
    EXPECT_LT(both, nodesFor(false, true));
    EXPECT_LT(both, nodesFor(true, false));
}

TEST_F(NodeSearch, NothingIsKeptAfterAStop) {
    const Position pos = rootOf(Middlegame);
    thread().stopFlag = 1;
    for (const int ply : {0, 1}) EXPECT_EQ(full(pos, 12, ply), 0);
    EXPECT_EQ(zero(pos, 10, 12), 0);
    EXPECT_EQ(quiescence(pos, 0), 0);
    EXPECT_EQ(nodes(), 0u);
    EXPECT_FALSE(isStored(pos));
}

// Lines may not grow for ever: from a fixed ply on a node answers with its static score.
TEST_F(NodeSearch, TheLastPlyAnswersAtOnce) {
    const Position pos = rootOf(Middlegame);
    Position same = pos;
    const int stand = evaluate(same, -OpenEvalBound, OpenEvalBound);
    EXPECT_EQ(full(pos, 20, MaxPly), stand);
    EXPECT_EQ(zero(pos, stand + 50, 20, MaxPly), stand);
    EXPECT_EQ(full(rootOf(Mated), 20, MaxPly), 0);
    EXPECT_EQ(nodes(), 0u);
}

// With three threads a worker puts off every move but the first that another thread is searching, and makes
// it again later; thread 0 puts nothing off, and neither does a tree search.
TEST_F(NodeSearch, AWorkerPutsOffWhatOthersSearch) {
    const auto usePool = [](int threads) {
        settings.threads = threads;
        threadPool.restart();
    };
    const auto nodesFor = [](int threadIndex, bool marked) {
        SearchThread& searcher = threadPool.threadRecords[threadIndex];
        const Position mine = rootOf(StartFen);
        Position pos = mine;
        threadPool.attachRoot(pos, threadIndex);
        pos.evalCache = mine.evalCache;  // the worker may still be allocating its own
        pos.pawnHash = mine.pawnHash;
        pos.matHash = mine.matHash;
        transTable.clear();
        searcher.resetHistory();
        searcher.clearKillers();
        searcher.stopFlag = 0;
        RootMove moves[MaxListMoves];
        const int count = listMoves(mine, moves);
        std::vector<Position> children(std::size_t(count), mine);
        for (int i = 0; i < count; ++i) {
            makeMove(&mine, &children[std::size_t(i)], moves[i].move);
            if (marked) transTable.markBusy(children[std::size_t(i)].key, true);
        }
        searcher.nodes = 0;
        searchFullWindow(pos, -32001, 32001, 2, 1, line, Deepening::Allowed);
        const bool sharesOut =
            threadPool.threadCount > 2 && !searchState.treeSearchActive;  // and takes the marks away
        for (const Position& child : children)
            EXPECT_EQ(isStored(child) && data.busy(), marked && !sharesOut);
        return std::uint64_t(searcher.nodes);
    };
    usePool(3);
    EXPECT_EQ(nodesFor(1, true), nodesFor(1, false) + 19);
    EXPECT_EQ(nodesFor(0, true), nodesFor(0, false));
    searchState.treeSearchActive = true;
    const auto inTree = nodesFor(1, true);
    searchState.treeSearchActive = false;
    EXPECT_EQ(inTree, nodesFor(1, false));
    usePool(2);
    EXPECT_EQ(nodesFor(1, true), nodesFor(0, true)) << "two threads share nothing out";
    usePool(1);
}

}  // namespace
