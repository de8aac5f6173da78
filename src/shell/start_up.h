// Setting the process up, in a fixed order.
#pragma once

// Prints the start lines and builds everything that commands and searches need.
void startUp();

// Seeds rand() with the clock and draws the random word of this run.
void seedRandom();

inline constexpr const char* Version = "13.02";
