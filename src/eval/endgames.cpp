#include "eval/endgames.h"

#include "eval/eval_info.h"
#include "eval/king_pawn_bitbase.h"

#include <algorithm>

namespace {

int stepDistance(int a, int b) { return geometry::fileDistance(a, b) + geometry::rankDistance(a, b); }

// A square as the side with the pawn sees it.
int seenBy(Colour colour, int square) { return colour == White ? square : flipSquare(square); }

int signOf(Colour colour) { return colour == White ? 1 : -1; }

constexpr Bitboard UnderEastCorner = bit(G7) | bit(H7) | bit(G8) | bit(H8);
constexpr Bitboard UnderWestCorner = bit(A7) | bit(B7) | bit(A8) | bit(B8);
constexpr Bitboard NearEastCorner = bit(G1) | bit(H1) | bit(G2) | bit(H2);
constexpr Bitboard NearWestCorner = bit(A1) | bit(B1) | bit(A2) | bit(B2);

}  // namespace

// A mate drive, or mop-up: the weak king is driven to the right corner and the other men brought near.
int mateWithBishopKnight(const Position& pos, float& scale) {
    const Colour strong = pos.pieces[White][Knight] ? White : Black;
    const int strongKing = pos.kingSquare(strong);
    const int weakKing = pos.kingSquare(opponent(strong));
    const int knight = lowestSquare(pos.pieces[strong][Knight]);
    // Mate is possible only in a corner that the bishop controls.
    const bool light = pos.pieces[strong][Bishop] & LightSquares;
    const int corner = light ? std::min(stepDistance(weakKing, A8), stepDistance(weakKing, H1))
                             : std::min(stepDistance(weakKing, A1), stepDistance(weakKing, H8));
    scale = 0;
    return signOf(strong) * (5000 - 40 * squareDistance(weakKing, knight) -
                             80 * squareDistance(strongKing, weakKing) - 200 * corner);
}

int knightPawnEnding(const Position& pos, float& scale) {
    const Colour strong = pos.pieces[White][Pawn] ? White : Black;
    const int pawn = seenBy(strong, lowestSquare(pos.pieces[strong][Pawn]));
    const int knight = seenBy(strong, lowestSquare(pos.pieces[strong][Knight]));
    const int strongKing = seenBy(strong, pos.kingSquare(strong));
    const int weakKing = seenBy(strong, pos.kingSquare(opponent(strong)));
    const int promotion = makeSquare(fileOf(pawn), 7);
    const bool onEdge = fileOf(pawn) == 0 || fileOf(pawn) == 7;
    scale = 0;
    if (rankOf(pawn) == 6 && onEdge && squareDistance(weakKing, promotion) <= 1)
        return signOf(strong) * 5 * (10 - squareDistance(strongKing, promotion));
    const int kingRace = 5 * (squareDistance(weakKing, pawn) - squareDistance(strongKing, pawn));
    return signOf(strong) *
           (10 * (kingRace - 10 * (7 - rankOf(pawn)) - 3 * squareDistance(knight, pawn)) + 4200);
}

int rookPawnEnding(const Position& pos, float& scale) {
    const Colour strong = pos.pieces[White][Pawn] ? White : Black;
    const int sign = signOf(strong);
    const int pawn = seenBy(strong, lowestSquare(pos.pieces[strong][Pawn]));
    const int weakKing = seenBy(strong, pos.kingSquare(opponent(strong)));
    const int weakRook = seenBy(strong, lowestSquare(pos.pieces[opponent(strong)][Rook]));
    if (rankOf(weakKing) < 6 || fileOf(weakKing) != fileOf(pawn)) {
        scale = 0.5f;
        return 500 * sign;
    }
    // The king stands before the pawn. A rook that checks from behind, once the pawn has reached its sixth
    // rank, draws.
    if (rankOf(weakRook) <= 1 && rankOf(pawn) >= 5) {
        scale = 0.158f;
        return 50 * sign;
    }
    // Before that it holds the king off along the sixth rank. Intended: the scale turns negative with Black's
    // pawn.
    if (rankOf(weakRook) == 5 && rankOf(pawn) < 5) {
        scale = float(sign) * 0.158f;
        return 50 * sign;
    }
    scale = 0.387f;
    return 300 * sign;
}

int kingPawnEnding(const Position& pos, float& scale) {
    const Colour strong = pos.pieces[White][Pawn] ? White : Black;
    const int pawn = lowestSquare(pos.pieces[strong][Pawn]);
    // The bitbase knows pawns that move down the board on files a to d.
    const int flip = (strong == White ? 56 : 0) ^ (fileOf(pawn) > 3 ? 7 : 0);
    const bool strongToMove = pos.sideToMove() == strong;
    const bool won = kingPawnWins(pos.kingSquare(strong) ^ flip, pawn ^ flip,
                                  pos.kingSquare(opponent(strong)) ^ flip, strongToMove);
    scale = 0;
    // Intended: a draw is still worth a little to the side that can't lose.
    return signOf(strong) * (won ? 6500 + 160 * relativeRank(strong, pawn) : 30);
}

// The corner and the square colour from which the bishop can't drive the king away: for White's pawn on the
// a-file the dark bishop, on the h-file the light one; for Black the other way round.
int wrongBishop(const Position& pos, int value) {
    constexpr int Cornered = 30;
    if (value > Cornered && pos.pieces[White][Bishop] && !pos.pieces[White][Knight]) {
        const bool dark = bit(lowestSquare(pos.pieces[White][Bishop])) & DarkSquares;
        const Bitboard offFile = pos.pieces[White][Pawn] & ~(dark ? FileA : FileH);
        const Bitboard corner = dark ? UnderWestCorner : UnderEastCorner;
        if (!offFile && (pos.pieces[Black][King] & corner)) return Cornered;
    } else if (value < -Cornered && pos.pieces[Black][Bishop] && !pos.pieces[Black][Knight]) {
        const bool dark = bit(lowestSquare(pos.pieces[Black][Bishop])) & DarkSquares;
        const Bitboard offFile = pos.pieces[Black][Pawn] & ~(dark ? FileH : FileA);
        const Bitboard corner = dark ? NearEastCorner : NearWestCorner;
        if (!offFile && (pos.pieces[White][King] & corner)) return -Cornered;
    }
    return value;
}
