// Tests on single moves: the one that guards the search against words from other positions, and the check
// tests.
#include "board/legality.h"

#include "board/attacks.h"
#include "board/castling.h"
#include "board/make_move.h"
#include "board/movegen.h"

static bool listHolds(const Move* list, int count, Move move) {
    for (int i = 0; i < count; ++i)
        if (cleanMove(list[i]) == move) return true;
    return false;
}

static bool isValidPawnMove(const Position& pos, Colour us, int from, int to, MoveFlag flag) {
    const int next = from + pawnStep(us);
    // A pawn that reaches the last rank must say what it becomes. Intended: the reverse isn't asked.
    const bool promotes = relativeRank(us, next) == 7;
    if (flag < QueenPromotion && promotes) return false;
    // Make trusts the flag of a double push, so a word that merely carries it is refused.
    const bool doublePush = flag == DoublePush;
    if (pos.board[to])
        return !doublePush && geometry::distanceOf(to, next) == 1 && rankOf(to) == rankOf(next);
    if (pos.board[next]) return false;
    if (to == next) return !doublePush;
    if (!doublePush || relativeRank(us, from) != 1) return false;
    return to == next + pawnStep(us) && !pos.board[to];
}

bool isValidMove(const Position& pos, Move move) {
    if (move == NoMove || move > (FlagMask | FromToMask)) return false;
    const Colour us = pos.sideToMove();
    const int from = fromOf(move);
    const int to = toOf(move);
    const MoveFlag flag = flagOf(move);
    if (flag == Castling || flag == EnPassant) {
        Move list[MaxListMoves];
        const int count = flag == Castling ? genCastling(pos, list) : genEnPassant(pos, list);
        return listHolds(list, count, move);
    }
    if (!(pos.pieces[us][AllPieces] & bit(from)) || (pos.pieces[us][AllPieces] & bit(to))) return false;
    const int type = typeOfCode(pos.board[from]);
    if (type == Pawn) return isValidPawnMove(pos, us, from, to, flag);
    if (flag != NormalMove) return false;

    const std::size_t start = std::size_t(from);
    if (type == Knight) return (knightAttacks[start] & bit(to)) != 0;
    if (type == King) return (kingAttacks[start] & bit(to)) != 0;
    const SquareTable& lines = type == Bishop ? bishopRays : type == Rook ? rookRays : queenRays;
    return (lines[start] & bit(to)) && !(between[start][std::size_t(to)] & pos.occupied);
}

// The sliders of a colour that would attack a square through `occupied`.
static Bitboard slidersOnto(Bitboard diagonal, Bitboard straight, int square, Bitboard occupied) {
    return (bishopAttacksOf(square, occupied) & diagonal) | (rookAttacksOf(square, occupied) & straight);
}

static bool castlingGivesCheck(const Position& pos, Colour us, Move move, int enemyKing) {
    const int from = fromOf(move);
    const int rookFrom = toOf(move);
    const int kingTo = castlingKingTarget(from, rookFrom);
    const int rookTo = castlingRookTarget(from, rookFrom);
    const Bitboard(&own)[7] = pos.pieces[us];
    const Bitboard occupied = (pos.occupied & ~(bit(from) | bit(rookFrom))) | bit(kingTo) | bit(rookTo);
    const Bitboard straight = ((own[Rook] | own[Queen]) & ~bit(rookFrom)) | bit(rookTo);
    return slidersOnto(own[Bishop] | own[Queen], straight, enemyKing, occupied) != 0;
}

// Whether a piece of this type on `square` attacks the enemy king through `occupied`. Kings never do.
static bool attacksKing(Colour us, int type, int square, int enemyKing, Bitboard occupied) {
    if (type == King) return false;
    if (type == Pawn) return (pawnAttackers[us][std::size_t(enemyKing)] & bit(square)) != 0;
    return (attacksOf(type, enemyKing, occupied) & bit(square)) != 0;
}

bool givesCheckQuick(const Position& pos, Move move) {
    const Colour us = pos.sideToMove();
    const int enemyKing = pos.kingSquare(opponent(us));
    if (isCastling(move)) return castlingGivesCheck(pos, us, move, enemyKing);

    const int from = fromOf(move);
    const int to = toOf(move);
    const MoveFlag flag = flagOf(move);
    const int type = flag >= QueenPromotion ? promotionType(flag) : typeOfCode(pos.board[from]);
    Bitboard left = bit(from);  // squares that the move empties
    if (flag == EnPassant) left |= bit(enPassantVictim(from, to));
    const Bitboard occupied = (pos.occupied & ~left) | bit(to);
    if (attacksKing(us, type, to, enemyKing, occupied)) return true;
    if (!(left & queenRays[std::size_t(enemyKing)])) return false;
    // The mover itself is no slider in the background: it was judged on its new square.
    const Bitboard(&own)[7] = pos.pieces[us];
    const Bitboard diagonal = (own[Bishop] | own[Queen]) & ~bit(from);
    const Bitboard straight = (own[Rook] | own[Queen]) & ~bit(from);
    return slidersOnto(diagonal, straight, enemyKing, occupied) != 0;
}

bool hasLegalMove(const Position& pos) {
    Move list[MaxListMoves];
    const int count = genEvasions(pos, list);
    Position child;
    for (int i = 0; i < count; ++i)
        if (makeMove(&pos, &child, cleanMove(list[i]))) return true;
    return false;
}

bool isPlayable(const Position& pos) {
    if (popcount(pos.pieces[White][King]) != 1 || popcount(pos.pieces[Black][King]) != 1) return false;
    if ((pos.pieces[White][Pawn] | pos.pieces[Black][Pawn]) & (Rank1 | Rank8)) return false;
    const Colour waiting = opponent(pos.sideToMove());
    return !isAttacked(pos, pos.kingSquare(waiting), opponent(waiting), pos.occupied);
}
