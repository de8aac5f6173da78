// Reading and writing FEN, and the castling tables that a FEN defines for standard chess and Chess960.
#pragma once

#include "board/position.h"

#include <string>

// Indices of the four castling rights; the bit of right i in `castleLost` is 1 << i.
enum CastlingRight : std::uint8_t { WhiteShort = 0, WhiteLong = 1, BlackShort = 2, BlackLong = 3 };

// Filled by each FEN read, shared by all threads, and read only while no FEN is read.
extern std::uint32_t castleRook[4];  // start square of the rook
extern std::uint8_t castleMask[64];  // bits to set in `castleLost` when a move leaves or enters the square
extern Bitboard castlePath[4];       // all squares between and with the ends of the king's and rook's walks
extern Bitboard castleKingPath[4];   // the squares that the king walks, both ends included
extern Bitboard castleKeep[4];       // all but the king's and the rook's own start squares
extern int whiteKingStart;
extern int blackKingStart;

inline constexpr const char* StartFen = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";

// Reads the first four fields of a FEN into `pos`, with its keys and the tables above; thread 0's hooks give
// the pointers. An empty text is the start position. Clocks are ignored: `halfmoveClock` starts at 0.
// `psqPair` and `phase` stay 0 until a search computes them. A wrong side to move ends the process with
// status 1.
void setFen(Position* pos, const char* fen);

// The four fields of a position, without clocks. Intended: the castling field doesn't follow the rights.
std::string writeFen(const Position& pos);

// Points a record at the tables of a thread, with empty continuations. `threadIndex` is set too.
void attachThread(Position& pos, int threadIndex);
