// The pawn structure's score and facts.
#pragma once

#include "board/position.h"
#include "eval/lanes.h"

// The pawn score in lane units, White minus Black. Sets `entry` to the cache entry with the structure's
// facts, which is valid until the next call on this thread.
Lanes evaluatePawns(const Position& pos, PawnEntry*& entry);

// The structure judged anew, past the cache: fills `entry` and both sides' own sums in lane units.
void judgePawns(const Position& pos, PawnEntry& entry, Lanes (&sums)[2]);
