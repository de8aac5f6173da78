// Memory of one large table: zero pages that cost nothing until somebody writes them. It can be put on huge
// pages, since tables are read at random and miss in the processor's cache of small pages.
#pragma once

#include <cstddef>

// Has no destructor on purpose: threads may still read their tables while the process ends.
class LargeMemory {
   public:
    // Frees what it held. Aligned to a cache line at least. False if the system has not so much.
    bool allocate(std::size_t bytes);
    void free();
    void* data() const { return start; }

    // Until it is freed, where the system offers them. Each costs its first user a pause of a millisecond or
    // so, and more on a busy machine.
    void useHugePages();

   private:
    void* start = nullptr;
    std::size_t length = 0;
    bool huge = false;
};
