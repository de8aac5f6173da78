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
