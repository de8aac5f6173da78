// The cost of one make, over every pseudo-legal move of the benchmark positions; the refused ones count too.
#include "bench_hooks.h"
#include "board/fen.h"
#include "board/make_move.h"
#include "board/movegen.h"
#include "board/sliders.h"
#include "shell/bench_positions.h"

#include <benchmark/benchmark.h>
#include <optional>
#include <vector>

struct ListedPosition {
    Position position;
    std::vector<Move> moves;
};

class MakeBenchmark : public benchmark::Fixture {
   public:
    void SetUp(benchmark::State&) override {
        initSliders();
        hooks.emplace();
        positions.clear();
        for (const char* fen : benchPositions) {
            ListedPosition& entry = positions.emplace_back();
            setFen(&entry.position, fen);
            Move list[MaxListMoves];
            const int count = genAllMoves(entry.position, list);
            for (int i = 0; i < count; ++i) entry.moves.push_back(cleanMove(list[i]));
        }
    }
    void TearDown(benchmark::State&) override { hooks.reset(); }

   protected:
    std::vector<ListedPosition> positions;

   private:
    std::optional<BenchHooks> hooks;
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
    state.counters["call"] = perCall(made);
}
