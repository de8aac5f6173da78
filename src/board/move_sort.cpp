#include "board/move_sort.h"

#include "board/insertion_sort.h"

#include <algorithm>
#include <cstdint>
#include <emmintrin.h>
#include <limits>

namespace {

constexpr int ShortList = 4;  // moves; up to here insertion is quicker

// Keys are compared sixteen at a time.
constexpr int KeysPerStep = 16;
constexpr int roundUp(int count) { return (count + KeysPerStep - 1) / KeysPerStep * KeysPerStep; }

class KeyRow {
   public:
    KeyRow(const Move* moves, int count) : end(roundUp(count)) {
        for (int i = 0; i < count; ++i) keys[i] = std::int16_t(moves[i] >> 16);
        std::fill(keys + count, keys + end, std::numeric_limits<std::int16_t>::min());
    }
    // How many keys are greater than the one at `place`.
    int countGreater(int place) const {
        const __m128i own = _mm_set1_epi16(keys[place]);
        int greater = 0;
        for (int i = 0; i < end; i += KeysPerStep) {
            const __m128i* step = reinterpret_cast<const __m128i*>(keys + i);
            const __m128i first = _mm_cmpgt_epi16(_mm_load_si128(step), own);
            const __m128i second = _mm_cmpgt_epi16(_mm_load_si128(step + 1), own);
            greater += __builtin_popcount(unsigned(_mm_movemask_epi8(_mm_packs_epi16(first, second))));
        }
        return greater;
    }

   private:
    const int end;
    alignas(sizeof(__m128i)) std::int16_t keys[roundUp(MaxListMoves)];
};

// Each move goes behind all of greater keys and the equal ones before it. No jump depends on the keys: nobody
// can foretell those of an insertion, and they would cost several times as much as the comparisons.
void sortByCounting(Move* moves, int count) {
    const KeyRow keys(moves, count);
    Move unsorted[MaxListMoves];
    std::uint8_t equals[MaxListMoves];  // by place of the first of equal keys, how many have been put there
    std::copy_n(moves, count, unsorted);
    std::fill_n(equals, count, std::uint8_t(0));
    for (int i = 0; i < count; ++i) {
        const int first = keys.countGreater(i);
        moves[first + equals[first]++] = unsorted[i];
    }
}

}  // namespace

void sortMoves(Move* moves, int count) {
    const auto goesBefore = [](Move a, Move b) { return sortKeyOf(a) > sortKeyOf(b); };
    if (count <= ShortList) {
        insertionSort(moves, count, goesBefore);
        return;
    }
    // As long as nothing has been learnt, all keys of a list of quiet moves are equal.
    const bool mayBeSorted = sortKeyOf(moves[0]) == sortKeyOf(moves[1]);
    if (!mayBeSorted || !std::is_sorted(moves, moves + count, goesBefore)) sortByCounting(moves, count);
}
