// The benchmark: fixed-depth searches over 50 stored positions, counting nodes and time.
#pragma once

// Runs it with its own arguments: threads, last depth, passes; each may be missing.
void runBench(int argumentCount, char** arguments);
