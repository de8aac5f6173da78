#include "endgame/tb_decode.h"

#include <cstdlib>
#include <vector>

namespace {

constexpr std::uint64_t SparseEntrySize = 6;
constexpr std::uint64_t BlockAlignment = 64;
constexpr std::uint32_t LeafMark = 4095;  // in place of a right child
constexpr std::uint32_t MaxExtent = 256;  // positions that one symbol may stand for
constexpr int MaxCodeLength = 32;

std::uint32_t leftOf(const std::uint8_t* symbols, std::uint32_t symbol) {
    const std::uint8_t* at = symbols + 3 * symbol;
    return at[0] | std::uint32_t(at[1] & 15) << 8;
}
std::uint32_t rightOf(const std::uint8_t* symbols, std::uint32_t symbol) {
    const std::uint8_t* at = symbols + 3 * symbol;
    return std::uint32_t(at[1] >> 4) | std::uint32_t(at[2]) << 4;
}

int lengthCount(const TbSlice& slice) { return slice.maxLen - slice.minLen + 1; }

// Positions that each symbol stands for, less one, so that 256 fits.
std::uint8_t* extentsOf(const TbSlice& slice) {
    return reinterpret_cast<std::uint8_t*>(slice.bound + lengthCount(slice));
}

// Computes the extents of all symbols, depth first, since some occur only inside others. False if a symbol's
// children don't exist or contain it, if it stands for too much, or if a leaf's value is too high.
bool computeExtents(TbSlice& slice, int maxValue) {
    enum class State : std::uint8_t { Fresh, Open, Done };
    const std::uint32_t count = slice.symbolCount;
    std::vector<State> state(count, State::Fresh);
    std::vector<std::uint32_t> path;  // symbols that wait for their children
    path.reserve(count);
    std::uint8_t* extents = extentsOf(slice);
    for (std::uint32_t root = 0; root < count; ++root) {
        if (state[root] == State::Fresh) path.push_back(root);
        while (!path.empty()) {
            const std::uint32_t symbol = path.back();
            const std::uint32_t left = leftOf(slice.symbols, symbol), right = rightOf(slice.symbols, symbol);
            std::uint32_t extent = 1;
            if (right == LeafMark) {
                if (maxValue >= 0 && left > std::uint32_t(maxValue)) return false;
            } else {
                if (left >= count || right >= count) return false;
                state[symbol] = State::Open;
                const std::uint32_t next = state[left] != State::Done ? left : right;
                if (state[next] == State::Open) return false;
                if (state[next] == State::Fresh) {
                    path.push_back(next);
                    continue;
                }
                extent = extents[left] + extents[right] + 2u;
            }
            if (extent > MaxExtent) return false;
            extents[symbol] = std::uint8_t(extent - 1);
            state[symbol] = State::Done;
            path.pop_back();
        }
    }
    return true;
}

// Codes are canonical: those of one length are consecutive, and longer ones are smaller as binary fractions.
// So a lowest code per length, and the symbol that has it, describe the whole code.
bool computeBounds(TbSlice& slice) {
    const int count = lengthCount(slice);
    std::uint64_t low = 0;
    for (int i = count - 1; i >= 0; --i) {
        const std::uint32_t here = readWord16(slice.first + 2 * i);
        if (i < count - 1) {
            const std::uint32_t longer = readWord16(slice.first + 2 * (i + 1));
            if (here < longer) return false;
            low = (low + here - longer) / 2;
        }
        slice.bound[i] = low << (64 - (slice.minLen + i));
    }
    return true;
}

// The code stream of one block: a window of its next bits, left-aligned, of which at least 33 are good.
class CodeStream {
   public:
    explicit CodeStream(const std::uint8_t* block) : next(block + 8) {
        std::uint64_t word;
        std::memcpy(&word, block, sizeof word);
        window = __builtin_bswap64(word);
    }
    std::uint64_t bits() const { return window; }
    void drop(int count) {
        window <<= count;
        spent += count;
        if (spent < 32) return;
        spent -= 32;
        window |= std::uint64_t(__builtin_bswap32(readWord32(next))) << spent;
        next += 4;
    }

   private:
    std::uint64_t window;
    const std::uint8_t* next;
    int spent = 0;  // bits dropped since the last refill
};

// The value of position `rest` of a symbol: down the tree of its halves.
int valueInside(const TbSlice& slice, std::uint32_t symbol, std::int64_t rest) {
    const std::uint8_t* extents = extentsOf(slice);
    for (;;) {
        const std::uint32_t left = leftOf(slice.symbols, symbol), right = rightOf(slice.symbols, symbol);
        if (right == LeafMark) return int(left);
        const std::int64_t leftExtent = extents[left] + 1;
        if (rest < leftExtent) {
            symbol = left;
        } else {
            rest -= leftExtent;
            symbol = right;
        }
    }
}

}  // namespace

bool tbReadSliceHeader(TbSlice& slice, TbFileView& file, int maxValue) {
    const std::uint8_t* head = file.take(2);
    if (!head) return false;
    slice.flags = head[0];
    if (slice.flags & TbSingleValue) {
        // A distance table has padding here, and all its distances are 0.
        slice.singleValue = maxValue >= 0 ? head[1] : 0;
        return maxValue < 0 || slice.singleValue <= maxValue;
    }
    const std::uint8_t* fields = file.take(8);
    if (!fields) return false;
    slice.blockLog = head[1];
    slice.spanLog = fields[0];
    slice.realBlocks = readWord32(fields + 2);
    slice.maxLen = fields[6];
    slice.minLen = fields[7];
    if (slice.realBlocks > 0xffffffffu - fields[1]) return false;
    slice.blockCount = slice.realBlocks + fields[1];
    if (slice.blockLog < 3 || slice.blockLog > 15 || slice.spanLog < 1 || slice.spanLog > 30) return false;
    if (slice.minLen < 1 || slice.maxLen < slice.minLen || slice.maxLen > MaxCodeLength) return false;
    const std::uint64_t lengths = std::uint64_t(lengthCount(slice));
    slice.first = file.take(2 * lengths);
    const std::uint8_t* count = file.take(2);
    if (!slice.first || !count) return false;
    slice.symbolCount = std::uint16_t(readWord16(count));
    if (slice.symbolCount < 1 || slice.symbolCount > LeafMark) return false;
    slice.symbols = file.take(3u * slice.symbolCount);
    if (!slice.symbols || !file.align(2)) return false;
    slice.bound =
        static_cast<std::uint64_t*>(std::malloc(lengths * sizeof(std::uint64_t) + slice.symbolCount));
    return slice.bound && computeBounds(slice) && computeExtents(slice, maxValue);
}

bool tbTakeSparseIndex(TbSlice& slice, TbFileView& file) {
    if (slice.flags & TbSingleValue) return true;
    const std::uint64_t spans = (slice.size + (1ULL << slice.spanLog) - 1) >> slice.spanLog;
    slice.sparse = file.take(SparseEntrySize * spans);
    return slice.sparse;
}

bool tbTakeLengths(TbSlice& slice, TbFileView& file) {
    if (slice.flags & TbSingleValue) return true;
    slice.lengths = file.take(2 * std::uint64_t(slice.blockCount));
    return slice.lengths;
}

bool tbTakeBlocks(TbSlice& slice, TbFileView& file) {
    if (slice.flags & TbSingleValue) return true;
    if (!file.align(BlockAlignment)) return false;
    slice.blocks = file.take(std::uint64_t(slice.realBlocks) << slice.blockLog);
    return slice.blocks;
}

void tbFreeSlice(TbSlice& slice) {
    std::free(slice.bound);
    slice.bound = nullptr;
}

int tbRawValue(const TbSlice& slice, std::uint64_t number) {
    if (slice.flags & TbSingleValue) return slice.singleValue;
    if (number >= slice.size) return -1;
    const std::uint8_t* entry = slice.sparse + SparseEntrySize * (number >> slice.spanLog);
    const std::uint64_t span = 1ULL << slice.spanLog;
    std::uint64_t block = readWord32(entry);
    std::int64_t rest =
        std::int64_t(readWord16(entry + 4)) + std::int64_t(number & (span - 1)) - std::int64_t(span / 2);
    const auto length = [&slice](std::uint64_t b) { return std::int64_t(readWord16(slice.lengths + 2 * b)); };
    if (block >= slice.blockCount) return -1;
    while (rest < 0) {
        if (block == 0) return -1;
        rest += length(--block) + 1;
    }
    while (rest > length(block)) {
        rest -= length(block) + 1;
        if (++block >= slice.blockCount) return -1;
    }
    if (block >= slice.realBlocks) return -1;

    CodeStream stream(slice.blocks + (block << slice.blockLog));
    const std::uint8_t* extents = extentsOf(slice);
    for (int bitsLeft = 8 << slice.blockLog;;) {
        int i = 0;
        while (stream.bits() < slice.bound[i]) ++i;  // ends at the longest code, whose bound is 0
        const int codeLength = slice.minLen + i;
        const std::uint64_t symbol =
            readWord16(slice.first + 2 * i) + ((stream.bits() - slice.bound[i]) >> (64 - codeLength));
        bitsLeft -= codeLength;
        if (symbol >= slice.symbolCount || bitsLeft < 0) return -1;
        const std::int64_t extent = extents[symbol] + 1;
        if (rest < extent) return valueInside(slice, std::uint32_t(symbol), rest);
        rest -= extent;
        stream.drop(codeLength);
    }
}
