// Geometry and slider tables against walks over the board, square by square.
#include "board/geometry.h"

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

TEST(Geometry, LinesAgreeWithWalks) {
    for (int square = 0; square < 64; ++square) {
        const std::size_t at = std::size_t(square);
        EXPECT_EQ(rookRays[at], walkAll(square, RookSteps, 0) | bit(square));
        EXPECT_EQ(bishopRays[at], walkAll(square, BishopSteps, 0) | bit(square));
        EXPECT_EQ(queenRays[at], rookRays[at] | bishopRays[at]);
        SquareTable expected{};
        Bitboard rookInner = 0;
        Bitboard bishopInner = 0;
        for (const bool diagonal : {false, true}) {
            for (const Step step : diagonal ? BishopSteps : RookSteps) {
                Bitboard passed = 0;
                for (const int reached : walk(square, step, 0)) {
                    expected[std::size_t(reached)] = passed;
                    // Every square but the last of a ray is passed in the end.
                    (diagonal ? bishopInner : rookInner) |= passed;
                    passed |= bit(reached);
                }
            }
        }
        EXPECT_EQ(between[at], expected) << square;
        EXPECT_EQ(rookMask[at], rookInner) << square;
        EXPECT_EQ(bishopMask[at], bishopInner) << square;
    }
}

TEST(Geometry, PawnAndNeighbourTablesStopAtTheEdges) {
    for (int square = 0; square < 64; ++square) {
        const std::size_t at = std::size_t(square);
        for (int other = 0; other < 64; ++other) {
            EXPECT_EQ((pawnAttackers[White][at] & bit(other)) != 0,
                      (pawnAttacks<White>(bit(other)) & bit(square)) != 0);
            EXPECT_EQ((pawnAttackers[Black][at] & bit(other)) != 0,
                      (pawnAttacks<Black>(bit(other)) & bit(square)) != 0);
        }
        const Bitboard neighbours = fillUp(fillDown(besides(bit(square))));
        EXPECT_EQ(adjacentAbove[at], neighbours & ranksAbove[at]);
        EXPECT_EQ(adjacentBelow[at], neighbours & ranksBelow[at]);
        EXPECT_EQ(adjacentUp[at], rankOf(square) == 7 ? 0 : neighbours & ~ranksBelow[at]);
        EXPECT_EQ(adjacentDown[at], rankOf(square) == 0 ? 0 : neighbours & ~ranksAbove[at]);
        EXPECT_EQ(popcount(ShelterFiles[at]), 24);
        EXPECT_TRUE(ShelterFiles[at] & bit(square));
        EXPECT_EQ(squareColour(square) == 1, (DarkSquares & bit(square)) != 0);
    }
    EXPECT_EQ(pawnAttackers[White][H5], bit(G4));
    EXPECT_EQ(pawnAttackers[Black][A5], bit(B6));
    EXPECT_EQ(ShelterFiles[A1], 0x0707070707070707ULL);
    EXPECT_EQ(ShelterFiles[H8], 0xe0e0e0e0e0e0e0e0ULL);
}

// Words for the corner that were worked out apart from the rules.
TEST(Geometry, CornerWords) {
    EXPECT_EQ(rookMask[A1], 0x101010101017eULL);
    EXPECT_EQ(bishopMask[A1], 0x40201008040200ULL);
    EXPECT_EQ(queenRays[A1], 0x81412111090503ffULL);
    EXPECT_EQ(fileOthers[A1], 0x101010101010100ULL);
    EXPECT_EQ(ranksAbove[A1], 0xffffffffffffff00ULL);
    EXPECT_EQ(adjacentAbove[A1], 0x202020202020200ULL);
    EXPECT_EQ(kingAttacks[A1], 0x302u);
    EXPECT_EQ(knightAttacks[A1], 0x20400u);
    EXPECT_EQ(fileMask[D4], FileA << 3);
    EXPECT_EQ(squareColour(A1), 1);
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
