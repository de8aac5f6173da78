// Weights of threats, (middlegame, endgame) in lane units.
#pragma once

#include "eval/count_table.h"

// clang-format off
// By type: nothing, pawn, knight, bishop, rook, queen, king.
// The man that is attacked by a safe pawn, a minor piece, a rook.
inline constexpr Lanes PawnThreat[7] = {
    {}, {}, Lanes(528, 417), Lanes(393, 381), Lanes(651, 654), Lanes(609, 545), {},
};
inline constexpr Lanes MinorThreat[7] = {
    {}, Lanes(0, 124), Lanes(170, 161), Lanes(172, 176), Lanes(260, 380), Lanes(170, 420), {},
};
inline constexpr Lanes RookThreat[7] = {
    {}, Lanes(0, 94), Lanes(150, 232), Lanes(150, 221), Lanes(0, 128), Lanes(131, 180), {},
};
// clang-format on

// Once, if some piece is attacked by pawns that can be taken.
inline constexpr Lanes UnsafePawnThreat = Lanes(262, 236);
// A king beside one man that no pawn defends, and beside several.
inline constexpr Lanes KingThreat = Lanes(11, 232);
inline constexpr Lanes KingThreats = Lanes(34, 518);

inline constexpr CountTable HangingPieces = timesCount(180, 105);  // weak men that nothing defends
inline constexpr CountTable PushThreat = timesCount(116, 71);      // men that a safe push would attack
// Attacked pawns that only a queen defends.
inline constexpr CountTable QueenOnlyDefence = timesCount(24, 26);
