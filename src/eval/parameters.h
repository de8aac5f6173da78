// The evaluation's parameters: tables that are built from short rules, and values set for each search. Written only
// while no search runs.
#pragma once

#include "board/score.h"

// Rebuilds every parameter table from the options. Called after `initMaterialTable`, before each bench pass, and
// after an option that was stored.
void initEvalParameters();

// Reads the style options (dynamism, king safety). Does nothing if the tree-search mode is as at its last run, unless
// `initEvalParameters` forces it.
void applyStyle();

// Fills the king danger table with a weight of `k` (the option's scale, 0 to 200), varied by `kingSafetyJitter`.
void buildKingSafetyTable(int k);

// Spread of the random variation of king safety, 0 for none; set at search start.
extern int kingSafetyJitter;

// Whether the search in progress is a tree search; the style tables depend on it. Set at search start.
extern bool treeSearchActive;

// Values set per search, by colour.
extern Score contemptPair[2];
extern int contemptValue[2];

// Keyed noise: its width in centipawns, 0 for none, and its seed.
extern int evalNoise;
extern std::uint64_t noiseKey;

// Multipliers of the piece sum's lanes, in 128ths.
extern int dynamismMg;
extern int dynamismEg;

// By capped phase: the start value of the material scale, and the piece values that quiescence prunes by.
extern float MaterialPhaseScale[97];
extern int PhasePieceValue[97][7];

extern Score KingDanger[256];
