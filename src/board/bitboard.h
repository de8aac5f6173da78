// Operations on sets of squares: loops, shifts and pawn fills.
#pragma once

#include "board/types.h"

#include <bit>

inline constexpr Bitboard FileA = 0x0101010101010101ULL;
inline constexpr Bitboard FileH = FileA << 7;
inline constexpr Bitboard NotFileA = ~FileA;
inline constexpr Bitboard NotFileH = ~FileH;
inline constexpr Bitboard WestFiles = 0x0f0f0f0f0f0f0f0fULL;  // a to d
inline constexpr Bitboard Rank1 = 0xffULL;
inline constexpr Bitboard Rank8 = Rank1 << 56;

constexpr Bitboard bit(int square) { return 1ULL << square; }
constexpr Bitboard rankMask(int rank) { return Rank1 << (8 * rank); }

// The given rank, 0 to 7, as the colour sees it.
constexpr Bitboard relativeRankMask(Colour colour, int rank) {
    return rankMask(colour == White ? rank : 7 - rank);
}

// The four ranks next to the colour's back rank, that one included.
template <Colour us>
inline constexpr Bitboard OwnHalf = us == White ? 0x00000000ffffffffULL : 0xffffffff00000000ULL;

constexpr int popcount(Bitboard set) { return std::popcount(set); }
constexpr int lowestSquare(Bitboard set) { return std::countr_zero(set); }
constexpr int highestSquare(Bitboard set) { return 63 - std::countl_zero(set); }
constexpr bool severalBits(Bitboard set) { return (set & (set - 1)) != 0; }

// Removes the lowest square of the set and returns it. The set must not be empty.
constexpr int popLowest(Bitboard& set) {
    const int square = lowestSquare(set);
    set &= set - 1;
    return square;
}

// Visits every square of the set, the lowest first, which is part of several rules.
template <class Visit>
inline void forEachSquare(Bitboard set, Visit visit) {
    for (; set; set &= set - 1) visit(lowestSquare(set));
}

// The squares one step ahead of a set of pawns.
template <Colour us>
constexpr Bitboard pawnPushes(Bitboard pawns) {
    return us == White ? pawns << 8 : pawns >> 8;
}
constexpr Bitboard pawnPushes(Colour us, Bitboard pawns) {
    return us == White ? pawnPushes<White>(pawns) : pawnPushes<Black>(pawns);
}

// Pawn captures towards the h-file and towards the a-file.
template <Colour us>
constexpr Bitboard pawnAttacksEast(Bitboard pawns) {
    return us == White ? (pawns << 9) & NotFileA : (pawns >> 7) & NotFileA;
}
template <Colour us>
constexpr Bitboard pawnAttacksWest(Bitboard pawns) {
    return us == White ? (pawns << 7) & NotFileH : (pawns >> 9) & NotFileH;
}
template <Colour us>
constexpr Bitboard pawnAttacks(Bitboard pawns) {
    return pawnAttacksEast<us>(pawns) | pawnAttacksWest<us>(pawns);
}
constexpr Bitboard pawnAttacks(Colour us, Bitboard pawns) {
    return us == White ? pawnAttacks<White>(pawns) : pawnAttacks<Black>(pawns);
}

// The squares beside the set on the same rank.
constexpr Bitboard besides(Bitboard set) { return ((set << 1) & NotFileA) | ((set >> 1) & NotFileH); }

// Fills include the squares that they start from.
constexpr Bitboard fillUp(Bitboard set) {
    set |= set << 8;
    set |= set << 16;
    return set | set << 32;
}
constexpr Bitboard fillDown(Bitboard set) {
    set |= set >> 8;
    set |= set >> 16;
    return set | set >> 32;
}
template <Colour us>
constexpr Bitboard fillAhead(Bitboard set) {
    return us == White ? fillUp(set) : fillDown(set);
}
