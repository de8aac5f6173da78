// The piece half of king safety: attack units, which a table turns into a middlegame score.
#include "board/sliders.h"
#include "eval/king_danger.h"
#include "eval/terms.h"
#include "eval/weights_king.h"

#include <algorithm>

namespace {

constexpr Bitboard Centre = bit(D4) | bit(E4) | bit(D5) | bit(E5);

// The centre grows by three squares on the wing of White's king and by three on that of Black's.
Bitboard centralArea(int whiteKing, int blackKing) {
    constexpr Bitboard WhiteWest = bit(C3) | bit(D3) | bit(C4), WhiteEast = bit(E3) | bit(F3) | bit(F4);
    constexpr Bitboard BlackWest = bit(C6) | bit(D6) | bit(C5), BlackEast = bit(E6) | bit(F6) | bit(F5);
    return Centre | (fileOf(whiteKing) <= 3 ? WhiteWest : WhiteEast) |
           (fileOf(blackKing) <= 3 ? BlackWest : BlackEast);
}

// Squares from which one kind of piece gives check; a safe one counts for several, and in `safeKinds`.
int checkUnits(Bitboard checks, Bitboard safe, int plainUnits, int& safeKinds) {
    const bool isSafe = checks & safe;
    safeKinds += isSafe;
    return plainUnits * (bool(checks) + (SafeCheckTimes - 1) * isSafe);
}

// The queen's checks from afar, and the squares beside the king that she reaches.
template <Colour us>
int queenUnits(const Position& pos, const EvalInfo& info, Bitboard lines, Bitboard safe, int& safeKinds) {
    constexpr Colour them = opponent(us);
    const Bitboard free = ~pos.pieces[us][AllPieces];
    const Bitboard beside = info.kingAttacks[them];
    int units = checkUnits(lines & info.queenAttacks[us] & free & ~beside, safe, QueenCheckUnits, safeKinds);
    const Bitboard contact = beside & info.queenAttacks[us] & free & ~info.attacks[them];
    const Bitboard helped = contact & (info.minorAttacks[us] | info.rookAttacks[us] | info.pawnAttacks[us] |
                                       info.kingAttacks[us]);
    units += QueenContactUnits * popcount(contact) + HelpedContactUnits * popcount(helped);
    return std::min(units, MostQueenUnits);
}

template <Colour us>
void attackKing(const Position& pos, EvalInfo& info) {
    constexpr Colour them = opponent(us);
    const int king = info.king[them];
    const Bitboard free = ~pos.pieces[us][AllPieces];
    const Bitboard diagonals = bishopAttacksOf(king, pos.occupied);
    const Bitboard straights = rookAttacksOf(king, pos.occupied);
    const Bitboard jumps = knightAttacks[std::size_t(king)];
    const Bitboard safe = ~info.allAttacks[them];
    int safeKinds = 0;
    info.units[us] +=
        checkUnits(jumps & info.knightAttacks[us] & free, safe, KnightCheckUnits, safeKinds) +
        checkUnits(diagonals & info.bishopAttacks[us] & free, safe, BishopCheckUnits, safeKinds) +
        checkUnits(straights & info.rookAttacks[us] & free, safe, RookCheckUnits, safeKinds) +
        queenUnits<us>(pos, info, diagonals | straights, safe, safeKinds);
    info.score[us] += SafeCheck * safeKinds;
}

// Each kind of piece that defends a square beside its own king counts once.
template <Colour us>
void defendKing(EvalInfo& info) {
    const Bitboard beside = info.kingAttacks[us];
    const int kinds = bool(info.knightAttacks[us] & beside) + bool(info.bishopAttacks[us] & beside) +
                      bool(info.queenAttacks[us] & beside);
    info.units[opponent(us)] += DefenderUnits * kinds;
}

template <Colour us>
void undefendedNeighbours(EvalInfo& info) {
    constexpr Colour them = opponent(us);
    info.units[us] +=
        UndefendedUnits * popcount(info.kingAttacks[them] & info.allAttacks[us] & ~info.attacks[them]);
}

template <Colour us>
void addWorth(const Position& pos, EvalInfo& info, Bitboard centre) {
    info.score[us] += KingDanger[std::clamp(info.units[us], 0, KingDangerEntries - 1)] +
                      at(CentreControl, popcount(centre & info.attacks[us])) +
                      at(UndefendedPawns, popcount(pos.pieces[us][Pawn] & ~info.attacks[us]));
}

}  // namespace

void evaluateKingSafety(const Position& pos, EvalInfo& info) {
    attackKing<White>(pos, info);
    attackKing<Black>(pos, info);
    defendKing<White>(info);
    defendKing<Black>(info);
    undefendedNeighbours<White>(info);
    undefendedNeighbours<Black>(info);
    const Bitboard centre = centralArea(info.king[White], info.king[Black]);
    addWorth<White>(pos, info, centre);
    addWorth<Black>(pos, info, centre);
}
