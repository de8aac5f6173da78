// The evaluation's sums in the making, whose lanes need no mask after each addition as those of a Score do.
#pragma once

#include "board/score.h"

#include <cstdint>

// mg * 2^32 + eg, modulo 2^64: a negative eg takes one from the mg above it, and whoever reads gives it back.
// So sums, differences and multiples by a count are those of one plain number.
struct Lanes {
    std::uint64_t word = 0;
    constexpr Lanes() = default;
    constexpr Lanes(int mg, int eg) : word((std::uint64_t(mg) << 32) + std::uint64_t(eg)) {}
    // Doubles both lanes' sign bits, which makes them those of 32 bits, and borrows for eg.
    constexpr explicit Lanes(Score score)
        : word(score.word + 2 * (score.word & (1ULL << 62)) - 2 * (score.word & (1ULL << 30))) {}
    friend constexpr bool operator==(Lanes, Lanes) = default;

    constexpr Lanes& operator+=(Lanes other) {
        word += other.word;
        return *this;
    }
    constexpr Lanes& operator-=(Lanes other) {
        word -= other.word;
        return *this;
    }
    constexpr Lanes& operator*=(int count) {
        word *= std::uint64_t(count);
        return *this;
    }
};

constexpr Lanes operator+(Lanes a, Lanes b) { return a += b; }
constexpr Lanes operator-(Lanes a, Lanes b) { return a -= b; }
constexpr Lanes operator-(Lanes a) { return Lanes() - a; }
constexpr Lanes operator*(Lanes a, int count) { return a *= count; }

constexpr int egOf(Lanes a) { return int(std::uint32_t(a.word)); }
constexpr int mgOf(Lanes a) { return int(std::uint32_t((a.word + 0x80000000ULL) >> 32)); }
constexpr Score scoreOf(Lanes a) { return pair(mgOf(a), egOf(a)); }

static_assert(mgOf(Lanes(-5, -1) + Lanes(3, -1) + Lanes(0, -1)) == -2 && egOf(Lanes(-5, 7) * -1) == -7);
static_assert(Lanes(pair(-5, -1)) == Lanes(-5, -1) && scoreOf(Lanes(-5, -1)) == pair(-5, -1));
