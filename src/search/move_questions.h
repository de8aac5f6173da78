// What the searches' rules ask about a move before it is made. Ranks are relative: as the mover sees them,
// from 0.
#pragma once

#include "board/bitboard.h"
#include "board/position.h"

inline constexpr int FifthRank = 4, SixthRank = 5, SeventhRank = 6;
inline constexpr Move QuietFlagMask = 0x6000;  // set in castling, en passant and promotions
inline constexpr int AdvancedPawnPhase = 32;   // below it pruning spares pawns that come close to promotion

inline bool hasOnlyPawns(const Position& pos, Colour us) {
    return pos.pieces[us][AllPieces] == (pos.pieces[us][Pawn] | pos.pieces[us][King]);
}

inline bool isCapture(const Position& pos, Move move) {  // en passant apart
    return pos.pieces[opponent(pos.sideToMove())][AllPieces] & bit(toOf(move));
}
inline bool isTactical(const Position& pos, Move move) {
    return isPromotion(move) || isEnPassant(move) || isCapture(pos, move);
}
inline int movedTypeOf(const Position& pos, Move move) { return typeOfCode(pos.board[fromOf(move)]); }
inline bool isPawnMove(const Position& pos, Move move) { return movedTypeOf(pos, move) == Pawn; }

// A piece that could have been chased away: neither pawn nor king.
inline bool movesOfficer(const Position& pos, Move move) {
    const int type = movedTypeOf(pos, move);
    return type != Pawn && type != King;
}

inline int landingRank(const Position& pos, Move move) { return relativeRank(pos.sideToMove(), toOf(move)); }

// A pawn move to the mover's sixth rank or beyond.
inline bool isFarPawnMove(const Position& pos, Move move) {
    return isPawnMove(pos, move) && landingRank(pos, move) >= SixthRank;
}
// The same short of promotion.
inline bool isAdvancedPawnMove(const Position& pos, Move move) {
    return isPawnMove(pos, move) &&
           (landingRank(pos, move) == SixthRank || landingRank(pos, move) == SeventhRank);
}

// The squares ahead of enemy pawns, as those see it, and beside these: no pawn of ours is passed there.
inline Bitboard enemyPawnSpans(const Position& pos) {
    const Colour us = pos.sideToMove();
    const Bitboard pawns = pos.pieces[opponent(us)][Pawn];
    const Bitboard spans =
        us == White ? fillAhead<Black>(pawnPushes<Black>(pawns)) : fillAhead<White>(pawnPushes<White>(pawns));
    return spans | besides(spans);
}

// Under-promotions are worth half the depth, rounded down to whole plies; half plies.
inline int depthOfMove(Move move, int depth) { return isUnderPromotion(move) ? depth / 4 * 2 : depth; }
