// Pawn moves that several generators share.
#pragma once

#include "board/geometry.h"
#include "board/list_writer.h"
#include "board/position.h"

// Visits every capture of a pawn as (from, to), towards the h-file first; en passant is not among them.
template <Colour us, class Visit>
inline void forEachPawnCapture(const Position& pos, Visit visit) {
    const Bitboard pawns = pos.pieces[us][Pawn];
    const Bitboard enemies = pos.pieces[opponent(us)][AllPieces];
    forEachSquare(pawnAttacksEast<us>(pawns) & enemies, [&](int to) { visit(to - pawnStep(us) - 1, to); });
    forEachSquare(pawnAttacksWest<us>(pawns) & enemies, [&](int to) { visit(to - pawnStep(us) + 1, to); });
}

// Visits every en-passant capture as (from, to).
template <class Visit>
inline void forEachEnPassant(const Position& pos, Colour us, Visit visit) {
    if (!pos.epMask) return;
    const int to = lowestSquare(pos.epMask);
    forEachSquare(pawnAttackers[us][std::size_t(to)] & pos.pieces[us][Pawn],
                  [&](int from) { visit(from, to); });
}

inline void addEnPassant(const Position& pos, Colour us, ListWriter& writer) {
    forEachEnPassant(pos, us, [&](int from, int to) { writer.add(makeWord(from, to, EnPassant)); });
}

inline void addFourPromotions(int from, int to, ListWriter& writer) {
    for (const MoveFlag flag : {QueenPromotion, KnightPromotion, RookPromotion, BishopPromotion})
        writer.add(makeWord(from, to, flag));
}
