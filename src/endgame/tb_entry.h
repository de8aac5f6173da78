// What is known of one table: its material, which files exist, and where those in use are mapped. The entries
// of all possible tables lie in two pools, whose sizes are fixed by the number of material configurations.
#pragma once

#include "board/types.h"
#include "endgame/tb_decode.h"
#include "endgame/tb_files.h"

#include <atomic>
#include <cstdint>

struct TbEntry {
    Key key;  // of the material as the table's name has it
    const std::uint8_t* mappedData[TbKinds];
    std::uint64_t mappedSize[TbKinds];
    // Set with release after everything of the kind is in place, so that who reads 1 with acquire may use it
    // unlocked.
    std::atomic<std::uint8_t> ready[TbKinds];
    std::uint8_t menCount;
    std::uint8_t symmetric;  // both sides have the same men
    std::uint8_t hasPawns;
    std::uint8_t hasDtm;  // noted as the others are; no probe opens the file
    std::uint8_t hasDtz;
    std::uint8_t kkEncoding;
    std::uint8_t pawnsLeading;
    std::uint8_t pawnsOther;

    TbShape shape() const { return {menCount, hasPawns, kkEncoding, pawnsLeading, pawnsOther}; }
};

// The slices of one leading file.
struct TbFileSlices {
    TbSlice wdl[2];        // by the side to move, 0 for the table's white; symmetric tables have side 0 only
    TbSlice dtz;           // one side only, which its flags tell
    std::uint64_t dtzMap;  // offset in the file of the map of raw values, if there is one
};

struct TbPieceEntry : TbEntry {
    TbFileSlices slices;
};
struct TbPawnEntry : TbEntry {
    TbFileSlices slices[LeadingFiles];
    std::uint8_t reserved[264];  // rounds the pool to its fixed size
};
inline constexpr std::size_t TbPiecePoolSize = 650;
inline constexpr std::size_t TbPawnPoolSize = 861;
static_assert(sizeof(TbPieceEntry) == 512 && sizeof(TbPawnEntry) == 2096);

inline TbFileSlices& tbSlicesOf(TbEntry& entry, int file) {
    return entry.hasPawns ? static_cast<TbPawnEntry&>(entry).slices[file]
                          : static_cast<TbPieceEntry&>(entry).slices;
}

// Men by board code, from a table's name.
struct TbMenCounts {
    std::uint8_t of[16];
};
TbMenCounts tbCountMen(const char* name);
