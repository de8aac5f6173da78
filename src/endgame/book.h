// The opening book, a file in the PolyGlot format.
#pragma once

#include "board/position.h"

// Opens `settings.bookFile` if `settings.bookMoves` is not 0, closing a book that is open. A missing file is
// silent.
void openBook();
void closeBook();

// A move for the position, or 0.
Move bookProbe(Position& pos);

// How many moves of a game the book may give; set at search start.
extern int bookMoveLimit;
