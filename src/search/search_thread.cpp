#include "search/search_thread.h"

#include "base/end_process.h"
#include "board/thread_hooks.h"
#include "eval/caches.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

template <class Entry>
Entry* allocateTable(LargeMemory& memory, std::size_t entries, const char* name) {
    const std::size_t bytes = entries * sizeof(Entry);
    if (!memory.allocate(bytes)) {
        std::fprintf(stderr, "Unable to allocate %d bytes of memory for %s\n", int(bytes), name);
        endProcess(-1);
    }
    return static_cast<Entry*>(memory.data());
}

template <class Table, class Value>
void fillTable(Table& table, Value value) {
    Value* first = reinterpret_cast<Value*>(&table);
    std::fill(first, first + sizeof table / sizeof value, value);
}

}  // namespace

void SearchThread::init(int index) {
    iterationDepth = 0;
    std::memset(iterationScore, 0, sizeof iterationScore);
    std::memset(iterationPv, 0, sizeof iterationPv);
    std::memset(rootMoves, 0, sizeof rootMoves);
    nodes = 0;
    clearKillers();
    evalCache = nullptr;
    pawnHash = nullptr;
    matHash = nullptr;
    hasWorker = false;
    hasHistory = false;
    startFlag = false;
    stopFlag = std::uint8_t{0};

    ThreadHooks& hooks = threadHooks[index];
    hooks = ThreadHooks{};
    hooks.nodes = &nodes;
    hooks.stopFlag = &stopFlag;
    hooks.history = &history[0][0];
    hooks.captureHistory = captureHistory;
    hooks.continuationHistory = &continuationHistory[0][0][0];
}

void SearchThread::resetHistory() {
    fillTable(history, HistoryCentre);
    fillTable(captureHistory, CaptureCentre);
    fillTable(continuationHistory, std::uint16_t(HistoryCentre));
}

void SearchThread::clearKillers() {
    std::memset(killers, 0, sizeof killers);
    std::memset(counterMoves, 0, sizeof counterMoves);
}

void SearchThread::allocateCaches(int index) {
    iterationDepth = 0;
    if (!hasHistory) resetHistory();
    hasHistory = true;
    matHash = allocateTable<MatCacheEntry>(cacheMemory[MatMemory], MatCacheEntries, "mat_hash");
    pawnHash = allocateTable<PawnEntry>(cacheMemory[PawnMemory], prefetchBases.pawnMask + 1, "pawn_hash");
    evalCache =
        allocateTable<EvalCacheEntry>(cacheMemory[EvalMemory], prefetchBases.evalMask + 1, "eval_cache");
    ThreadHooks& hooks = threadHooks[index];
    hooks.matHash = matHash;
    hooks.pawnHash = pawnHash;
    hooks.evalCache = evalCache;
}

void SearchThread::freeCaches() {
    for (LargeMemory& memory : cacheMemory) memory.free();
    matHash = nullptr;
    pawnHash = nullptr;
    evalCache = nullptr;
}

void SearchThread::clearEvalCache() {
    LargeMemory& memory = cacheMemory[EvalMemory];
    memory.forgetUntouched();
    if (memory.touchedBytes()) std::memset(memory.data(), 0, memory.touchedBytes());
}
