// Attack sets of whole sides and tests for check.
#pragma once

#include "board/position.h"
#include "board/sliders.h"

// Every square that a colour attacks through `occupied`. The other king, if it is in there, blocks like any
// piece.
Bitboard attackedBy(const Position& pos, Colour colour, Bitboard occupied);
// The same over the occupancy as it stands.
inline Bitboard attackedBy(const Position& pos, Colour colour) {
    return attackedBy(pos, colour, pos.occupied);
}

// Whether a colour attacks one square, with the given occupancy. One branch for the caller: the lookups
// together cost less than a mispredicted jump between them.
inline bool isAttacked(const Position& pos, int square, Colour byColour, Bitboard occupied) {
    const Bitboard(&them)[7] = pos.pieces[byColour];
    const std::size_t at = std::size_t(square);
    const Bitboard leapers = (knightAttacks[at] & them[Knight]) | (kingAttacks[at] & them[King]) |
                             (pawnAttackers[byColour][at] & them[Pawn]);
    const Bitboard sliders = (bishopAttacksOf(square, occupied) & (them[Bishop] | them[Queen])) |
                             (rookAttacksOf(square, occupied) & (them[Rook] | them[Queen]));
    return (leapers | sliders) != 0;
}

// Whether the side to move is in check.
inline bool isInCheck(const Position& pos) {
    const Colour us = pos.sideToMove();
    return isAttacked(pos, pos.kingSquare(us), opponent(us), pos.occupied);
}
