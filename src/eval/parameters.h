// The evaluation's parameters: tables that are built from short rules, and values set for each search. Tables
// are written only while no search runs.
#pragma once

#include "base/relaxed.h"
#include "board/score.h"
#include "board/types.h"

#include <cstdint>

// Weight of king safety: the option's default, and the tree search's, whatever the option says.
inline constexpr int UsualKingSafety = 72;

// Rebuilds every parameter table from the options. Called after `initMaterialTable`, before each bench pass,
// and after an option that was stored.
void initEvalParameters();

// Whose taste in positions it is: the tree search's is fixed, the alpha-beta search's follows the options.
enum class Style { AlphaBeta, Tree };

// Changes to a style, whose options (dynamism, king safety) are read now. Does nothing if the style is as at
// its last run: `initEvalParameters` reads the options again.
void applyStyle(Style style);

// Fills the king danger table with a weight of `k` (the option's scale, 0 to 200), varied by
// `kingSafetyJitter`.
void buildKingSafetyTable(int k);

// Whether the table is one that was varied.
bool isKingSafetyVaried();

// Spread of the random variation of king safety, 0 for none; set at search start.
extern int kingSafetyJitter;

// Values set per search, by colour, and moved between iterations by thread 0 alone; other threads may read
// them late.
extern Relaxed<Score> contemptPair[2];  // lane units
extern Relaxed<int> contemptValue[2];   // centipawns

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

// Middlegame value of attack units against a king.
inline constexpr int KingDangerEntries = 256;
extern Score KingDanger[KingDangerEntries];

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
