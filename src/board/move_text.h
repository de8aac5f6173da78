// Moves and squares as text, in the coordinate form that interfaces use.
#pragma once

#include "board/move.h"

#include <string>

inline constexpr std::size_t MoveTextSize = 6;  // five characters and a terminator

// Writes "e2e4", "e7e8q"; "0000" for no move. Castling reads as the king's step to the c- or g-file, or as
// king takes rook with `settings.chess960` on. `text` must hold MoveTextSize bytes.
void moveToText(Move move, char* text);
std::string moveText(Move move);

// The moves of a line that a zero ends, separated by single blanks.
std::string pvToText(const Move* line);

// The square that two characters name; no validation beyond staying on the board.
int squareFromText(const char* text);
std::string squareText(int square);
