#include "support/allocation_count.h"

#include <atomic>
#include <cstdlib>
#include <new>

static std::atomic<long> allocations = 0;

long allocationCount() { return allocations; }

void* operator new(std::size_t size) {
    ++allocations;
    void* const memory = std::malloc(size);
    if (!memory) throw std::bad_alloc();
    return memory;
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
