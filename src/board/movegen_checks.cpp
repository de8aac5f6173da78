// Quiet moves that give check: first those that open a line of another piece, then those that check by
// themselves. Castling and promotions are not among them.
#include "board/geometry.h"
#include "board/list_writer.h"
#include "board/movegen.h"
#include "board/sliders.h"

namespace {

Bitboard quietPawnTargets(const Position& pos, Colour us, int from) {
    const Bitboard free = ~pos.occupied;
    const Bitboard once = pawnPushes(us, bit(from)) & free;
    const Bitboard twice = relativeRank(us, from) == 1 ? pawnPushes(us, once) & free : 0;
    return (once | twice) & ~relativeRankMask(us, 7);
}

Bitboard quietTargets(const Position& pos, Colour us, int from) {
    const int type = typeOfCode(pos.board[from]);
    if (type == Pawn) return quietPawnTargets(pos, us, from);
    return attacksOf(type, from, pos.occupied) & ~pos.occupied;
}

void addMoves(const Position& pos, int from, Bitboard targets, ListWriter& writer) {
    const bool pawn = typeOfCode(pos.board[from]) == Pawn;
    forEachSquare(targets, [&](int to) {
        const bool twoRanks = pawn && geometry::rankDistance(from, to) == 2;
        writer.add(makeWord(from, to, twoRanks ? DoublePush : NormalMove));
    });
}

// The squares of the whole line through two squares of a rank, file or diagonal.
Bitboard lineThrough(int a, int b) {
    const std::size_t first = std::size_t(a), second = std::size_t(b);
    const SquareTable& rays = geometry::onRookLine(a, b) ? rookRays : bishopRays;
    return rays[first] & rays[second];
}

// Own pieces that stand alone between an own slider and the enemy king; their moves off the line give check.
Bitboard addDiscoveredChecks(const Position& pos, Colour us, int king, ListWriter& writer) {
    const Bitboard* own = pos.pieces[us];
    const std::size_t at = std::size_t(king);
    const Bitboard sliders =
        (bishopRays[at] & (own[Bishop] | own[Queen])) | (rookRays[at] & (own[Rook] | own[Queen]));
    Bitboard blockers = 0;
    forEachSquare(sliders, [&](int slider) {
        const Bitboard gap = between[std::size_t(slider)][at] & pos.occupied;
        if (!gap || severalBits(gap) || !(gap & own[AllPieces]) || (gap & blockers)) return;
        blockers |= gap;
        const int from = lowestSquare(gap);
        addMoves(pos, from, quietTargets(pos, us, from) & ~lineThrough(slider, king), writer);
    });
    return blockers;
}

// Of the pawns only those that reach one of the squares are looked at.
void addPawnChecks(const Position& pos, Colour us, Bitboard pawns, Bitboard checking, ListWriter& writer) {
    const Bitboard once = pawnPushes(opponent(us), checking);
    const Bitboard twice = pawnPushes(opponent(us), once);
    forEachSquare(pawns & (once | twice),
                  [&](int from) { addMoves(pos, from, quietPawnTargets(pos, us, from) & checking, writer); });
}

template <PieceType type>
void addPieceChecks(const Position& pos, Bitboard movers, Bitboard checking, ListWriter& writer) {
    forEachSquare(movers, [&](int from) {
        forEachSquare(attacksOf<type>(from, pos.occupied) & checking,
                      [&](int to) { writer.add(makeWord(from, to)); });
    });
}

void addDirectChecks(const Position& pos, Colour us, int king, Bitboard blockers, ListWriter& writer) {
    const Bitboard(&own)[7] = pos.pieces[us];
    const Bitboard free = ~pos.occupied;
    const std::size_t at = std::size_t(king);
    const Bitboard diagonal = bishopAttacksOf(king, pos.occupied) & free;
    const Bitboard straight = rookAttacksOf(king, pos.occupied) & free;
    addPawnChecks(pos, us, own[Pawn] & ~blockers, pawnAttackers[us][at], writer);
    addPieceChecks<Knight>(pos, own[Knight] & ~blockers, knightAttacks[at] & free, writer);
    addPieceChecks<Bishop>(pos, own[Bishop] & ~blockers, diagonal, writer);
    addPieceChecks<Rook>(pos, own[Rook] & ~blockers, straight, writer);
    addPieceChecks<Queen>(pos, own[Queen] & ~blockers, diagonal | straight, writer);
}

}  // namespace

int genQuietChecks(const Position& pos, Move* list) {
    ListWriter writer(list);
    const Colour us = pos.sideToMove();
    const int king = pos.kingSquare(opponent(us));
    const Bitboard blockers = addDiscoveredChecks(pos, us, king, writer);
    addDirectChecks(pos, us, king, blockers, writer);
    return writer.count();
}

int genStagedQuiets(const Position& pos, Move* list) { return genQuietChecks(pos, list); }

int genQueenChecks(const Position& pos, Move* list) {
    ListWriter writer(list);
    const Colour us = pos.sideToMove();
    const Colour them = opponent(us);
    const Bitboard targets = queenAttacksOf(pos.kingSquare(them), pos.occupied) & ~pos.occupied &
                             ~pawnAttacks(them, pos.pieces[them][Pawn]);
    forEachSquare(pos.pieces[us][Queen], [&](int from) {
        addMoves(pos, from, queenAttacksOf(from, pos.occupied) & targets, writer);
    });
    return writer.count();
}
