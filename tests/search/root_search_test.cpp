// The root search: its list and how it is sorted, the best line, the windows, and the lines that are
// reported.
#include "board/legality.h"
#include "search/history.h"
#include "search/search_environment.h"

#include <algorithm>
#include <set>
#include <utility>

namespace {

struct Report {
    int index;  // of several lines, 0 for the only one
    int depth, score;
    Move first;
    int bound;
};
std::vector<Report> reports;
std::vector<int> currentMoves;

class RootSearch : public SearchTest {
   protected:
    RootSearch() {
        reports.clear();
        currentMoves.clear();
        searchHost.reportDepth = [](int depth, int score, const Move* moves, int bound) {
            reports.push_back({0, depth, score, moves[0], bound});
        };
        searchHost.reportMultiPvLine = [](int index, int depth, int score, const Move* moves) {
            reports.push_back({index, depth, score, moves[0], 0});
        };
        searchHost.reportCurrentMove = [](Move, int number) { currentMoves.push_back(number); };
    }

    // Lists the legal moves, or those named.
    static int list(const Position& pos, const std::set<std::string>& only = {}) {
        Move moves[MaxListMoves];
        const int generated = genAllMoves(pos, moves);
        int count = 0;
        Position child;
        for (int i = 0; i < generated; ++i) {
            const Move move = cleanMove(moves[i]);
            if (!makeMove(&pos, &child, move)) continue;
            if (!only.empty() && !only.contains(moveText(move))) continue;
            thread().rootMoves[count++] = {move, 0, 1};
        }
        thread().rootMoves[count].move = NoMove;
        thread().nodes = 0;
        return count;
    }
    static int search(Position& pos, int depth, int alpha = -32001, int beta = 32001) {
        return searchRoot(pos, depth, alpha, beta, pv);
    }
    static std::vector<Move> listedMoves() {
        std::vector<Move> moves;
        for (const RootMove* m = thread().rootMoves; m->move; ++m) moves.push_back(m->move);
        return moves;
    }
    static inline Move pv[PvLength];
};

TEST_F(RootSearch, TheBestMoveComesToTheFront) {
    Position pos = rootOf("4k3/pp6/8/3q4/4P3/8/PP6/4K3 w - -");
    const int count = list(pos);
    for (int depth = 2; depth <= 8; depth += 2) search(pos, depth);
    EXPECT_EQ(moveText(pv[0]), "e4d5");
    EXPECT_EQ(thread().rootMoves[0].move, pv[0]);
    EXPECT_EQ(int(listedMoves().size()), count);
    EXPECT_EQ(searchState.rootPublishedScore, reports.back().score);
    EXPECT_GT(thread().rootMoves[0].nodes, 1u);
}

// Captures keep their places; the quiet moves behind the first two are ordered by history, equal ones as they
// were.
TEST_F(RootSearch, SortsQuietMovesAmongTheirPlaces) {
    Position pos = rootOf("4k3/8/8/1p3p2/2P1P3/8/P6P/4K2R w K -");
    list(pos);
    const auto before = listedMoves();
    search(pos, 8);
    const auto after = listedMoves();
    ASSERT_EQ(before.size(), after.size());
    // The list as it stood once the best move was at its head.
    std::vector<Move> moved = before;
    const auto best = std::find(moved.begin(), moved.end(), pv[0]);
    std::rotate(moved.begin(), best, best + 1);
    int quietBefore = 65000;
    std::vector<Move> expected(moved.begin(), moved.end());
    std::vector<std::size_t> places;
    std::vector<Move> quiets;
    const auto isQuiet = [&](Move move) { return pos.board[toOf(move)] == 0 || isCastling(move); };
    for (std::size_t i = 2; i < moved.size(); ++i)
        if (isQuiet(moved[i])) places.push_back(i), quiets.push_back(moved[i]);
    ASSERT_GT(places.size(), 5u);
    const auto rank = [&](Move move) { return historyEntry(pos, quietMoveOf(pos, move)); };
    std::stable_sort(quiets.begin(), quiets.end(), [&](Move a, Move b) { return rank(a) > rank(b); });
    for (std::size_t i = 0; i < places.size(); ++i) expected[places[i]] = quiets[i];
    EXPECT_EQ(after, expected);
    for (std::size_t i = 0; i < after.size(); ++i) {
        const int score = thread().rootMoves[i].score;
        if (i < 2) {
            EXPECT_EQ(score, 65000);
        } else if (isQuiet(after[i])) {
            EXPECT_EQ(score, rank(after[i]));
            EXPECT_LE(score, quietBefore);
            quietBefore = score;
        }
    }
}

TEST_F(RootSearch, SearchesOnlyTheList) {
    Position pos = rootOf("4k3/pp6/8/3q4/4P3/8/PP6/4K3 w - -");
    ASSERT_EQ(list(pos, {"a2a3", "e1f2"}), 2);
    search(pos, 8);
    EXPECT_TRUE(moveText(pv[0]) == "a2a3" || moveText(pv[0]) == "e1f2");
    EXPECT_EQ(searchState.rootMoveIndex, 2);
}

TEST_F(RootSearch, AnEmptyListIsMateOrNothing) {
    Position mate = rootOf("R5k1/5ppp/8/8/8/8/5PPP/6K1 b - -");
    list(mate);
    EXPECT_EQ(search(mate, 4), -MateScore);
    EXPECT_EQ(pv[0], NoMove);
    EXPECT_EQ(searchState.rootPublishedScore, -MateScore);
    Position stalemate = rootOf("7k/5Q2/6K1/8/8/8/8/8 b - -");
    list(stalemate);
    EXPECT_EQ(search(stalemate, 4), 0);
}

// A pass that fails low keeps the first move's line and score, and is reported as an upper bound from depth
// 10 on.
TEST_F(RootSearch, AFailedLowPassKeepsItsFirstMove) {
    Position pos = rootOf(Middlegame);
    list(pos);
    search(pos, 2);
    const Move first = thread().rootMoves[0].move;
    reports.clear();
    EXPECT_LE(search(pos, 8, 900, 910), 900);
    EXPECT_TRUE(reports.empty());
    const int score = search(pos, 10, 900, 910);
    EXPECT_LE(score, 900);
    EXPECT_EQ(pv[0], first);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].bound, 2);
    EXPECT_EQ(reports[0].depth, 5);
    EXPECT_EQ(reports[0].score, score);
    EXPECT_EQ(searchState.rootScoreKind, 1);
}

// The next window lies around what the old best move is worth now, not around the bounds of the others.
TEST_F(RootSearch, ABetterMoveBelowTheWindowIsNoNewBest) {
    Position pos = rootOf("4k3/pp6/8/3n4/4P3/8/PP6/4K3 w - -");
    ASSERT_EQ(list(pos, {"a2a3", "e4d5"}), 2);
    if (moveText(thread().rootMoves[0].move) == "e4d5")
        std::swap(thread().rootMoves[0], thread().rootMoves[1]);
    const int score = search(pos, 2, 700, 710);
    EXPECT_EQ(moveText(pv[0]), "a2a3");
    EXPECT_EQ(moveText(thread().rootMoves[0].move), "a2a3");
    EXPECT_EQ(score, searchState.rootPublishedScore);
    EXPECT_LT(score, 0);
}

TEST_F(RootSearch, AFailHighEndsThePassWithALowerBound) {
    Position pos = rootOf(Middlegame);
    list(pos);
    EXPECT_GE(search(pos, 6, -910, -900), -900);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].bound, 1);
    EXPECT_EQ(searchState.rootMoveIndex, 1);
    EXPECT_EQ(searchState.rootScoreKind, 2);
}

TEST_F(RootSearch, EachNewBestMoveIsReported) {
    Position pos = rootOf("4k3/pp6/8/3q4/4P3/8/PP6/4K3 w - -");
    const int count = list(pos);
    std::reverse(thread().rootMoves, thread().rootMoves + count);  // the capture comes last
    searchState.bestMoveChanges = 0;
    search(pos, 4);
    ASSERT_GE(reports.size(), 2u);
    EXPECT_EQ(double(reports.size() - 1), searchState.bestMoveChanges);
    for (std::size_t i = 1; i < reports.size(); ++i) EXPECT_GT(reports[i].score, reports[i - 1].score);
    EXPECT_EQ(reports.back().first, pv[0]);
    EXPECT_EQ(reports.back().depth, 2);
    EXPECT_EQ(searchState.rootScoreKind, 0);
}

TEST_F(RootSearch, MinimalReportingAndBenchAreSilent) {
    Position pos = rootOf(Middlegame);
    list(pos);
    settings.minimalReporting = 3;
    search(pos, 6);
    EXPECT_TRUE(reports.empty());
    search(pos, 8);
    EXPECT_FALSE(reports.empty());
    settings.minimalReporting = 0;
    reports.clear();
    searchControl.benchMode = true;
    search(pos, 8);
    EXPECT_TRUE(reports.empty());
}

TEST_F(RootSearch, MovesAreNamedOnlyLateAndDeep) {
    Position pos = rootOf("4k3/8/8/8/8/8/P7/4K3 w - -");
    const int count = list(pos);
    search(pos, 12);
    EXPECT_TRUE(currentMoves.empty()) << "too early";
    searchState.searchStart = currentTime() - 4;
    search(pos, 10);
    EXPECT_TRUE(currentMoves.empty()) << "too shallow";
    settings.minimalReporting = 1;
    search(pos, 12);
    EXPECT_TRUE(currentMoves.empty()) << "any depth in the option is enough";
    settings.minimalReporting = 0;
    search(pos, 12);
    ASSERT_EQ(int(currentMoves.size()), count);
    EXPECT_EQ(currentMoves.front(), 1);
    EXPECT_EQ(currentMoves.back(), count);
}

// The complete set comes last: best first, each with its own first move, and no more lines than moves.
TEST_F(RootSearch, SeveralLinesComeBestFirst) {
    for (const int wanted : {3, 200}) {
        Position pos = rootOf(Middlegame);
        const int count = list(pos);
        forgetEverything();
        settings.multiPv = wanted;
        int score = 0;
        for (int depth = 2; depth <= 10; depth += 2) {
            reports.clear();
            score = search(pos, depth);
        }
        const std::size_t lines = std::size_t(std::min(wanted, count));
        ASSERT_GE(reports.size(), lines);
        std::set<Move> firstMoves;
        const std::size_t start = reports.size() - lines;
        for (std::size_t i = 0; i < lines; ++i) {
            const Report& report = reports[start + i];
            EXPECT_EQ(report.index, int(i) + 1);
            EXPECT_EQ(report.depth, 5);
            firstMoves.insert(report.first);
            EXPECT_LE(report.score, reports[start + std::max<std::size_t>(i, 1) - 1].score);
        }
        EXPECT_EQ(firstMoves.size(), lines);
        EXPECT_EQ(reports[start].score, score);
        EXPECT_EQ(reports[start].first, pv[0]);
        EXPECT_EQ(thread().rootMoves[0].move, pv[0]);
    }
}

// With several lines a score at the window's upper end ends the pass at once.
TEST_F(RootSearch, SeveralLinesLeaveOnAFailHigh) {
    Position pos = rootOf(Middlegame);
    list(pos);
    settings.multiPv = 3;
    EXPECT_GE(search(pos, 4, -32001, -900), -900);
    EXPECT_EQ(searchState.rootMoveIndex, 1);
}

// At the root a first repetition is no draw, a second is; and a mate on the hundredth half-move counts.
TEST_F(RootSearch, DrawsByRuleAmongRootMoves) {
    const std::vector<std::string> shuffle = {"a1b1", "g8h8", "b1a1", "h8g8"};
    std::vector<std::string> twice = shuffle;
    twice.insert(twice.end(), shuffle.begin(), shuffle.end());
    const std::string lost = "6k1/5ppp/8/3q4/8/8/8/K7 w - -";
    auto once = play(lost, shuffle);
    list(once.back());
    EXPECT_LT(search(once.back(), 2), -500);
    auto second = play(lost, twice);
    list(second.back());
    EXPECT_EQ(search(second.back(), 2), 0);
    EXPECT_EQ(moveText(pv[0]), "a1b1");

    Position mating = rootOf("6k1/5ppp/8/8/8/8/5PPP/R5K1 w - -");
    mating.halfmoveClock = 99;
    list(mating);
    EXPECT_EQ(search(mating, 2), MateScore - 1);
    EXPECT_EQ(moveText(pv[0]), "a1a8");
}

struct MateRow {
    const char* name;
    const char* fen;
};

void PrintTo(const MateRow& row, std::ostream* out) { *out << row.fen; }

class MateLine : public RootSearch, public ::testing::WithParamInterface<MateRow> {};

// Each move of the line is legal, the last one mates, and there are as many as the score says.
TEST_P(MateLine, IsWholeAndLegal) {
    Position pos = rootOf(GetParam().fen);
    list(pos);
    int score = 0;
    for (int depth = 2; depth <= 40 && score < MateBound; depth += 2) score = search(pos, depth);
    ASSERT_GE(score, MateBound);
    std::vector<std::string> moves;
    for (const Move* move = pv; *move; ++move) moves.push_back(moveText(*move));
    EXPECT_EQ(int(moves.size()), MateScore - score);
    const auto line = play(GetParam().fen, moves);
    EXPECT_TRUE(line.back().inCheck);
    EXPECT_FALSE(hasLegalMove(line.back()));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, MateLine,
    ::testing::Values(MateRow{"BackRank", "6k1/5ppp/8/8/8/8/5PPP/R5K1 w - -"},
                      MateRow{"RookAndQueen", "1Q6/1p3R2/p3k3/2p1q3/4p3/1P6/PB1PP2P/2K5 w - -"},
                      MateRow{"BlackMates", "3k1b2/pp6/3r1p2/P4npp/8/nP5P/1R3P1P/2r1N1K1 b - -"},
                      MateRow{"QuietFirst", "6k1/qp2p3/4N3/p4Q2/6r1/1P1Pp3/P1P1B3/2KR4 w - -"},
                      MateRow{"Hunt", "1rb4r/6pp/1p1P4/p1p1N1k1/P1BP1p2/1P6/1BPPQ2P/R3K2R w KQ -"},
                      MateRow{"BlackQueen", "r3k1r1/pp6/2b1p3/5pp1/1bP1q3/1P2P1PP/P3K3/2R2R2 b q -"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(RootSearch, AStopKeepsNothing) {
    Position pos = rootOf(Middlegame);
    list(pos);
    thread().stopFlag = 1;
    EXPECT_EQ(search(pos, 8), 0);
    EXPECT_TRUE(reports.empty());
}

}  // namespace
