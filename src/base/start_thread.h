// Starting threads. The size of a stack is the engine's own affair, and not that of the system's limit
// (`ulimit -s`).
#pragma once

#include <cstddef>
#include <pthread.h>

// Search frames are large and lines long. Only what is used takes memory.
inline constexpr std::size_t SearchStackBytes = std::size_t{64} << 20;
// For threads that don't search.
inline constexpr std::size_t SmallStackBytes = std::size_t{1} << 20;

// Starts `body(argument)` on a thread of its own, to be joined. Where the system refuses one it says so, and
// ends the process with status 1; `purpose` is "start a search thread" or the like.
pthread_t startThread(const char* purpose, std::size_t stackBytes, void* (*body)(void*), void* argument);
