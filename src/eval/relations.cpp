// Outposts, and the small relations between pieces, pawns and kings.
#include "eval/terms.h"
#include "eval/weights_pieces.h"

namespace {

constexpr Bitboard filesFromTo(int first, int last) {
    Bitboard files = 0;
    for (int file = first; file <= last; ++file) files |= FileA << file;
    return files;
}

// Outposts: pieces where no enemy pawn can ever attack them, best on squares that own pawns hold.
template <Colour us>
Lanes outposts(const Position& pos, const EvalInfo& info) {
    constexpr Colour them = opponent(us);
    constexpr Bitboard field =
        filesFromTo(2, 5) & (relativeRankMask(us, 3) | relativeRankMask(us, 4) | relativeRankMask(us, 5));
    const Bitboard* own = pos.pieces[us];
    const Bitboard* enemy = pos.pieces[them];
    const Bitboard safe = info.neverAttacked[them];
    const Bitboard posts = (own[Knight] | own[Bishop]) & field & safe & info.pawnAttacks[us];
    Lanes sum = at(Outposts, popcount(posts));
    if (!enemy[Knight]) {
        // Nothing can ever be exchanged for a piece that no bishop reaches either.
        Bitboard reached = 0;
        if (enemy[Bishop] & DarkSquares) reached |= DarkSquares;
        if (enemy[Bishop] & LightSquares) reached |= LightSquares;
        sum += UnreachedOutpost * popcount(posts & ~reached);
    }
    sum += at(KnightBlockades, popcount(own[Knight] & safe & pawnPushes<them>(enemy[Pawn])));
    return sum + at(UnassailablePieces, popcount((own[Knight] | own[Bishop] | own[Rook]) & safe));
}

// Pawns that can't move, or only where the enemy alone attacks; pieces that pawns shield.
template <Colour us>
Lanes pawnsAndPieces(const Position& pos, const EvalInfo& info) {
    constexpr Colour them = opponent(us);
    const Bitboard* own = pos.pieces[us];
    const Bitboard stops = pawnPushes<us>(own[Pawn]);
    Lanes sum = at(BlockedPawns, popcount(stops & pos.occupied));
    sum += at(ControlledStops, popcount(stops & info.allAttacks[them] & ~info.allAttacks[us]));
    sum += at(PawnDefendedPieces, popcount(own[AllPieces] & ~own[Pawn] & info.pawnAttacks[us]));
    const Bitboard behind = pawnPushes<them>(own[Pawn]);
    sum += at(PieceBehindPawn, popcount((own[Knight] | own[Bishop]) & behind));
    return sum + at(PieceBehindPawn, popcount(own[Knight] & besides(behind)));
}

// Enemy pawns that are stuck on their first squares, in the centre and away from their king's wing.
template <Colour us>
Lanes enemyHomeBlocked(const Position& pos) {
    constexpr Colour them = opponent(us);
    constexpr Bitboard farFromWest = filesFromTo(3, 6), farFromEast = filesFromTo(1, 4);
    const Bitboard files = pos.pieces[them][King] & WestFiles ? farFromWest : farFromEast;
    const Bitboard home = pos.pieces[them][Pawn] & relativeRankMask(them, 1) & files;
    return at(EnemyHomeBlocked, popcount(pawnPushes<them>(home) & pos.occupied));
}

// A trapped bishop: in the corner behind an own man on the long diagonal.
template <Colour us>
Lanes cornerBishops(const Position& pos) {
    constexpr int flip = us == White ? 0 : 56;
    const Bitboard bishops = pos.pieces[us][Bishop];
    const Bitboard own = pos.pieces[us][AllPieces];
    Lanes sum;
    if (!(bishops & (bit(H1 ^ flip) | bit(A1 ^ flip)))) return sum;
    if ((bishops & bit(H1 ^ flip)) && (own & bit(G2 ^ flip))) sum += TrappedBishop;
    if ((bishops & bit(A1 ^ flip)) && (own & bit(B2 ^ flip))) sum += TrappedBishop;
    return sum;
}

template <Colour us>
void relationsOf(const Position& pos, EvalInfo& info) {
    info.score[us] += outposts<us>(pos, info) + pawnsAndPieces<us>(pos, info) + enemyHomeBlocked<us>(pos);
    if (pos.pieces[us][Bishop] & pawnPushes<us>(pos.pieces[us][King])) info.score[us] += BishopBeforeKing;
    info.score[us] += cornerBishops<us>(pos);
}

}  // namespace

void evaluateRelations(const Position& pos, EvalInfo& info) {
    relationsOf<White>(pos, info);
    relationsOf<Black>(pos, info);
}
