// The main loop, and the thread that reads standard input so that a search can hear `stop`.
#pragma once

#include <string>

// Starts the input thread and runs commands until the process ends.
[[noreturn]] void mainLoop();

// ---- The queue between the two threads ----

// Appends a line and logs it.
void pushInputLine(const std::string& line);
// The oldest line, removed from the queue; empty if there is none.
std::string popInputLine();
// Whether the oldest line begins with a text. False if there is none.
bool nextInputLineBegins(const char* text);
// Without the lock: may lag behind by a moment, which only delays a command.
bool isInputWaiting();
// Wakes the main loop, and stops a search if a quit has been asked for.
void signalInput();
// Returns when a line may be there, after some milliseconds at most.
void waitForInput();

// Ends the input thread, wherever it waits.
void stopInputThread();

// As if the input had ended here, from which nobody can tell the engine any more: lines that have come still
// run. From the main thread.
void endInput();
