// The compressed values of one slice of a table file: reading its header once, and then the value at any
// position number, with nothing but the mapped file and the tables made at set-up.
#pragma once

#include "endgame/tb_index.h"

#include <cstdint>
#include <cstring>

// A file under inspection: every read at set-up goes through here. Offsets count from the start of the file.
struct TbFileView {
    const std::uint8_t* data;
    std::uint64_t size;  // without the checksum at the end
    std::uint64_t offset = 0;

    // The next `bytes`, stepped over; null if they are not all there.
    const std::uint8_t* take(std::uint64_t bytes) {
        if (bytes > size - offset) return nullptr;
        const std::uint8_t* start = data + offset;
        offset += bytes;
        return start;
    }
    // Steps up to a multiple of `unit`, a power of two; false if the file ends before.
    bool align(std::uint64_t unit) { return take((unit - offset % unit) % unit) != nullptr; }
};

// Numbers in a file are little-endian and may lie at any address.
inline std::uint32_t readWord16(const std::uint8_t* at) {
    std::uint16_t word;
    std::memcpy(&word, at, sizeof word);
    return word;
}
inline std::uint32_t readWord32(const std::uint8_t* at) {
    std::uint32_t word;
    std::memcpy(&word, at, sizeof word);
    return word;
}

// The header's first byte.
enum TbSliceFlag : std::uint8_t {
    TbSideToMove = 1,     // distances: stored for the table's black to move
    TbMapped = 2,         // distances: raw values go through a map
    TbWinPlies = 4,       // distances: clean wins are in plies, else in moves
    TbLossPlies = 8,      // the same for clean losses
    TbWideMap = 16,       // the map has 16-bit values
    TbSingleValue = 128,  // every position has the same value
};

// Read-only after set-up. All pointers but `bound` lead into the mapped file.
struct TbSlice {
    const std::uint8_t* sparse;   // 6 bytes per span: block and offset of the span's middle position
    const std::uint8_t* lengths;  // 2 bytes per block: positions in it, less one
    const std::uint8_t* blocks;
    const std::uint8_t* first;    // 2 bytes per code length: lowest symbol with a code of at most that length
    const std::uint8_t* symbols;  // 3 bytes each: two 12-bit numbers
    std::uint64_t* bound;  // lowest code per length, left-aligned; behind it a byte per symbol, see extentsOf
    std::uint64_t size;    // positions
    std::uint32_t realBlocks;
    std::uint32_t blockCount;  // with the entries of `lengths` that stand for no block
    std::uint8_t flags;
    std::uint8_t blockLog;  // a block has 1 << blockLog bytes
    std::uint8_t spanLog;   // a span has 1 << spanLog positions
    std::uint8_t minLen;    // shortest and longest code, in bits
    std::uint8_t maxLen;
    std::uint8_t singleValue;
    std::uint16_t symbolCount;
    TbManList list;
};

// Reads a slice's header, and makes its decoding tables. False for data that can't be right; what was
// allocated is then still in the slice. `maxValue` bounds the values of a win/draw/loss table; distances have
// no bound.
bool tbReadSliceHeader(TbSlice& slice, TbFileView& file, int maxValue);
// Takes the slice's three arrays, each in its place behind those of the slices before.
bool tbTakeSparseIndex(TbSlice& slice, TbFileView& file);
bool tbTakeLengths(TbSlice& slice, TbFileView& file);
bool tbTakeBlocks(TbSlice& slice, TbFileView& file);
void tbFreeSlice(TbSlice& slice);

// The value stored at a position number, or -1 if the number or the data make no sense.
int tbRawValue(const TbSlice& slice, std::uint64_t number);
