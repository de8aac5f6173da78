// The cost of a probe and of a store in the shared table: in a table that the processor's caches hold, and in
// one that they don't, with and without the prefetch that a make would have done some nodes before.
#include "search/trans_table.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <random>
#include <vector>

class TableBenchmark : public benchmark::Fixture {
   public:
    void SetUp(benchmark::State& state) override {
        table.resize(int(state.range(0)));
        std::mt19937_64 random(11);
        // As many entries as the table has, so that most buckets are full.
        for (std::uint64_t i = 0; i < 4 * table.bucketCount(); ++i) {
            const Key key = random();
            table.store(key, int(key % 40), int(key % 500), LowerBound, Move(key & 0xfff), 0);
            if (i % (4 * table.bucketCount() / KeyCount) == 0) keys.push_back(key);
        }
        keys.resize(KeyCount, 1);
        std::shuffle(keys.begin(), keys.end(), random);
    }
    void TearDown(benchmark::State&) override {
        table.free();
        keys.clear();
    }

   protected:
    static constexpr std::size_t KeyCount = std::size_t{1} << 14;
    static constexpr std::size_t Ahead = 4;  // keys between a prefetch and its use

    Key next() { return keys[position++ % KeyCount]; }
    void prefetch() const { prefetchTrans(keys[(position + Ahead) % KeyCount]); }

    TransTable table;
    std::vector<Key> keys;
    std::size_t position = 0;
};

// The keys of the next iterations must not wait for one another, so nothing is summed up.
BENCHMARK_DEFINE_F(TableBenchmark, probe)(benchmark::State& state) {
    const bool prefetches = state.range(1);
    for (auto _ : state) {
        if (prefetches) prefetch();
        TransData data;
        benchmark::DoNotOptimize(table.probe(next(), data));
        benchmark::DoNotOptimize(data.word);
    }
}
BENCHMARK_REGISTER_F(TableBenchmark, probe)
    ->ArgNames({"megabytes", "prefetch"})
    ->Args({1, 0})
    ->Args({256, 0})
    ->Args({256, 1});

BENCHMARK_DEFINE_F(TableBenchmark, store)(benchmark::State& state) {
    const bool prefetches = state.range(1);
    int depth = 0;
    for (auto _ : state) {
        if (prefetches) prefetch();
        table.store(next(), depth++ & 31, 20, UpperBound, 0x123, 0);
    }
}
BENCHMARK_REGISTER_F(TableBenchmark, store)
    ->ArgNames({"megabytes", "prefetch"})
    ->Args({1, 0})
    ->Args({256, 0})
    ->Args({256, 1});
