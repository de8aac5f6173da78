// The list of known material sets behind the material table.
#pragma once

#include "board/position.h"

// A special judge of an ending: material units from White's view; sets `scale`.
using EndgameHandler = int (*)(const Position& pos, float& scale);

struct MaterialRow {
    const char* pattern;
    int value;               // material units, White's view
    float scale;             // multiplier of the positional sum
    EndgameHandler handler;  // decides in place of value and scale, or null
};

inline constexpr int KnownMaterialSets = 126;
extern const MaterialRow KnownMaterial[KnownMaterialSets];
