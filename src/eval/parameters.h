// The evaluation's parameters: tables that are built from short rules, and values set for each search. Tables
// are written only while no search runs.
#pragma once

#include "base/relaxed.h"
#include "board/score.h"
#include "board/types.h"

#include <cstdint>

// Rebuilds every parameter table from the options. Called after `initMaterialTable`, before each bench pass,
// and after an option that was stored.
void initEvalParameters();

// Reads the style options (dynamism, king safety). Does nothing if the tree-search mode is as at its last
// run, unless `initEvalParameters` forces it.
void applyStyle();

// Spread of the random variation of king safety, 0 for none; set at search start.
extern int kingSafetyJitter;

// Whether the search in progress is a tree search; the style tables depend on it. Set at search start.
extern bool treeSearchActive;

// Keyed noise: its width in centipawns, 0 for none, and its seed.
extern int evalNoise;
extern Relaxed<std::uint64_t> noiseKey;

// Multipliers of the piece sum's lanes, in 128ths.
extern int dynamismMg;
extern int dynamismEg;

// By capped phase: the start value of the material scale; and by type (type 0 for none) the values in
// centipawns that quiescence prunes by.
extern float MaterialPhaseScale[MaxPhase + 1];
extern int PhasePieceValue[MaxPhase + 1][7];

// By a row that follows from the pawn's rank, and a king's distance from the square ahead of it: endgame
// value alone. Passer and candidate tables are read at the relative rank minus 1, those of pawn endings at
// the rank itself.
inline constexpr int DistanceRows = 9;
using DistanceTable = Score[DistanceRows][9];
extern DistanceTable PasserOwnKing, PasserEnemyKing;
extern DistanceTable CandidateOwnKing, CandidateEnemyKing;
extern DistanceTable PawnEndOwnKing, PawnEndEnemyKing;
// Parts of `initEvalParameters` with files of their own.
void buildDistanceTables();
void buildPieceSquare();
