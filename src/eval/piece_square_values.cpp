// The piece-square values: pawns by rule, the other pieces from half-board tables in small units.
#include "board/piece_square.h"
#include "board/types.h"
#include "eval/parameters.h"

namespace {

// Files a to d, from rank 8 down to rank 1; files e to h mirror them.
using HalfTable = int[8][4];

// clang-format off
constexpr HalfTable knightMg = {
    {-55,  -5,  -3,  -2},
    { -7,  -3,   0,   1},
    { -4,   0,   3,   5},
    { -4,   0,   3,   5},
    { -5,  -1,   2,   3},
    { -7,  -3,  -1,   0},
    {-10,  -7,  -5,  -4},
    {-15, -12, -10,  -9},
};
constexpr HalfTable knightEg = {
    {-40,  -5,  -3,  -2},
    { -7,  -3,   0,   1},
    { -4,   0,   3,   5},
    { -4,   0,   3,   5},
    { -5,  -1,   2,   3},
    { -7,  -3,  -1,   0},
    {-10,  -7,  -5,  -4},
    {-15, -12, -10,  -9},
};
constexpr HalfTable bishopMg = {
    {-6, -7,  -7,  -6},
    {-8,  1,   3,   0},
    {-9,  2,   4,   3},
    {-9, -2,   2,   7},
    {-8, -1,   3,   8},
    {-8,  1,   3,   2},
    {-7,  0,   0,  -3},
    {-5, -8, -10, -11},
};
constexpr HalfTable bishopEg = {
    {-1, -2, -2, -1},
    {-2,  1,  2,  1},
    {-2,  1,  2,  2},
    {-2,  0,  1,  3},
    {-2,  0,  2,  3},
    {-2,  1,  2,  1},
    {-2,  1,  1,  0},
    {-1, -2, -3, -3},
};
constexpr HalfTable rookMg = {
    {-2,  1, 4, 7},
    {-2,  1, 4, 7},
    {-3,  0, 3, 6},
    {-4, -1, 2, 5},
    {-4, -1, 2, 5},
    {-4, -1, 2, 5},
    {-4, -1, 2, 5},
    {-4, -1, 2, 5},
};
constexpr HalfTable rookEg = {
    {0, 0, 0, 0},
    {2, 2, 2, 2},
    {2, 2, 2, 2},
    {1, 1, 1, 1},
    {0, 0, 0, 0},
    {0, 0, 0, 0},
    {0, 0, 0, 0},
    {0, 0, 0, 0},
};
constexpr HalfTable queenBoth = {
    {-6, -6, -6, -6},
    {-6,  0,  0,  0},
    {-6,  0,  5,  5},
    {-6,  0,  5,  9},
    {-6,  0,  5,  9},
    {-6,  0,  5,  5},
    {-6,  0,  0,  0},
    {-6, -6, -6, -6},
};
constexpr HalfTable kingMg = {
    {-71, -65, -87, -99},
    {-63, -57, -80, -93},
    {-56, -50, -74, -88},
    {-48, -42, -67, -82},
    {-39, -33, -59, -75},
    {-30, -24, -51, -68},
    {-12,  -6, -35, -54},
    { -6,   0, -30, -50},
};
constexpr HalfTable kingEg = {
    { -72, -52, -40, -36},
    { -52, -32, -20, -16},
    { -40, -20,  -8,  -4},
    { -36, -16,  -4,   0},
    { -40, -20,  -8,  -4},
    { -52, -32, -20, -16},
    { -72, -52, -40, -36},
    {-100, -80, -68, -64},
};
// clang-format on

struct PieceValues {
    const HalfTable& mg;
    const HalfTable& eg;
    int mgUnit, egUnit;  // lane units of one table unit
};

constexpr PieceValues valuesOf[7] = {
    {knightMg, knightEg, 0, 0},  // no piece
    {knightMg, knightEg, 0, 0},  // pawns follow a rule
    {knightMg, knightEg, 22, 10}, {bishopMg, bishopEg, 7, 10}, {rookMg, rookEg, 13, 16},
    {queenBoth, queenBoth, 5, 9}, {kingMg, kingEg, 8, 11},
};

Score pawnValue(int square) {
    constexpr int byRank[8] = {0, -1, 0, 2, 4, 6, 6, 0};
    constexpr int mgByFile[8] = {-14, -4, 3, 8, 8, 3, -4, -14};
    constexpr int egByFile[8] = {0, -1, -3, -5, -5, -3, -1, 0};
    constexpr int rankUnitByFile[8] = {-4, 0, 4, 8, 8, 4, 0, -4};  // advancing is best in the centre
    if (rankOf(square) == 0 || rankOf(square) == 7) return {};
    const int rank = byRank[rankOf(square)];
    const int file = fileOf(square);
    return pair(8 * (mgByFile[file] + rank) + rankUnitByFile[file] * rank, 7 * (egByFile[file] + rank) / 2);
}

Score pieceValue(int type, int square) {
    const PieceValues& values = valuesOf[type];
    const int row = 7 - rankOf(square);
    const int file = fileOf(square) < 4 ? fileOf(square) : 7 - fileOf(square);
    return pair(values.mg[row][file] * values.mgUnit, values.eg[row][file] * values.egUnit);
}

}  // namespace

void buildPieceSquare() {
    for (int square = 0; square < 64; ++square) {
        for (int type = Pawn; type <= King; ++type) {
            const Score value = type == Pawn ? pawnValue(square) : pieceValue(type, square);
            PieceSquare[boardCode(White, type)][square] = value;
            PieceSquare[boardCode(Black, type)][square ^ 56] = -value;
        }
    }
}
