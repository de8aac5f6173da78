// The constant pairs of the evaluation's terms, (middlegame, endgame) in lane units.
#pragma once

#include "board/score.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

// A pair for each count, for terms that are worth the same each time. There is room for any board that a FEN
// can set up.
inline constexpr std::size_t CountEntries = 65;
constexpr std::array<Score, CountEntries> timesCount(int mg, int eg) {
    std::array<Score, CountEntries> table{};
    for (std::size_t i = 0; i < CountEntries; ++i) table[i] = pair(mg * int(i), eg * int(i));
    return table;
}
using CountTable = std::array<Score, CountEntries>;

inline Score at(const CountTable& table, int count) { return table[std::size_t(count)]; }

// ---- Pawn structure ----

// Edge: files a and h. Closed: with an enemy pawn on the file.
inline constexpr CountTable DoubledPawns = timesCount(-42, -65);        // pawns beyond the first on a file
inline constexpr CountTable DoubledUnsupported = timesCount(-36, -50);  // frontmost ones that no pawn defends
inline constexpr CountTable PawnCoverEdge = timesCount(6, 8);           // squares attacked outside c3 to f6
inline constexpr CountTable PawnCoverCentre = timesCount(9, 11);        // and inside
inline constexpr CountTable IsolatedEdgeClosed = timesCount(-31, -26);
inline constexpr CountTable IsolatedEdgeOpen = timesCount(-75, -87);
inline constexpr CountTable IsolatedClosed = timesCount(-34, -40);
inline constexpr CountTable IsolatedOpen = timesCount(-121, -136);
// The frontmost of a doubled isolated pair.
inline constexpr CountTable DoubledIsolatedEdgeClosed = timesCount(-10, -5);
inline constexpr CountTable DoubledIsolatedEdgeOpen = timesCount(-18, -42);
inline constexpr CountTable DoubledIsolatedClosed = timesCount(-14, -8);
inline constexpr CountTable DoubledIsolatedOpen = timesCount(-24, -47);
inline constexpr CountTable PawnPhalanx = timesCount(22, 22);
inline constexpr CountTable PawnDefended = timesCount(48, 25);
inline constexpr CountTable BackwardBlocked = timesCount(-30, -32);
inline constexpr CountTable BackwardBlockedEdge = timesCount(-26, -25);
inline constexpr CountTable BackwardExposed = timesCount(-55, -86);
inline constexpr CountTable StopAttackedHome = timesCount(-11, -12);
inline constexpr CountTable PawnTension = timesCount(89, 78);

inline constexpr Score KingAtPromotion = pair(0, 129);
inline constexpr Score SeveralPassers = pair(33, 128);
inline constexpr Score ShutInKing = pair(-63, -173);
inline constexpr Score EnemyPawnBehindKing = pair(0, 27);
inline constexpr Score KingAwayFromPawns = pair(-50, -200);

// ---- Passed pawns ----

// Tables by i, the pawn's relative rank minus 1, of factors of max(1, i * (i - 1)).
constexpr std::array<Score, 6> byPasserRank(int mg, int eg) {
    std::array<Score, 6> table{};
    for (int i = 0; i < 6; ++i) {
        const int growth = i * (i - 1) > 1 ? i * (i - 1) : 1;
        table[std::size_t(i)] = pair(mg * growth, eg * growth);
    }
    return table;
}
// The same with an endgame lane that grows by i * i + 1.
constexpr std::array<Score, 6> byPasserSquare(int mg, int eg) {
    std::array<Score, 6> table = byPasserRank(mg, 0);
    for (int i = 0; i < 6; ++i) table[std::size_t(i)] = pair(mgOf(table[std::size_t(i)]), eg * (i * i + 1));
    return table;
}
inline constexpr std::array<Score, 6> PasserBase = byPasserSquare(42, 34);
inline constexpr std::array<Score, 6> PasserQueens = byPasserSquare(44, 44);
inline constexpr std::array<Score, 6> PasserFree = byPasserRank(25, 60);
inline constexpr std::array<Score, 6> PasserFreeSupported = byPasserRank(28, 67);
inline constexpr std::array<Score, 6> PasserDefended = byPasserRank(25, 36);
inline constexpr std::array<Score, 6> PasserClearPath = byPasserRank(1, 3);
inline constexpr std::array<Score, 6> PasserStopSupported = byPasserRank(2, 8);

// A candidate is worth 65 per cent of a passed pawn, by relative rank 0 to 7.
constexpr std::array<Score, 8> makeCandidateBonus() {
    std::array<Score, 8> table{};
    for (int rank = 1; rank < 7; ++rank) {
        const Score base = PasserBase[std::size_t(rank - 1)];
        table[std::size_t(rank)] = pair(mgOf(base) * 65 / 100, egOf(base) * 65 / 100);
    }
    return table;
}
inline constexpr std::array<Score, 8> CandidateBonus = makeCandidateBonus();

// By relative rank 0 to 7.
inline constexpr Score SupportedPasser[8] = {pair(0, 0),
                                             pair(28 / 4, 47 / 4),
                                             pair(28 / 4, 47 / 4),
                                             pair(127 / 4, 188 / 4),
                                             pair(325 / 4, 470 / 4),
                                             pair(622 / 4, 893 / 4),
                                             pair(1018 / 4, 1457 / 4),
                                             pair(0, 0)};

inline constexpr Score PasserFile[8] = {pair(0, 60),  pair(0, 20),  pair(0, -20), pair(0, -60),
                                        pair(0, -60), pair(0, -20), pair(0, 20),  pair(0, 60)};

// By the files that a side's pawns stand on, as eight bits: the last minus the first, plus 1; 0 for none.
constexpr std::array<std::uint8_t, 256> makePawnSpan() {
    std::array<std::uint8_t, 256> table{};
    for (unsigned files = 1; files < 256; ++files)
        table[files] = std::uint8_t(int(std::bit_width(files)) - std::countr_zero(files));
    return table;
}
inline constexpr std::array<std::uint8_t, 256> PawnSpan = makePawnSpan();
