// Entry points of the alpha-beta search. Scores are centipawns from the side to move's view, depths half
// plies; every search returns 0 after a stop, and its caller tests the thread's stop flag and throws the
// value away.
//
// The searches follow the principal variation: the first move of a node with an open window is searched with
// that window (`searchFullWindow`), each later one first with a null window (`searchZeroWindow`), and again
// with the open one only if it beats that (PVS).
#pragma once

#include "board/position.h"

// Half plies of extension that every line from the root has to its credit.
inline constexpr int RootExtensionCredit = -8;

// One `go`: prepares the tables, makes the root list, wakes the workers, deepens, and prints the answer.
// `depthLimit` in plies, the times in seconds; `searchMoves` the listed moves, each followed by a blank;
// `infinite` waits for a stop at the end.
void think(Position& root, int depthLimit, double targetSeconds, double maxSeconds, const char* searchMoves,
           bool infinite);

// While pondering, and in a search without end, waits for the user's word and runs commands meanwhile.
void waitForUser();

// After a quit, with the workers idle: ends the search without an answer, and the process. Returns only in
// tests.
void endForQuit();

// One iteration with its aspiration windows, on any thread; `depth` in plies.
void searchIteration(Position& pos, int depth);

int searchRoot(Position& pos, int depth, int alpha, int beta, Move* pv);

// Whether a node may deepen internally: look for its first move by a shallower search of itself, which may
// not do so again.
enum class Deepening { Allowed, Forbidden };

// Nodes of the principal variation; `pv` is a row of 64 words.
int searchFullWindow(Position& pos, int alpha, int beta, int depth, int ply, Move* pv, Deepening deepening);

// The same search as the top of a tree search's leaf: without internal deepening and singular extension.
int treeAlphaBeta(Position& pos, int alpha, int beta, int depth, int ply, Move* pv);

// What a zero-window node is asked.
struct ZeroWindowCall {
    int beta;                // the window is (beta - 1, beta)
    int depth;               // half plies
    int ply;                 // distance from the root
    Move excluded = NoMove;  // not to be tried
    bool noNull = false;     // forbids the null move and internal deepening
    bool cutNode = false;    // a fail high is expected
};

// All other nodes. `pv` holds two words or more.
int searchZeroWindow(Position& pos, const ZeroWindowCall& call, Move* pv);

// Captures, promotions and, at `qDepth` 0, checks; `qDepth` falls by 2 a ply.
int searchQuiescence(Position& pos, int alpha, int beta, int qDepth, int ply, Move* pv);
