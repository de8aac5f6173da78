// Draws by repetition and by the clock, along chains of records.
#include "board/draws.h"
#include "support/board_environment.h"

TEST(Draws, RepetitionsAreSeenInTheChild) {
    struct Case {
        const char* fen;
        std::vector<std::string> moves;
        bool once, twice;
    };
    const Case cases[] = {
        {"", {"g1f3", "g8f6", "f3g1", "f6g8"}, true, false},
        {"", {"g1f3", "g8f6", "f3g1", "f6g8", "g1f3", "g8f6", "f3g1", "f6g8"}, true, true},
        // The other side's turn.
        {"", {"g1f3", "g8f6", "f3g5", "f6g8", "g5f3", "g8f6"}, true, false},
        // Eight plies back.
        {"", {"g1f3", "g8f6", "f3d4", "f6d5", "d4b5", "d5f6", "b5d4", "f6g8", "d4f3", "g8f6"}, true, false},
        // An odd number of moves of either side.
        {"r3k3/8/8/8/8/8/8/4K2R w - -", {"h1g1", "a8b8", "g1f1", "b8c8", "f1h1", "c8a8"}, true, false},
        // Nothing before a pawn move.
        {"", {"g1f3", "g8f6", "f3g1", "f6g8", "e2e3", "e7e6", "g1f3", "g8f6", "f3g1"}, false, false},
        // Lost rights.
        {"", {"g1f3", "g8f6", "h1g1", "h8g8", "g1h1", "g8h8", "f3g1", "f6g8"}, false, false},
        // The walk goes through null moves: a side that passes lets the other come back to what it has had.
        {"", {"g1f3", "0000", "f3g1", "0000"}, true, false},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(::testing::PrintToString(one.moves));
        const std::vector<Position> line = playLine(one.fen, one.moves);
        const Position& child = line.back();
        EXPECT_EQ(repeatedOnce(child.prev, child.key, child.halfmoveClock), one.once);
        EXPECT_EQ(repeatedTwice(child.prev, child.key, child.halfmoveClock), one.twice);
    }
}

// The clock may also promise more records than there are.
TEST(Draws, WalksEndWithTheClockAndTheChain) {
    std::vector<Position> line =
        playLine("r3k3/8/8/8/8/8/8/4K2R w - -", {"h1g1", "a8b8", "g1f1", "b8c8", "f1h1", "c8a8"});
    const Position& child = line.back();
    EXPECT_FALSE(repeatedOnce(child.prev, child.key, 5));
    for (std::size_t first = 0; first < line.size(); ++first) {
        line[first].prev = nullptr;
        EXPECT_EQ(repeatedOnce(child.prev, child.key, 90), first == 0);
        EXPECT_FALSE(repeatedTwice(child.prev, child.key, 90));
    }
}

TEST(Draws, TheClockSparesAMateOnTheHundredthMoveAlone) {
    const char* const quiet = "7k/8/8/8/8/8/8/R6K b - -";
    const char* const check = "R6k/8/8/8/8/8/8/7K b - -";
    const char* const mate = "R6k/6pp/8/8/8/8/8/7K b - -";
    struct Case {
        const char* fen;
        std::uint16_t clock;
        bool drawn;
    };
    for (const Case& one : {Case{quiet, 99, false}, Case{quiet, 100, true}, Case{check, 99, false},
                            Case{check, 100, true}, Case{mate, 100, false}, Case{mate, 101, true}}) {
        Position pos = positionOf(one.fen);
        pos.halfmoveClock = one.clock;
        EXPECT_EQ(drawnByClock(pos), one.drawn) << one.fen << " at " << one.clock;
    }
}
