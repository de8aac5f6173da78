// What a tree search goes by, and what changes while it runs.
#pragma once

#include "base/relaxed.h"
#include "board/move.h"

// Settings of one search, written by the tree's driver before the workers wake.
struct TreeSettings {
    float mctsExplore = 0.4f;
    // Virtual loss: the weight of a descent in flight, which has no value yet and so lowers the mean.
    float mctsVirtualVisit = 0.2f;
    float mctsBusyPenalty = 0.3f;   // off the mean of a node that is being expanded
    double mctsBudgetDecay = 0.95;  // the share of the budget that the next sibling gets
    int mctsFirstBudget = 70000;    // nodes of a node's second visit
    int mctsSecondBudget = 140000;  // and of its third
};
inline TreeSettings treeSettings;

struct TreeState {  // NOLINT(bugprone-reserved-identifier): of the loop that the compiler copies the flags by
    // The deepest ply that a playout has reached.
    Relaxed<int> mctsSelDepth = 0;
    // Root children that cannot catch up with the leader any more, by index; one more entry than there are
    // moves. Written by thread 0.
    Relaxed<bool> mctsPruned[MaxListMoves + 1] = {};
};
inline TreeState treeState;
