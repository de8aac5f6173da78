// Reading and writing FEN, the text of a position.
#pragma once

#include "board/position.h"

#include <string>

inline constexpr const char* StartFen = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";

// Reads the first four fields of a FEN into `pos`, with its keys, and writes the castling tables; thread 0's
// hooks give the pointers. An empty text is the start position. Clocks are ignored: `halfmoveClock` starts at
// 0. `psqPair` and `phase` stay 0 until a search computes them. A wrong side to move ends the process with
// status 1.
void setFen(Position* pos, const char* fen);

// The four fields of a position, without clocks. Intended: the castling field doesn't follow the rights.
std::string writeFen(const Position& pos);
