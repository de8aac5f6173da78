// The pawn half of king safety: pawn shelter, own pawns before the king, and pawn storm, enemy pawns that
// come at it. Everything here is middlegame value alone.
#include "eval/king_shelter.h"

#include "board/geometry.h"
#include "eval/caches.h"
#include "eval/king_danger.h"
#include "eval/weights_king.h"

#include <algorithm>
#include <cstdint>

namespace {

// The king's squares that short castling aims at.
template <Colour us>
constexpr int CastledKing = us == White ? G1 : G8;

// The shelter that a king of `us` on `kingSquare` would have. With `ahead` set, own pawns behind the king
// give none.
template <Colour us>
int shelterValue(const Position& pos, int kingSquare, bool ahead) {
    constexpr Colour them = opponent(us);
    const Bitboard files = ShelterFiles[std::size_t(kingSquare)];
    const Bitboard own = pos.pieces[us][Pawn];
    const Bitboard enemies = pos.pieces[them][Pawn];
    const Bitboard midFile = fileMask[std::size_t(ShelterMidFile[fileOf(kingSquare)])];
    int value = 0;

    Bitboard sheltering = own & files;
    if (ahead) sheltering &= fillAhead<us>(rankMask(rankOf(kingSquare)));
    forEachSquare(sheltering, [&](int square) {
        value += ShelterRank[relativeRank(us, square)] * (bit(square) & midFile ? 2 : 1);
    });

    // An enemy pawn right before the king blocks the others more than it attacks.
    const Bitboard storming = enemies & files & ~pawnPushes<us>(bit(kingSquare));
    forEachSquare(storming, [&](int square) {
        const int rank = relativeRank(them, square);
        const Bitboard below = fillAhead<them>(pawnPushes<them>(rankMask(rankOf(square))));
        if (!(own & below))
            value += StormOpen[rank];
        else if (own & pawnPushes<them>(bit(square)))
            value += StormBlocked[rank];
        else
            value += StormOther[rank];
    });

    const Bitboard enemyFiles = fillDown(enemies & files) & Rank1;
    return value + ShelterEnemyFiles[popcount(enemyFiles)];
}

}  // namespace

template <Colour us>
void kingShelter(const Position& pos, PawnEntry& entry, Lanes& score) {
    constexpr std::uint8_t LostShort = us == White ? 1 : 4;
    const int king = pos.kingSquare(us);
    int value = shelterValue<us>(pos, king, true);
    // Intended: only short castling counts as a way to a better shelter.
    if (!(pos.castleLost & LostShort)) value = std::max(value, shelterValue<us>(pos, CastledKing<us>, false));
    score += Lanes(value, 0);

    // Storming pawns are counted on the files of the real king, whichever shelter was better.
    const Bitboard stormRanks = relativeRankMask(us, 2) | relativeRankMask(us, 3);
    const Bitboard storming = pos.pieces[opponent(us)][Pawn] & ShelterFiles[std::size_t(king)] & stormRanks;
    entry.shelterUnits[us] = std::int16_t(value / ShelterPerUnit - popcount(storming));
}

template void kingShelter<White>(const Position& pos, PawnEntry& entry, Lanes& score);
template void kingShelter<Black>(const Position& pos, PawnEntry& entry, Lanes& score);
