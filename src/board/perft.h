// Counting leaf positions of the legal move tree, the proof of the generators and of make.
#pragma once

#include "board/position.h"

// Legal leaves at `depth` plies below `pos`; every leaf is made, none is counted in bulk. A depth below 1
// counts as 1.
std::uint64_t perft(const Position& pos, int depth);

// The same, timed and printed as "%llu, MNPS=%f". Its makes count as nodes of the position's thread. `idle`:
// no search runs, whose prefetches would be disturbed.
void perftTimed(const Position& pos, int depth, bool idle);
