// Generators of every pseudo-legal move and of all quiet moves.
#include "board/movegen.h"

#include "board/attacks.h"
#include "board/castling.h"
#include "board/geometry.h"
#include "board/list_writer.h"
#include "board/pawn_moves.h"
#include "board/sliders.h"

namespace {

template <PieceType type>
void addPieceMoves(const Position& pos, Colour us, Bitboard targets, ListWriter& writer) {
    const int code = boardCode(us, type);
    forEachSquare(pos.pieces[us][type], [&](int from) {
        forEachSquare(attacksOf<type>(from, pos.occupied) & targets,
                      [&](int to) { writer.add(quietWord(pos, code, from, to)); });
    });
}

void addAllPieceMoves(const Position& pos, Colour us, Bitboard targets, ListWriter& writer) {
    addPieceMoves<Knight>(pos, us, targets, writer);
    addPieceMoves<Bishop>(pos, us, targets, writer);
    addPieceMoves<Rook>(pos, us, targets, writer);
    addPieceMoves<Queen>(pos, us, targets, writer);
    addPieceMoves<King>(pos, us, targets, writer);
}

template <Colour us>
void addSinglePushes(const Position& pos, ListWriter& writer) {
    constexpr int code = boardCode(us, Pawn);
    const Bitboard movers = pos.pieces[us][Pawn] & ~relativeRankMask(us, 6);
    forEachSquare(pawnPushes<us>(movers) & ~pos.occupied,
                  [&](int to) { writer.add(quietWord(pos, code, to - pawnStep(us), to)); });
}

template <Colour us>
void addDoublePushes(const Position& pos, ListWriter& writer) {
    constexpr int code = boardCode(us, Pawn);
    const Bitboard free = ~pos.occupied;
    const Bitboard once = pawnPushes<us>(pos.pieces[us][Pawn] & relativeRankMask(us, 1)) & free;
    forEachSquare(pawnPushes<us>(once) & free,
                  [&](int to) { writer.add(quietWord(pos, code, to - 2 * pawnStep(us), to, DoublePush)); });
}

template <Colour us>
void addPromotionPushes(const Position& pos, ListWriter& writer) {
    const Bitboard movers = pos.pieces[us][Pawn] & relativeRankMask(us, 6);
    forEachSquare(pawnPushes<us>(movers) & ~pos.occupied,
                  [&](int to) { addFourPromotions(to - pawnStep(us), to, writer); });
}

template <Colour us>
void addPawnCaptures(const Position& pos, ListWriter& writer) {
    forEachPawnCapture<us>(pos, [&](int from, int to) {
        if (relativeRank(us, to) == 7)
            addFourPromotions(from, to, writer);
        else
            writer.add(makeWord(from, to));
    });
    addEnPassant(pos, us, writer);
}

void addCastling(const Position& pos, Colour us, ListWriter& writer) {
    if (pos.inCheck) return;
    const int king = pos.kingSquare(us);
    Bitboard attacked = 0;  // computed once, and only if a right is left
    for (int right = shortRightOf(us); right <= longRightOf(us); ++right) {
        if (pos.castleLost & 1 << right) continue;
        if (castling.path[right] & castling.keep[right] & pos.occupied) continue;
        if (!attacked) attacked = attackedBy(pos, opponent(us));
        if (attacked & castling.kingPath[right]) continue;
        writer.add(quietWord(pos, boardCode(us, King), king, int(castling.rook[right]), Castling));
    }
}

// The promotions that the capture generator leaves out: to rook and bishop, and to a knight that gives no
// check.
template <Colour us>
void addLeftPromotions(const Position& pos, ListWriter& writer) {
    const Bitboard checking = knightAttacks[std::size_t(pos.kingSquare(opponent(us)))];
    const auto addLeft = [&](int from, int to) {
        if (!(checking & bit(to))) writer.add(makeWord(from, to, KnightPromotion));
        writer.add(makeWord(from, to, RookPromotion));
        writer.add(makeWord(from, to, BishopPromotion));
    };
    const Bitboard movers = pos.pieces[us][Pawn] & relativeRankMask(us, 6);
    if (!movers) return;
    forEachSquare(pawnPushes<us>(movers) & ~pos.occupied, [&](int to) { addLeft(to - pawnStep(us), to); });
    forEachPawnCapture<us>(pos, [&](int from, int to) {
        if (relativeRank(us, to) == 7) addLeft(from, to);
    });
}

template <Colour us>
int generateAll(const Position& pos, Move* list) {
    ListWriter writer(list);
    addPromotionPushes<us>(pos, writer);
    addCastling(pos, us, writer);
    addPawnCaptures<us>(pos, writer);
    addSinglePushes<us>(pos, writer);
    addAllPieceMoves(pos, us, ~pos.pieces[us][AllPieces], writer);
    addDoublePushes<us>(pos, writer);
    return writer.count();
}

template <Colour us>
int generateQuiets(const Position& pos, Move* list) {
    ListWriter writer(list);
    addCastling(pos, us, writer);
    addSinglePushes<us>(pos, writer);
    addAllPieceMoves(pos, us, ~pos.occupied, writer);
    addDoublePushes<us>(pos, writer);
    addLeftPromotions<us>(pos, writer);
    return writer.count();
}

}  // namespace

int genAllMoves(const Position& pos, Move* list) {
    return pos.sideToMove() == White ? generateAll<White>(pos, list) : generateAll<Black>(pos, list);
}

int genQuiets(const Position& pos, Move* list) {
    return pos.sideToMove() == White ? generateQuiets<White>(pos, list) : generateQuiets<Black>(pos, list);
}

int genPromotions(const Position& pos, Move* list) {
    ListWriter writer(list);
    if (pos.sideToMove() == White)
        addPromotionPushes<White>(pos, writer);
    else
        addPromotionPushes<Black>(pos, writer);
    return writer.count();
}

int genCastling(const Position& pos, Move* list) {
    ListWriter writer(list);
    addCastling(pos, pos.sideToMove(), writer);
    return writer.count();
}

int genPawnCaptures(const Position& pos, Move* list) {
    ListWriter writer(list);
    if (pos.sideToMove() == White)
        addPawnCaptures<White>(pos, writer);
    else
        addPawnCaptures<Black>(pos, writer);
    return writer.count();
}

int genEnPassant(const Position& pos, Move* list) {
    ListWriter writer(list);
    addEnPassant(pos, pos.sideToMove(), writer);
    return writer.count();
}

int genPawnPushesToSeventh(const Position& pos, Move* list) {
    ListWriter writer(list);
    const Colour us = pos.sideToMove();
    const Bitboard free = ~pos.occupied;
    // Where the square ahead is free too.
    const Bitboard open = free & pawnPushes(opponent(us), free);
    const Bitboard pushes = pawnPushes(us, pos.pieces[us][Pawn]);
    const Bitboard targets = pushes & open & (relativeRankMask(us, 5) | relativeRankMask(us, 6));
    forEachSquare(targets, [&](int to) { writer.add(makeWord(to - pawnStep(us), to)); });
    return writer.count();
}
