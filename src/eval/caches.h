// The entries of the three evaluation caches that each search thread owns.
#pragma once

#include "board/position.h"
#include "board/thread_hooks.h"
#include "eval/lanes.h"

// Direct-mapped on the low bits of the position key.
struct EvalCacheEntry {
    Key key;
    std::int32_t value;  // side to move's view, before the score is scaled by the fifty-move clock
};
static_assert(sizeof(EvalCacheEntry) == EvalEntrySize);

// Direct-mapped on the low bits of the material key.
struct MatCacheEntry {
    Key key;
    float scale;
    std::int32_t value;  // blended units, White's view
};
static_assert(sizeof(MatCacheEntry) == 16);
inline constexpr std::size_t MatCacheEntries = 4096;

// Direct-mapped on the low bits of the pawn key: the pawn score and the facts that later stages read.
struct PawnEntry {
    std::uint8_t passed[2][8];  // squares of each colour's passed pawns, ascending, 0 after the last
    Key key;
    Lanes score;  // White minus Black, in lane units
    // By colour, what the own king's shelter takes off the enemy's attack units.
    std::int16_t shelterUnits[2];
    std::uint8_t span[2];       // by colour, last file with a pawn minus the first, plus 1; 0 without pawns
    std::uint8_t kingWing;      // 1 both kings on files e to h, 2 both on files a to d, else 0
    std::uint8_t openFiles;     // files without any pawn
    std::uint8_t fewOpenFiles;  // 1 if hardly any file is open to either side
    std::uint8_t rams;          // white pawns with a black pawn right in front
};
static_assert(sizeof(PawnEntry) == PawnEntrySize);
