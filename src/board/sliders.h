// Attacks of sliding pieces: one PEXT, one pointer load and one table load each.
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
