// Replacement and sizing of the transposition table.
#include "search/trans_table.h"

#include "base/end_process.h"
#include "search/limits.h"
#include "search/table_memory.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <limits>

TransTable transTable;

namespace {

constexpr int LargestScore = 32500;
constexpr std::uint64_t BusyBit = 1ULL << 55;
constexpr int PlaceholderDepth = -10;  // makes a placeholder a preferred victim

// A data word with bit 55 clear.
constexpr std::uint64_t packData(int depth, int score, int flags, Move move, int nodeRank,
                                 std::uint32_t generation) {
    return std::uint64_t(std::uint16_t(score)) | std::uint64_t(move & 0xffff) << 16 |
           std::uint64_t(std::uint16_t(depth)) << 32 | std::uint64_t(flags & 15) << 48 |
           std::uint64_t(nodeRank & 7) << 52 | std::uint64_t(generation) << 56;
}

constexpr std::uint64_t withMove(std::uint64_t word, Move move) {
    return (word & ~(0xffffULL << 16)) | std::uint64_t(move & 0xffff) << 16;
}

std::uint32_t checkOf(Key key) { return std::uint32_t(key >> 32); }

// Whether a deeper entry of this search says at least as much as a new result of the same kind of bound.
bool outweighs(TransData old, int score, int flags) {
    if (old.bound() == ExactBound) return true;
    if (old.bound() == LowerBound) return (flags & 3) == LowerBound && old.score() > score;
    return (flags & 3) == UpperBound && old.score() < score;
}

}  // namespace

// The greater, the sooner an entry makes room: old, shallow and off the principal variation.
int TransTable::replacementValue(TransData data) const {
    const int age = int((generation - std::uint32_t(data.generation())) & 255);
    return age * 6 - data.depth() - data.nodeRank();
}

// The entry with the greatest replacement value, the first among equals.
TransEntry& TransTable::victimOf(TransBucket& bucket, int leastValue) const {
    TransEntry* victim = nullptr;
    int greatest = 0;
    for (TransEntry& entry : bucket.entries) {
        const int value = std::max(replacementValue(entry.data()), leastValue);
        if (victim && value <= greatest) continue;
        victim = &entry;
        greatest = value;
    }
    return *victim;
}

// Keeps the busy bit of what was there.
void TransTable::write(TransEntry& entry, Key key, int depth, int score, int flags, Move move,
                       int nodeRank) const {
    const std::uint64_t busy = entry.data().word & BusyBit;
    entry.setKeyCheck(checkOf(key));
    entry.setData(packData(depth, score, flags, move, nodeRank, generation) | busy);
}

void TransTable::store(Key key, int depth, int score, int flags, Move move, int nodeRank) {
    if (score < -LargestScore || score > LargestScore) return;
    TransBucket& bucket = bucketOf(key);
    const std::uint32_t check = checkOf(key);
    TransEntry* entry = nullptr;
    bool matches = false;
    for (TransEntry& candidate : bucket.entries) {
        const std::uint32_t found = candidate.keyCheck();
        if (found != 0 && found != check) continue;
        entry = &candidate;
        matches = found == check;
        break;
    }
    if (!entry) {
        write(victimOf(bucket, std::numeric_limits<int>::min()), key, depth, score, flags, move, nodeRank);
        return;
    }
    const TransData old = entry->data();
    const Move keptMove = move ? move : old.move();
    if (matches) {
        if (searchState.analysisSearch && old.bound() == ExactBound && old.depth() > depth) {
            const std::uint64_t aged = (old.word & ~(255ULL << 56)) | std::uint64_t(generation) << 56;
            entry->setData(withMove(aged, keptMove));
            return;
        }
        if (std::uint32_t(old.generation()) == generation && old.depth() >= depth) {
            // Intended: the deeper entry takes the new move even if it keeps all else.
            entry->setData(withMove(old.word, keptMove));
            if (outweighs(old, score, flags)) return;
        }
    }
    write(*entry, key, depth, score, flags, keptMove, nodeRank);
}

void TransTable::markBusy(Key key, bool busy) {
    constexpr int LeastValue = -999999;
    TransBucket& bucket = bucketOf(key);
    const std::uint32_t check = checkOf(key);
    for (TransEntry& entry : bucket.entries) {
        if (entry.keyCheck() != check) continue;
        const std::uint64_t word = entry.data().word;
        entry.setData(busy ? word | BusyBit : word & ~BusyBit);
        return;
    }
    // Intended: an empty slot has no precedence here, and a useful entry may go.
    TransEntry& victim = victimOf(bucket, LeastValue);
    victim.setKeyCheck(check);
    victim.setData(packData(PlaceholderDepth, 0, NoBound, NoMove, 0, generation) | (busy ? BusyBit : 0));
}

void TransTable::newSearch(Key rootKey) {
    if (!buckets.data() || rootKey == lastRootKey) return;
    generation = (generation + 1) & 255;
    lastRootKey = rootKey;
}

int TransTable::occupancy() const {
    const std::uint64_t sampled = std::min<std::uint64_t>(1000, bucketCount());
    int used = 0;
    for (std::uint64_t i = 0; i < sampled; ++i)
        used += std::uint32_t(buckets[i].entries[0].data().generation()) == generation;
    return sampled ? int(std::uint64_t(used) * 1000 / sampled) : 0;
}

// ---- Memory ----

// Rounded up to a power of two. Intended: the share is a little over a half of what the megabytes would hold,
// so the bytes may pass the option's value slightly where the power of two lies just above it.
static std::uint64_t bucketsFor(int megabytes) {
    constexpr double Share = 0.51;
    const std::uint64_t whole = (std::uint64_t(megabytes) << 20) / sizeof(TransBucket);
    return std::bit_ceil(std::uint64_t(double(whole) * Share));
}

static void publishBase(const TransBucket* buckets, std::uint64_t mask) {
    prefetchBases.transBuckets = reinterpret_cast<const char*>(buckets);
    prefetchBases.transMask = mask;
}

void TransTable::free() {
    buckets.free();
    bucketMask = 0;
    allocatedMegabytes = 0;
    publishBase(nullptr, 0);
}

bool TransTable::resize(int megabytes) {
    constexpr std::uint64_t LeastBuckets = 8;
    if (buckets.data() && megabytes == allocatedMegabytes) {
        clear();
        return false;
    }
    free();
    if (megabytes <= 0) return false;
    std::uint64_t count = bucketsFor(megabytes);
    while (!buckets.tryAllocate(count, "hash table")) {
        if (count < LeastBuckets) {
            std::fputs("Hash table must be bigger than 0\n", stderr);
            endProcess(1);
        }
        count /= 2;
    }
    bucketMask = count - 1;
    generation = 0;
    allocatedMegabytes = megabytes;
    publishBase(buckets.data(), bucketMask);
    return true;
}

// Stores word by word as any writer does. What is zero is only read: pages that no search has written stay
// untouched.
void TransTable::clearDuringSearch() {
    std::uint64_t* words = reinterpret_cast<std::uint64_t*>(buckets.data());
    const std::uint64_t count = byteSize() / sizeof *words;
    for (std::uint64_t i = 0; i < count; ++i) {
        const std::atomic_ref word(words[i]);
        if (word.load(std::memory_order_relaxed) != 0) word.store(0, std::memory_order_relaxed);
    }
}

void TransTable::clear() {
    if (searchControl.searching)
        clearDuringSearch();
    else
        clearTable(buckets.pages());
    generation = 0;
}
