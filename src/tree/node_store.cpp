#include "tree/node_store.h"

#include "search/thread_pool.h"

MctsTable mctsTable;

void MctsTable::allocate(int megabytes) {
    free();
    nodes.allocate((std::size_t(megabytes) << 20) / sizeof(MctsNode), "tree nodes");
    capacity = int(nodes.size());
}

void MctsTable::free() { nodes.free(); }

bool MctsTable::isNearlyFull() const {
    constexpr int MarginPerThread = 200;
    return nodeCount.load(std::memory_order_relaxed) > capacity - MarginPerThread * threadPool.threadCount;
}

void MctsNode::beginChild(Move fromParent) {
    busy.store(0, std::memory_order_relaxed);
    move = fromParent;
    visitWeight = 1.0;
    visits.store(1, std::memory_order_relaxed);
    firstChild.store(nullptr, std::memory_order_relaxed);
    valueSum = 0.0;
    nextSibling.store(nullptr, std::memory_order_relaxed);
}

void MctsNode::normalisePriors(double total) {
    if (total > 0.0)
        for (MctsNode* made = child(); made; made = made->sibling())
            made->prior = float(double(made->prior.load()) / total);
}
