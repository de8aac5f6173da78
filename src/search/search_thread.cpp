#include "search/search_thread.h"

#include "board/thread_hooks.h"
#include "eval/caches.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr int CacheFailureStatus = -1;

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
    matHash.allocate(MatCacheEntries, "mat_hash", CacheFailureStatus);
    pawnHash.allocate(prefetchBases.pawnMask + 1, "pawn_hash", CacheFailureStatus);
    evalCache.allocate(prefetchBases.evalMask + 1, "eval_cache", CacheFailureStatus);
    ThreadHooks& hooks = threadHooks[index];
    hooks.matHash = matHash.data();
    hooks.pawnHash = pawnHash.data();
    hooks.evalCache = evalCache.data();
}

void SearchThread::freeCaches() {
    matHash.free();
    pawnHash.free();
    evalCache.free();
}

void SearchThread::clearEvalCache() {
    LargeMemory& memory = evalCache.pages();
    memory.forgetUntouched();
    if (memory.touchedBytes()) std::memset(memory.data(), 0, memory.touchedBytes());
}
