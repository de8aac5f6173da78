// The style of the evaluation: what options, threads and playing strength make of it besides contempt.
#pragma once

#include "base/relaxed.h"

#include <cstdint>

// Multipliers of the piece sum's lanes, in 128ths: those of the default options on one thread, and the tree
// search's, whatever the options say.
inline constexpr int UsualDynamismMg = 160;
inline constexpr int UsualDynamismEg = 185;

// Written by the functions below alone, and while no search runs but for the noise's key.
struct EvalStyle {
    enum class Mode { None, AlphaBeta, Tree };
    Mode appliedMode = Mode::None;  // at the last run of `applyStyle`; none before the first
    int dynamismMg = UsualDynamismMg;
    int dynamismEg = UsualDynamismEg;
    int kingSafetyJitter = 0;             // spread of the random variation of king safety, 0 for none
    int evalNoise = 0;                    // width of the keyed noise in centipawns, 0 for none
    Relaxed<std::uint64_t> noiseKey = 0;  // its seed
};
extern EvalStyle evalStyle;

// Reads the style options (dynamism, king safety) and builds the table of king danger. Does nothing if the
// tree-search mode is as at its last run; `renewStyle` does it in any case.
void applyStyle();
void renewStyle();

// For each search, by playing strength.
void setKingSafetyJitter(int spread);
void setNoise(int width);

// Other threads may read the key late.
void setNoiseKey(std::uint64_t key);
