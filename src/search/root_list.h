// Making the list of root moves.
#pragma once

#include "board/move.h"
#include "board/position.h"

// Fills `list`, ended by a zero move, and returns how many moves stand. Tablebases give the list if they hold
// the position; otherwise it is every legal move. `searchMoves` cuts it to the listed moves, each followed by
// a blank; empty for all. Sets the tablebase state of the search and the obvious recapture. `seconds` is the
// time allotted.
int buildRootList(Position& root, const char* searchMoves, double seconds, RootMove* list);
