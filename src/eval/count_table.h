// Tables by count, for terms that are worth the same each time.
#pragma once

#include "eval/lanes.h"

#include <array>
#include <cstddef>

// There is room for any board that a FEN can set up.
inline constexpr std::size_t CountEntries = 65;
using CountTable = std::array<Lanes, CountEntries>;

constexpr CountTable timesCount(int mg, int eg) {
    CountTable table{};
    for (std::size_t i = 0; i < CountEntries; ++i) table[i] = Lanes(mg * int(i), eg * int(i));
    return table;
}

inline Lanes at(const CountTable& table, int count) { return table[std::size_t(count)]; }
