#include "base/output.h"

#include <cstdarg>
#include <cstdio>

void sendLine(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    std::vprintf(format, arguments);
    va_end(arguments);
    std::fflush(stdout);
}
