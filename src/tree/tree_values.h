// The tree's 0 to 1 scale, where 1 is a win for the side that moved into a node, and its two bridges to
// centipawns.
#pragma once

#include <cmath>

inline constexpr double DrawValue = 0.5;

// Intended: a short literal and not pi itself; it is part of every value.
inline constexpr double TreePi = 3.14159;
// Centipawns at which a value is 0.75, halfway from a draw to a win.
inline constexpr double TreeScoreScale = 90.0;

inline double scoreToValue(int score) { return std::atan(score / TreeScoreScale) / TreePi + 0.5; }

// Truncates, so that a score does not always come back whole.
inline int valueToScore(double value) { return int(std::tan((value - 0.5) * TreePi) * TreeScoreScale); }
