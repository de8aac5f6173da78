// Cutting the root list down to the moves that keep the best result the tables know.
#pragma once

#include "board/move.h"
#include "board/position.h"

// Rewrites `list`, ended by a zero move, and returns how many moves stand; 0 on failure, and the list is then
// the caller's to build. `score` is in centipawns from the side to move's view.
int tbRootProbeDtz(const Position& pos, RootMove* list, int* score);
int tbRootProbeWdl(const Position& pos, RootMove* list, int* score);

// Whether a position of the game has come back, as far as a walk finds it that ends at the first zeroing move
// which it meets.
bool positionHasRepeated(const Position& pos);
