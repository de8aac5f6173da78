// Memory of one large table: zero pages that cost nothing until somebody writes them. Tables are read at
// random and miss in the processor's cache of small pages, so they are to be touched on huge pages before a
// search needs them: the first touch of a huge page takes a millisecond or so.
//
//   fresh --touchNext--> touched from the front on --settle--> the rest stays on small pages
//
// Huge pages are asked for when all of the memory is about to be written, and not by a search. Nothing here
// may run while a search uses the table.
#pragma once

#include <atomic>
#include <cstddef>

// Has no destructor on purpose: threads may still read their tables while the process ends.
class LargeMemory {
   public:
    // Frees what it held, and touches nothing. Aligned to a cache line at least. False if the system has not
    // so much.
    bool allocate(std::size_t bytes);
    void free();
    void* data() const { return start; }
    std::size_t size() const { return length; }  // bytes, rounded up to whole pages

    // Huge pages for what is touched from now on, where the system offers them. Once before `touchNext`.
    void askForHugePages();
    // Touches the next huge page and leaves its content as it is. False if none is left. Several threads may
    // share the work.
    bool touchNext();
    // Before a search: what nobody has touched comes on small pages, whose first touches are short, also
    // where the system would make all pages huge.
    void settle();

    // Whether `touchNext` would find something.
    bool isFresh() const { return !settled && touchedBytes() < length; }
    // How much stands on pages of its own from the front on, in bytes.
    std::size_t touchedBytes() const;
    // Forgets what lies behind that: it reads as zero, and is fresh again.
    void forgetUntouched();

   private:
    void* start = nullptr;
    std::size_t length = 0;
    std::atomic<std::size_t> next = 0;  // of the stretch to touch; may pass the length
    bool settled = false;
};
