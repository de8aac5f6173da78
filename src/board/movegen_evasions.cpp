// Answers to a check: captures of the checker, moves in between, king steps. Pinned pieces are not left out;
// make refuses what doesn't answer the check.
#include "board/attacks.h"
#include "board/geometry.h"
#include "board/list_writer.h"
#include "board/movegen.h"
#include "board/pawn_moves.h"
#include "board/sliders.h"

namespace {

void addCapturesOn(const Position& pos, int square, ListWriter& writer) {
    const Colour us = pos.sideToMove();
    const Bitboard* own = pos.pieces[us];
    const std::size_t target = std::size_t(square);
    forEachSquare(pawnAttackers[us][target] & own[Pawn], [&](int from) {
        if (relativeRank(us, square) == 7) {
            addFourPromotions(from, square, writer);
        } else {
            writer.add(makeWord(from, square));
        }
    });
    const Bitboard knights = knightAttacks[target] & own[Knight];
    const Bitboard diagonals = bishopAttacksOf(square, pos.occupied) & (own[Bishop] | own[Queen]);
    const Bitboard straights = rookAttacksOf(square, pos.occupied) & (own[Rook] | own[Queen]);
    for (const Bitboard movers : {knights, diagonals, straights})
        forEachSquare(movers, [&](int from) { writer.add(makeWord(from, square)); });
}

// Intended: a pawn that comes in between on the last rank becomes a queen or a knight only.
void addPawnBlocks(const Position& pos, Bitboard squares, ListWriter& writer) {
    const Colour us = pos.sideToMove();
    const Bitboard pawns = pos.pieces[us][Pawn];
    forEachSquare(pawnPushes(us, pawns) & squares, [&](int to) {
        const int from = to - pawnStep(us);
        if (relativeRank(us, to) == 7) {
            writer.add(makeWord(from, to, QueenPromotion));
            writer.add(makeWord(from, to, KnightPromotion));
        } else {
            writer.add(makeWord(from, to));
        }
    });
    const Bitboard once = pawnPushes(us, pawns & relativeRankMask(us, 1)) & ~pos.occupied;
    forEachSquare(pawnPushes(us, once) & squares,
                  [&](int to) { writer.add(makeWord(to - 2 * pawnStep(us), to, DoublePush)); });
}

void addBlocks(const Position& pos, Bitboard squares, ListWriter& writer) {
    const Bitboard* own = pos.pieces[pos.sideToMove()];
    addPawnBlocks(pos, squares, writer);
    forEachSquare(own[Knight], [&](int from) {
        forEachSquare(knightAttacks[std::size_t(from)] & squares,
                      [&](int to) { writer.add(makeWord(from, to)); });
    });
    forEachSquare(own[Bishop] | own[Queen], [&](int from) {
        forEachSquare(bishopAttacksOf(from, pos.occupied) & squares,
                      [&](int to) { writer.add(makeWord(from, to)); });
    });
    forEachSquare(own[Rook] | own[Queen], [&](int from) {
        forEachSquare(rookAttacksOf(from, pos.occupied) & squares,
                      [&](int to) { writer.add(makeWord(from, to)); });
    });
}

// Every slider that gives check may be taken or blocked. Of two sliders both sets are listed.
void addAnswersToSliders(const Position& pos, int king, Bitboard sliders, ListWriter& writer) {
    forEachSquare(sliders, [&](int checker) {
        const Bitboard gap = between[std::size_t(checker)][std::size_t(king)];
        if (gap & pos.occupied) return;
        addCapturesOn(pos, checker, writer);
        addBlocks(pos, gap, writer);
    });
}

}  // namespace

int genCapturesOn(const Position& pos, Move* list, int square) {
    ListWriter writer(list);
    addCapturesOn(pos, square, writer);
    return writer.count();
}

int genBlocks(const Position& pos, Move* list, Bitboard squares) {
    ListWriter writer(list);
    addBlocks(pos, squares, writer);
    return writer.count();
}

int genEvasions(const Position& pos, Move* list) {
    ListWriter writer(list);
    const Colour us = pos.sideToMove();
    const Colour them = opponent(us);
    const int king = pos.kingSquare(us);
    const std::size_t at = std::size_t(king);
    const Bitboard* enemy = pos.pieces[them];
    if (const Bitboard knights = knightAttacks[at] & enemy[Knight]) {
        addCapturesOn(pos, lowestSquare(knights), writer);
    } else if (const Bitboard pawns = pawnAttackers[them][at] & enemy[Pawn]) {
        addCapturesOn(pos, lowestSquare(pawns), writer);
        addEnPassant(pos, us, writer);
    } else {
        addAnswersToSliders(pos, king, bishopRays[at] & (enemy[Bishop] | enemy[Queen]), writer);
        addAnswersToSliders(pos, king, rookRays[at] & (enemy[Rook] | enemy[Queen]), writer);
        addEnPassant(pos, us, writer);  // answers a slider only in positions that no game reaches
    }
    // Seen through the own king, or it could step back along a line.
    const Bitboard attacked = attackedBy(pos, them, pos.occupied ^ bit(king));
    const Bitboard steps = kingAttacks[at] & ~pos.pieces[us][AllPieces] & ~attacked;
    forEachSquare(steps, [&](int to) { writer.add(makeWord(king, to)); });
    return writer.count();
}
