// The one way in which the engine writes to standard output.
#pragma once

// Formats as printf does and writes at once. The format brings its own new line. Main thread only.
[[gnu::format(printf, 1, 2)]] void sendLine(const char* format, ...);

// Called after each write that has failed, where it is set; standard error has been told why.
extern void (*outputFailedHook)();
