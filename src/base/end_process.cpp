#include "base/end_process.h"

#include <cstdlib>

void (*endProcessHook)(int status) = nullptr;

void endProcess(int status) {
    if (endProcessHook) endProcessHook(status);
    std::exit(status);
}
