// The node array of the tree search. Nodes are taken in order from its front, and the whole tree is dropped
// when the next search starts: there is no free list, no replacement and no hashing.
#pragma once

#include "base/large_table.h"
#include "base/relaxed.h"
#include "board/move.h"

#include <atomic>
#include <cstdint>

// A node belongs to the side that moved into it: all values speak for that side.
//
//   node -> firstChild -> nextSibling -> nextSibling -> null
//
// Children of one node are linked in generation order. Any thread may read any node at any time; only `busy`
// keeps two threads from expanding the same one. Sums and weights are read, changed and written without a
// lock, and a lost update is accepted.
struct MctsNode {
    Relaxed<double> valueSum;            // of the values credited, each 0 to 1
    Relaxed<float> prior;                // square of the first value, normalised over the siblings
    std::atomic<MctsNode*> firstChild;   // null: not expanded; may be linked before it has a value
    std::atomic<MctsNode*> nextSibling;  // null: last child
    Relaxed<Move> move;                  // from the parent; 0 in the root
    Relaxed<double> visitWeight;         // completed visits, and the virtual loss of each descent in flight
    std::atomic<std::uint64_t> visits;   // completed visits
    std::atomic<std::uint8_t> busy;      // 1 while a thread expands the node

    MctsNode* child() const { return firstChild.load(std::memory_order_acquire); }
    MctsNode* sibling() const { return nextSibling.load(std::memory_order_acquire); }
    std::uint64_t visitCount() const { return visits.load(std::memory_order_relaxed); }
    bool isBusy() const { return busy.load(std::memory_order_acquire) != 0; }
    double mean() const { return valueSum / double(visitCount()); }

    // A fresh child with one visit and no value yet. Nobody else may know of the node.
    void beginChild(Move fromParent);
    // Divides the children's priors by their sum `total`. Squared first values are the whole policy: a move
    // that looks winning draws the most exploration.
    void normalisePriors(double total);
};
static_assert(sizeof(MctsNode) == 64);

class MctsTable {
   public:
    // Replaces the array by one of that many megabytes. The memory is not touched.
    void allocate(int megabytes);
    void free();

    // Whether the search must end because few records are left. An expansion may take more than its thread's
    // share of the margin, so it tests the capacity itself.
    bool isNearlyFull() const;

    LargeTable<MctsNode> nodes;      // element 0 is the root
    int capacity = 0;                // records that may be used
    std::atomic<int> nodeCount = 0;  // next free index in root preparation, then the last index given out
};
extern MctsTable mctsTable;
