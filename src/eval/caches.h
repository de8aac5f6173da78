// The entries of the three evaluation caches that each search thread owns.
#pragma once

#include "board/position.h"
#include "board/thread_hooks.h"

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
    Key key;
    Score score;  // White minus Black
    std::uint8_t facts[32];
};
static_assert(sizeof(PawnEntry) == PawnEntrySize);
