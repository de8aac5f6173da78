#include "tree/node_store.h"

#include "base/end_process.h"
#include "search/thread_pool.h"

#include <cstdio>

namespace MctsTable {

MctsNode* nodes = nullptr;
int capacity = 0;
std::atomic<int> nodeCount = 0;

static LargeMemory memory;

void allocate(int megabytes) {
    free();
    const std::size_t bytes = std::size_t(megabytes) << 20;
    if (!memory.allocate(bytes)) {
        std::fprintf(stderr, "Unable to allocate %zu bytes of memory for %s\n", bytes, "tree nodes");
        endProcess(1);
    }
    nodes = static_cast<MctsNode*>(memory.data());
    capacity = megabytes << 14;
}

void free() {
    memory.free();
    nodes = nullptr;
}

LargeMemory& pages() { return memory; }

bool isNearlyFull() {
    constexpr int MarginPerThread = 200;
    return nodeCount.load(std::memory_order_relaxed) > capacity - MarginPerThread * threadPool.threadCount;
}

}  // namespace MctsTable

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
