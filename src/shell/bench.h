// The benchmark: fixed-depth searches over 50 stored positions, counting nodes and time.
#pragma once

#include <cstdint>

struct BenchResult {
    std::uint64_t nodes = 0;     // of the last depth: the signature, as commit messages give it
    std::uint64_t allNodes = 0;  // of all depths and passes
    double seconds = 0;          // of all passes
};

// Runs it with its own arguments: threads, last depth, passes; each may be missing. Prints a row for each
// depth. No search can follow: the threads and tables are gone.
BenchResult runBench(int argumentCount, char** arguments);
