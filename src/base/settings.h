// The values of the UCI options, with their defaults. The shell's option table writes them, on the main
// thread; every layer reads them. Numbers are relaxed words because an option may be set while workers
// search.
#pragma once

#include "base/relaxed.h"

#include <string>

struct Settings {
    Relaxed<int> threads = 1;
    Relaxed<bool> ponder = true;
    Relaxed<int> hash = 192;         // megabytes
    Relaxed<int> tableMemory = 128;  // megabytes, shared by all threads' caches
    Relaxed<int> multiPv = 1;
    Relaxed<int> ownBook = 1000;  // not 0: on
    std::string bookFile = "tarvok.bin";
    Relaxed<int> bookMoves = 1000;
    Relaxed<bool> bestBookLine = false;
    std::string logFile;  // empty: no log
    std::string hashFileName = "<empty>";
    Relaxed<bool> chess960 = false;
    Relaxed<bool> analyseMode = false;
    Relaxed<bool> useLmr = true;
    Relaxed<bool> nullMovePruning = true;
    Relaxed<int> minimalReporting = 0;
    Relaxed<int> overheadMs = 50;
    Relaxed<int> timeUsage = 0;
    Relaxed<bool> useSyzygy = true;
    std::string syzygyPath = "<empty>";
    Relaxed<int> syzygyProbeDepth = 8;  // half plies
    Relaxed<int> syzygyProbeLimit = 6;  // men
    Relaxed<bool> syzygy50MoveRule = true;
    Relaxed<bool> smartSyzygy = true;
    Relaxed<int> kingSafety = 72;
    Relaxed<int> selectivity = 170;
    Relaxed<int> reduction = -15;
    Relaxed<int> dynamism = 125;
    Relaxed<int> contempt = 16;
    Relaxed<bool> whiteContempt = false;
    Relaxed<int> mctsHash = 128;  // megabytes
    Relaxed<bool> useMcts = false;
    Relaxed<int> mctsExplore = 40;
    Relaxed<int> progressThreshold = 30;
    Relaxed<int> variety = 0;
    Relaxed<int> skill = 20;
};
inline Settings settings;
