// The transposition table that all threads share without a lock. Every reader takes an entry as a hint: it
// copies the data word once, trusts a score only after the key check matched, and tests a move before it
// plays it.
#pragma once

#include "base/large_table.h"
#include "base/relaxed.h"
#include "board/move.h"
#include "board/thread_hooks.h"
#include "board/types.h"

#include <atomic>
#include <cstdint>
#include <cstring>

// Bound bits of an entry; flags as the store takes them.
enum BoundFlag : std::uint8_t {
    NoBound = 0,
    UpperBound = 1,
    LowerBound = 2,
    ExactBound = 3,
    TerminalFlags = 7,  // exact, and the position has no legal move
};

// How much an entry deserves to stay: that of a node where all moves fail low, of one where a move fails high
// (zero-window nodes store what was expected of them), of the principal variation.
enum NodeRank : int { RankAll = 0, RankCut = 1, RankPv = 2 };

// A copy of an entry's data word, from bit 0 upward: score 16, move 16, depth 16, bound 2, terminal 1, spare
// 1, node rank 3, busy 1, generation 8.
struct TransData {
    std::uint64_t word = 0;

    int score() const { return std::int16_t(word); }
    Move move() const { return Move(word >> 16 & 0xffff); }
    int depth() const { return std::int16_t(word >> 32); }  // half plies
    int bound() const { return int(word >> 48 & 3); }
    bool terminal() const { return word >> 50 & 1; }
    int nodeRank() const { return int(word >> 52 & 7); }
    bool busy() const { return word >> 55 & 1; }
    int generation() const { return int(word >> 56); }
};

// Four bytes of key check, the high half of the position key, and eight bytes of data, unaligned: four
// entries fill a bucket without padding. A key check of 0 marks an empty entry.
//
// Two threads may interleave the two words of an entry, and the data word is no atomic object because it is
// not aligned; the table is made to bear that. Its access stands in `data` and `setData` alone.
struct TransEntry {
    std::uint32_t check;
    unsigned char dataBytes[8];

    std::uint32_t keyCheck() const {
        return std::atomic_ref(const_cast<std::uint32_t&>(check)).load(std::memory_order_relaxed);
    }
    void setKeyCheck(std::uint32_t value) { std::atomic_ref(check).store(value, std::memory_order_relaxed); }

    __attribute__((no_sanitize("thread"))) TransData data() const {
        TransData copy;
        __builtin_memcpy(&copy.word, dataBytes, sizeof copy.word);
        return copy;
    }
    __attribute__((no_sanitize("thread"))) void setData(std::uint64_t word) {
        __builtin_memcpy(dataBytes, &word, sizeof word);
    }
};
static_assert(sizeof(TransEntry) == 12);

inline constexpr int BucketEntries = 4;
struct TransBucket {
    TransEntry entries[BucketEntries];
};
static_assert(sizeof(TransBucket) == TransBucketSize);

// Mate scores are stored as distances from the node and not from the root.
constexpr int scoreToTable(int score, int ply) {
    return score >= MateBound ? score + ply : score <= -MateBound ? score - ply : score;
}
constexpr int scoreFromTable(int score, int ply) {
    return score >= MateBound ? score - ply : score <= -MateBound ? score + ply : score;
}

class TransTable {
   public:
    // Copies the data of the first entry of the bucket that matches; false if there is none.
    bool probe(Key key, TransData& data) const {
        const TransBucket& bucket = buckets[key & bucketMask];
        const std::uint32_t check = std::uint32_t(key >> 32);
        for (const TransEntry& entry : bucket.entries) {
            if (entry.keyCheck() != check) continue;
            data = entry.data();
            return true;
        }
        return false;
    }

    // Does nothing for a score beyond 32500 in magnitude. `flags` are bound flags; a higher NodeRank keeps
    // the entry longer. Within one search a shallower result of the same kind never replaces a deeper one.
    void store(Key key, int depth, int score, int flags, Move move, int nodeRank);
    // Marks a position as being searched, or no longer; makes a placeholder entry if there is none.
    void markBusy(Key key, bool busy);

    // Replaces the table by one for that many megabytes, or by none for 0. A table that already has the size
    // is cleared. True if a new table was made. Where the system has not so much the table is halved until it
    // fits, with a line on standard error each time.
    bool resize(int megabytes);
    void clear();  // silent
    LargeMemory& pages() { return buckets.pages(); }
    void free();
    // Ages the entries, unless the root is that of the last search.
    void newSearch(Key rootKey);
    // Per mille of the first buckets' first entries that this search has written.
    int occupancy() const;

    // Both print what they do, and each failure, to the interface.
    void saveToFile(const char* path) const;
    void loadFromFile(const char* path);

    std::uint64_t bucketCount() const { return buckets.size(); }
    std::uint64_t byteSize() const { return bucketCount() * sizeof(TransBucket); }

   private:
    TransBucket& bucketOf(Key key) const { return buckets[key & bucketMask]; }
    int replacementValue(TransData data) const;
    TransEntry& victimOf(TransBucket& bucket, int leastValue) const;
    void write(TransEntry& entry, Key key, int depth, int score, int flags, Move move, int nodeRank) const;
    void clearDuringSearch();
    bool readImage(const char* path);
    void forgetGenerations();

    LargeTable<TransBucket> buckets;
    std::uint64_t bucketMask = 0;
    Relaxed<std::uint32_t> generation = 0;  // 0 to 255; the table may be cleared while workers search
    int allocatedMegabytes = 0;
    Key lastRootKey = 0;
};
extern TransTable transTable;
