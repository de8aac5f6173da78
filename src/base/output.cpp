#include "base/output.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <poll.h>
#include <string>
#include <unistd.h>

void (*outputFailedHook)() = nullptr;

// Whether all of it was written; errno tells why not. A pipe may have been set to return at once while it is
// full.
static bool writeAll(const char* bytes, std::size_t length) {
    while (length > 0) {
        const ssize_t written = ::write(STDOUT_FILENO, bytes, length);
        if (written >= 0) {
            bytes += written;
            length -= std::size_t(written);
        } else if (errno == EAGAIN) {
            pollfd output = {STDOUT_FILENO, POLLOUT, 0};
            ::poll(&output, 1, -1);
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

// A reader that has gone away has no use for a word.
static void tellFailure(int error) {
    static bool told = false;
    if (error != EPIPE && !told)
        std::fprintf(stderr, "Unable to write an answer: %s\n", std::strerror(error));
    told = true;
}

void sendLine(const char* format, ...) {
    va_list arguments, again;
    va_start(arguments, format);
    va_copy(again, arguments);
    std::string text(std::size_t(std::vsnprintf(nullptr, 0, format, arguments)), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, again);
    va_end(again);
    va_end(arguments);
    if (writeAll(text.data(), text.size())) return;
    tellFailure(errno);
    if (outputFailedHook) outputFailedHook();
}
