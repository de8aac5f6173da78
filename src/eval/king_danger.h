// The danger that a king is in: attack units, which the enemy's pieces and the king's own shelter add up to,
// and the table that turns their sum into a score.
#pragma once

#include "eval/lanes.h"

// ---- King attack weights: what adds to a side's units against the enemy king ----

inline constexpr int FirstUnits = 6;        // each side starts with
inline constexpr int ShelterPerUnit = 220;  // lane units of the king's shelter that take one off
inline constexpr int NoQueenUnits = -7;
// For each piece that attacks the zone around the king.
inline constexpr int KnightZoneUnits = 2;
inline constexpr int SliderZoneUnits = 1;
inline constexpr int RookFileUnits = 2;  // a rook on the king's file with no own pawn between
// For each kind of piece that has a check; so many times as much if one is safe.
inline constexpr int KnightCheckUnits = 4;
inline constexpr int BishopCheckUnits = 3;
inline constexpr int RookCheckUnits = 4;
inline constexpr int QueenCheckUnits = 5;  // from afar
inline constexpr int SafeCheckTimes = 2;
// For each square beside the king that the queen reaches and none but the king holds; on top if another man
// helps her there.
inline constexpr int QueenContactUnits = 1;
inline constexpr int HelpedContactUnits = 9;
inline constexpr int MostQueenUnits = 25;  // for her checks and contacts together
// For each square beside the king that is attacked and that none but the king holds.
inline constexpr int UndefendedUnits = 2;
inline constexpr int DefenderUnits = -1;  // for each kind of piece that defends a square beside its king

// ---- The table ----

// Middlegame value of attack units against a king. Written only while no search runs.
inline constexpr int KingDangerEntries = 256;
extern Lanes KingDanger[KingDangerEntries];

// Weight of king safety: the option's default, and the tree search's, whatever the option says.
inline constexpr int UsualKingSafety = 72;

// Fills the table with a weight of `k` (the option's scale, 0 to 200), varied by the style's
// `kingSafetyJitter`.
void buildKingSafetyTable(int k);

// Whether the table is one that was varied.
bool isKingSafetyVaried();
