// Making moves by copy.
#pragma once

#include "board/position.h"

// Copies `parent` into `child` and makes the clean move there. False if the mover's king is attacked
// afterwards, or the move takes a king; the child is then useless. Move 0 is the null move, which is always
// made. The word is trusted: a word that is not pseudo-legal corrupts the child. The child's `inCheck` is
// left to the caller, except that a null move clears it. Every call counts a node of the thread, unless the
// thread is stopped.
bool makeMove(const Position* parent, Position* child, Move move);
