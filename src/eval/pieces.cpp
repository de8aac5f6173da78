// Knights, bishops, rooks and queens: mobility, lines, files, and the maps that later stages read.
#include "board/sliders.h"
#include "eval/king_danger.h"
#include "eval/terms.h"
#include "eval/weights_king.h"
#include "eval/weights_pieces.h"
#include "eval/weights_threats.h"

#include <algorithm>

namespace {

// A king's zone: the squares around a centre that is one step away from the edge of the board.
constexpr Bitboard makeKingZone(int king) {
    const int centre = makeSquare(std::clamp(fileOf(king), 1, 6), std::clamp(rankOf(king), 1, 6));
    const Bitboard around = kingAttacks[std::size_t(centre)];
    return centre == king ? around : around | bit(centre);
}
constexpr SquareTable makeKingZones() {
    SquareTable zones{};
    for (int king = 0; king < 64; ++king) zones[std::size_t(king)] = makeKingZone(king);
    return zones;
}
constexpr SquareTable KingZone = makeKingZones();

Bitboard lineBetween(int a, int b) { return between[std::size_t(a)][std::size_t(b)]; }

// ---- Preparations ----

// Men of either colour that stand alone between the king and a slider of the other side.
template <Colour us>
Bitboard pinnedMen(const Position& pos, int king) {
    const Bitboard* enemy = pos.pieces[opponent(us)];
    const std::size_t at = std::size_t(king);
    const Bitboard sliders =
        (bishopRays[at] & (enemy[Bishop] | enemy[Queen])) | (rookRays[at] & (enemy[Rook] | enemy[Queen]));
    Bitboard pinned = 0;
    forEachSquare(sliders, [&](int slider) {
        const Bitboard gap = lineBetween(king, slider) & pos.occupied;
        pinned |= severalBits(gap) ? 0 : gap;
    });
    return pinned;
}

template <Colour us>
void prepareOwnMaps(const Position& pos, EvalInfo& info) {
    const Bitboard* own = pos.pieces[us];
    info.king[us] = pos.kingSquare(us);
    info.kingAttacks[us] = kingAttacks[std::size_t(info.king[us])];
    info.kingZone[us] = KingZone[std::size_t(info.king[us])];
    info.pawnAttacks[us] = pawnAttacks<us>(own[Pawn]);
    info.neverAttacked[us] = ~fillAhead<us>(info.pawnAttacks[us]);
    info.pinned[us] = pinnedMen<us>(pos, info.king[us]);
    Bitboard knights = 0;
    forEachSquare(own[Knight], [&](int square) { knights |= knightAttacks[std::size_t(square)]; });
    info.knightAttacks[us] = knights;
    info.bishopAttacks[us] = info.rookAttacks[us] = info.queenAttacks[us] = 0;
}

// Own pawns that hold their place: defended by a pawn, or hardly moved.
template <Colour us>
Bitboard settledPawns(const Position& pos, const EvalInfo& info) {
    const Bitboard home = relativeRankMask(us, 1) | relativeRankMask(us, 2);
    return pos.pieces[us][Pawn] & (info.pawnAttacks[us] | home);
}

template <Colour us>
void prepareSharedMaps(const Position& pos, EvalInfo& info) {
    constexpr Colour them = opponent(us);
    const Bitboard enemies = pos.pieces[them][AllPieces];
    info.avoid[us] = settledPawns<us>(pos, info) | pos.pieces[us][King] | (info.pawnAttacks[them] & ~enemies);
    info.knightFear[us] = info.knightAttacks[them] & ~enemies;
    info.units[us] = FirstUnits - info.pawns->shelterUnits[them];
    info.score[us] = -at(OpenFileUnits, info.pawns->openFiles);
}

// A trapped piece: the rook that its own king keeps in the corner. Intended: only the king's wing is looked
// at.
template <Colour us>
void trappedRook(const Position& pos, EvalInfo& info) {
    constexpr int flip = us == White ? 0 : 56;
    constexpr Bitboard kingSquares = bit(F1 ^ flip) | bit(G1 ^ flip);
    constexpr Bitboard corner = bit(G1 ^ flip) | bit(H1 ^ flip) | bit(G2 ^ flip) | bit(H2 ^ flip);
    if (bool(pos.pieces[us][King] & kingSquares) & bool(pos.pieces[us][Rook] & corner))
        info.score[us] += TrappedRook;
}

// ---- The pieces ----

// A pinned slider keeps only the squares between its king and itself.
template <Colour us>
Bitboard pinnedReach(const EvalInfo& info, int square, Bitboard reach) {
    return info.pinned[us] & bit(square) ? reach & lineBetween(info.king[us], square) : reach;
}

template <Colour us>
void addZoneUnits(EvalInfo& info, Bitboard attacks, int units) {
    info.units[us] += units * bool(attacks & info.kingZone[opponent(us)]);
}

// Pressure through the one man that stands between a slider and a more valuable target.
template <Colour us>
Lanes linePressure(const Position& pos, int square, Bitboard targets, const Lanes (&own)[7],
                   const Lanes (&enemy)[7]) {
    Lanes sum;
    forEachSquare(targets, [&](int target) {
        const Bitboard gap = lineBetween(square, target) & pos.occupied;
        if (!gap || severalBits(gap)) return;
        const int code = pos.board[lowestSquare(gap)];
        sum += colourOfCode(code) == us ? own[typeOfCode(code)] : enemy[typeOfCode(code)];
    });
    return sum;
}

template <Colour us>
void evaluateKnights(const Position& pos, EvalInfo& info) {
    constexpr Colour them = opponent(us);
    forEachSquare(pos.pieces[us][Knight], [&](int square) {
        const std::size_t at = std::size_t(square);
        const Bitboard attacks = knightAttacks[at];
        const Bitboard reach = attacks & ~info.avoid[us];
        const Bitboard forward = us == White ? ranksAbove[at] : ranksBelow[at];
        // Forward moves count twice: a knight that can only go back is nearly out of play. A pinned one has
        // none.
        const int count = info.pinned[us] & bit(square) ? 0 : popcount(reach) + popcount(reach & forward);
        info.score[us] += KnightPawnSpan[info.pawns->span[them]] +
                          KnightKingDistance[squareDistance(info.king[us], square)] + KnightMobility[count];
        addZoneUnits<us>(info, attacks, KnightZoneUnits);
    });
}

// Own pawns on a bishop's square colour are in its way, the more if the side has the bishop pair and no enemy
// bishop can attack them there.
template <Colour us>
Lanes bishopAndPawns(const Position& pos, int square) {
    constexpr Colour them = opponent(us);
    const Bitboard colour = bit(square) & DarkSquares ? DarkSquares : LightSquares;
    const int same = popcount(pos.pieces[us][Pawn] & colour);
    const int other = popcount(pos.pieces[us][Pawn] & ~colour);
    const bool bishopPair = severalBits(pos.pieces[us][Bishop]);
    const int times = 1 + (bishopPair & !(pos.pieces[them][Bishop] & colour));
    return at(SameColourPawns, same) * times + at(OtherColourPawns, other);
}

// An enemy knight three ranks away on the bishop's file can hardly move in its own half.
template <Colour us>
bool dominatesKnight(const Position& pos, int square) {
    constexpr Colour them = opponent(us);
    const Bitboard threeAway = bit(square) << 24 | bit(square) >> 24;
    return threeAway & pos.pieces[them][Knight] & OwnHalf<them>;
}

template <Colour us>
void evaluateBishops(const Position& pos, EvalInfo& info) {
    const Bitboard* own = pos.pieces[us];
    const Bitboard* enemy = pos.pieces[opponent(us)];
    const Bitboard pawns = own[Pawn] | enemy[Pawn];
    forEachSquare(own[Bishop], [&](int square) {
        const Bitboard attacks = bishopAttacksOf(square, pos.occupied & ~own[Queen]);
        const Bitboard reach = pinnedReach<us>(info, square, attacks & ~info.avoid[us]);
        const Bitboard targets = bishopRays[std::size_t(square)] & (enemy[Rook] | enemy[Queen]);
        Lanes sum = BishopKingDistance[squareDistance(info.king[us], square)];
        if (targets) sum += linePressure<us>(pos, square, targets, BishopLineOwn, BishopLineEnemy);
        sum += BishopPawnMobility[popcount(bishopAttacksOf(square, pawns))];
        sum += BishopMobility[popcount(reach)] + bishopAndPawns<us>(pos, square);
        if (dominatesKnight<us>(pos, square)) sum += BishopRulesKnight;
        info.score[us] += sum;
        info.bishopAttacks[us] |= attacks;
        addZoneUnits<us>(info, attacks, SliderZoneUnits);
    });
}

// A rook on an open or semi-open file, one without own pawns; an enemy pawn there matters more if another one
// defends it.
template <Colour us>
Lanes rookFile(const Position& pos, const EvalInfo& info, int square) {
    constexpr Colour them = opponent(us);
    const Bitboard file = fileMask[std::size_t(square)];
    if (pos.pieces[us][Pawn] & file) return {};
    const Bitboard enemyPawns = pos.pieces[them][Pawn] & file;
    if (!enemyPawns) return RookOpenFile;
    return enemyPawns & info.pawnAttacks[them] ? RookDefendedFile : RookSemiOpenFile;
}

template <Colour us>
void evaluateRooks(const Position& pos, EvalInfo& info) {
    constexpr Colour them = opponent(us);
    const Bitboard* own = pos.pieces[us];
    const int enemyKing = info.king[them];
    forEachSquare(own[Rook], [&](int square) {
        const Bitboard attacks = rookAttacksOf(square, pos.occupied & ~(own[Queen] | own[Rook]));
        const Bitboard reach =
            pinnedReach<us>(info, square, attacks & ~(info.avoid[us] | info.knightFear[us]));
        const Bitboard targets = rookRays[std::size_t(square)] & pos.pieces[them][Queen];
        Lanes sum = at(OpenFileUnits, info.pawns->openFiles);
        if (targets) sum += linePressure<us>(pos, square, targets, RookLineOwn, RookLineEnemy);
        if (relativeRank(us, square) == 6 && relativeRank(us, enemyKing) == 7) sum += RookOnSeventh;
        sum += rookFile<us>(pos, info, square) + RookMobility[popcount(reach)];
        info.score[us] += sum;
        info.rookAttacks[us] |= attacks;
        addZoneUnits<us>(info, attacks, SliderZoneUnits);
        if (fileOf(square) == fileOf(enemyKing) && !(lineBetween(enemyKing, square) & own[Pawn]))
            info.units[us] += RookFileUnits;
    });
}

template <Colour us>
void evaluateQueens(const Position& pos, EvalInfo& info) {
    constexpr Colour them = opponent(us);
    const Bitboard* own = pos.pieces[us];
    if (!own[Queen]) {
        info.units[us] += NoQueenUnits;
        return;
    }
    const Bitboard attackedByLess =
        info.knightAttacks[them] | info.pawnAttacks[them] | info.bishopAttacks[them] | info.rookAttacks[them];
    const Bitboard barred = attackedByLess | own[King] | settledPawns<us>(pos, info);
    forEachSquare(own[Queen], [&](int square) {
        const Bitboard attacks = queenAttacksOf(square, pos.occupied);
        const Bitboard reach = pinnedReach<us>(info, square, attacks & ~barred);
        info.score[us] += at(OpenFileUnits, info.pawns->openFiles) + QueenMobility[popcount(reach)];
        info.queenAttacks[us] |= attacks;
        addZoneUnits<us>(info, attacks, SliderZoneUnits);
    });
}

template <Colour us>
void uniteOwnAttacks(EvalInfo& info) {
    info.minorAttacks[us] = info.knightAttacks[us] | info.bishopAttacks[us];
    info.noQueenAttacks[us] = info.minorAttacks[us] | info.pawnAttacks[us] | info.rookAttacks[us];
    info.attacks[us] = info.noQueenAttacks[us] | info.queenAttacks[us];
    info.allAttacks[us] = info.attacks[us] | info.kingAttacks[us];
}

// Pawns that the enemy queen alone defends.
template <Colour us>
void queenDefence(const Position& pos, EvalInfo& info) {
    constexpr Colour them = opponent(us);
    const Bitboard others = info.noQueenAttacks[them] | info.kingAttacks[them];
    const Bitboard pawns = pos.pieces[them][Pawn] & info.allAttacks[us] & info.queenAttacks[them] & ~others;
    info.score[us] += at(QueenOnlyDefence, popcount(pawns));
}

// Pieces and pawns on the wing where both kings stand.
template <Colour us>
void wingPieces(const Position& pos, EvalInfo& info, Bitboard wing, Bitboard bishopSquares) {
    const Bitboard* own = pos.pieces[us];
    if (own[Bishop] & bishopSquares) info.score[us] += WingShare;
    const Bitboard attackers = (own[Queen] | own[Knight]) & wing;
    if (attackers) info.score[us] += WingShare;
    if (severalBits(attackers)) info.score[us] += WingShare;
    info.score[us] += at(WingPawns, popcount(own[Pawn] & wing));
}

template <Colour us>
void evaluateLesserPieces(const Position& pos, EvalInfo& info) {
    evaluateKnights<us>(pos, info);
    evaluateBishops<us>(pos, info);
    evaluateRooks<us>(pos, info);
}

}  // namespace

void prepareMaps(const Position& pos, EvalInfo& info) {
    prepareOwnMaps<White>(pos, info);
    prepareOwnMaps<Black>(pos, info);
    prepareSharedMaps<White>(pos, info);
    prepareSharedMaps<Black>(pos, info);
    trappedRook<White>(pos, info);
    trappedRook<Black>(pos, info);
}

void evaluatePieces(const Position& pos, EvalInfo& info) {
    evaluateLesserPieces<White>(pos, info);
    evaluateLesserPieces<Black>(pos, info);
    evaluateQueens<White>(pos, info);
    evaluateQueens<Black>(pos, info);
}

void uniteAttacks(EvalInfo& info) {
    uniteOwnAttacks<White>(info);
    uniteOwnAttacks<Black>(info);
}

void evaluateQueenDefence(const Position& pos, EvalInfo& info) {
    queenDefence<White>(pos, info);
    queenDefence<Black>(pos, info);
}

void evaluateWing(const Position& pos, EvalInfo& info) {
    if (info.pawns->kingWing == 0) return;
    const bool east = info.pawns->kingWing == 1;
    const Bitboard wing = east ? ~WestFiles : WestFiles;
    // The bishop that looks at the other side's castled king.
    wingPieces<White>(pos, info, wing, east ? DarkSquares : LightSquares);
    wingPieces<Black>(pos, info, wing, east ? LightSquares : DarkSquares);
}
