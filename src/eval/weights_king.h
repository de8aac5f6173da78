// Weights of the kings' safety other than the attack units: pawn shelter and pawn storm, safe checks, the
// centre, the wing. (middlegame, endgame) in lane units; single numbers are middlegame alone.
#pragma once

#include "eval/count_table.h"

// ---- Pawn shelter and pawn storm ----

// By the rank of a pawn as its own side sees it, 0 to 7.
inline constexpr int ShelterRank[8] = {0, 240, 200, 80, 40, 0, 0, 0};
inline constexpr int StormOpen[8] = {-18, 0, 0, -36, -108, -360, -117, 0};
inline constexpr int StormBlocked[8] = {-14, 0, 0, -28, -84, -280, -91, 0};
inline constexpr int StormOther[8] = {-16, 0, 0, -32, -96, -320, -104, 0};

// By how many of the three files hold an enemy pawn.
inline constexpr int ShelterEnemyFiles[4] = {-54, -36, -18, 0};

// By the king's file: the file whose own pawns count double.
inline constexpr int ShelterMidFile[8] = {1, 1, 2, 3, 4, 5, 6, 6};

// ---- Kings among pawns ----

inline constexpr Lanes ShutInKing = Lanes(-63, -173);
inline constexpr Lanes EnemyPawnBehindKing = Lanes(0, 27);
inline constexpr Lanes KingAwayFromPawns = Lanes(-50, -200);

// ---- What pieces make of it ----

inline constexpr Lanes SafeCheck = Lanes(0, 84);                // for each kind of piece that has one
inline constexpr CountTable CentreControl = timesCount(20, 0);  // space: attacked squares of the centre
// Own pawns that no own man but the king defends.
inline constexpr CountTable UndefendedPawns = timesCount(-15, -30);

// On the wing where both kings stand: a bishop that looks at it, a queen or knight there, several of them.
inline constexpr Lanes WingShare = Lanes(35, 0);
inline constexpr CountTable WingPawns = timesCount(8, 0);
