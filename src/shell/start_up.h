// Setting the process up, in a fixed order.
#pragma once

// Prints the start lines and builds everything that commands and searches need.
void startUp();

inline constexpr const char* Version = "13.02";
