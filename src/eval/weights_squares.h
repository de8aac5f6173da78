// Weights of squares, behind the piece-square table: half-board tables in small units, and a pawn's rule.
#pragma once

// Files a to d, from rank 8 down to rank 1; files e to h mirror them.
using HalfTable = int[8][4];

// clang-format off
inline constexpr HalfTable KnightMg = {
    {-55,  -5,  -3,  -2},
    { -7,  -3,   0,   1},
    { -4,   0,   3,   5},
    { -4,   0,   3,   5},
    { -5,  -1,   2,   3},
    { -7,  -3,  -1,   0},
    {-10,  -7,  -5,  -4},
    {-15, -12, -10,  -9},
};
inline constexpr HalfTable KnightEg = {
    {-40,  -5,  -3,  -2},
    { -7,  -3,   0,   1},
    { -4,   0,   3,   5},
    { -4,   0,   3,   5},
    { -5,  -1,   2,   3},
    { -7,  -3,  -1,   0},
    {-10,  -7,  -5,  -4},
    {-15, -12, -10,  -9},
};
inline constexpr HalfTable BishopMg = {
    {-6, -7,  -7,  -6},
    {-8,  1,   3,   0},
    {-9,  2,   4,   3},
    {-9, -2,   2,   7},
    {-8, -1,   3,   8},
    {-8,  1,   3,   2},
    {-7,  0,   0,  -3},
    {-5, -8, -10, -11},
};
inline constexpr HalfTable BishopEg = {
    {-1, -2, -2, -1},
    {-2,  1,  2,  1},
    {-2,  1,  2,  2},
    {-2,  0,  1,  3},
    {-2,  0,  2,  3},
    {-2,  1,  2,  1},
    {-2,  1,  1,  0},
    {-1, -2, -3, -3},
};
inline constexpr HalfTable RookMg = {
    {-2,  1, 4, 7},
    {-2,  1, 4, 7},
    {-3,  0, 3, 6},
    {-4, -1, 2, 5},
    {-4, -1, 2, 5},
    {-4, -1, 2, 5},
    {-4, -1, 2, 5},
    {-4, -1, 2, 5},
};
inline constexpr HalfTable RookEg = {
    {0, 0, 0, 0},
    {2, 2, 2, 2},
    {2, 2, 2, 2},
    {1, 1, 1, 1},
    {0, 0, 0, 0},
    {0, 0, 0, 0},
    {0, 0, 0, 0},
    {0, 0, 0, 0},
};
inline constexpr HalfTable QueenBoth = {
    {-6, -6, -6, -6},
    {-6,  0,  0,  0},
    {-6,  0,  5,  5},
    {-6,  0,  5,  9},
    {-6,  0,  5,  9},
    {-6,  0,  5,  5},
    {-6,  0,  0,  0},
    {-6, -6, -6, -6},
};
inline constexpr HalfTable KingMg = {
    {-71, -65, -87, -99},
    {-63, -57, -80, -93},
    {-56, -50, -74, -88},
    {-48, -42, -67, -82},
    {-39, -33, -59, -75},
    {-30, -24, -51, -68},
    {-12,  -6, -35, -54},
    { -6,   0, -30, -50},
};
inline constexpr HalfTable KingEg = {
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

// By type: nothing, pawn, knight, bishop, rook, queen, king.
struct PieceValues {
    const HalfTable& mg;
    const HalfTable& eg;
    int mgUnit, egUnit;  // lane units of one table unit
};

inline constexpr PieceValues ValuesOf[7] = {
    {KnightMg, KnightEg, 0, 0},  // no piece
    {KnightMg, KnightEg, 0, 0},  // pawns follow a rule
    {KnightMg, KnightEg, 22, 10}, {BishopMg, BishopEg, 7, 10}, {RookMg, RookEg, 13, 16},
    {QueenBoth, QueenBoth, 5, 9}, {KingMg, KingEg, 8, 11},
};

// Pawns, in units by rank and by file from White's view; advancing is best in the centre, in lane units.
inline constexpr int PawnRanks[8] = {0, -1, 0, 2, 4, 6, 6, 0};
inline constexpr int PawnFilesMg[8] = {-14, -4, 3, 8, 8, 3, -4, -14};
inline constexpr int PawnFilesEg[8] = {0, -1, -3, -5, -5, -3, -1, 0};
inline constexpr int PawnRankUnits[8] = {-4, 0, 4, 8, 8, 4, 0, -4};
inline constexpr int PawnMgUnit = 8;      // lane units of one unit
inline constexpr int PawnEgHalfUnit = 7;  // half lane units
