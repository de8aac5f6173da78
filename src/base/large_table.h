// A table of many entries on `LargeMemory`, and the one rule for what happens if the system has not so much.
#pragma once

#include "base/end_process.h"
#include "base/large_memory.h"

#include <concepts>
#include <cstddef>

// One line on standard error: a table of that name and size was not to be had.
void reportFailedAllocation(std::size_t bytes, const char* name);

// Entries come as zero bytes and are never constructed, nor destroyed: like the memory, the table outlives
// the process's end.
template <class Entry>
class LargeTable {
   public:
    // Replaces what it held by `count` entries, which are not touched. If memory runs out, says so, with the
    // name, and ends the process with `failureStatus`.
    void allocate(std::size_t count, const char* name, int failureStatus = 1);
    // The same, but false, and an empty table, instead of the end.
    bool tryAllocate(std::size_t count, const char* name);
    void free();

    Entry* data() const { return static_cast<Entry*>(memory.data()); }  // null: none
    std::size_t size() const { return entries; }
    template <std::integral Index>
    Entry& operator[](Index index) const {
        return data()[index];
    }
    // Behind the table.
    LargeMemory& pages() { return memory; }
    const LargeMemory& pages() const { return memory; }

   private:
    LargeMemory memory;
    std::size_t entries = 0;
};

template <class Entry>
bool LargeTable<Entry>::tryAllocate(std::size_t count, const char* name) {
    entries = 0;
    if (!memory.allocate(count * sizeof(Entry))) {
        reportFailedAllocation(count * sizeof(Entry), name);
        return false;
    }
    entries = count;
    return true;
}

template <class Entry>
void LargeTable<Entry>::allocate(std::size_t count, const char* name, int failureStatus) {
    if (!tryAllocate(count, name)) endProcess(failureStatus);
}

template <class Entry>
void LargeTable<Entry>::free() {
    memory.free();
    entries = 0;
}
