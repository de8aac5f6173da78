// Tables of squares against shifts of sets, and distances against the steps of a king.
#include "board/geometry.h"

#include <gtest/gtest.h>

TEST(Geometry, TablesAgreeWithShifts) {
    for (int square = 0; square < 64; ++square) {
        const std::size_t at = std::size_t(square);
        const Bitboard self = bit(square);
        const Bitboard sides = besides(self);
        const Bitboard up = rankOf(square) == 7 ? 0 : fillUp(sides);
        const Bitboard down = rankOf(square) == 0 ? 0 : fillDown(sides);
        EXPECT_EQ(fileOthers[at], (fillUp(self) | fillDown(self)) ^ self) << square;
        EXPECT_EQ(adjacentUp[at], up) << square;
        EXPECT_EQ(adjacentDown[at], down) << square;
        Bitboard reached = self;
        for (int steps = 0; steps < 8; ++steps) {
            forEachSquare(reached, [&](int other) { EXPECT_LE(squareDistance(square, other), steps); });
            forEachSquare(~reached, [&](int other) { EXPECT_GT(squareDistance(square, other), steps); });
            const Bitboard before = reached;
            forEachSquare(before, [&](int other) { reached |= kingAttacks[std::size_t(other)]; });
        }
    }
}
