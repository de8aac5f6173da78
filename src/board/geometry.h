// The board's geometry as small tables indexed by square. Each follows from a rule and is computed by the
// compiler.
#pragma once

#include "board/bitboard.h"

#include <algorithm>
#include <array>
#include <cstdint>

using SquareTable = std::array<Bitboard, 64>;

namespace geometry {

// Builds a table by asking `rule(square, other)` for every pair of squares.
template <class Rule>
constexpr SquareTable tableOf(Rule rule) {
    SquareTable table{};
    for (int square = 0; square < 64; ++square)
        for (int other = 0; other < 64; ++other)
            if (rule(square, other)) table[std::size_t(square)] |= bit(other);
    return table;
}

constexpr int distanceOf(int a, int b) { return a > b ? a - b : b - a; }
constexpr int fileDistance(int a, int b) { return distanceOf(fileOf(a), fileOf(b)); }
constexpr int rankDistance(int a, int b) { return distanceOf(rankOf(a), rankOf(b)); }

constexpr bool onRookLine(int a, int b) { return fileOf(a) == fileOf(b) || rankOf(a) == rankOf(b); }
constexpr bool onBishopLine(int a, int b) { return fileDistance(a, b) == rankDistance(a, b); }

constexpr bool rookMaskRule(int square, int other) {
    if (square == other || !onRookLine(square, other)) return false;
    return fileOf(square) == fileOf(other) ? rankOf(other) != 0 && rankOf(other) != 7
                                           : fileOf(other) != 0 && fileOf(other) != 7;
}
constexpr bool bishopMaskRule(int square, int other) {
    const bool onEdge = rankOf(other) == 0 || rankOf(other) == 7 || fileOf(other) == 0 || fileOf(other) == 7;
    return square != other && onBishopLine(square, other) && !onEdge;
}

}  // namespace geometry

// Relevant occupancy of a slider: its rays on the empty board without its own square and without their last
// ones, which end a ray whether they are occupied or not.
inline constexpr SquareTable rookMask = geometry::tableOf(geometry::rookMaskRule);
inline constexpr SquareTable bishopMask = geometry::tableOf(geometry::bishopMaskRule);

// Rays on the empty board. All three hold the own square too.
inline constexpr SquareTable rookRays = geometry::tableOf(geometry::onRookLine);
inline constexpr SquareTable bishopRays = geometry::tableOf(geometry::onBishopLine);
inline constexpr SquareTable queenRays = geometry::tableOf(
    [](int a, int b) { return geometry::onRookLine(a, b) || geometry::onBishopLine(a, b); });

inline constexpr SquareTable fileMask =
    geometry::tableOf([](int a, int b) { return fileOf(a) == fileOf(b); });
inline constexpr SquareTable fileOthers =
    geometry::tableOf([](int a, int b) { return a != b && fileOf(a) == fileOf(b); });
inline constexpr SquareTable ranksAbove =
    geometry::tableOf([](int a, int b) { return rankOf(b) > rankOf(a); });
inline constexpr SquareTable ranksBelow =
    geometry::tableOf([](int a, int b) { return rankOf(b) < rankOf(a); });

// The two neighbouring files on the ranks above or below the square.
inline constexpr SquareTable adjacentAbove = geometry::tableOf(
    [](int a, int b) { return geometry::fileDistance(a, b) == 1 && rankOf(b) > rankOf(a); });
inline constexpr SquareTable adjacentBelow = geometry::tableOf(
    [](int a, int b) { return geometry::fileDistance(a, b) == 1 && rankOf(b) < rankOf(a); });

// The same with the square's own rank. Intended: empty on the eighth rank for `adjacentUp` and on the first
// for `adjacentDown`, where no pawn can need them.
inline constexpr SquareTable adjacentUp = geometry::tableOf([](int a, int b) {
    return geometry::fileDistance(a, b) == 1 && rankOf(b) >= rankOf(a) && rankOf(a) != 7;
});
inline constexpr SquareTable adjacentDown = geometry::tableOf([](int a, int b) {
    return geometry::fileDistance(a, b) == 1 && rankOf(b) <= rankOf(a) && rankOf(a) != 0;
});

// Three whole files around the square; at the edge the band moves inward, so that it is always three wide.
inline constexpr SquareTable ShelterFiles = geometry::tableOf(
    [](int a, int b) { return geometry::distanceOf(std::clamp(fileOf(a), 1, 6), fileOf(b)) <= 1; });

inline constexpr SquareTable kingAttacks = geometry::tableOf([](int a, int b) {
    return a != b && geometry::fileDistance(a, b) <= 1 && geometry::rankDistance(a, b) <= 1;
});
inline constexpr SquareTable knightAttacks = geometry::tableOf(
    [](int a, int b) { return geometry::fileDistance(a, b) * geometry::rankDistance(a, b) == 2; });

// By colour and square: where pawns of that colour must stand to attack the square.
inline constexpr std::array<SquareTable, 2> pawnAttackers = {
    geometry::tableOf(
        [](int a, int b) { return geometry::fileDistance(a, b) == 1 && rankOf(b) + 1 == rankOf(a); }),
    geometry::tableOf(
        [](int a, int b) { return geometry::fileDistance(a, b) == 1 && rankOf(b) - 1 == rankOf(a); }),
};

namespace geometry {

constexpr std::array<std::array<std::uint8_t, 64>, 64> makeDistances() {
    std::array<std::array<std::uint8_t, 64>, 64> table{};
    for (int a = 0; a < 64; ++a)
        for (int b = 0; b < 64; ++b)
            table[std::size_t(a)][std::size_t(b)] =
                std::uint8_t(std::max(fileDistance(a, b), rankDistance(a, b)));
    return table;
}
inline constexpr auto distances = makeDistances();

}  // namespace geometry

// King steps between two squares. Distances from one square `a` lie in one cache line.
constexpr int squareDistance(int a, int b) { return geometry::distances[std::size_t(a)][std::size_t(b)]; }

// The same square seen from the other side of the board.
constexpr int flipSquare(int square) { return square ^ 56; }

// 1 on dark squares (a1), 0 on light ones.
constexpr int squareColour(int square) { return (fileOf(square) + rankOf(square) + 1) & 1; }
inline constexpr Bitboard DarkSquares = 0xaa55aa55aa55aa55ULL;
inline constexpr Bitboard LightSquares = ~DarkSquares;

// The squares strictly between two squares of a shared rank, file or diagonal; empty for any other pair.
extern const std::array<SquareTable, 64> between;
