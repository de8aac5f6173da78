// Draws by repetition and by the clock, along chains of records.
#include "board/fen.h"
#include "support/board_environment.h"

struct RepetitionRow {
    const char* name;
    std::vector<std::string> moves;
    bool once, twice;
};

static void PrintTo(const RepetitionRow& row, std::ostream* out) { *out << row.name; }

class Repetition : public ::testing::TestWithParam<RepetitionRow> {};

TEST_P(Repetition, IsSeenInTheChild) {
    const RepetitionRow& row = GetParam();
    const std::vector<Position> line = playLine("", row.moves);
    const Position& child = line.back();
    EXPECT_EQ(repeatedOnce(child.prev, child.key, child.halfmoveClock), row.once);
    EXPECT_EQ(repeatedTwice(child.prev, child.key, child.halfmoveClock), row.twice);
}

static const RepetitionRow RepetitionRows[] = {
    {"OneMove", {"g1f3"}, false, false},
    {"ThreePlies", {"g1f3", "g8f6", "f3g1"}, false, false},
    {"FirstReturn", {"g1f3", "g8f6", "f3g1", "f6g8"}, true, false},
    {"SecondReturn", {"g1f3", "g8f6", "f3g1", "f6g8", "g1f3", "g8f6", "f3g1", "f6g8"}, true, true},
    {"OtherSidesTurn", {"g1f3", "g8f6", "f3g5", "f6g8", "g5f3", "g8f6"}, true, false},
    {"EightPliesBack",
     {"g1f3", "g8f6", "f3d4", "f6d5", "d4b5", "d5f6", "b5d4", "f6g8", "d4f3", "g8f6"},
     true,
     false},
    {"NothingBeforeAPawnMove",
     {"g1f3", "g8f6", "f3g1", "f6g8", "e2e3", "e7e6", "g1f3", "g8f6", "f3g1"},
     false,
     false},
    {"LostRightsDiffer", {"g1f3", "g8f6", "h1g1", "h8g8", "g1h1", "g8h8", "f3g1", "f6g8"}, false, false},
};
INSTANTIATE_TEST_SUITE_P(Draws, Repetition, ::testing::ValuesIn(RepetitionRows),
                         [](const auto& row) { return row.param.name; });

TEST(Draws, OddNumbersOfMovesMayRepeatToo) {
    const std::vector<Position> line =
        playLine("r3k3/8/8/8/8/8/8/4K2R w - -", {"h1g1", "a8b8", "g1f1", "b8c8", "f1h1", "c8a8"});
    EXPECT_TRUE(repeatedOnce(line[6].prev, line[6].key, 6));
    EXPECT_FALSE(repeatedOnce(line[6].prev, line[6].key, 5)) << "the clock bounds the walk";
}

// A side that passes lets the other come back to a position it has had; the walk goes through the null moves.
TEST(Draws, NullMovesAreNoBarrier) {
    std::vector<Position> line(7);
    line[0] = positionOf("");
    const Move moves[] = {makeWord(G1, F3), NoMove, makeWord(F3, G1), NoMove, makeWord(G1, F3), NoMove};
    for (std::size_t i = 0; i < 6; ++i) ASSERT_TRUE(makeChild(line[i], line[i + 1], moves[i]));
    EXPECT_TRUE(repeatedOnce(line[4].prev, line[4].key, line[4].halfmoveClock));
    EXPECT_TRUE(repeatedOnce(line[6].prev, line[6].key, line[6].halfmoveClock));
}

// The clock may promise more records than there are.
TEST(Draws, WalksEndWithTheChain) {
    std::vector<Position> line = playLine("", {"g1f3", "g8f6", "f3g1", "f6g8"});
    for (std::size_t first = 0; first < 5; ++first) {
        line[first].prev = nullptr;
        EXPECT_EQ(repeatedOnce(line[4].prev, line[4].key, 90), first == 0);
        EXPECT_FALSE(repeatedTwice(line[4].prev, line[4].key, 90));
    }
}

TEST(Draws, TheClockSparesAMateOnTheHundredthMoveAlone) {
    const std::string quiet = "7k/8/8/8/8/8/8/R6K b - -";
    const std::string check = "R6k/8/8/8/8/8/8/7K b - -";
    const std::string mate = "R6k/6pp/8/8/8/8/8/7K b - -";
    struct Row {
        const std::string& fen;
        int clock;
        bool drawn;
    };
    for (const Row& row : {Row{quiet, 99, false}, Row{quiet, 100, true}, Row{check, 99, false},
                           Row{check, 100, true}, Row{mate, 100, false}, Row{mate, 101, true}}) {
        Position pos = positionOf(row.fen);
        pos.halfmoveClock = std::uint16_t(row.clock);
        EXPECT_EQ(drawnByClock(pos), row.drawn) << row.fen << " at " << row.clock;
    }
}
