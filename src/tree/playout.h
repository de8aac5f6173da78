// Walks down the tree: selection, expansion, and the searches that value a node on its first visits.
#pragma once

#include "board/position.h"
#include "tree/node_store.h"

struct PlayoutResult {
    double value = 0.0;     // 0 to 1, for the side that moved into the node
    bool credited = false;  // false: nothing is to be credited, and the value means nothing
};

// One walk from `node`, whose position is `pos`, `ply` from the root.
PlayoutResult mctsPlayout(MctsNode* node, Position& pos, int ply);

// Whether a position that was just made in the tree is a draw by rule. `ply` is that of its parent: near the
// root the game's own rule holds, deeper one repetition is enough. Sets `inCheck` of the child.
bool isTreeDraw(const Position& pos, Position& child, int ply);

// Settings of one search, written before the workers wake.
extern float mctsExplore;
extern float mctsVirtualVisit;  // weight of a descent in flight
extern float mctsBusyPenalty;   // off the mean of a node that is being expanded
extern int mctsFirstBudget;     // nodes of a node's second visit
extern int mctsSecondBudget;    // and of its third

// The deepest ply that a playout has reached.
extern Relaxed<int> mctsSelDepth;

// Root children that cannot catch up with the leader any more, by index; one more entry than there are moves.
extern Relaxed<bool> mctsPruned[MaxListMoves + 1];
