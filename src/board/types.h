// The board's vocabulary: colours, piece types, board codes, squares and the weights that make up a phase.
#pragma once

#include <cstdint>

using Bitboard = std::uint64_t;  // bit s is square s
using Key = std::uint64_t;

enum Colour : std::uint8_t { White = 0, Black = 1 };

enum PieceType : std::uint8_t {
    NoPiece = 0,
    Pawn = 1,
    Knight = 2,
    Bishop = 3,
    Rook = 4,
    Queen = 5,
    King = 6,
};

// Index 0 of Position::pieces: all pieces of a colour.
inline constexpr int AllPieces = 0;

// Squares run a1 = 0, b1 = 1 ... h8 = 63.
// clang-format off
enum Square : std::uint8_t {
    A1, B1, C1, D1, E1, F1, G1, H1,
    A2, B2, C2, D2, E2, F2, G2, H2,
    A3, B3, C3, D3, E3, F3, G3, H3,
    A4, B4, C4, D4, E4, F4, G4, H4,
    A5, B5, C5, D5, E5, F5, G5, H5,
    A6, B6, C6, D6, E6, F6, G6, H6,
    A7, B7, C7, D7, E7, F7, G7, H7,
    A8, B8, C8, D8, E8, F8, G8, H8,
};
// clang-format on

inline constexpr int NoSquare = 64;

constexpr Colour opponent(Colour colour) { return Colour(colour ^ 1); }

constexpr int fileOf(int square) { return square & 7; }
constexpr int rankOf(int square) { return square >> 3; }
constexpr int makeSquare(int file, int rank) { return rank * 8 + file; }

// Rank 0 to 7 as the given colour sees it: 0 is its own back rank.
constexpr int relativeRank(Colour colour, int square) { return rankOf(square) ^ (colour == White ? 0 : 7); }

// The step of a pawn, in squares.
constexpr int pawnStep(Colour colour) { return colour == White ? 8 : -8; }

// A board code is colour * 8 + type: 0 is empty, 1 to 6 are white, 9 to 14 black.
constexpr int boardCode(Colour colour, int type) { return colour * 8 + type; }
constexpr int typeOfCode(int code) { return code & 7; }
constexpr Colour colourOfCode(int code) { return Colour(code >> 3); }

// Weight of each piece type in Position::phase; the sum over the start position is 96.
inline constexpr int PhaseWeight[8] = {0, 0, 3, 4, 8, 18, 0, 0};
inline constexpr int MaxPhase = 96;  // readers cap a larger sum, which promotions can make

// Scores of the search, in centipawns from the side to move's view.
inline constexpr int MateScore = 32000;      // MateScore - ply: mate at that ply
inline constexpr int MateBound = 31800;      // mate scores begin here in magnitude
inline constexpr int NoScore = 32001;        // the no-score value and the open bound
inline constexpr int NotEvaluated = 999999;  // Position::staticEval before any evaluation
