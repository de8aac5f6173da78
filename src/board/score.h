// The evaluation's pair of a middlegame and an endgame value in one machine word. One addition serves both
// lanes.
#pragma once

#include <cstdint>

// eg in bits 0-30, mg in bits 32-62, each a 31-bit two's complement number.
// Bits 31 and 63 catch one carry each and are clear in every stored value.
struct Score {
    std::uint64_t word = 0;
    friend constexpr bool operator==(Score, Score) = default;
};

inline constexpr std::uint64_t LaneMask = 0x7fffffff7fffffffULL;

constexpr Score pair(int mg, int eg) {
    return {((std::uint64_t(std::uint32_t(mg)) << 32) | std::uint32_t(eg)) & LaneMask};
}

constexpr Score operator+(Score a, Score b) { return {(a.word + b.word) & LaneMask}; }
// The constant keeps the borrow of the eg lane out of the mg lane.
constexpr Score operator-(Score s) { return {(0x80000000ULL - s.word) & LaneMask}; }
constexpr Score operator-(Score a, Score b) { return a + -b; }
constexpr Score& operator+=(Score& a, Score b) { return a = a + b; }
constexpr Score& operator-=(Score& a, Score b) { return a = a - b; }

// Sign-extends one 31-bit lane.
constexpr int lane(std::uint32_t bits) { return int((bits & 0x7fffffffu) + 2 * (bits & 0x40000000u)); }
constexpr int egOf(Score s) { return lane(std::uint32_t(s.word)); }
constexpr int mgOf(Score s) { return lane(std::uint32_t(s.word >> 32)); }

// Both lanes times a small count.
constexpr Score operator*(Score s, int count) { return pair(mgOf(s) * count, egOf(s) * count); }

static_assert(mgOf(pair(-5, -1) + pair(3, -1) + pair(0, -1)) == -2 && egOf(-pair(-5, 7)) == -7);
