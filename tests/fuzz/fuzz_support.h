// What the fuzzers share: the end of the process made bearable, and checks that keep an input.
#pragma once

#include "board/end_process.h"

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

// Crashes, so that the fuzzer keeps the input, unless a property holds.
inline void require(bool holds, const char* property) {
    if (holds) return;
    std::fprintf(stderr, "fuzzer: does not hold: %s\n", property);
    std::abort();
}

// libFuzzer finds these by name.
extern "C" int LLVMFuzzerInitialize(int* argumentCount, char*** arguments);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
