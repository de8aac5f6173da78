// Contempt: how much better than its score one side is taken to stand, so that it avoids even positions that
// might be drawn. Intended: the draw score does not move; a draw is worth 0 in every search, and it is the
// evaluation that shifts instead, by the same pair in every position of a search.
#pragma once

#include "base/relaxed.h"
#include "board/position.h"
#include "eval/eval_info.h"

// By colour, the negative of each other. Written by `setContempt` alone, between iterations by thread 0;
// other threads may read them late.
extern Relaxed<Score> contemptPair[2];  // lane units; White's is added to each score
extern Relaxed<int> contemptValue[2];   // centipawns

// Sets the contempt of both colours from `value`, centipawns, for the side to move at the root or, with White
// Contempt, for White. `treeMode` is the mode of the search.
void setContempt(int value, Colour rootSide, bool treeMode);

// The value after an iteration's score, both in centipawns and from the root's view: dynamic contempt, by up
// to 22 more for a side that stands better and less for one that stands worse. `contempt` is the option's
// value for this search.
int contemptFromScore(int score, int contempt);

// In a closed position the side with contempt would rather have fewer pawns.
void closedContempt(const Position& pos, EvalInfo& info);
