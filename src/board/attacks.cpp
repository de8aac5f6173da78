#include "board/attacks.h"

Bitboard attackedBy(const Position& pos, Colour colour, Bitboard occupied) {
    const Bitboard(&own)[7] = pos.pieces[colour];
    Bitboard attacks = pawnAttacks(colour, own[Pawn]);
    forEachSquare(own[Knight], [&](int square) { attacks |= knightAttacks[std::size_t(square)]; });
    forEachSquare(own[Bishop] | own[Queen],
                  [&](int square) { attacks |= bishopAttacksOf(square, occupied); });
    forEachSquare(own[Rook] | own[Queen], [&](int square) { attacks |= rookAttacksOf(square, occupied); });
    forEachSquare(own[King], [&](int square) { attacks |= kingAttacks[std::size_t(square)]; });
    return attacks;
}
