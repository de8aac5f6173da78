#include "board/large_memory.h"

#include <cstdint>
#include <sys/mman.h>

static constexpr std::size_t PageBytes = 4096, HugePageBytes = std::size_t{2} << 20;

static constexpr std::size_t roundedUp(std::size_t bytes, std::size_t unit) {
    return (bytes + unit - 1) / unit * unit;
}

bool LargeMemory::allocate(std::size_t bytes) {
    free();
    const std::size_t unit = bytes < HugePageBytes ? PageBytes : HugePageBytes;
    const std::size_t wanted = roundedUp(bytes, unit);
    if (wanted < bytes) return false;
    // The system aligns to a small page only: what lies before and behind is given back.
    const std::size_t mapped = wanted + unit - PageBytes;
    void* const found = mmap(nullptr, mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (found == MAP_FAILED) return false;
    char* const first = static_cast<char*>(found);
    const std::size_t before = (unit - reinterpret_cast<std::uintptr_t>(found) % unit) % unit;
    const std::size_t behind = mapped - before - wanted;
    if (before) munmap(first, before);
    if (behind) munmap(first + before + wanted, behind);
    start = first + before;
    length = wanted;
    return true;
}

void LargeMemory::free() {
    if (start) munmap(start, length);
    start = nullptr;
    length = 0;
    huge = false;
}

void LargeMemory::useHugePages() {
    if (huge || length < HugePageBytes) return;
    huge = true;
    // Only advice: a system without huge pages says no, and small ones serve.
    madvise(start, length, MADV_HUGEPAGE);
}
