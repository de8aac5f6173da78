// Entry points of the alpha-beta search. Scores are centipawns from the side to move's view, depths half
// plies; every search returns 0 after a stop, and its caller tests the thread's stop flag and throws the
// value away.
#pragma once

#include "board/position.h"

// Half plies of extension that every line from the root has to its credit.
inline constexpr int RootExtensionCredit = -8;

// One `go`: prepares the tables, makes the root list, wakes the workers, deepens, and prints the answer.
// `depthLimit` in plies, the times in seconds; `searchMoves` the listed moves, each followed by a blank;
// `infinite` waits for a stop at the end.
void think(Position& root, int depthLimit, double targetSeconds, double maxSeconds, const char* searchMoves,
           int infinite);

// While pondering, and in a search without end, waits for the user's word and runs commands meanwhile.
void waitForUser();

// One iteration with its aspiration windows, on any thread; `depth` in plies.
void searchIteration(Position& pos, int depth);

int searchRoot(Position& pos, int depth, int alpha, int beta, Move* pv);

// Nodes of the principal variation; `pv` is a row of 64 words.
int searchFullWindow(Position& pos, int alpha, int beta, int depth, int ply, Move* pv,
                     bool internalDeepening);

// The same search as the top of a tree search's leaf: without internal deepening and singular extension.
int treeAlphaBeta(Position& pos, int alpha, int beta, int depth, int ply, Move* pv);

// All other nodes, with the window (beta - 1, beta). `excluded` is a move not to be tried, `noNull` forbids
// the null move and internal deepening, `cutNode` expects a fail high. `pv` holds two words or more.
int searchZeroWindow(Position& pos, int beta, int depth, int ply, Move* pv, Move excluded, bool noNull,
                     bool cutNode);

// Captures, promotions and, at `qDepth` 0, checks; `qDepth` falls by 2 a ply.
int searchQuiescence(Position& pos, int alpha, int beta, int qDepth, int ply, Move* pv);
