// Weights of the evaluation as a whole.
#pragma once

// For the side to move, in tenths of a centipawn: always, and at full phase on top.
inline constexpr int TempoBase = 26;
inline constexpr int TempoByPhase = 91;

// Material counts as level while it is smaller than this in magnitude, in blended units; so much of the score
// counts then.
inline constexpr int LevelMaterial = 19200;
inline constexpr int LevelPercent = 88;

// Scale factors: of the positional sum without queens and passed pawns, and where hardly a file is open (a
// double, since the product is formed in double precision); of the whole by rams, pawns that block each
// other.
inline constexpr float NoQueensScale = 0.9f;
inline constexpr double FewOpenFilesScale = 0.9;
inline constexpr float RamScale[9] = {1.0f, 1.0f, 0.95f, 0.9f, 0.8f, 0.7f, 0.6f, 0.5f, 0.4f};
