#include "eval/contempt.h"

#include "base/settings.h"

#include <cstdlib>

Relaxed<Score> contemptPair[2];
Relaxed<int> contemptValue[2];

// A tree search has no contempt in its scores, but the value stays known.
void setContempt(int value, Colour rootSide, bool treeMode) {
    const Colour side = settings.whiteContempt ? White : rootSide;
    const int laneValue = value * 10;  // lane units, ten to a centipawn
    const Score contempt = treeMode ? Score{} : pair(laneValue, laneValue / 4);
    contemptPair[side] = contempt;
    contemptPair[opponent(side)] = -contempt;
    contemptValue[side] = value;
    contemptValue[opponent(side)] = -value;
}

int contemptFromScore(int score, int contempt) { return score * 22 / (std::abs(score) + 100) + contempt; }

void closedContempt(const Position& pos, EvalInfo& info) {
    constexpr int ClosedPawns = 15;
    if (settings.contempt <= 0) return;
    if (popcount(pos.pieces[White][Pawn] | pos.pieces[Black][Pawn]) < ClosedPawns) return;
    info.score[White] -= Lanes(contemptValue[White], 0);
}
