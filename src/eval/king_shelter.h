// Shelter and storm of one king, a stage of the pawn structure and so cached with it.
#pragma once

#include "board/position.h"
#include "eval/lanes.h"

// Adds the shelter of the king of `us` to its score and notes in the entry what it takes off the enemy's
// attack units.
template <Colour us>
void kingShelter(const Position& pos, PawnEntry& entry, Lanes& score);
