// The evaluation's parameters: tables that are built from short rules. They are written only while no search
// runs.
#pragma once

#include "board/types.h"
#include "eval/lanes.h"

// Rebuilds every parameter table, and the style from the options. Called after `initMaterialTable`, before
// each bench pass, and after an option that was stored.
void initEvalParameters();

// By capped phase: the start value of the material scale; and by type (type 0 for none) the values in
// centipawns that quiescence prunes by.
extern float MaterialPhaseScale[MaxPhase + 1];
extern int PhasePieceValue[MaxPhase + 1][7];

// By a row that follows from the pawn's rank, and a king's distance from the square ahead of it: endgame
// value alone. Passer and candidate tables are read at the relative rank minus 1, those of pawn endings at
// the rank itself.
inline constexpr int DistanceRows = 9;
using DistanceTable = Lanes[DistanceRows][9];
extern DistanceTable PasserOwnKing, PasserEnemyKing;
extern DistanceTable CandidateOwnKing, CandidateEnemyKing;
extern DistanceTable PawnEndOwnKing, PawnEndEnemyKing;
// Steps of `initEvalParameters` that have files of their own.
void buildDistanceTables();
void buildPieceSquare();
