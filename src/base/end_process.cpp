#include "base/end_process.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

void (*endProcessHook)(int status) = nullptr;

void endProcess(int status) {
    if (endProcessHook) endProcessHook(status);
    // Several threads may run out of memory together, but only one of them may run the library's end.
    static std::atomic_flag ending;
    while (ending.test_and_set()) pause();
    std::exit(status);
}

void endForRefusal(const char* what, int error) {
    std::fprintf(stderr, "Unable to %s: %s\n", what, std::strerror(error));
    endProcess(1);
}
