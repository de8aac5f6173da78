// Facts about full-window and zero-window nodes that can be seen from outside: bounds by mate distance,
// terminal positions, excluded moves, draws by rule, mates, and what the options take away.
#include "search/history.h"
#include "search/node.h"
#include "search/search_environment.h"

namespace {

class NodeSearch : public SearchTest {
   protected:
    static int full(Position pos, int depth, int ply = 1, int alpha = -32001, int beta = 32001) {
        giveAncestors(pos);
        return searchFullWindow(pos, alpha, beta, depth, ply, line, false);
    }
    static int zero(Position pos, int beta, int depth, int ply = 1, Move excluded = NoMove) {
        giveAncestors(pos);
        return searchZeroWindow(pos, beta, depth, ply, line, excluded, false, false);
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
    static inline Position ancestors[2];
    static inline Move line[PvLength];

    // A chain of two shuffling moves each with one more to come, which would repeat the position after the
    // first.
    static std::vector<Position> shuffled() {
        return play("6k1/5ppp/8/3q4/8/8/8/K7 w - -", {"a1b1", "g8h8", "b1a1", "h8g8"});
    }
};

TEST_F(NodeSearch, TheWindowEndsWhereMatesDo) {
    const Position pos = rootOf(Middlegame);
    EXPECT_EQ(full(pos, 20, 5, MateScore - 6, MateScore - 1), MateScore - 6);
    EXPECT_EQ(full(pos, 20, 5, -MateScore, 5 - MateScore), 5 - MateScore);
    EXPECT_EQ(zero(pos, MateScore - 5, 20, 5), MateScore - 6);
    EXPECT_EQ(nodes(), 0u);
}

TEST_F(NodeSearch, MateAndStalemateAreFinal) {
    const Position mate = rootOf("R5k1/5ppp/8/8/8/8/5PPP/6K1 b - -");
    const Position stalemate = rootOf("7k/5Q2/6K1/8/8/8/8/8 b - -");
    EXPECT_EQ(full(mate, 2, 3), 3 - MateScore);
    EXPECT_EQ(full(stalemate, 2, 3), 0);
    TransData data;
    ASSERT_TRUE(transTable.probe(mate.key, data));
    EXPECT_TRUE(data.terminal());
    EXPECT_EQ(data.score(), -MateScore) << "as a distance from the node";
    ASSERT_TRUE(transTable.probe(stalemate.key, data));
    EXPECT_TRUE(data.terminal());
    transTable.clear();
    EXPECT_EQ(zero(mate, 0, 2, 3), 3 - MateScore);
    EXPECT_EQ(zero(stalemate, 100, 2, 3), 0);
    ASSERT_TRUE(transTable.probe(mate.key, data));
    EXPECT_TRUE(data.terminal());
}

// A full-window node believes a table score only of a position without moves, but that one at any depth.
TEST_F(NodeSearch, OnlyTerminalEntriesEndAFullWindowNode) {
    const Position pos = rootOf(Middlegame);
    transTable.store(pos.key, 2, 77, TerminalFlags, NoMove, 0);
    EXPECT_EQ(full(pos, 40), 77);
    EXPECT_EQ(nodes(), 0u);
    transTable.clear();
    transTable.store(pos.key, 40, 777, ExactBound, NoMove, 0);
    EXPECT_NE(full(pos, 4), 777);
    EXPECT_GT(nodes(), 0u);
    transTable.store(pos.key, 40, 777, ExactBound, NoMove, 0);
    EXPECT_EQ(zero(pos, 0, 40), 777) << "a zero-window node believes it";
}

// A bound counts only on its own side of the window.
TEST_F(NodeSearch, ABoundMustFitTheWindow) {
    const Position pos = rootOf(Middlegame);
    transTable.store(pos.key, 40, 300, LowerBound, NoMove, 0);
    EXPECT_EQ(zero(pos, 250, 40), 300);
    EXPECT_EQ(nodes(), 0u);
    zero(pos, 350, 4);
    EXPECT_GT(nodes(), 0u);
}

TEST_F(NodeSearch, AQuietHashMoveThatCutsOffIsLearnt) {
    const auto chain = play(Middlegame, {"h2h3"});
    const Move quiet = moveOf(chain[1], "b7b6");
    transTable.store(chain[1].key, 10, 500, LowerBound, quiet, 0);
    EXPECT_EQ(zero(chain[1], 100, 8), 500);
    EXPECT_EQ(thread().killers[1].first, quiet);
    EXPECT_EQ(counterMoveOf(thread(), chain[1]), quiet);
    EXPECT_EQ(historyEntry(chain[1], quietMoveOf(chain[1], quiet)), 16000 + historyBonus(8));
}

TEST_F(NodeSearch, AnExcludedMoveIsNotPlayed) {
    const Position pos = rootOf("4k3/pp6/8/3q4/4P3/8/PPP2PPP/4K3 w - -");
    const Move winning = moveOf(pos, "e4d5");
    EXPECT_GE(zero(pos, 20, 8), 20);
    EXPECT_EQ(line[0], winning);
    transTable.clear();
    EXPECT_EQ(zero(pos, 20, 8, 1, winning), 19) << "no better than the window";
    TransData data;
    EXPECT_FALSE(transTable.probe(pos.key, data)) << "the table keeps such a search apart";
}

// The only legal move being excluded is no mate.
TEST_F(NodeSearch, NothingLeftButTheExcludedMoveIsNoMate) {
    const Position pos = rootOf("R5k1/2n2ppp/8/8/8/8/5PPP/6K1 b - -");
    EXPECT_EQ(zero(pos, -500, 8, 1, moveOf(pos, "c7a8")), -501);
}

// The root always has a line to show, if a move there is all that fails low.
TEST_F(NodeSearch, AFailedLowNodeKeepsALineAtPly1Alone) {
    const Position pos = rootOf(Middlegame);
    EXPECT_LE(full(pos, 6, 1, 900, 910), 900);
    EXPECT_NE(line[0], NoMove);
    transTable.clear();
    EXPECT_LE(full(pos, 6, 2, 900, 910), 900);
    EXPECT_EQ(line[0], NoMove);
}

// The lost side may repeat: once is a draw inside the tree, but not among the moves at ply 1.
TEST_F(NodeSearch, OneRepetitionDrawsFromPly2On) {
    const auto chain = shuffled();
    EXPECT_LT(full(chain[4], 4, 1), -500);
    transTable.clear();
    EXPECT_EQ(full(chain[4], 4, 2), 0);
    EXPECT_EQ(moveText(line[0]), "a1b1");
    transTable.clear();
    EXPECT_LT(zero(chain[4], 0, 4, 1), 0);
    transTable.clear();
    EXPECT_EQ(zero(chain[4], 0, 4, 2), 0);
    TransData data;
    EXPECT_FALSE(transTable.probe(chain[4].key, data)) << "a draw by rule isn't for the table";
}

TEST_F(NodeSearch, TwoRepetitionsDrawAtPly1Too) {
    const auto chain = play("6k1/5ppp/8/3q4/8/8/8/K7 w - -",
                            {"a1b1", "g8h8", "b1a1", "h8g8", "a1b1", "g8h8", "b1a1", "h8g8"});
    EXPECT_EQ(full(chain[8], 4, 1), 0);
}

// On the hundredth half-move a mate still counts; every other quiet move draws.
TEST_F(NodeSearch, AMateOnTheHundredthHalfMoveCounts) {
    Position pos = rootOf("6k1/5ppp/8/8/8/8/5PPP/R5K1 w - -");
    pos.halfmoveClock = 99;
    EXPECT_EQ(full(pos, 4), MateScore - 2);
    EXPECT_EQ(moveText(line[0]), "a1a8");
    transTable.clear();
    EXPECT_EQ(zero(pos, MateScore - 2, 8), MateScore - 2);
    pos.halfmoveClock = 100;
    transTable.clear();
    EXPECT_LT(full(pos, 4), MateBound) << "a half-move too late";
    Position other = rootOf("6k1/5pp1/7p/8/8/8/8/R5K1 w - -");
    other.halfmoveClock = 99;
    EXPECT_EQ(full(other, 4), 0) << "no pawn to push and no mate";
}

// The line of a mate is whole, and its score counts every ply.
TEST_F(NodeSearch, AMateShowsItsWholeLine) {
    const Position pos = rootOf("7k/8/8/8/8/8/R7/1R4K1 w - -");  // Ra7, then Rb8
    int score = 0;
    for (int depth = 4; depth <= 12; depth += 2) score = full(pos, depth);
    ASSERT_EQ(score, MateScore - 4);
    int length = 0;
    while (line[length]) ++length;
    EXPECT_EQ(length, 3);
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

TEST_F(NodeSearch, ReturnsNothingAfterAStop) {
    thread().stopFlag = 1;
    EXPECT_EQ(full(rootOf(Middlegame), 12), 0);
    EXPECT_EQ(zero(rootOf(Middlegame), 10, 12), 0);
    EXPECT_EQ(nodes(), 0u);
}

// Lines may not grow for ever: from a fixed ply on a node answers with its static score.
TEST_F(NodeSearch, TheLastPlyAnswersAtOnce) {
    Position pos = rootOf(Middlegame);
    const int stand = evaluate(pos, -OpenEvalBound, OpenEvalBound);
    EXPECT_EQ(full(pos, 20, MaxPly), stand);
    EXPECT_EQ(zero(pos, stand + 50, 20, MaxPly), stand);
    EXPECT_EQ(full(rootOf("R5k1/5ppp/8/8/8/8/5PPP/6K1 b - -"), 20, MaxPly), 0);
    EXPECT_EQ(nodes(), 0u);
}

TEST_F(NodeSearch, TheTopOfALeafIsTheSameSearch) {
    const Position pos = rootOf(Middlegame);
    const int plain = full(pos, 8);
    const auto plainNodes = nodes();
    forgetEverything();
    Position leaf = pos;
    EXPECT_EQ(treeAlphaBeta(leaf, -32001, 32001, 8, 1, line), plain);
    EXPECT_EQ(nodes(), plainNodes);
    // From depth 12 on the plain search looks for a first move before, and the leaf doesn't.
    forgetEverything();
    full(pos, 12);
    const auto deepened = nodes();
    forgetEverything();
    treeAlphaBeta(leaf, -32001, 32001, 12, 1, line);
    EXPECT_NE(nodes(), deepened);
}

// With three threads a worker puts off every move but the first that another thread is searching, and makes
// it again later; thread 0 puts nothing off, and neither does a tree search.
TEST_F(NodeSearch, AWorkerPutsOffWhatOthersSearch) {
    settings.threads = 3;
    ThreadPool::restart();
    const auto nodesFor = [](int threadIndex, bool marked) {
        SearchThread& searcher = ThreadPool::threadRecords[threadIndex];
        const Position mine = rootOf(StartFen);
        Position pos = mine;
        ThreadPool::attachRoot(pos, threadIndex);
        pos.evalCache = mine.evalCache;  // the worker may still be allocating its own
        pos.pawnHash = mine.pawnHash;
        pos.matHash = mine.matHash;
        transTable.clear();
        searcher.resetHistory();
        searcher.clearKillers();
        searcher.stopFlag = 0;
        searcher.nodes = 0;
        std::vector<Key> children;
        Move moves[MaxListMoves];
        const int count = genAllMoves(pos, moves);
        for (int i = 0; i < count; ++i) {
            Position child;
            makeMove(&pos, &child, cleanMove(moves[i]));
            children.push_back(child.key);
            if (marked) transTable.markBusy(child.key, true);
        }
        searcher.nodes = 0;
        searchFullWindow(pos, -32001, 32001, 2, 1, line, false);
        for (const Key key : children) {
            TransData data;
            if (transTable.probe(key, data)) {
                EXPECT_FALSE(data.busy());
            }
        }
        return std::uint64_t(searcher.nodes);
    };
    EXPECT_EQ(nodesFor(1, true), nodesFor(1, false) + 19);
    EXPECT_EQ(nodesFor(0, true), nodesFor(0, false));
    treeSearchActive = true;
    const auto inTree = nodesFor(1, false);
    treeSearchActive = false;
    EXPECT_EQ(inTree, nodesFor(1, false));
    settings.threads = 2;
    ThreadPool::restart();
    const auto withTwo = nodesFor(1, false);
    EXPECT_EQ(withTwo, nodesFor(0, false));
    settings.threads = 1;
    ThreadPool::restart();
}

TEST_F(NodeSearch, EnemySpansAreWideAndBeginAheadOfThePawn) {
    const Position pos = rootOf("4k3/3p4/8/8/8/8/8/4K3 w - -");
    const Bitboard files = fileMask[2] | fileMask[3] | fileMask[4];
    EXPECT_EQ(enemyPawnSpans(pos),
              files & (rankMask(5) | rankMask(4) | rankMask(3) | rankMask(2) | rankMask(1) | rankMask(0)));
    const Position edge = rootOf("4k3/8/8/8/8/P7/8/4K3 b - -");
    EXPECT_EQ(enemyPawnSpans(edge), (fileMask[0] | fileMask[1]) & ~(rankMask(0) | rankMask(1) | rankMask(2)));
}

}  // namespace
