// Tables that the searches read, built from the options, and contempt.
#pragma once

#include "board/score.h"
#include "board/types.h"

// By improving (1) or not, depth in half plies, and move count; row and column 0 are not used.
extern int reduceHigh[2][128][64];
extern int reduceLow[2][128][64];
extern int moveCountTable[2][24];  // quiet moves allowed before pruning
extern int historyBase;            // subtracted from a quiet move's stat
extern int futilityStep;           // centipawns a half ply

// Thresholds by number of the root move, from index 1.
extern int rootStatFloor[400];

// Exchange margins of move-loop pruning by reduced depth.
inline constexpr int seeMargin[19] = {-50,  -50,  -50,  -50,  -50,  -50,  -150, -150, -250, -250,
                                      -350, -350, -450, -550, -650, -750, -950, -1150, -1250};

// Rebuilds all tables from the options and the tree-search mode. Only while the workers are idle.
void buildSearchTables();

// Bonuses of the history tables by depth in half plies; 0 above 30.
int historyBonus(int depth);
int contBonus(int depth);

// Sets the contempt of both colours from c' (centipawns, for the side to move at the root or, with White Contempt,
// for White).
void setContempt(int value, Colour rootSide);
// The value c' after an iteration's score.
int contemptFromScore(int score, int contempt);
