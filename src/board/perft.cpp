#include "board/perft.h"

#include "base/clock.h"
#include "base/output.h"
#include "board/attacks.h"
#include "board/legality.h"
#include "board/make_move.h"
#include "board/move_picker.h"
#include "board/thread_hooks.h"

#include <optional>

// Walks the picker of a full-width node, as the search does; positions in check too, since make refuses what
// doesn't answer the check.
std::uint64_t perft(const Position& pos, int depth) {
    constexpr int PickerDepth = 20;
    MovePicker picker;
    picker.start(pos, KindFull, PickerDepth, NoMove);
    std::uint64_t leaves = 0;
    Position child;
    while (const Move move = nextMove(&picker)) {
        if (!makeMove(&pos, &child, move)) continue;
        if (depth < 2) {
            ++leaves;
            continue;
        }
        child.inCheck = isInCheck(child);
        leaves += perft(child, depth - 1);
    }
    return leaves;
}

namespace {

// Keeps make's prefetches on one line that is there anyway: a count reads no table, and asking for lines of
// tables that no search has touched yet takes longer than the rest of a make. Only while no search runs.
class IdlePrefetches {
   public:
    IdlePrefetches() { prefetchBases = {line, 0, 0, 0}; }
    ~IdlePrefetches() { prefetchBases = before; }
    IdlePrefetches(const IdlePrefetches&) = delete;
    IdlePrefetches& operator=(const IdlePrefetches&) = delete;

    // For the caches, which a record and its children point to.
    void redirect(Position& root) {
        root.evalCache = reinterpret_cast<EvalCacheEntry*>(line);
        root.pawnHash = reinterpret_cast<PawnEntry*>(line);
    }

   private:
    const PrefetchBases before = prefetchBases;
    alignas(64) char line[64] = {};
};

}  // namespace

void perftTimed(const Position& pos, int depth, bool idle) {
    std::optional<IdlePrefetches> prefetches;
    Position root = pos;
    if (idle) prefetches.emplace().redirect(root);
    const long long start = currentMicroseconds();
    const std::uint64_t leaves = isPlayable(root) ? perft(root, depth) : 0;
    const double elapsed = double(currentMicroseconds() - start);
    sendLine("%llu, MNPS=%f\n", static_cast<unsigned long long>(leaves), double(leaves) / elapsed);
}
