// What the fuzzers share: the end of the process made bearable, checks that keep an input, and a small
// engine.
#pragma once

#include "base/end_process.h"
#include "board/sliders.h"
#include "search/thread_pool.h"
#include "search/trans_table.h"
#include "support/board_environment.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

// Thrown where the engine would have ended the process.
struct ProcessEnded {
    int status;
};
inline void takeOverProcessEnd() {
    endProcessHook = [](int status) { throw ProcessEnded{status}; };
}

// What every layer but the shell stands on, with the least memory.
inline void startSmallEngine() {
    takeOverProcessEnd();
    initSliders();
    threadPool.tableMemoryInUse = 1;
    threadPool.resize(true);
    transTable.resize(1);
}

// Crashes, so that the fuzzer keeps the input, unless a property holds.
inline void require(bool holds, const char* property) {
    if (holds) return;
    std::fprintf(stderr, "fuzzer: does not hold: %s\n", property);
    std::abort();
}

// Makes a clean move if the rules allow it.
inline bool makeLegal(const Position& pos, Position& child, Move move) {
    const std::vector<Move> moves = pseudoLegalMoves(pos);
    return std::count(moves.begin(), moves.end(), move) > 0 && makeChild(pos, child, move);
}

// libFuzzer finds these by name.
extern "C" int LLVMFuzzerInitialize(int* argumentCount, char*** arguments);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
