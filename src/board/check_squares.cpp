#include "board/check_squares.h"

#include "board/geometry.h"
#include "board/sliders.h"

void CheckSquares::find(const Position& pos) {
    const Colour us = pos.sideToMove();
    const Bitboard(&own)[7] = pos.pieces[us];
    const int king = pos.kingSquare(opponent(us));
    const std::size_t at = std::size_t(king);
    const Bitboard diagonal = bishopAttacksOf(king, pos.occupied);
    const Bitboard straight = rookAttacksOf(king, pos.occupied);
    squares[NoPiece] = 0;
    squares[Pawn] = pawnAttackers[us][at];
    squares[Knight] = knightAttacks[at];
    squares[Bishop] = diagonal;
    squares[Rook] = straight;
    squares[Queen] = diagonal | straight;
    squares[King] = 0;

    const Bitboard nearest = (diagonal | straight) & own[AllPieces];
    const Bitboard without = pos.occupied ^ nearest;
    const Bitboard sliders = (bishopAttacksOf(king, without) & (own[Bishop] | own[Queen])) |
                             (rookAttacksOf(king, without) & (own[Rook] | own[Queen]));
    shields = 0;
    forEachSquare(sliders, [&](int slider) { shields |= between[at][std::size_t(slider)] & nearest; });
}
