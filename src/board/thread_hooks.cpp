#include "board/thread_hooks.h"

ThreadHooks threadHooks[MaxThreads];
PrefetchBases prefetchBases;
