// Slider tables and attack tests against walks over the board, square by square.
#include "board/attacks.h"

#include "support/board_environment.h"

#include <cstdlib>
#include <random>

struct Step {
    int file, rank;
};
static constexpr Step RookSteps[] = {{1, 0}, {-1, 0}, {0, 1}, {0, -1}};
static constexpr Step BishopSteps[] = {{1, 1}, {1, -1}, {-1, 1}, {-1, -1}};

// The squares from one square along a step, nearest first, up to and including the first occupied one.
static std::vector<int> walk(int square, Step step, Bitboard occupied) {
    std::vector<int> squares;
    int file = square % 8 + step.file;
    int rank = square / 8 + step.rank;
    for (; file >= 0 && file < 8 && rank >= 0 && rank < 8; file += step.file, rank += step.rank) {
        squares.push_back(rank * 8 + file);
        if (occupied >> squares.back() & 1) break;
    }
    return squares;
}

template <std::size_t n>
static Bitboard walkAll(int square, const Step (&steps)[n], Bitboard occupied) {
    Bitboard set = 0;
    for (const Step step : steps)
        for (const int reached : walk(square, step, occupied)) set |= bit(reached);
    return set;
}

TEST(Sliders, AgreeWithWalksOverRandomBoards) {
    std::mt19937_64 random(3);
    for (int round = 0; round < 2000; ++round) {
        // From crowded to nearly empty boards.
        Bitboard occupied = random();
        for (int thin = round % 4; thin > 0; --thin) occupied &= random();
        for (int square = 0; square < 64; ++square) {
            ASSERT_EQ(rookAttacksOf(square, occupied), walkAll(square, RookSteps, occupied));
            ASSERT_EQ(bishopAttacksOf(square, occupied), walkAll(square, BishopSteps, occupied));
        }
    }
}

// Whether a piece attacks a square, by walking from the piece over the board's codes.
static bool reaches(const Position& pos, int from, int target) {
    const int type = typeOfCode(pos.board[from]);
    const int files = target % 8 - from % 8;
    const int ranks = target / 8 - from / 8;
    const int forward = colourOfCode(pos.board[from]) == White ? 1 : -1;
    if (type == Pawn) return ranks == forward && std::abs(files) == 1;
    if (type == Knight) return std::abs(files * ranks) == 2;
    if (type == King) return from != target && std::abs(files) <= 1 && std::abs(ranks) <= 1;
    const bool straight = walkAll(from, RookSteps, pos.occupied) & bit(target);
    const bool diagonal = walkAll(from, BishopSteps, pos.occupied) & bit(target);
    return (straight && type != Bishop) || (diagonal && type != Rook);
}

TEST(Attacks, SetsAndSquareTestsAgreeWithEveryPiece) {
    walkRandomGames(1, 60, [](const Position& pos) {
        for (const Colour colour : {White, Black}) {
            Bitboard expected = 0;
            for (int target = 0; target < 64; ++target) {
                bool attacked = false;
                forEachSquare(pos.pieces[colour][AllPieces],
                              [&](int from) { attacked = attacked || reaches(pos, from, target); });
                if (attacked) expected |= bit(target);
                ASSERT_EQ(isAttacked(pos, target, colour, pos.occupied), attacked);
            }
            ASSERT_EQ(attackedBy(pos, colour), expected);
        }
    });
}
