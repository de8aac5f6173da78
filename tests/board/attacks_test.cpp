// Slider tables and attack tests against walks over the board, square by square.
#include "board/attacks.h"

#include "support/board_environment.h"
#include "support/slow_chess.h"

#include <random>
#include <utility>

// What a slider reaches by a step and its three turns, up to and including the first occupied squares.
static Bitboard walkAll(int square, int files, int ranks, Bitboard occupied) {
    Bitboard set = 0;
    for (int turn = 0; turn < 4; ++turn) {
        int file = square % 8 + files, rank = square / 8 + ranks;
        for (; file >= 0 && file < 8 && rank >= 0 && rank < 8; file += files, rank += ranks) {
            set |= bit(rank * 8 + file);
            if (occupied & bit(rank * 8 + file)) break;
        }
        files = std::exchange(ranks, -files);
    }
    return set;
}

TEST(Sliders, AgreeWithWalksOverRandomBoards) {
    std::mt19937_64 random(3);
    for (int round = 0; round < 2000; ++round) {
        // From crowded to nearly empty boards.
        Bitboard occupied = random();
        for (int thin = round % 4; thin > 0; --thin) occupied &= random();
        for (int square = 0; square < 64; ++square) {
            ASSERT_EQ(rookAttacksOf(square, occupied), walkAll(square, 0, 1, occupied));
            ASSERT_EQ(bishopAttacksOf(square, occupied), walkAll(square, 1, 1, occupied));
        }
    }
}

TEST(Attacks, SetsAndSquareTestsAgreeWithThePlainRules) {
    walkRandomGames(1, 60, [](const Position& pos) {
        const SlowBoard board = slowBoardOf(pos);
        for (const Colour colour : {White, Black}) {
            Bitboard expected = 0;
            for (int target = 0; target < 64; ++target) {
                const bool attacked = slowIsAttacked(board, target, colour == White);
                if (attacked) expected |= bit(target);
                ASSERT_EQ(isAttacked(pos, target, colour, pos.occupied), attacked);
            }
            ASSERT_EQ(attackedBy(pos, colour), expected);
        }
    });
}
