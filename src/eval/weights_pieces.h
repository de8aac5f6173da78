// Weights of the pieces, (middlegame, endgame) in lane units.
#pragma once

#include "eval/count_table.h"

// ---- Mobility, by number of squares ----

// clang-format off
inline constexpr Lanes KnightMobility[13] = {
    Lanes(-422, -516), Lanes(-347, -424), Lanes(-283, -346), Lanes(-228, -279), Lanes(-179, -219), Lanes(-135, -166),
    Lanes( -95, -118), Lanes( -59,  -74), Lanes( -26,  -33), Lanes(   5,    4), Lanes(  33,   39), Lanes(  60,   71),
    Lanes(  85,  102),
};
inline constexpr Lanes BishopMobility[14] = {
    Lanes(-354, -322), Lanes(-280, -254), Lanes(-216, -196), Lanes(-162, -146), Lanes(-113, -102), Lanes(-70, -62),
    Lanes( -31,  -26), Lanes(   5,    6), Lanes(  38,   37), Lanes(  68,   64), Lanes(  96,   90), Lanes(123, 115),
    Lanes( 148,  137), Lanes( 171,  159),
};
inline constexpr Lanes RookMobility[15] = {
    Lanes(-172, -340), Lanes(-130, -208), Lanes(-96, -130), Lanes(-65, -75), Lanes(-39, -32), Lanes(-15,   2),
    Lanes(   7,   32), Lanes(  26,   57), Lanes( 44,   80), Lanes( 61, 100), Lanes( 77, 118), Lanes( 91, 135),
    Lanes( 105,  150), Lanes( 118,  164), Lanes(130,  177),
};
inline constexpr Lanes QueenMobility[28] = {
    Lanes(-463, -463), Lanes(-388, -388), Lanes(-324, -324), Lanes(-269, -269), Lanes(-221, -221), Lanes(-178, -178),
    Lanes(-139, -139), Lanes(-103, -103), Lanes( -70,  -70), Lanes( -39,  -39), Lanes( -12,  -12), Lanes(  14,   14),
    Lanes(  38,   38), Lanes(  63,   63), Lanes(  85,   85), Lanes( 106,  106), Lanes( 126,  126), Lanes( 144,  144),
    Lanes( 163,  163), Lanes( 180,  180), Lanes( 197,  197), Lanes( 213,  213), Lanes( 228,  228), Lanes( 243,  243),
    Lanes( 258,  258), Lanes( 271,  271), Lanes( 285,  285), Lanes( 299,  299),
};
// The bishop's reach when only pawns stop it.
inline constexpr Lanes BishopPawnMobility[16] = {
    Lanes(-171, -194), Lanes(-139, -157), Lanes(-112, -127), Lanes(-89, -101), Lanes(-68, -77), Lanes(-49, -56),
    Lanes( -32,  -36), Lanes( -15,  -17), Lanes(   0,    0), Lanes( 15,   17), Lanes( 29,  32), Lanes( 42,  48),
    Lanes(  55,   62), Lanes(  67,   76), Lanes(  79,   90), Lanes( 91,  103),
};

// ---- Distance from the own king, and the enemy's pawn front ----

inline constexpr Lanes KnightKingDistance[8] = {
    Lanes(0, 0), Lanes(40, 16), Lanes(15, 6), Lanes(0, 0), Lanes(-10, -4), Lanes(-15, -6), Lanes(-20, -8), Lanes(-25, -10),
};
inline constexpr Lanes BishopKingDistance[8] = {
    Lanes(0, 0), Lanes(24, 0), Lanes(9, 0), Lanes(0, 0), Lanes(-6, 0), Lanes(-9, 0), Lanes(-12, 0), Lanes(-15, 0),
};
inline constexpr Lanes KnightPawnSpan[9] = {
    Lanes(0, 30), Lanes(0, 30), Lanes(0, 30), Lanes(0, 30), Lanes(0, 20), Lanes(0, 10), Lanes(0, 0), Lanes(0, -10),
    Lanes(0, -20),
};

// ---- By type: nothing, pawn, knight, bishop, rook, queen, king ----

// The man that alone stands between a bishop and an enemy rook or queen, or between a rook and an enemy queen.
inline constexpr Lanes BishopLineOwn[7] = {{}, {}, Lanes(90, 90), {}, Lanes(60, 60), Lanes(60, 60), {}};
inline constexpr Lanes BishopLineEnemy[7] = {{}, Lanes(10, 10), Lanes(120, 120), {}, Lanes(225, 225), Lanes(225, 225), {}};
inline constexpr Lanes RookLineOwn[7] = {{}, {}, Lanes(100, 100), Lanes(100, 100), {}, {}, {}};
inline constexpr Lanes RookLineEnemy[7] = {{}, Lanes(10, 10), Lanes(100, 100), Lanes(100, 100), {}, {}, {}};

// clang-format on

// ---- Bishops ----

// Own pawns on the bishop's square colour, and on the other.
inline constexpr CountTable SameColourPawns = timesCount(-16, -16);
inline constexpr CountTable OtherColourPawns = timesCount(16, 16);
inline constexpr Lanes BishopBeforeKing = Lanes(73, 0);    // on the square in front of the own king
inline constexpr Lanes BishopRulesKnight = Lanes(20, 19);  // an enemy knight three ranks ahead
inline constexpr Lanes TrappedBishop = Lanes(-63, -96);    // in the corner behind an own man

// ---- Rooks ----

// By open files: heavy pieces gain, sides lose.
inline constexpr CountTable OpenFileUnits = timesCount(20, 20);
inline constexpr Lanes RookOpenFile = Lanes(185, 157);
// A semi-open file, on which only enemy pawns stand; and one whose pawn another defends.
inline constexpr Lanes RookSemiOpenFile = Lanes(112, 94);
inline constexpr Lanes RookDefendedFile = Lanes(20, 44);
inline constexpr Lanes RookOnSeventh = Lanes(64, 163);   // below the king on its last rank
inline constexpr Lanes TrappedRook = Lanes(-282, -101);  // in the corner beside the own king

// ---- Outposts, and pieces among pawns ----

inline constexpr CountTable Outposts = timesCount(62, 70);
inline constexpr Lanes UnreachedOutpost = Lanes(156, 74);          // by any minor piece of the enemy, on top
inline constexpr CountTable KnightBlockades = timesCount(14, 34);  // safe knights in front of enemy pawns
inline constexpr CountTable UnassailablePieces = timesCount(35, 27);  // where no pawn can ever attack
inline constexpr CountTable PawnDefendedPieces = timesCount(55, 29);
inline constexpr CountTable PieceBehindPawn = timesCount(32, 8);
inline constexpr CountTable BlockedPawns = timesCount(-43, -167);
inline constexpr CountTable ControlledStops = timesCount(-21, -42);  // the enemy alone attacks in front
inline constexpr CountTable EnemyHomeBlocked = timesCount(20, 3);    // enemy pawns stuck on their second rank
