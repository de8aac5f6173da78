// The cost of one evaluation over the benchmark positions: with nothing known, with the pawn structure and
// the material known as at most nodes of a search, and of a cached score.
#include "bench_hooks.h"
#include "board/fen.h"
#include "board/make_move.h"
#include "board/movegen.h"
#include "board/sliders.h"
#include "board/thread_hooks.h"
#include "eval/caches.h"
#include "eval/evaluate.h"
#include "eval/king_pawn_bitbase.h"
#include "eval/material.h"
#include "eval/parameters.h"
#include "shell/bench_positions.h"

#include <benchmark/benchmark.h>
#include <optional>
#include <vector>

// Caches of a usual search's size, so that a hit costs about what it costs there.
class EvalBenchmark : public benchmark::Fixture {
   public:
    void SetUp(benchmark::State&) override {
        initSliders();
        initKingPawnBitbase();
        initMaterialTable();
        initEvalParameters();
        basesBefore = prefetchBases;
        prefetchBases.evalMask = evalCache.size() - 1;
        prefetchBases.pawnMask = pawnHash.size() - 1;
        hooks.emplace();
        positions.clear();
        for (const char* fen : benchPositions) addWithChildren(fen);
    }
    void TearDown(benchmark::State&) override {
        prefetchBases = basesBefore;
        hooks.reset();
    }

   protected:
    // `forget` is called before each evaluation, inside the measured time: a few stores.
    template <class Forget>
    void measure(benchmark::State& state, Forget forget) {
        std::int64_t calls = 0;
        for (auto _ : state) {
            for (Position& pos : positions) {
                forget(pos);
                benchmark::DoNotOptimize(evaluate(pos, -OpenEvalBound, OpenEvalBound));
            }
            calls += std::int64_t(positions.size());
        }
        state.SetItemsProcessed(calls);
        state.counters["call"] = perCall(calls);
    }
    void forgetScore(const Position& pos) { evalCache[pos.key & prefetchBases.evalMask].key = ~pos.key; }
    void forgetStructure(const Position& pos) {
        pawnHash[pos.pawnKey & prefetchBases.pawnMask].key = ~pos.pawnKey;
        matHash[pos.matKey % MatCacheEntries].key = ~pos.matKey;
    }

   private:
    // So many that no branch predictor learns them by heart, as it does fifty.
    void addWithChildren(const char* fen) {
        Position pos;
        setFen(&pos, fen);
        pos.psqPair = computePsqPair(pos);
        pos.phase = std::uint16_t(computePhase(pos));
        pos.evalCache = evalCache.data();
        pos.pawnHash = pawnHash.data();
        pos.matHash = matHash.data();
        positions.push_back(pos);
        Move list[MaxListMoves];
        const int count = genAllMoves(pos, list);
        Position child;
        for (int i = 0; i < count; ++i)
            if (makeMove(&pos, &child, cleanMove(list[i]))) positions.push_back(child);
    }

    std::vector<Position> positions;
    std::vector<EvalCacheEntry> evalCache = std::vector<EvalCacheEntry>(1 << 16);
    std::vector<PawnEntry> pawnHash = std::vector<PawnEntry>(1 << 16);
    std::vector<MatCacheEntry> matHash = std::vector<MatCacheEntry>(MatCacheEntries);
    PrefetchBases basesBefore;
    std::optional<BenchHooks> hooks;
};

BENCHMARK_F(EvalBenchmark, evaluateCold)(benchmark::State& state) {
    measure(state, [&](const Position& pos) {
        forgetScore(pos);
        forgetStructure(pos);
    });
}
BENCHMARK_F(EvalBenchmark, evaluateKnownStructure)(benchmark::State& state) {
    measure(state, [&](const Position& pos) { forgetScore(pos); });
}
BENCHMARK_F(EvalBenchmark, evaluateCached)(benchmark::State& state) {
    measure(state, [](const Position&) {});
}
