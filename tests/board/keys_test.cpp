// The key constants, and the keys that positions make of them.
#include "board/zobrist.h"
#include "support/board_environment.h"

#include <algorithm>
#include <array>
#include <bit>
#include <set>

TEST(Keys, AreDistinctWhereTheyHaveAMeaning) {
    // Pieces, sides, en passant, pawns and kings of the pawn key, castling, excluded moves.
    constexpr std::size_t Meant = 2 * 6 * 64 + 2 + 64 + 2 * 2 * 64 + 16 + 2 * 64;
    const auto words = std::bit_cast<std::array<Key, sizeof(ZobristTables) / sizeof(Key)>>(zobristTables);
    EXPECT_EQ(std::size_t(std::count(words.begin(), words.end(), 0u)), words.size() - Meant);
    EXPECT_EQ(std::set<Key>(words.begin(), words.end()).size(), Meant + 1);
    // Make relies on these zeros.
    for (const auto& types : pawnZobrist)
        for (const int type : {NoPiece, Knight, Bishop, Rook, Queen})
            for (const Key key : types[type]) EXPECT_EQ(key, 0u);
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
    // The material key counts the bishops of either square colour by themselves.
    const Position light = positionOf("4k3/8/8/8/8/8/8/4KB2 w - -");
    const Position dark = positionOf("4k3/8/8/8/8/8/8/2B1K3 w - -");
    EXPECT_NE(light.matKey, dark.matKey);
    EXPECT_EQ(light.matKeyPlain, dark.matKeyPlain);
    EXPECT_EQ(light.matKey, light.matKeyPlain) << "the light column names the endgame tables";
}
