// Setting the process up, in a fixed order.
#pragma once

// What every executable does around its own `program`, whose status it returns: the three standard
// descriptors are open, a write into a broken pipe fails without a signal, and a search fits on the stack.
int runProgram(int (*program)(int argc, char** argv), int argc, char** argv);

// Prints the start lines and builds everything that commands and searches need.
void startUp();

inline constexpr const char* Version = "13.02";
