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
