// The root filter: it may drop moves, but never the result, and what it keeps must win within the fifty-move
// rule.
#include "endgame/tb_root.h"

#include "endgame/table_files.h"
#include "endgame/tb_probe.h"
#include "support/board_environment.h"

#include <algorithm>

struct TbRoot : testing::Test {
    void SetUp() override {
        REQUIRE_SHARED_DATA();
        initTables(realTables().string());
    }
    void TearDown() override { tbInit(""); }

    RootMove list[MaxListMoves];
    int score = 12345;
    int probeDtz(const std::string& fen, int clock = 0) {
        Position pos = positionOf(fen);
        pos.halfmoveClock = std::uint16_t(clock);
        return tbRootProbeDtz(pos, list, &score);
    }
    int probeWdl(const std::string& fen) {
        Position pos = positionOf(fen);
        return tbRootProbeWdl(pos, list, &score);
    }
};

static const char* const QueenMates = "8/8/8/8/8/2k5/1q6/K7 w - -";

TEST_F(TbRoot, KeepsTheResultOfEveryListedPosition) {
    int losingMovesDropped = 0;
    for (const ListedResult& row : listedResults()) {
        Position pos = positionOf(row.fen);
        if (pos.pieceCount > 4) continue;  // not all children of the five-man table are there
        const int count = tbRootProbeDtz(pos, list, &score);
        EXPECT_EQ(count == 0, legalMoves(pos).empty()) << row.fen;
        EXPECT_EQ(list[count].move, NoMove);
        Position child;
        for (int i = 0; i < count; ++i) {
            ASSERT_TRUE(makeChild(pos, child, list[i].move));
            int success;
            EXPECT_EQ(-tbProbeWdl(child, &success), row.wdl) << row.fen;
            EXPECT_TRUE(i == 0 || row.wdl <= 0 || list[i].score <= list[i - 1].score)
                << "slowest first: " << row.fen;
        }
        if (row.wdl != 0) continue;
        int drawing = 0, success;
        for (const Move move : legalMoves(pos)) {
            makeChild(pos, child, move);
            drawing += tbProbeWdl(child, &success) == 0;
        }
        EXPECT_EQ(count, drawing) << row.fen;
        losingMovesDropped += int(legalMoves(pos).size()) - drawing;
    }
    EXPECT_GT(losingMovesDropped, 0);
}

TEST_F(TbRoot, ScoresByResultAndClock) {
    const std::string cursed = "8/8/8/1N2k3/p7/8/K4N2/8 w - -", queen = "8/8/8/2q5/5K2/8/8/2k5 b - -";
    struct Row {
        std::string fen;
        int clock, score;
    };
    const Row rows[] = {{queen, 0, 31799},
                        {queen, 87, 31799},  // 13 plies, the last of them on ply 100
                        {queen, 88, (200 - 88 - 13) / 2},
                        {"3r4/8/8/8/6K1/k7/8/8 w - -", 0, -31799},
                        {"3r4/8/8/8/6K1/k7/8/8 w - -", 73, -(200 - 73 - 28) / 2},
                        {cursed, 0, 2},
                        {"8/kP6/8/8/8/8/8/3b1K2 b - -", 50, 0}};
    for (const Row& row : rows) {
        EXPECT_GT(probeDtz(row.fen, row.clock), 0) << row.fen;
        EXPECT_EQ(score, row.score) << row.fen << " at " << row.clock;
    }
}

TEST_F(TbRoot, LimitsWinsByTheClock) {
    const std::string fen = "8/8/8/8/4k3/8/1K6/3r4 b - -";
    Position pos = positionOf(fen);
    int success;
    const int dtz = tbProbeDtz(pos, &success);
    ASSERT_GT(dtz, 1);
    for (const int spare : {0, 1, 2, 5, 6, 40}) {  // plies beyond the fastest win
        const int clock = 99 - dtz - spare;
        const int count = probeDtz(fen, clock);
        int expected = 0;
        Position child;
        for (const Move move : legalMoves(pos)) {
            makeChild(pos, child, move);
            const int c = tbProbeDtz(child, &success);
            if (c >= 0) continue;
            const bool mates = child.inCheck && legalMoves(child).empty();
            expected += (mates ? 1 : 1 - c) <= dtz + spare;
        }
        EXPECT_EQ(count, expected) << spare;
        EXPECT_GT(count, 0);
        EXPECT_LE(list[0].score, dtz + spare);
    }
    // Too late for the rule: only the fastest stay.
    const int count = probeDtz(fen, 99);
    for (int i = 0; i < count; ++i) EXPECT_EQ(list[i].score, list[0].score);
}

TEST_F(TbRoot, MateIsAWinInOne) {
    const std::string fen = "8/8/8/8/8/1k6/7q/K7 b - -";
    ASSERT_GT(probeDtz(fen, 98), 0);
    for (int i = 0; list[i].move; ++i) {
        EXPECT_EQ(list[i].score, 1);
        Position child;
        ASSERT_TRUE(makeChild(positionOf(fen), child, list[i].move));
        EXPECT_TRUE(child.inCheck && legalMoves(child).empty());
    }
}

TEST_F(TbRoot, LosersKeepAllMovesOnlyWhileTheRuleIsFar) {
    const std::string fen = "3r4/8/8/8/6K1/k7/8/8 w - -";
    const std::size_t all = legalMoves(positionOf(fen)).size();
    EXPECT_EQ(std::size_t(probeDtz(fen, 0)), all);
    const int count = probeDtz(fen, 60);
    EXPECT_GT(count, 0);
    EXPECT_LT(std::size_t(count), all);
    for (int i = 0; i < count; ++i) EXPECT_EQ(list[i].score, list[0].score) << "the longest resistance";
}

TEST_F(TbRoot, ARepetitionLeavesOnlyTheFastestWins) {
    const std::string fen = "8/8/8/8/4k3/8/7r/K7 b - -";
    const std::vector<std::string> circle = {"h2h3", "a1a2", "h3h2", "a2a1"};
    const std::vector<Position> line = playLine(fen, circle);
    EXPECT_FALSE(positionHasRepeated(line[3]));
    EXPECT_TRUE(positionHasRepeated(line[4]));
    Position fresh = line[0], repeated = line[4];
    const int all = tbRootProbeDtz(fresh, list, &score);
    const int fastest = tbRootProbeDtz(repeated, list, &score);
    EXPECT_GT(fastest, 0);
    EXPECT_LT(fastest, all);
    for (int i = 0; i < fastest; ++i) EXPECT_EQ(list[i].score, list[0].score);
}

// A capture ends the walk: what came before it can't come again.
TEST_F(TbRoot, ARepetitionBeforeACaptureIsForgotten) {
    const std::vector<Position> line = playLine(
        "8/8/8/8/4k3/8/P6r/K7 b - -", {"h2h3", "a1b1", "h3h2", "b1a1", "h2a2", "a1b1", "e4d4", "b1a2"});
    EXPECT_TRUE(positionHasRepeated(line[4]));
    EXPECT_FALSE(positionHasRepeated(line[7]));
    EXPECT_FALSE(positionHasRepeated(line[8]));
}

TEST_F(TbRoot, FallsBackOnResultsWithoutDistances) {
    const SettingsGuard guard;
    const TableFolder folder;
    for (const std::string name : {"KQvK", "KRvK", "KQvKR"}) folder.copyReal(name + ".rtbw");
    initTables(folder.path());
    const std::string fen = "8/8/8/2Q5/5k2/8/6r1/2K5 w - -";
    EXPECT_EQ(probeDtz(fen), 0);
    const int count = probeWdl(fen);
    EXPECT_GT(count, 0);
    EXPECT_EQ(score, 31799);
    EXPECT_LT(std::size_t(count), legalMoves(positionOf(fen)).size());
    Position child;
    for (int i = 0; i < count; ++i) {
        ASSERT_TRUE(makeChild(positionOf(fen), child, list[i].move));
        int success;
        EXPECT_EQ(tbProbeWdl(child, &success), -2);
        EXPECT_EQ(list[i].score, 2);
    }
}

TEST_F(TbRoot, CountsSpoiledWinsByTheOption) {
    const SettingsGuard guard;
    const std::string cursed = "8/8/8/1N2k3/p7/8/K4N2/8 w - -";
    for (const bool rule : {true, false}) {
        settings.syzygy50MoveRule = rule;
        ASSERT_GT(probeWdl(cursed), 0);
        EXPECT_EQ(score, 2) << "the caller's to raise";
        for (int i = 0; list[i].move; ++i) EXPECT_EQ(list[i].score, rule ? 1 : 2);
    }
}

TEST_F(TbRoot, RefusesWhatItCannotJudge) {
    EXPECT_EQ(probeDtz("8/8/8/4k3/8/8/8/R3K3 w Q -"), 0) << "castling";
    EXPECT_EQ(probeWdl("8/8/8/4k3/8/8/8/R3K3 w Q -"), 0) << "castling";
    EXPECT_EQ(probeDtz(QueenMates), 0) << "no move";
    EXPECT_EQ(probeDtz("8/8/8/2qqq3/5K2/8/8/2k5 b - -"), 0) << "no table";
    EXPECT_EQ(probeWdl("8/8/8/2qqq3/5K2/8/8/2k5 b - -"), 0) << "no table";
}

// The winner always takes the slowest move that the filter leaves, the loser resists as long as the tables
// allow: mate must come before the rule.
TEST_F(TbRoot, EvenTheSlowestWinEndsInMate) {
    const char* const starts[] = {"8/8/8/4k3/8/8/8/KQ6 w - -",   "8/8/8/8/4k3/8/8/KR6 w - -",
                                  "8/8/8/7k/8/8/P7/K7 w - -",    "8/8/8/4k3/8/8/8/KBB5 w - -",
                                  "8/8/8/4k3/8/8/8/KBN5 w - -",  "8/8/8/4k3/8/7r/8/KQ6 w - -",
                                  "8/8/8/8/4k3/8/PP6/K7 w - -",  "8/4P3/8/8/2k5/7p/8/K7 w - -",
                                  "8/8/8/8/4k3/8/7p/K1Q5 w - -", "8/8/8/4k3/8/8/P7/KN6 w - -"};
    for (const std::string start : starts) {
        std::vector<Position> game(600);
        game[0] = positionOf(start);
        ASSERT_TRUE(isPlayable(game[0])) << start;
        ASSERT_GT(tbRootProbeDtz(game[0], list, &score), 0) << start;
        ASSERT_EQ(score, 31799) << start;
        std::size_t ply = 0;
        for (; ply + 1 < game.size(); ++ply) {
            Position& pos = game[ply];
            if (legalMoves(pos).empty()) break;
            ASSERT_LT(pos.halfmoveClock, 100) << start;
            const int count = tbRootProbeDtz(pos, list, &score);
            ASSERT_GT(count, 0) << start;
            const bool winner = ply % 2 == 0;
            const RootMove* const choice =
                winner ? list
                       : std::min_element(list, list + count, [](const RootMove& a, const RootMove& b) {
                             return a.score < b.score;
                         });
            ASSERT_TRUE(makeChild(pos, game[ply + 1], choice->move));
        }
        EXPECT_TRUE(game[ply].inCheck && legalMoves(game[ply]).empty() && ply % 2 == 1)
            << start << " after " << ply;
        EXPECT_LE(game[ply].halfmoveClock, 100) << start;
    }
}
