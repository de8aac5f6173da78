// The order in which a list of keyed moves is tried.
#pragma once

#include "board/move.h"

// Descending by the signed key alone; moves of equal keys keep their order. At most MaxListMoves moves.
void sortMoves(Move* moves, int count);
