// The log: a text file, appended to, each entry stamped with the seconds since the program's start.
#pragma once

#include <string>

// Sets the zero of the time stamps.
void startLogClock();

// Closes a log that is open and opens the named one for appending; an empty name closes only. False if it
// can't be opened, and logging is then off.
bool openLog(const std::string& name);
bool isLogging();

// Writes an entry if a log is open. The format brings its own new line. Any thread may call it.
[[gnu::format(printf, 1, 2)]] void logPrintf(const char* format, ...);
