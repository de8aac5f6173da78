#include "support/allocation_count.h"

#include <atomic>
#include <cstdlib>
#include <new>

static std::atomic<long> allocations = 0;

long allocationCount() { return allocations; }

// All forms of new without an alignment, so that none of them meets a delete of another kind.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    ++allocations;
    return std::malloc(size);
}
void* operator new(std::size_t size) {
    void* const memory = operator new(size, std::nothrow);
    if (!memory) throw std::bad_alloc();
    return memory;
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
