// What the quiescence search sees, what it passes over, and what it leaves in the table.
#include "eval/evaluate.h"
#include "search/search_environment.h"

namespace {

class Quiescence : public SearchTest {
   protected:
    struct Result {
        int score;
        std::string best;
    };
    static Result search(const std::string& fen, int qDepth = 0, int alpha = -32001, int beta = 32001) {
        Position pos = rootOf(fen);
        Move pv[PvLength];
        const int score = searchQuiescence(pos, alpha, beta, qDepth, 1, pv);
        return {score, moveText(pv[0])};
    }
    static int standOf(const std::string& fen) {
        Position pos = rootOf(fen);
        return evaluate(pos, -OpenEvalBound, OpenEvalBound);
    }
    static TransData entryOf(const std::string& fen) {
        TransData data;
        EXPECT_TRUE(transTable.probe(rootOf(fen).key, data)) << fen;
        return data;
    }
};

TEST_F(Quiescence, TakesAHangingQueen) {
    const std::string fen = "4k3/pp6/8/3q4/4P3/8/PP6/4K3 w - -";
    const Result result = search(fen);
    EXPECT_EQ(result.best, "e4d5");
    EXPECT_GT(result.score, standOf(fen) + 800);
}

TEST_F(Quiescence, SeesTheRecapture) {
    const std::string fen = "4k3/pp6/4p3/3p4/8/8/PP1Q4/4K3 w - -";
    const Result result = search(fen);
    EXPECT_NE(result.best, "d2d5");
    EXPECT_LT(result.score, standOf(fen) + 100);
}

TEST_F(Quiescence, CountsThePromotionThatComesNext) {
    const std::string fen = "6k1/P4ppp/8/8/8/8/1r3PPP/6K1 w - -";
    const Result result = search(fen);
    EXPECT_EQ(result.best, "a7a8q");
    EXPECT_GT(result.score, standOf(fen) + 150);
}

// Quiet checks are tried at the first ply alone.
TEST_F(Quiescence, FindsAMateByAQuietCheckAtTheFirstPly) {
    const std::string fen = "6k1/5ppp/8/8/8/8/5PPP/R5K1 w - -";
    EXPECT_EQ(search(fen).score, MateScore - 2);
    transTable.clear();
    EXPECT_LT(search(fen, -2).score, MateBound);
}

// Evasions have no depth cap, so that a mate is a mate however deep.
TEST_F(Quiescence, InCheckItNeverStandsPat) {
    const std::string mated = "R5k1/5ppp/8/8/8/8/5PPP/6K1 b - -";
    EXPECT_EQ(search(mated, -100).score, 1 - MateScore);
    EXPECT_EQ(entryOf(mated).bound(), ExactBound);
    EXPECT_FALSE(entryOf(mated).terminal());
    // Only taking the rook saves the game.
    EXPECT_EQ(search("R5k1/2n2ppp/8/8/8/8/5PPP/6K1 b - -", -100).best, "c7a8");
}

TEST_F(Quiescence, StandsPatBelowTheLastDepth) {
    const std::string fen = "4k3/pp6/8/3q4/4P3/8/PP6/4K3 w - -";
    EXPECT_EQ(search(fen, -60).score, standOf(fen));
    EXPECT_EQ(nodes(), 0u);
}

// Deep down only captures where the opponent has just moved are tried.
TEST_F(Quiescence, TriesOnlyRecapturesDeepDown) {
    auto chain = play("4k3/pp6/8/q2P4/1P2P3/8/8/4K3 b - -", {"a5d5"});
    Move pv[PvLength];
    Position pos = chain[1];
    searchQuiescence(pos, -32001, 32001, -18, 1, pv);
    EXPECT_EQ(moveText(pv[0]), "e4d5");
    auto elsewhere = play("4k3/pp6/8/q2P4/1P2P3/8/8/4K3 b - -", {"e8e7"});
    pos = elsewhere[1];
    transTable.clear();
    searchQuiescence(pos, -32001, 32001, -18, 1, pv);
    EXPECT_EQ(pv[0], NoMove);
    transTable.clear();
    searchQuiescence(pos, -32001, 32001, -16, 1, pv);
    EXPECT_EQ(moveText(pv[0]), "b4a5");
}

TEST_F(Quiescence, AHopelessScoreReturnsTheBoundItself) {
    const std::string fen = "4k3/pp3q2/8/8/8/8/PP6/4K3 w - -";
    const int alpha = standOf(fen) + 1201;
    EXPECT_EQ(search(fen, 0, alpha, alpha + 1).score, alpha);
    EXPECT_EQ(nodes(), 0u);
    EXPECT_LT(search(fen, 0, alpha - 300, alpha - 299).score, alpha - 300);
}

// A pawn's price can't reach the window, but the opponent's last pawn is worth the try.
TEST_F(Quiescence, NeverPassesOverTheLastPawn) {
    const auto triesFor = [](const std::string& fen) {
        forgetEverything();
        const int alpha = standOf(fen) + 500;
        search(fen, -2, alpha, alpha + 1);
        return nodes();
    };
    EXPECT_EQ(triesFor("4k3/p7/8/8/4p3/8/2N5/2N1K2R w - -"), 0u) << "nothing to take";
    EXPECT_EQ(triesFor("4k3/p7/8/8/4p3/2N5/8/4K2R w - -"), 0u);
    EXPECT_GT(triesFor("4k3/8/8/8/4p3/2N5/8/4K2R w - -"), 0u);
    EXPECT_GT(triesFor("4k3/p7/8/8/8/8/4p3/2N1K2R w - -"), 0u) << "about to promote";
}

TEST_F(Quiescence, KeepsABoundOfAQuietPosition) {
    const std::string fen = "4k3/pp6/8/8/8/8/PP6/4K3 w - -";
    const int stand = standOf(fen);
    EXPECT_EQ(search(fen, -2).score, stand);
    EXPECT_EQ(entryOf(fen).depth(), -2);
    EXPECT_EQ(entryOf(fen).bound(), ExactBound);
    transTable.clear();
    EXPECT_EQ(search(fen, 0, stand + 20, stand + 21).score, stand);
    EXPECT_EQ(entryOf(fen).depth(), 0);
    EXPECT_EQ(entryOf(fen).bound(), UpperBound);
}

// An entry is trusted from depth 0 on at the first ply, and from -2 on below.
TEST_F(Quiescence, TrustsTheTableByDepth) {
    const std::string fen = "4k3/pp6/8/8/8/8/PP6/4K3 w - -";
    transTable.store(rootOf(fen).key, -2, 777, ExactBound, NoMove, 0);
    EXPECT_EQ(search(fen, -2).score, 777);
    EXPECT_NE(search(fen, 0).score, 777);
    transTable.clear();
    transTable.store(rootOf(fen).key, 0, 777, ExactBound, NoMove, 0);
    EXPECT_EQ(search(fen, 0).score, 777);
}

TEST_F(Quiescence, ReturnsNothingAfterAStop) {
    const std::string fen = "4k3/pp6/8/3q4/4P3/8/PP6/4K3 w - -";
    thread().stopFlag = 1;
    EXPECT_EQ(search(fen).score, 0);
    TransData data;
    EXPECT_FALSE(transTable.probe(rootOf(fen).key, data));
}

}  // namespace
