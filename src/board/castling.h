// Castling: the four rights, where king and rook go, and the squares that a game's start gives them, in
// standard chess and in Chess960. Make, the generators and the FEN reader ask here.
#pragma once

#include "board/bitboard.h"
#include "board/types.h"

#include <cstdint>

struct Position;

// Indices of the four castling rights; the bit of right i in `Position::castleLost` is 1 << i.
enum CastlingRight : std::uint8_t { WhiteShort = 0, WhiteLong = 1, BlackShort = 2, BlackLong = 3 };

inline constexpr std::uint8_t NoCastlingRights = 15;

constexpr int shortRightOf(Colour colour) { return colour == White ? WhiteShort : BlackShort; }
constexpr int longRightOf(Colour colour) { return colour == White ? WhiteLong : BlackLong; }
constexpr Colour colourOfRight(int right) { return right < BlackShort ? White : Black; }

// Where king and rook stand after castling, by their start squares.
constexpr int castlingKingTarget(int king, int rook) { return makeSquare(rook > king ? 6 : 2, rankOf(king)); }
constexpr int castlingRookTarget(int king, int rook) { return makeSquare(rook > king ? 5 : 3, rankOf(king)); }

// What the last FEN that was read says of castling, by right where nothing else is said. Shared by all
// threads; written by the two functions below alone, while no thread searches.
struct CastlingTables {
    std::uint32_t rook[4];  // start square of the rook
    std::uint8_t mask[64];  // by square: bits to set in `castleLost` when a move leaves or enters it
    Bitboard path[4];      // all squares between and with the ends of the king's and rook's walks; else empty
    Bitboard kingPath[4];  // the squares that the king walks, both ends included; empty without the right
    Bitboard keep[4];      // all but the king's and the rook's own start squares
    int kingStart[2];      // by colour
};
extern CastlingTables castling;

// Sets the tables for the kings and rooks of a board that has just been read, with no right granted. `rook`
// is then what "K" and "Q" mean: the outermost rook on each side of the king.
void beginCastling(const Position& pos);

// Gives the position a right with the rook on a square of its own, unless king and rook don't stand on their
// back rank as that claims. The keys are left to the caller.
void grantCastling(Position& pos, int right, int rookSquare);

// The rights, as bits of `castleLost`, that the position may hold as far as the tables know: those of which
// king and rook stand on their start squares.
std::uint8_t rightsThatStand(const Position& pos);
