// The cost of one make, over every pseudo-legal move of the benchmark positions; the refused ones count too.
#include "board/fen.h"
#include "board/make_move.h"
#include "board/movegen.h"
#include "board/sliders.h"
#include "board/thread_hooks.h"
#include "shell/bench_positions.h"

#include <benchmark/benchmark.h>
#include <vector>

struct ListedPosition {
    Position position;
    std::vector<Move> moves;
};

// Thread 0's row on plain arrays for as long as the benchmark runs: make needs a counter, a flag and the
// continuation table's addresses.
class MakeBenchmark : public benchmark::Fixture {
   public:
    void SetUp(benchmark::State&) override {
        initSliders();
        hooksBefore = threadHooks[0];
        threadHooks[0].nodes = &nodes;
        threadHooks[0].stopFlag = &stopFlag;
        threadHooks[0].history = history.data();
        threadHooks[0].continuationHistory = continuations.data();
        positions.clear();
        for (const char* fen : benchPositions) {
            ListedPosition& entry = positions.emplace_back();
            setFen(&entry.position, fen);
            Move list[MaxListMoves];
            const int count = genAllMoves(entry.position, list);
            for (int i = 0; i < count; ++i) entry.moves.push_back(cleanMove(list[i]));
        }
    }
    void TearDown(benchmark::State&) override { threadHooks[0] = hooksBefore; }

   protected:
    std::vector<ListedPosition> positions;

   private:
    Relaxed<std::uint64_t> nodes;
    Relaxed<std::uint8_t> stopFlag;
    std::vector<std::int32_t> history = std::vector<std::int32_t>(16 * 4096);
    std::vector<std::uint16_t> continuations = std::vector<std::uint16_t>(1024 * ContinuationSlice);
    ThreadHooks hooksBefore;
};

BENCHMARK_F(MakeBenchmark, makeMove)(benchmark::State& state) {
    Position child;
    Position* target = &child;
    benchmark::DoNotOptimize(target);  // else the compiler drops the writes that nobody reads
    std::int64_t made = 0;
    for (auto _ : state) {
        for (const ListedPosition& entry : positions) {
            for (const Move move : entry.moves)
                benchmark::DoNotOptimize(makeMove(&entry.position, target, move));
            made += std::int64_t(entry.moves.size());
        }
    }
    state.SetItemsProcessed(made);
    // Seconds a make, which the console shows with a metric prefix.
    state.counters["call"] =
        benchmark::Counter(double(made), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
