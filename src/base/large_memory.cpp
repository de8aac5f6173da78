#include "base/large_memory.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <sys/mman.h>

static constexpr std::size_t PageBytes = 4096, HugePageBytes = std::size_t{2} << 20;
// What a thread touches between two looks at the clock: a millisecond or so, on a busy machine some more.
static constexpr std::size_t StretchBytes = HugePageBytes;

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
    next = 0;
    settled = false;
}

// The advice is no more than that: a system without huge pages refuses it, and small ones serve.
void LargeMemory::askForHugePages() {
    if (isFresh() && length >= HugePageBytes) madvise(start, length, MADV_HUGEPAGE);
}

// Writes each page with the value that it has.
static void touchPages(char* first, std::size_t bytes) {
#ifdef MADV_POPULATE_WRITE
    if (madvise(first, bytes, MADV_POPULATE_WRITE) == 0) return;
#endif
    // Older systems. A plain read would come first and map a page of zeros that the write then replaces: two
    // pauses instead of one. An exchange begins with a write.
    for (std::size_t i = 0; i < bytes; i += PageBytes) {
        char zero = 0;
        std::atomic_ref(first[i]).compare_exchange_strong(zero, 0, std::memory_order_relaxed);
    }
}

bool LargeMemory::touchNext() {
    if (settled || next >= length) return false;
    const std::size_t offset = next.fetch_add(StretchBytes);
    if (offset >= length) return false;
    touchPages(static_cast<char*>(start) + offset, std::min(StretchBytes, length - offset));
    return true;
}

std::size_t LargeMemory::touchedBytes() const { return std::min(next.load(), length); }

void LargeMemory::settle() {
    if (settled) return;
    settled = true;
    const std::size_t touched = touchedBytes();
    if (touched < length && length >= HugePageBytes)
        madvise(static_cast<char*>(start) + touched, length - touched, MADV_NOHUGEPAGE);
}

void LargeMemory::forgetUntouched() {
    const std::size_t touched = touchedBytes();
    if (touched == length) return;
    char* const rest = static_cast<char*>(start) + touched;
    // Memory that the user has locked can't be given back.
    if (madvise(rest, length - touched, MADV_DONTNEED) != 0) std::memset(rest, 0, length - touched);
    settled = false;
}
