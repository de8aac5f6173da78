// Weights of the pawn structure and of passed pawns, (middlegame, endgame) in lane units.
#pragma once

#include "eval/count_table.h"

#include <array>
#include <cstddef>

// ---- Pawn structure ----

// Edge: files a and h. Closed: with an enemy pawn on the file. Open: without one.
inline constexpr CountTable DoubledPawns = timesCount(-42, -65);        // pawns beyond the first on a file
inline constexpr CountTable DoubledUnsupported = timesCount(-36, -50);  // frontmost ones that no pawn defends
// Space that pawns take: squares that they attack outside c3 to f6, and inside.
inline constexpr CountTable PawnCoverEdge = timesCount(6, 8);
inline constexpr CountTable PawnCoverCentre = timesCount(9, 11);
// Isolated pawns: none of their own on the files beside them.
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
// Backward pawns: blocked ones, and those whose stop square an enemy pawn attacks on a file without pawns
// ahead.
inline constexpr CountTable BackwardBlocked = timesCount(-30, -32);
inline constexpr CountTable BackwardBlockedEdge = timesCount(-26, -25);
inline constexpr CountTable BackwardExposed = timesCount(-55, -86);
// Pawns at home that an enemy pawn keeps there.
inline constexpr CountTable StopAttackedHome = timesCount(-11, -12);
// Pawns in the enemy's half that an enemy pawn attacks.
inline constexpr CountTable PawnTension = timesCount(89, 78);

// A pair of neighbours on the edge of their own half that one enemy pawn can hold: held, and free yet.
inline constexpr Lanes EdgePhalanxHeld = Lanes(-1, -25);
inline constexpr Lanes EdgePhalanxFree = Lanes(-2, -50);

// By files between a king and the mean file of all pawns.
inline constexpr CountTable KingFilesFromPawns = timesCount(0, -15);

// By a side's span of files with pawns, 0 to 8: what a wide front is worth in itself, in endgame lane units,
// and 128ths that an advantage loses in an endgame where the own front is narrow.
inline constexpr int SpanEg[9] = {-32, -30, -24, -14, 0, 18, 36, 54, 72};
inline constexpr int SpanPull[9] = {12, 10, 8, 6, 4, 2, 0, -2, -4};

// ---- Passed pawns ----

// Tables by i, the pawn's relative rank minus 1, of factors of max(1, i * (i - 1)).
constexpr std::array<Lanes, 6> byPasserRank(int mg, int eg) {
    std::array<Lanes, 6> table{};
    for (int i = 0; i < 6; ++i) {
        const int growth = i * (i - 1) > 1 ? i * (i - 1) : 1;
        table[std::size_t(i)] = Lanes(mg * growth, eg * growth);
    }
    return table;
}
// The same with an endgame lane that grows by i * i + 1.
constexpr std::array<Lanes, 6> byPasserSquare(int mg, int eg) {
    std::array<Lanes, 6> table = byPasserRank(mg, 0);
    for (int i = 0; i < 6; ++i) table[std::size_t(i)] = Lanes(mgOf(table[std::size_t(i)]), eg * (i * i + 1));
    return table;
}
// In itself, and with two queens and nothing else; then by what stands or looks at the way ahead.
inline constexpr std::array<Lanes, 6> PasserBase = byPasserSquare(42, 34);
inline constexpr std::array<Lanes, 6> PasserQueens = byPasserSquare(44, 44);
inline constexpr std::array<Lanes, 6> PasserFree = byPasserRank(25, 60);
inline constexpr std::array<Lanes, 6> PasserFreeSupported = byPasserRank(28, 67);
inline constexpr std::array<Lanes, 6> PasserDefended = byPasserRank(25, 36);
inline constexpr std::array<Lanes, 6> PasserClearPath = byPasserRank(1, 3);
inline constexpr std::array<Lanes, 6> PasserStopSupported = byPasserRank(2, 8);

// A candidate passed pawn is worth 65 per cent of a passed one.
constexpr int candidateShare(int passer) { return passer * 65 / 100; }

// By relative rank 0 to 7.
constexpr std::array<Lanes, 8> makeCandidateBonus() {
    std::array<Lanes, 8> table{};
    for (int rank = 1; rank < 7; ++rank) {
        const Lanes base = PasserBase[std::size_t(rank - 1)];
        table[std::size_t(rank)] = Lanes(candidateShare(mgOf(base)), candidateShare(egOf(base)));
    }
    return table;
}
inline constexpr std::array<Lanes, 8> CandidateBonus = makeCandidateBonus();

// A passed pawn beside an own pawn or defended by one, by relative rank 0 to 7.
inline constexpr Lanes SupportedPasser[8] = {
    Lanes(0, 0),
    Lanes(28 / 4, 47 / 4),
    Lanes(28 / 4, 47 / 4),
    Lanes(127 / 4, 188 / 4),
    Lanes(325 / 4, 470 / 4),
    Lanes(622 / 4, 893 / 4),
    Lanes(1018 / 4, 1457 / 4),
    Lanes(0, 0),
};

// By file.
inline constexpr Lanes PasserFile[8] = {Lanes(0, 60),  Lanes(0, 20),  Lanes(0, -20), Lanes(0, -60),
                                        Lanes(0, -60), Lanes(0, -20), Lanes(0, 20),  Lanes(0, 60)};

inline constexpr Lanes SeveralPassers = Lanes(33, 128);    // once, for two and more
inline constexpr Lanes KingAtPromotion = Lanes(0, 129);    // for each king beside the promotion square
inline constexpr Lanes RookBehindPasser = Lanes(62, 274);  // for the rook's side
inline constexpr Lanes KnightNearPasser = Lanes(0, 50);    // for the side whose knight holds the square ahead
// Without pieces, by the farthest passed pawn's relative rank minus 1.
inline constexpr CountTable FarthestPasser = timesCount(0, 40);

// ---- Kings' distances from the square ahead of a passed pawn ----

// By distance 0 to 8: what any rank has, for the own king, and the weight by which the factors of own and
// enemy king grow with the rank.
inline constexpr int KingDistanceBase[9] = {390, 270, 180, 120, 90, 60, 30, 0, 0};
inline constexpr double KingDistanceWeight[9] = {0, 0, 0.43, 1.01, 1.3, 1.5, 1.53, 1.55, 1.57};
struct KingDistanceFactors {
    int own, enemy;
};
inline constexpr KingDistanceFactors PasserKings = {-28, 72};
inline constexpr KingDistanceFactors PawnEndKings = {-12, 15};  // without pieces, on top
