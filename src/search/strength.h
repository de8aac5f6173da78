// Weakening and varying play: the options `Skill` and `Variety`, applied at the start of each search.
#pragma once

#include "board/position.h"

inline constexpr int FullSkill = 20;  // the highest value of the option, which weakens nothing

// Starts rand() anew from the clock, and draws the random word that the evaluation's noise depends on.
void seedRandom();

// Sets the depth limit, evaluation noise, king-safety jitter and book limit of a search from `root`.
// `treeMode` is the mode that this search will have. Draws on rand() only below full skill, or at a new game
// with variety.
void applyStrength(const Position& root, bool treeMode);
