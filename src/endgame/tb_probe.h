// Probing Syzygy tables: win/draw/loss and distance to a zeroing move, and the probe that searches use.
#pragma once

#include <cstdint>

#include "board/position.h"
#include "board/relaxed.h"

inline constexpr int NoTbScore = 0x7fffffff;

// Values of one search. Written by thread 0 while the workers are idle; only `tbHits` moves during a search.
extern int tbPieceLimit;              // men up to which inner nodes probe; 0 turns them off
extern int tbRootScore;               // shown by reports when tables decided the root, else NoTbScore
extern Relaxed<std::uint64_t> tbHits;

// The result at an inner node: true with an exact score in centipawns from the side to move's view.
bool probeSearchTablebase(Position& pos, int ply, int* score);

// Win/draw/loss from the side to move's view, -2 to 2 (1 and -1: spoiled or saved by the fifty-move rule). `ok` is
// cleared on failure, and the value is then meaningless.
int tbProbeWdl(Position& pos, bool* ok);
// Plies to a zeroing move with best play, signed as the result; 0 for a draw. `ok` as above.
int tbProbeDtz(Position& pos, bool* ok);
