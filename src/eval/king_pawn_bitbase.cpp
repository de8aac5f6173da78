// Retrograde analysis of one pawn square after another, from those next to promotion backwards: sets of the
// weak king's squares grow until nothing changes.
#include "eval/king_pawn_bitbase.h"

#include "board/geometry.h"
#include "board/sliders.h"

#include <array>
#include <cstdint>

namespace {

constexpr int PawnSquares = 24;  // ranks 2 to 7, files a to d
constexpr std::size_t Entries = PawnSquares * 64 * 64;
constexpr std::uint8_t StrongToMove = 1, WeakToMove = 0;  // position of a bit within its pair

// Two bits an entry: whether the strong side wins with the weak side to move, and with itself to move.
std::array<std::uint8_t, Entries / 4> bitbase;

constexpr int pawnIndexOf(int pawn) { return 4 * (rankOf(pawn) - 1) + fileOf(pawn); }
constexpr int squareOfPawn(int index) { return makeSquare(index % 4, index / 4 + 1); }

std::size_t entryOf(int pawnIndex, int strongKing, int weakKing) {
    return std::size_t(pawnIndex) * 4096 + std::size_t(strongKing) * 64 + std::size_t(weakKing);
}

Bitboard kingReach(int square) { return kingAttacks[std::size_t(square)]; }

// For one pawn square and every square of the strong king: the weak king's squares from which the strong side
// wins.
struct WonSets {
    std::array<Bitboard, 64> weakMoves{}, strongMoves{};
};

// Whether a piece that has just been made on `square` wins against the weak king, who is to move.
bool promotionWins(int square, int strongKing, int weakKing, Bitboard (*attacksOf)(int, Bitboard)) {
    if (square == weakKing || square == strongKing) return false;
    // The weak king may not step back on the line on which it is attacked.
    const Bitboard attacks = attacksOf(square, bit(strongKing));
    const bool inCheck = attacksOf(square, bit(strongKing) | bit(weakKing)) & bit(weakKing);
    const Bitboard steps = kingReach(weakKing) & ~attacks & ~kingReach(strongKing);
    if (steps & bit(square)) return false;
    return steps != 0 || inCheck;
}

// The weak king's squares against which promoting on `square` wins. A rook helps where a queen would
// stalemate.
Bitboard wonByPromotion(int square, int strongKing) {
    Bitboard won = 0;
    for (int weakKing = 0; weakKing < 64; ++weakKing)
        if (promotionWins(square, strongKing, weakKing, queenAttacksOf) ||
            promotionWins(square, strongKing, weakKing, rookAttacksOf))
            won |= bit(weakKing);
    return won;
}

// What moving the pawn wins at once or by what is known of the pawn squares farther down.
Bitboard wonByPawnMove(const std::array<WonSets, PawnSquares>& sets, int pawn, int strongKing) {
    const int next = pawn - 8;
    if (next == strongKing) return 0;
    if (rankOf(next) == 0) return wonByPromotion(next, strongKing);
    Bitboard won = sets[std::size_t(pawnIndexOf(next))].weakMoves[std::size_t(strongKing)];
    const int beyond = next - 8;
    if (rankOf(pawn) == 6 && beyond != strongKing)
        won |= sets[std::size_t(pawnIndexOf(beyond))].weakMoves[std::size_t(strongKing)] & ~bit(next);
    return won;
}

// The weak side to move loses if it is mated, or if every move that it has leads to a won position; taking
// the pawn and having no move draw.
Bitboard lostByWeakMove(const WonSets& own, int pawn, int strongKing, Bitboard legal) {
    const Bitboard pawnAttack = pawnAttacks<Black>(bit(pawn));
    Bitboard lost = 0;
    forEachSquare(legal, [&](int weakKing) {
        const Bitboard steps = kingReach(weakKing) & ~kingReach(strongKing) & ~pawnAttack;
        const bool isLost = steps == 0 ? (pawnAttack & bit(weakKing)) != 0
                                       : !(steps & (bit(pawn) | ~own.strongMoves[std::size_t(strongKing)]));
        if (isLost) lost |= bit(weakKing);
    });
    return lost;
}

// Retrograde analysis for one pawn square, the squares below it being done.
void solve(std::array<WonSets, PawnSquares>& sets, int pawnIndex) {
    const int pawn = squareOfPawn(pawnIndex);
    const Bitboard pawnAttack = pawnAttacks<Black>(bit(pawn));
    WonSets& own = sets[std::size_t(pawnIndex)];
    std::array<Bitboard, 64> byPawn{};
    for (int king = 0; king < 64; ++king)
        if (king != pawn) byPawn[std::size_t(king)] = wonByPawnMove(sets, pawn, king);

    for (bool changed = true; changed;) {
        changed = false;
        for (int king = 0; king < 64; ++king) {
            if (king == pawn) continue;
            const Bitboard legal = ~(kingReach(king) | bit(king) | bit(pawn));
            Bitboard won = byPawn[std::size_t(king)];
            forEachSquare(kingReach(king) & ~bit(pawn),
                          [&](int step) { won |= own.weakMoves[std::size_t(step)]; });
            won &= legal & ~pawnAttack;
            changed |= won != own.strongMoves[std::size_t(king)];
            own.strongMoves[std::size_t(king)] = won;
            const Bitboard lost = lostByWeakMove(own, pawn, king, legal);
            changed |= lost != own.weakMoves[std::size_t(king)];
            own.weakMoves[std::size_t(king)] = lost;
        }
    }
}

void storeSet(int pawnIndex, int strongKing, Bitboard weakKings, std::uint8_t mover) {
    forEachSquare(weakKings, [&](int weakKing) {
        const std::size_t entry = entryOf(pawnIndex, strongKing, weakKing);
        bitbase[entry / 4] = std::uint8_t(bitbase[entry / 4] | 1 << (2 * (entry % 4) + mover));
    });
}

}  // namespace

void initKingPawnBitbase() {
    static std::array<WonSets, PawnSquares> sets;
    sets.fill({});
    bitbase.fill(0);
    for (int index = 0; index < PawnSquares; ++index) {
        solve(sets, index);
        for (int king = 0; king < 64; ++king) {
            storeSet(index, king, sets[std::size_t(index)].weakMoves[std::size_t(king)], WeakToMove);
            storeSet(index, king, sets[std::size_t(index)].strongMoves[std::size_t(king)], StrongToMove);
        }
    }
}

bool kingPawnWins(int strongKing, int pawn, int weakKing, bool strongToMove) {
    const std::size_t entry = entryOf(pawnIndexOf(pawn), strongKing, weakKing);
    return bitbase[entry / 4] >> (2 * (entry % 4) + (strongToMove ? StrongToMove : WeakToMove)) & 1;
}
