// The one geometry table by two squares, in a file of its own because every reader would compute it again.
#include "board/geometry.h"

static constexpr int signOf(int value) { return (value > 0) - (value < 0); }

static constexpr std::array<SquareTable, 64> makeBetween() {
    std::array<SquareTable, 64> table{};
    for (int from = 0; from < 64; ++from) {
        for (int to = 0; to < 64; ++to) {
            if (!geometry::onRookLine(from, to) && !geometry::onBishopLine(from, to)) continue;
            const int step = signOf(rankOf(to) - rankOf(from)) * 8 + signOf(fileOf(to) - fileOf(from));
            if (step == 0) continue;
            for (int square = from + step; square != to; square += step)
                table[std::size_t(from)][std::size_t(to)] |= bit(square);
        }
    }
    return table;
}

constexpr std::array<SquareTable, 64> between = makeBetween();
