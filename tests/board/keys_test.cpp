// The key constants, and the keys that positions make of them.
#include "board/zobrist.h"
#include "support/board_environment.h"

#include <set>

TEST(Keys, AreDistinctWhereTheyHaveAMeaning) {
    std::set<Key> seen;
    int meant = 0;
    const auto add = [&](Key key) {
        EXPECT_NE(key, 0u);
        seen.insert(key);
        ++meant;
    };
    for (int colour = White; colour <= Black; ++colour) {
        add(zobrist[0][NoPiece][colour]);
        for (int square = 0; square < 64; ++square) {
            for (int type = Pawn; type <= King; ++type) add(zobrist[colour][type][square]);
            add(pawnZobrist[colour][Pawn][square]);
            add(pawnZobrist[colour][King][square]);
            // Make relies on these zeros.
            for (const int type : {NoPiece, Knight, Bishop, Rook, Queen})
                EXPECT_EQ(pawnZobrist[colour][type][square], 0u);
        }
    }
    for (int square = 0; square < 64; ++square) {
        add(zobrist[1][NoPiece][square]);
        add(excludedToKey[square]);
        add(excludedFromKey[square]);
    }
    for (const Key key : castleKey) add(key);
    EXPECT_EQ(int(seen.size()), meant);
}

TEST(Keys, TellPositionsApart) {
    const std::string board = "r3k2r/8/8/8/3pP3/8/8/R3K2R ";
    const Position base = positionOf(board + "b KQkq -");
    EXPECT_NE(base.key, positionOf(board + "w KQkq -").key);
    EXPECT_NE(base.key, positionOf(board + "b KQk -").key);
    EXPECT_NE(base.key, positionOf(board + "b KQkq e3").key);
    // The pawn key knows castling and kings, neither the side to move nor the en-passant square.
    EXPECT_EQ(base.pawnKey, positionOf(board + "w KQkq -").pawnKey);
    EXPECT_EQ(base.pawnKey, positionOf(board + "b KQkq e3").pawnKey);
    EXPECT_NE(base.pawnKey, positionOf(board + "b KQk -").pawnKey);
    EXPECT_EQ(base.pawnKey, positionOf("r3k2r/8/8/7q/3pP3/8/8/R3K2R b KQkq -").pawnKey);
}

TEST(Keys, MaterialCountsPiecesAndBishopColours) {
    const Position light = positionOf("4k3/8/8/8/8/8/8/4KB2 w - -");
    const Position dark = positionOf("4k3/8/8/8/8/8/8/2B1K3 w - -");
    EXPECT_NE(light.matKey, dark.matKey);
    EXPECT_EQ(light.matKeyPlain, dark.matKeyPlain);
    EXPECT_EQ(light.matKey, light.matKeyPlain) << "the light column names the endgame tables";
    EXPECT_EQ(light.matKey, positionOf("8/8/4k3/8/2B5/8/8/K7 b - -").matKey);
    EXPECT_EQ(positionOf("4k3/8/8/8/8/8/8/4K3 w - -").matKey, 0u);
    EXPECT_EQ(positionOf("4k3/8/8/8/8/8/4PP2/4K3 w - -").matKey, 2 * matValue[White][Pawn][0]);
}
