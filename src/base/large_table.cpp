#include "base/large_table.h"

#include <cstdio>

void reportFailedAllocation(std::size_t bytes, const char* name) {
    std::fprintf(stderr, "Unable to allocate %zu bytes of memory for %s\n", bytes, name);
}
