// Weights of the pieces, (middlegame, endgame) in lane units.
#pragma once

#include "eval/count_table.h"

// ---- Mobility, by number of squares ----

// clang-format off
inline constexpr Score KnightMobility[13] = {
    pair(-422, -516), pair(-347, -424), pair(-283, -346), pair(-228, -279), pair(-179, -219), pair(-135, -166),
    pair( -95, -118), pair( -59,  -74), pair( -26,  -33), pair(   5,    4), pair(  33,   39), pair(  60,   71),
    pair(  85,  102),
};
inline constexpr Score BishopMobility[14] = {
    pair(-354, -322), pair(-280, -254), pair(-216, -196), pair(-162, -146), pair(-113, -102), pair(-70, -62),
    pair( -31,  -26), pair(   5,    6), pair(  38,   37), pair(  68,   64), pair(  96,   90), pair(123, 115),
    pair( 148,  137), pair( 171,  159),
};
inline constexpr Score RookMobility[15] = {
    pair(-172, -340), pair(-130, -208), pair(-96, -130), pair(-65, -75), pair(-39, -32), pair(-15,   2),
    pair(   7,   32), pair(  26,   57), pair( 44,   80), pair( 61, 100), pair( 77, 118), pair( 91, 135),
    pair( 105,  150), pair( 118,  164), pair(130,  177),
};
// Both lanes alike.
inline constexpr int QueenMobilityValues[28] = {
    -463, -388, -324, -269, -221, -178, -139, -103, -70, -39, -12, 14, 38, 63,
    85, 106, 126, 144, 163, 180, 197, 213, 228, 243, 258, 271, 285, 299,
};
// The bishop's reach when only pawns stop it.
inline constexpr Score BishopPawnMobility[16] = {
    pair(-171, -194), pair(-139, -157), pair(-112, -127), pair(-89, -101), pair(-68, -77), pair(-49, -56),
    pair( -32,  -36), pair( -15,  -17), pair(   0,    0), pair( 15,   17), pair( 29,  32), pair( 42,  48),
    pair(  55,   62), pair(  67,   76), pair(  79,   90), pair( 91,  103),
};

// ---- Distance from the own king, and the enemy's pawn front ----

inline constexpr Score KnightKingDistance[8] = {
    pair(0, 0), pair(40, 16), pair(15, 6), pair(0, 0), pair(-10, -4), pair(-15, -6), pair(-20, -8), pair(-25, -10),
};
inline constexpr Score BishopKingDistance[8] = {
    pair(0, 0), pair(24, 0), pair(9, 0), pair(0, 0), pair(-6, 0), pair(-9, 0), pair(-12, 0), pair(-15, 0),
};
inline constexpr Score KnightPawnSpan[9] = {
    pair(0, 30), pair(0, 30), pair(0, 30), pair(0, 30), pair(0, 20), pair(0, 10), pair(0, 0), pair(0, -10),
    pair(0, -20),
};

// ---- By type: nothing, pawn, knight, bishop, rook, queen, king ----

// The man that alone stands between a bishop and an enemy rook or queen, or between a rook and an enemy queen.
inline constexpr Score BishopLineOwn[7] = {{}, {}, pair(90, 90), {}, pair(60, 60), pair(60, 60), {}};
inline constexpr Score BishopLineEnemy[7] = {{}, pair(10, 10), pair(120, 120), {}, pair(225, 225), pair(225, 225), {}};
inline constexpr Score RookLineOwn[7] = {{}, {}, pair(100, 100), pair(100, 100), {}, {}, {}};
inline constexpr Score RookLineEnemy[7] = {{}, pair(10, 10), pair(100, 100), pair(100, 100), {}, {}, {}};

// clang-format on

// ---- Bishops ----

// Own pawns on the bishop's square colour, and on the other.
inline constexpr CountTable SameColourPawns = timesCount(-16, -16);
inline constexpr CountTable OtherColourPawns = timesCount(16, 16);
inline constexpr Score BishopBeforeKing = pair(73, 0);    // on the square in front of the own king
inline constexpr Score BishopRulesKnight = pair(20, 19);  // an enemy knight three ranks ahead
inline constexpr Score TrappedBishop = pair(-63, -96);    // in the corner behind an own man

// ---- Rooks ----

// By open files: heavy pieces gain, sides lose.
inline constexpr CountTable OpenFileUnits = timesCount(20, 20);
inline constexpr Score RookOpenFile = pair(185, 157);
// A semi-open file, on which only enemy pawns stand; and one whose pawn another defends.
inline constexpr Score RookSemiOpenFile = pair(112, 94);
inline constexpr Score RookDefendedFile = pair(20, 44);
inline constexpr Score RookOnSeventh = pair(64, 163);   // below the king on its last rank
inline constexpr Score TrappedRook = pair(-282, -101);  // in the corner beside the own king

// ---- Outposts, and pieces among pawns ----

inline constexpr CountTable Outposts = timesCount(62, 70);
inline constexpr Score UnreachedOutpost = pair(156, 74);           // by any minor piece of the enemy, on top
inline constexpr CountTable KnightBlockades = timesCount(14, 34);  // safe knights in front of enemy pawns
inline constexpr CountTable UnassailablePieces = timesCount(35, 27);  // where no pawn can ever attack
inline constexpr CountTable PawnDefendedPieces = timesCount(55, 29);
inline constexpr CountTable PieceBehindPawn = timesCount(32, 8);
inline constexpr CountTable BlockedPawns = timesCount(-43, -167);
inline constexpr CountTable ControlledStops = timesCount(-21, -42);  // the enemy alone attacks in front
inline constexpr CountTable EnemyHomeBlocked = timesCount(20, 3);    // enemy pawns stuck on their second rank
