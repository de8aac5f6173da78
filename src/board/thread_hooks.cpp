#include "board/thread_hooks.h"

ThreadHooks threadHooks[MaxThreads];
PrefetchBases prefetchBases;

void attachThread(Position& pos, int threadIndex) {
    const ThreadHooks& hooks = threadHooks[threadIndex];
    pos.threadIndex = std::int16_t(threadIndex);
    pos.evalCache = hooks.evalCache;
    pos.pawnHash = hooks.pawnHash;
    pos.matHash = hooks.matHash;
    pos.history = hooks.history;
    pos.contHist = hooks.continuationHistory;
    pos.contHist2 = hooks.continuationHistory;
}
