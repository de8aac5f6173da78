// Setting the process up, in a fixed order.
#pragma once

// What every executable does around its own `program`, whose status it returns: it runs it on a stack that a
// search fits on.
int runProgram(int (*program)(int argc, char** argv), int argc, char** argv);

// Prints the start lines and builds everything that commands and searches need.
void startUp();

inline constexpr const char* Version = "13.02";
