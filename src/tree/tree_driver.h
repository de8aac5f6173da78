// The driver of the tree search: root preparation, playouts until a rule stops them, and the choice of the
// move.
#pragma once

#include "board/position.h"
#include "tree/node_store.h"

// Makes the tree search a mode of the search. Called once, before the first search.
void installTreeSearch();

// The whole run on thread 0, from the prepared root and its list to the answer. `seconds` is the time
// allotted.
void mctsDriver(Position& root, bool infinite, double seconds);

// A worker's playouts, on its own copy of the root.
void mctsWorkerLoop(Position& rootCopy);

// Sets the budgets and constants of a search, and gives every root move a node with its first value.
void prepareTree(Position& root, double seconds);

// What the tree tells the world; the shell fills these in.
struct TreeReports {
    void (*searchEnd)(const MctsNode& best, double seconds) = [](const MctsNode&, double) {};
    void (*bestMove)(Move best, Move ponder) = [](Move, Move) {};
};
inline TreeReports treeReports;
