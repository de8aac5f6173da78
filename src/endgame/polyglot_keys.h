// The opening book's key of a position, by the published PolyGlot table of 781 random numbers.
#pragma once

#include "board/position.h"

// The numbers in their published order: 64 * piece + square (black pawn, white pawn, black knight ... white
// king), then four castling rights, eight en-passant files, and White to move.
extern const Key polyglotRandom[781];

// The key, from scratch. The en-passant number counts while `epMask` is set.
Key bookKey(const Position& pos);
