#include "endgame/tb_setup.h"

#include <cstring>

namespace {

constexpr std::uint32_t MagicWords[TbKinds] = {0x5d23e871, 0x88ac504b, 0xa50c66d7};
constexpr std::uint64_t ChecksumSize = 16;  // never read, at the end of every file
constexpr std::uint64_t PaddingUnit = 64;   // of everything before it
constexpr int MaxWdlValue = 4;
constexpr int NoBound = -1;

// A file's first flags.
constexpr int FlagTwoSided = 1;
constexpr int FlagPawns = 2;

// The slices of one file in the order in which each section of the file has them.
struct SliceSet {
    TbSlice* slice[LeadingFiles][2];
    int files;
    int sides;

    SliceSet(TbEntry& entry, TbKind kind)
        : files(entry.hasPawns ? LeadingFiles : 1), sides(kind == TbWdl && !entry.symmetric ? 2 : 1) {
        for (int f = 0; f < files; ++f) {
            TbFileSlices& slices = tbSlicesOf(entry, f);
            for (int s = 0; s < sides; ++s) slice[f][s] = kind == TbWdl ? &slices.wdl[s] : &slices.dtz;
        }
    }
    // Asks `visit` for each slice; false as soon as one answer is.
    template <class Visit>
    bool all(Visit visit) const {
        for (int f = 0; f < files; ++f)
            for (int s = 0; s < sides; ++s)
                if (!visit(*slice[f][s])) return false;
        return true;
    }
};

bool checkHead(const TbEntry& entry, TbFileView& file, std::uint64_t length, TbKind kind) {
    const std::uint8_t* head = file.take(5);
    if (!head || readWord32(head) != MagicWords[kind] || length % PaddingUnit != ChecksumSize) return false;
    const int flags = head[4];
    if (((flags & FlagPawns) != 0) != (entry.hasPawns != 0)) return false;
    // Distance tables are marked as two-sided too, though they store one side.
    return kind != TbWdl || ((flags & FlagTwoSided) != 0) == !entry.symmetric;
}

// The men of one slice are those of the table's name, in some order.
bool holdsMen(const TbManList& list, int menCount, const TbMenCounts& expected) {
    TbMenCounts found{};
    for (int i = 0; i < menCount; ++i) ++found.of[list.men[i]];
    return std::memcmp(found.of, expected.of, sizeof found.of) == 0;
}

// The lists of one leading file: each byte has the first side's part in its low half, the second side's in
// the other.
bool readManLists(const TbEntry& entry, TbFileView& file, const SliceSet& set, int f,
                  const TbMenCounts& men) {
    const bool twoPawnGroups = entry.hasPawns && entry.pawnsOther;
    const std::uint8_t* places = file.take(twoPawnGroups ? 2 : 1);
    const std::uint8_t* codes = file.take(entry.menCount);
    if (!places || !codes) return false;
    for (int s = 0; s < set.sides; ++s) {
        const int shift = 4 * s;
        TbSlice& slice = *set.slice[f][s];
        for (int i = 0; i < entry.menCount; ++i) slice.list.men[i] = codes[i] >> shift & 15;
        if (!holdsMen(slice.list, entry.menCount, men)) return false;
        const int secondPlace = twoPawnGroups ? places[1] >> shift & 15 : 0;
        slice.size = tbSetUpManList(slice.list, entry.shape(), places[0] >> shift & 15, secondPlace, f);
        if (!slice.size) return false;
    }
    return true;
}

// Steps over the maps of raw values, four lists for each slice that has them, and notes where they lie.
bool readMaps(TbEntry& entry, TbFileView& file, const SliceSet& set) {
    for (int f = 0; f < set.files; ++f) {
        const int flags = set.slice[f][0]->flags;
        if (!(flags & TbMapped)) continue;
        const std::uint64_t width = flags & TbWideMap ? 2 : 1;
        if (!file.align(width)) return false;
        tbSlicesOf(entry, f).dtzMap = file.offset;
        for (int list = 0; list < 4; ++list) {
            const std::uint8_t* count = file.take(width);
            if (!count || !file.take(width * (width == 2 ? readWord16(count) : *count))) return false;
        }
    }
    return file.align(2);
}

bool readSections(TbEntry& entry, TbFileView& file, const SliceSet& set, TbKind kind,
                  const TbMenCounts& men) {
    for (int f = 0; f < set.files; ++f)
        if (!readManLists(entry, file, set, f, men)) return false;
    const int maxValue = kind == TbWdl ? MaxWdlValue : NoBound;
    return file.align(2) &&
           set.all([&](TbSlice& slice) { return tbReadSliceHeader(slice, file, maxValue); }) &&
           (kind == TbWdl || readMaps(entry, file, set)) &&
           set.all([&](TbSlice& slice) { return tbTakeSparseIndex(slice, file); }) &&
           set.all([&](TbSlice& slice) { return tbTakeLengths(slice, file); }) &&
           set.all([&](TbSlice& slice) { return tbTakeBlocks(slice, file); });
}

}  // namespace

bool tbReadTable(TbEntry& entry, const char* name, TbKind kind) {
    const SliceSet set(entry, kind);
    set.all([](TbSlice& slice) {
        slice = TbSlice{};
        return true;
    });
    const std::uint64_t length = entry.mappedSize[kind];
    if (length < PaddingUnit + ChecksumSize) return false;
    TbFileView file{entry.mappedData[kind], length - ChecksumSize};
    if (checkHead(entry, file, length, kind) && readSections(entry, file, set, kind, tbCountMen(name)))
        return true;
    tbFreeTable(entry, kind);
    return false;
}

void tbFreeTable(TbEntry& entry, TbKind kind) {
    SliceSet(entry, kind).all([](TbSlice& slice) {
        tbFreeSlice(slice);
        return true;
    });
}
