// How the tree values a position: by alpha-beta, never by a random game. Scores speak for the side that moved
// into the position, in centipawns; `ply` is that of the parent node. A score is worthless once the thread is
// stopped.
#pragma once

#include "board/position.h"

// A ladder of shallow depths for a new node. `losing`: the move into it loses material.
int mctsShallowValue(Position& pos, int ply, bool losing);

// Deepens while the thread has searched fewer nodes than its budget, and never begins a window beyond three
// times of it. `number` is the child's running number among its siblings, from 1; later siblings get less.
int leafBudgetSearch(Position& pos, int ply, int number, int budget);
