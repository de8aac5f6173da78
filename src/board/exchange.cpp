// Static exchange evaluation. Attackers are found through the occupancy that is left, so a piece that has
// captured uncovers those behind it.
#include "board/exchange.h"

#include "board/geometry.h"
#include "board/sliders.h"

#include <algorithm>

namespace {

// Values by piece type. A king's is far above every sum of the others, and `kingLine` tells it from them:
// beyond that, the piece on the square is a king, or one has been won.
struct ExchangeValues {
    int of[8];
    int kingLine;
};
constexpr ExchangeValues seeValueFast = {{0, 1, 4, 4, 6, 12, 999, 0}, 99};
constexpr ExchangeValues seeValueMargin = {{0, 100, 400, 400, 600, 1200, 999999, 0}, 99998};
constexpr ExchangeValues seeValueExact = {{0, 2, 7, 7, 11, 21, 999, 0}, 99};
constexpr ExchangeValues seeValueThreat = {{0, 2, 7, 8, 11, 22, 999, 0}, 99};
constexpr int seeValueSafe[8] = {0, 1, 3, 3, 5, 9, 999, 0};

bool isEnPassantOrCastling(Move move) { return isEnPassant(move) || isCastling(move); }

int typeOn(const Position& pos, int square) { return typeOfCode(pos.board[square]); }

// An exchange on the target square of one move, after that move.
class Exchange {
   public:
    Exchange(const Position& position, Move move)
        : pos(position),
          mover(colourOfCode(position.board[fromOf(move)])),
          answerer(opponent(mover)),
          target(toOf(move)),
          occupied(position.occupied & ~(bit(fromOf(move)) | bit(target))) {}

    // The next capture of the side that answers, or NoSquare. Pieces that are pinned to their king don't
    // capture, unless it is a king that stands on the target.
    int takeAnswer(bool pinsCount) {
        while (true) {
            const int square = leastAttacker(pos, answerer, target, occupied, pinned);
            if (square == NoSquare) return NoSquare;
            if (!pinsCount || !isPinned(square)) {
                occupied &= ~bit(square);
                return square;
            }
            pinned |= bit(square);
        }
    }

    // The next capture of the side that began, or NoSquare; its pins are not looked at.
    int takeReply() {
        const int square = leastAttacker(pos, mover, target, occupied, 0);
        if (square != NoSquare) occupied &= ~bit(square);
        return square;
    }

   private:
    bool isPinned(int square) const {
        const int king = pos.kingSquare(answerer);
        const Bitboard without = occupied & ~bit(square);
        const Bitboard* enemy = pos.pieces[mover];
        const Bitboard pinners = (bishopAttacksOf(king, without) & (enemy[Bishop] | enemy[Queen])) |
                                 (rookAttacksOf(king, without) & (enemy[Rook] | enemy[Queen]));
        return pinners & occupied;  // a slider that has captured already pins nothing from where it stood
    }

    const Position& pos;
    const Colour mover, answerer;
    const int target;
    Bitboard occupied;
    Bitboard pinned = 0;
};

// Whether the exchange ends below zero for the mover, who has won `gain` with a piece worth `onTo`.
bool endsBelowZero(const Position& pos, Move move, const ExchangeValues& values, int gain, int onTo) {
    const int kingLine = values.kingLine;
    Exchange exchange(pos, move);
    while (true) {
        const int answer = exchange.takeAnswer(onTo <= kingLine);
        if (answer == NoSquare) {
            if (gain >= 0) return false;
        } else {
            const int left = gain - onTo;
            if (left < -kingLine - 1) return true;
            const int value = values.of[typeOn(pos, answer)];
            if (value + left < 0) return true;
            onTo = value;
            if (left >= 0) return false;
            gain = left;
        }
        const int reply = exchange.takeReply();
        if (reply == NoSquare) return true;
        gain += onTo;
        if (gain > kingLine + 1) return false;
        onTo = values.of[typeOn(pos, reply)];
        if (gain < 0) return true;
    }
}

// The balance of the exchange for the mover, each side stopping where it is best off. Nothing follows the
// taking of a king.
int balanceOf(const Position& pos, Move move, const ExchangeValues& values) {
    constexpr int MostCaptures = 32;
    int gains[MostCaptures];
    gains[0] = values.of[typeOn(pos, toOf(move))];
    int onTo = values.of[typeOn(pos, fromOf(move))];
    Exchange exchange(pos, move);
    int captures = 1;
    for (bool answering = true; captures < MostCaptures; answering = !answering) {
        if (gains[captures - 1] > values.kingLine) break;
        const int square = answering ? exchange.takeAnswer(onTo <= values.kingLine) : exchange.takeReply();
        if (square == NoSquare) break;
        gains[captures] = onTo - gains[captures - 1];
        ++captures;
        onTo = values.of[typeOn(pos, square)];
    }
    while (--captures > 0) gains[captures - 1] = std::min(gains[captures - 1], -gains[captures]);
    return gains[0];
}

}  // namespace

int leastAttacker(const Position& pos, Colour colour, int square, Bitboard occupied, Bitboard excluded) {
    const Bitboard occ = occupied & ~excluded;
    const Bitboard* own = pos.pieces[colour];
    const std::size_t at = std::size_t(square);
    if (const Bitboard pawns = pawnAttackers[colour][at] & own[Pawn] & occ) return lowestSquare(pawns);
    if (const Bitboard knights = knightAttacks[at] & own[Knight] & occ) return lowestSquare(knights);
    const Bitboard diagonal = bishopAttacksOf(square, occ) & occ;
    if (const Bitboard bishops = diagonal & own[Bishop]) return lowestSquare(bishops);
    const Bitboard straight = rookAttacksOf(square, occ) & occ;
    if (const Bitboard rooks = straight & own[Rook]) return lowestSquare(rooks);
    if (const Bitboard queens = (diagonal | straight) & own[Queen]) return lowestSquare(queens);
    if (const Bitboard kings = kingAttacks[at] & own[King] & occ) return lowestSquare(kings);
    return NoSquare;
}

bool seeLosing(const Position& pos, Move move) {
    if (isEnPassantOrCastling(move)) return false;
    const int type = typeOn(pos, fromOf(move));
    if (type == King) return false;
    const int gain = seeValueFast.of[typeOn(pos, toOf(move))];
    const int onTo = seeValueFast.of[type];
    return gain < onTo && endsBelowZero(pos, move, seeValueFast, gain, onTo);
}

bool seeBelowMargin(const Position& pos, Move move, int margin) {
    if (isEnPassantOrCastling(move)) return false;
    const int gain = seeValueMargin.of[typeOn(pos, toOf(move))] - margin;
    const int onTo = seeValueMargin.of[typeOn(pos, fromOf(move))];
    if (gain >= onTo) return false;
    return gain < 0 || endsBelowZero(pos, move, seeValueMargin, gain, onTo);
}

int seeScore(const Position& pos, Move move, int threshold) {
    if (isEnPassantOrCastling(move)) return seeValueExact.of[Pawn];
    const int captured = seeValueExact.of[typeOn(pos, toOf(move))];
    const int certain = captured - seeValueExact.of[typeOn(pos, fromOf(move))];
    if (certain >= threshold) return certain;
    if (captured < threshold) return captured;
    return balanceOf(pos, move, seeValueExact);
}

int seeThreat(const Position& pos, Move move) {
    if (isEnPassantOrCastling(move)) return seeValueThreat.of[Pawn];
    const int captured = seeValueThreat.of[typeOn(pos, toOf(move))];
    const int mover = seeValueThreat.of[typeOn(pos, fromOf(move))];
    if (captured > mover) return captured - mover;
    return captured == 0 ? 0 : balanceOf(pos, move, seeValueThreat);
}

bool seeThreatBelow(const Position& pos, Move move, int least) {
    if (isEnPassantOrCastling(move)) return seeValueThreat.of[Pawn] < least;
    const int captured = seeValueThreat.of[typeOn(pos, toOf(move))];
    const int mover = seeValueThreat.of[typeOn(pos, fromOf(move))];
    if (captured > mover) return captured - mover < least;
    if (captured == 0) return 0 < least;
    return captured < least || endsBelowZero(pos, move, seeValueThreat, captured - least, mover);
}

bool seeFromSquareSafe(const Position& pos, Move move) {
    constexpr int KingWon = 50;  // only a king's value passes it
    const int square = fromOf(move);
    const Colour us = colourOfCode(pos.board[square]);
    Bitboard occupied = pos.occupied & ~bit(square);
    int target = typeOn(pos, square);
    for (int balance = 0; balance >= 0;) {
        const int attacker = leastAttacker(pos, opponent(us), square, occupied, 0);
        if (attacker == NoSquare) return true;
        const int left = balance - seeValueSafe[target];
        if (left < -KingWon) return false;
        if (left >= 0) return true;
        occupied &= ~bit(attacker);
        const int defender = leastAttacker(pos, us, square, occupied, 0);
        if (defender == NoSquare) return false;
        balance = left + seeValueSafe[typeOn(pos, attacker)];
        if (balance > KingWon) return true;
        occupied &= ~bit(defender);
        target = typeOn(pos, defender);
    }
    return false;
}
