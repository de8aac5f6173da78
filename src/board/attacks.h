// Attack sets of whole sides and tests for check.
#pragma once

#include "board/position.h"

// Every square that a colour attacks, over the occupancy as it stands: the other king blocks like any piece.
Bitboard attackedBy(const Position& pos, Colour colour);

// Whether a colour attacks one square, with the given occupancy.
bool isAttacked(const Position& pos, int square, Colour byColour, Bitboard occupied);

// Whether the side to move is in check.
inline bool isInCheck(const Position& pos) {
    const Colour us = pos.sideToMove();
    return isAttacked(pos, pos.kingSquare(us), opponent(us), pos.occupied);
}
