// Saving the transposition table and loading it back. The file is the raw image of the buckets, without a
// header, so it fits only a table of the same byte size.
#include "base/output.h"
#include "search/trans_table.h"

#include <algorithm>
#include <cstdio>
#include <memory>

namespace {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

// The length of an open file in bytes, or -1; the position goes back to the start.
long long lengthOf(std::FILE* file) {
    if (fseeko(file, 0, SEEK_END) != 0) return -1;
    const long long length = ftello(file);
    std::rewind(file);
    return length;
}

// Moves `bytes` bytes in chunks: `transfer(offset, wanted)` says how many went. False if one chunk came
// short.
template <class Transfer>
bool inChunks(std::uint64_t bytes, std::uint64_t chunk, Transfer transfer) {
    for (std::uint64_t done = 0; done < bytes;) {
        const std::size_t wanted = std::size_t(std::min(chunk, bytes - done));
        if (transfer(done, wanted) != wanted) return false;
        done += wanted;
    }
    return true;
}

}  // namespace

void TransTable::saveToFile(const char* path) const {
    constexpr std::uint64_t Chunk = 0x80000000;
    const File file(std::fopen(path, "wb"));
    if (!file) {
        sendLine("info string failed to open %s\n", path);
        return;
    }
    sendLine("info string Saving Hash\n");
    const char* bytes = reinterpret_cast<const char*>(buckets.data());
    const bool written = inChunks(byteSize(), Chunk, [&](std::uint64_t offset, std::size_t wanted) {
        return std::fwrite(bytes + offset, 1, wanted, file.get());
    });
    // What the library still holds back may find the disk full.
    if (!written || std::fflush(file.get()) != 0) {
        sendLine("info string error writing file %s\n", path);
        return;
    }
    sendLine("info string Hash Saved\n");
}

// Reads the image over the buckets. Whatever fails says so; a short file leaves the table loaded in part.
bool TransTable::readImage(const char* path) {
    constexpr std::uint64_t Chunk = 0x40000000;
    const File file(std::fopen(path, "rb"));
    if (!file) {
        sendLine("info string no such file %s\n", path);
        return false;
    }
    sendLine("info string Loading Hash from %s\n", path);
    if (lengthOf(file.get()) != static_cast<long long>(byteSize())) {
        sendLine("info string File size does not match Hash size\n");
        return false;
    }
    buckets.pages().askForHugePages();  // every page is about to be written
    char* bytes = reinterpret_cast<char*>(buckets.data());
    const bool complete = inChunks(byteSize(), Chunk, [&](std::uint64_t offset, std::size_t wanted) {
        return std::fread(bytes + offset, 1, wanted, file.get());
    });
    if (!complete) {
        sendLine("info string Error: could not read full file.\n");
        return false;
    }
    sendLine("info string Hash Loaded\n");
    return true;
}

// Intended: the count is that of the bucket mask but the steps are entries, so a quarter of the table is
// reached and the rest keeps its saved generations; where the mask is negative as a signed 32-bit number,
// nothing is.
void TransTable::forgetGenerations() {
    constexpr std::uint64_t GenerationBits = 255ULL << 56;
    const std::int64_t last = std::int32_t(std::uint32_t(bucketMask));
    for (std::int64_t i = 0; i <= last; ++i) {
        TransEntry& entry = buckets[i / BucketEntries].entries[i % BucketEntries];
        entry.setData(entry.data().word & ~GenerationBits);
    }
}

void TransTable::loadFromFile(const char* path) {
    if (!buckets.data()) return;
    readImage(path);
    forgetGenerations();
    generation = 0;
}
