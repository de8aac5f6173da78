// Attacks of sliding pieces, without magic multipliers: one PEXT, one pointer load and one table load each;
// and attacks of any piece by its type.
#pragma once

#include "board/geometry.h"

#include <immintrin.h>

// Slices of the two attack tables, by square; entry i of a slice is the attack set for the occupancy that
// PEXT turns into i. Filled by `initSliders`.
extern const Bitboard* bishopSlice[64];
extern const Bitboard* rookSlice[64];

// Fills both tables. Called once, before any position is read.
void initSliders();

// Each ray runs up to and including its first occupied square. An occupied own square changes nothing.
inline Bitboard bishopAttacksOf(int square, Bitboard occupied) {
    return bishopSlice[square][_pext_u64(occupied, bishopMask[std::size_t(square)])];
}
inline Bitboard rookAttacksOf(int square, Bitboard occupied) {
    return rookSlice[square][_pext_u64(occupied, rookMask[std::size_t(square)])];
}
inline Bitboard queenAttacksOf(int square, Bitboard occupied) {
    return bishopAttacksOf(square, occupied) | rookAttacksOf(square, occupied);
}

// Attacks of one piece by its type; pawns, whose attacks depend on their colour, are not among them.
template <PieceType type>
inline Bitboard attacksOf(int square, Bitboard occupied) {
    static_assert(type >= Knight && type <= King);
    if constexpr (type == Knight) return knightAttacks[std::size_t(square)];
    if constexpr (type == King) return kingAttacks[std::size_t(square)];
    if constexpr (type == Bishop) return bishopAttacksOf(square, occupied);
    if constexpr (type == Rook) return rookAttacksOf(square, occupied);
    if constexpr (type == Queen) return queenAttacksOf(square, occupied);
}
inline Bitboard attacksOf(int type, int square, Bitboard occupied) {
    switch (type) {
        case Knight: return attacksOf<Knight>(square, occupied);
        case Bishop: return attacksOf<Bishop>(square, occupied);
        case Rook: return attacksOf<Rook>(square, occupied);
        case Queen: return attacksOf<Queen>(square, occupied);
        default: return attacksOf<King>(square, occupied);
    }
}
