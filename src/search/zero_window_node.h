// The node of the zero-window search, for its move loop and for the pruning before its moves.
#pragma once

#include "search/node.h"

// One node with the window (beta - 1, beta). Pruning and the null move may change the depth for all that
// follows.
struct ZeroWindowNode : SearchNode {
    const Move excluded;  // not to be tried, 0 for none
    const bool noNull, cutNode;
    bool noHashMove = true;
    bool singularCandidate = false;  // the hash move may be better than all others together
    bool floorSet = false;           // `best` began as a made-up bound and not as no score
    bool hashMoveTactical = false;   // the hash move was tried and is tactical
    Key key = 0;                     // differs from the position's if a move is excluded
    int estimate = 0;                // `eval`, drawn towards the table's score
    Move undoMove = NoMove;          // would only take the own last move back
    int moveLimit = 0;               // quiet moves before late move pruning
    int movesSeen = 0;               // with some of the pruned ones
    Move childPv[2];

    ZeroWindowNode(Position& position, const ZeroWindowCall& call, Move* line)
        : SearchNode(position, call.beta, call.depth, call.ply, line),
          excluded(call.excluded),
          noNull(call.noNull),
          cutNode(call.cutNode) {}

    // Once the table has been read, or read again.
    void noteSingularCandidate() {
        constexpr int DepthGap = 7;  // half plies that the entry may be shallower
        singularCandidate =
            !excluded && table.move && table.depth >= depth - DepthGap && (table.bound & LowerBound);
    }
};

// Steps of pruning_before_moves.cpp, in the node's order. True if the node has ended, with its `result` set.

// Out of check: what the static score and a pass allow to settle without trying a move.
bool pruneBeforeMoves(ZeroWindowNode& node);
// Finds a move to try first where the table has none worth trusting, also in check. Ends the node after a
// stop.
bool internalIterativeDeepening(ZeroWindowNode& node);
