// Probing Syzygy tables: win/draw/loss and distance to a zeroing move, and the probe that searches use.
#pragma once

#include "base/relaxed.h"
#include "board/position.h"

#include <cstdint>

inline constexpr int NoTbScore = 0x7fffffff;

// Values of one search. Written by thread 0 while the workers are idle; only `tbHits` moves during a search,
// counted by all threads without a lock; lost counts are accepted.
extern int tbPieceLimit;  // men up to which inner nodes probe; 0 turns them off
extern int tbRootScore;   // shown by reports when tables decided the root, else NoTbScore
extern Relaxed<std::uint64_t> tbHits;

// The result at an inner node: true with an exact score in centipawns from the side to move's view.
bool probeSearchTablebase(Position& pos, int ply, int* score);

// The distance of a position whose best move zeroes the counter, by its result + 2.
inline constexpr int wdlToDtz[5] = {-1, -101, 0, 101, 1};

// The two probes of a position. `success` is 0 if the probe failed, and the value is then meaningless; 1 if
// it is good; 2 if it is good and comes from a capture, so that no distance need be looked up for it.
//
// Win/draw/loss from the side to move's view, -2 to 2 (1 and -1: spoiled or saved by the fifty-move rule).
int tbProbeWdl(Position& pos, int* success);
// Plies to a zeroing move with best play, signed as the result; 0 for a draw.
int tbProbeDtz(Position& pos, int* success);
