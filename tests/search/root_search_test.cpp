// The root search: its list and how it is sorted, the best line, the windows, and the lines that are
// reported.
#include "search/search_environment.h"

#include <algorithm>
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
        return listMoves(pos, thread().rootMoves, only);
    }
    static int search(Position& pos, int depth, int alpha = -32001, int beta = 32001) {
        return searchRoot(pos, depth, alpha, beta, pv);
    }
    static Move listed(int index) { return thread().rootMoves[index].move; }
    static inline Move pv[PvLength];
};

// A pass that fails low keeps the first move's line and score, and is reported from depth 10 on.
TEST_F(RootSearch, WindowsThatFailAreReportedAsBounds) {
    Position pos = rootOf(Middlegame);
    list(pos);
    search(pos, 2);
    const Move first = listed(0);
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
    // A fail high ends the pass.
    EXPECT_GE(search(pos, 6, -910, -900), -900);
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[1].bound, 1);
    EXPECT_EQ(searchState.rootMoveIndex, 1);
    EXPECT_EQ(searchState.rootScoreKind, 2);
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
        const std::size_t lines = std::size_t(std::min(wanted, list(pos)));
        settings.multiPv = wanted;
        for (int depth = 2; depth <= 8; depth += 2) search(pos, depth);
        reports.clear();
        const int score = search(pos, 10);
        ASSERT_GE(reports.size(), lines);
        const Report* complete = &reports[reports.size() - lines];
        std::set<Move> firstMoves;
        for (std::size_t i = 0; i < lines; ++i) {
            EXPECT_EQ(complete[i].index, int(i) + 1);
            EXPECT_EQ(complete[i].depth, 5);
            EXPECT_LE(complete[i].score, i ? complete[i - 1].score : score);
            firstMoves.insert(complete[i].first);
        }
        EXPECT_EQ(firstMoves.size(), lines);
        EXPECT_EQ(complete[0].score, score);
        EXPECT_EQ(complete[0].first, pv[0]);
        EXPECT_EQ(listed(0), pv[0]);
        // A score at the window's upper end ends the pass at once.
        EXPECT_GE(search(pos, 4, -32001, -900), -900);
        EXPECT_EQ(searchState.rootMoveIndex, 1);
    }
}

}  // namespace
