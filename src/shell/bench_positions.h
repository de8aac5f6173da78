// The positions of the fixed benchmark, which the micro-benchmarks measure on too.
#pragma once

#include <array>

inline constexpr int BenchPositionCount = 50;

// FENs without clocks. The order is part of the benchmark: tables live on from one to the next.
extern const std::array<const char*, BenchPositionCount> benchPositions;
