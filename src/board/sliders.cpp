// Filling of the slider tables. The slices lie one after the other in square order, a1 first.
#include "board/sliders.h"

#include "base/large_table.h"

static constexpr std::size_t BishopEntries = 5248;
static constexpr std::size_t RookEntries = 102400;

// Both tables, rooks first. They are read all over, and need one entry in the processor's cache of pages
// instead of two hundred if a huge page holds them; to get one, its whole size must be asked for.
static LargeTable<Bitboard> sliderAttacks;
static constexpr std::size_t HugePageEntries = (std::size_t{2} << 20) / sizeof(Bitboard);
static_assert(BishopEntries + RookEntries <= HugePageEntries);

const Bitboard* bishopSlice[64];
const Bitboard* rookSlice[64];

// The squares along one ray up to and including the first occupied one.
static Bitboard rayAttacks(int square, int fileStep, int rankStep, Bitboard occupied) {
    Bitboard attacks = 0;
    int file = fileOf(square) + fileStep;
    int rank = rankOf(square) + rankStep;
    while (file >= 0 && file < 8 && rank >= 0 && rank < 8) {
        const Bitboard reached = bit(makeSquare(file, rank));
        attacks |= reached;
        if (occupied & reached) break;
        file += fileStep;
        rank += rankStep;
    }
    return attacks;
}

static Bitboard bishopByRays(int square, Bitboard occupied) {
    return rayAttacks(square, 1, 1, occupied) | rayAttacks(square, 1, -1, occupied) |
           rayAttacks(square, -1, 1, occupied) | rayAttacks(square, -1, -1, occupied);
}

static Bitboard rookByRays(int square, Bitboard occupied) {
    return rayAttacks(square, 1, 0, occupied) | rayAttacks(square, -1, 0, occupied) |
           rayAttacks(square, 0, 1, occupied) | rayAttacks(square, 0, -1, occupied);
}

// Lays the slices of one piece into `table` and fills them; entry i is for the occupancy that PEXT turns into
// i.
static void fillSlices(const Bitboard* (&slices)[64], Bitboard* table, const SquareTable& masks,
                       Bitboard (*attacksByRays)(int square, Bitboard occupied)) {
    for (int square = 0; square < 64; ++square) {
        const Bitboard mask = masks[std::size_t(square)];
        const std::uint64_t entries = 1ULL << popcount(mask);
        slices[square] = table;
        for (std::uint64_t index = 0; index < entries; ++index)
            *table++ = attacksByRays(square, _pdep_u64(index, mask));
    }
}

void initSliders() {
    sliderAttacks.allocate(HugePageEntries, "slider attacks");
    sliderAttacks.pages().askForHugePages();
    fillSlices(rookSlice, sliderAttacks.data(), rookMask, rookByRays);
    fillSlices(bishopSlice, sliderAttacks.data() + RookEntries, bishopMask, bishopByRays);
}
