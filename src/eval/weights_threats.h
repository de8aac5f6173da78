// Weights of threats, (middlegame, endgame) in lane units.
#pragma once

#include "eval/count_table.h"

// clang-format off
// By type: nothing, pawn, knight, bishop, rook, queen, king.
// The man that is attacked by a safe pawn, a minor piece, a rook.
inline constexpr Score PawnThreat[7] = {
    {}, {}, pair(528, 417), pair(393, 381), pair(651, 654), pair(609, 545), {},
};
inline constexpr Score MinorThreat[7] = {
    {}, pair(0, 124), pair(170, 161), pair(172, 176), pair(260, 380), pair(170, 420), {},
};
inline constexpr Score RookThreat[7] = {
    {}, pair(0, 94), pair(150, 232), pair(150, 221), pair(0, 128), pair(131, 180), {},
};
// clang-format on

// Once, if some piece is attacked by pawns that can be taken.
inline constexpr Score UnsafePawnThreat = pair(262, 236);
// A king beside one man that no pawn defends, and beside several.
inline constexpr Score KingThreat = pair(11, 232);
inline constexpr Score KingThreats = pair(34, 518);

inline constexpr CountTable HangingPieces = timesCount(180, 105);  // weak men that nothing defends
inline constexpr CountTable PushThreat = timesCount(116, 71);      // men that a safe push would attack
// Attacked pawns that only a queen defends.
inline constexpr CountTable QueenOnlyDefence = timesCount(24, 26);
