// The one way in which the engine writes a line to the interface.
#pragma once

// Formats as printf does, to standard output, and flushes. The format brings its own new line.
[[gnu::format(printf, 1, 2)]] void sendLine(const char* format, ...);
