// Attacks on men that are worth more, or are not defended well enough, and pawn pushes that would make some.
#include "eval/terms.h"
#include "eval/weights_threats.h"

namespace {

// The sum over a set of enemy men of what each type is worth.
Lanes byType(const Position& pos, Bitboard men, const Lanes (&values)[7]) {
    Lanes sum;
    forEachSquare(men, [&](int square) { sum += values[typeOfCode(pos.board[square])]; });
    return sum;
}

// Pieces attacked by pawns, of which those count whose attacker can't simply be taken.
template <Colour us>
Lanes pawnThreats(const Position& pos, const EvalInfo& info) {
    constexpr Colour them = opponent(us);
    const Bitboard hit = pos.pieces[them][AllPieces] & ~pos.pieces[them][Pawn] & info.pawnAttacks[us];
    if (!hit) return {};
    const Bitboard safePawns = pos.pieces[us][Pawn] & (info.allAttacks[us] | ~info.allAttacks[them]);
    const Bitboard safeHit = hit & pawnAttacks<us>(safePawns);
    const Lanes unsafe = hit != safeHit ? UnsafePawnThreat : Lanes{};
    return unsafe + byType(pos, safeHit, PawnThreat);
}

// Men attacked by pieces: those without a pawn's defence, and pieces even with one.
template <Colour us>
Lanes pieceThreats(const Position& pos, const EvalInfo& info) {
    constexpr Colour them = opponent(us);
    const Bitboard* enemy = pos.pieces[them];
    const Bitboard unprotected = enemy[AllPieces] & ~info.pawnAttacks[them];
    // Intended: a king in check is weak like any other man.
    const Bitboard weak = unprotected & info.allAttacks[us];
    const Bitboard shielded = enemy[AllPieces] & ~enemy[Pawn] & info.pawnAttacks[them];
    if (!(weak | shielded)) return {};
    Lanes sum = byType(pos, (weak | shielded) & info.minorAttacks[us], MinorThreat);
    sum += byType(pos, (weak | enemy[Queen]) & info.rookAttacks[us], RookThreat);
    sum += at(HangingPieces, popcount(weak & ~info.allAttacks[them]));
    if (const Bitboard kingHit = unprotected & info.kingAttacks[us])
        sum += severalBits(kingHit) ? KingThreats : KingThreat;
    return sum;
}

// Men that a pawn would attack after a safe push.
template <Colour us>
Lanes pushThreats(const Position& pos, const EvalInfo& info) {
    constexpr Colour them = opponent(us);
    const Bitboard free = ~pos.occupied;
    const Bitboard movers = pos.pieces[us][Pawn] & ~relativeRankMask(us, 6);
    const Bitboard once = pawnPushes<us>(movers) & free;
    const Bitboard twice = pawnPushes<us>(once & relativeRankMask(us, 2)) & free;
    const Bitboard safe = ~info.pawnAttacks[them] & (info.allAttacks[us] | ~info.allAttacks[them]);
    const Bitboard attacked = pawnAttacks<us>((once | twice) & safe);
    const Bitboard victims = pos.pieces[them][AllPieces] & attacked & ~info.pawnAttacks[us];
    return at(PushThreat, popcount(victims));
}

template <Colour us>
void threatsOf(const Position& pos, EvalInfo& info) {
    info.score[us] += pawnThreats<us>(pos, info) + pieceThreats<us>(pos, info) + pushThreats<us>(pos, info);
}

}  // namespace

void evaluateThreats(const Position& pos, EvalInfo& info) {
    threatsOf<White>(pos, info);
    threatsOf<Black>(pos, info);
}
