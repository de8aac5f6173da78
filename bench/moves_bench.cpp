// The cost of a generator's list, of a picker's walk and of an exchange, over the benchmark positions.
#include "board/exchange.h"
#include "board/fen.h"
#include "board/move_picker.h"
#include "board/movegen.h"
#include "board/sliders.h"
#include "board/thread_hooks.h"
#include "shell/bench_positions.h"

#include <benchmark/benchmark.h>
#include <memory>
#include <random>
#include <vector>

// Thread 0's row on plain arrays for as long as a benchmark runs, and the positions with their moves.
class MovesBenchmark : public benchmark::Fixture {
   public:
    void SetUp(benchmark::State&) override {
        initSliders();
        hooksBefore = threadHooks[0];
        threadHooks[0].history = history.data();
        threadHooks[0].continuationHistory = continuations.data();
        threadHooks[0].captureHistory = captures.get();
        // Counters as learning spreads them, so that lists need sorting.
        std::mt19937 random(4);
        for (std::int32_t& counter : history) counter = std::int32_t(random() % 32001);
        for (std::uint16_t& counter : continuations) counter = std::uint16_t(random() % 32001);
        for (int i = 0; i < 16 * 64 * 16; ++i)
            captures[std::size_t(i / 1024)][i / 16 % 64][i % 16] = std::int32_t(4000 + random() % 8001);
        positions.clear();
        moves.clear();
        for (const char* fen : benchPositions) {
            setFen(&positions.emplace_back(), fen);
            Move list[MaxListMoves];
            const int count = genAllMoves(positions.back(), list);
            std::vector<Move>& clean = moves.emplace_back();
            for (int i = 0; i < count; ++i) clean.push_back(cleanMove(list[i]));
        }
    }
    void TearDown(benchmark::State&) override { threadHooks[0] = hooksBefore; }

   protected:
    template <class Generate>
    void measureList(benchmark::State& state, Generate generate) {
        Move list[MaxListMoves];
        std::int64_t written = 0;
        for (auto _ : state) {
            for (const Position& pos : positions) written += generate(pos, list);
            benchmark::DoNotOptimize(list);
        }
        report(state, std::int64_t(positions.size()), written);
    }
    template <class Next>
    void measureWalk(benchmark::State& state, std::uint32_t kind, int depth, Next next) {
        MovePicker picker;
        std::int64_t handedOut = 0;
        for (auto _ : state) {
            for (const Position& pos : positions) {
                picker.start(pos, kind, depth, NoMove);
                while (next(&picker)) ++handedOut;
            }
        }
        report(state, std::int64_t(positions.size()), handedOut);
    }
    template <class Evaluate>
    void measureExchange(benchmark::State& state, Evaluate evaluate) {
        std::int64_t calls = 0;
        for (auto _ : state) {
            for (std::size_t i = 0; i < positions.size(); ++i) {
                for (const Move move : moves[i]) benchmark::DoNotOptimize(evaluate(positions[i], move));
                calls += std::int64_t(moves[i].size());
            }
        }
        state.counters["call"] = perCall(calls);
    }

   private:
    // Seconds a call, which the console shows with a metric prefix.
    static benchmark::Counter perCall(std::int64_t calls) {
        return benchmark::Counter(double(calls), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    }
    static void report(benchmark::State& state, std::int64_t callsPerRound, std::int64_t handedOut) {
        state.counters["call"] = perCall(callsPerRound * std::int64_t(state.iterations()));
        state.counters["move"] = perCall(handedOut);
    }

    std::vector<Position> positions;
    std::vector<std::vector<Move>> moves;
    std::vector<std::int32_t> history = std::vector<std::int32_t>(16 * 4096);
    std::unique_ptr<std::int32_t[][64][16]> captures = std::make_unique<std::int32_t[][64][16]>(16);
    std::vector<std::uint16_t> continuations = std::vector<std::uint16_t>(1024 * ContinuationSlice);
    ThreadHooks hooksBefore;
};

BENCHMARK_F(MovesBenchmark, genAllMoves)(benchmark::State& state) { measureList(state, genAllMoves); }
BENCHMARK_F(MovesBenchmark, genCaptures)(benchmark::State& state) { measureList(state, genCaptures); }
BENCHMARK_F(MovesBenchmark, genQuiets)(benchmark::State& state) { measureList(state, genQuiets); }
BENCHMARK_F(MovesBenchmark, genQuietChecks)(benchmark::State& state) { measureList(state, genQuietChecks); }
BENCHMARK_F(MovesBenchmark, genQueenChecks)(benchmark::State& state) { measureList(state, genQueenChecks); }
BENCHMARK_F(MovesBenchmark, genPawnPushesToSeventh)(benchmark::State& state) {
    measureList(state, genPawnPushesToSeventh);
}
// Also where there is no check: the same lookups, fewer moves.
BENCHMARK_F(MovesBenchmark, genEvasions)(benchmark::State& state) { measureList(state, genEvasions); }

BENCHMARK_F(MovesBenchmark, walkFullNearLeaves)(benchmark::State& state) {
    measureWalk(state, KindFull, 10, nextMove);
}
// Quiet moves pass the exchange test too.
BENCHMARK_F(MovesBenchmark, walkFullFarFromLeaves)(benchmark::State& state) {
    measureWalk(state, KindFull, 20, nextMove);
}
BENCHMARK_F(MovesBenchmark, walkQuiescence)(benchmark::State& state) {
    measureWalk(state, KindQuiescence, 0, nextQuiescenceMove);
}
BENCHMARK_F(MovesBenchmark, walkQuiescenceChecks)(benchmark::State& state) {
    measureWalk(state, KindQuiescenceChecks, 0, nextQuiescenceMove);
}

BENCHMARK_F(MovesBenchmark, seeLosing)(benchmark::State& state) { measureExchange(state, seeLosing); }
BENCHMARK_F(MovesBenchmark, seeBelowMargin)(benchmark::State& state) {
    measureExchange(state, [](const Position& pos, Move move) { return seeBelowMargin(pos, move, -42); });
}
BENCHMARK_F(MovesBenchmark, seeScore)(benchmark::State& state) {
    measureExchange(state, [](const Position& pos, Move move) { return seeScore(pos, move, 0); });
}
BENCHMARK_F(MovesBenchmark, seeThreat)(benchmark::State& state) { measureExchange(state, seeThreat); }
BENCHMARK_F(MovesBenchmark, seeFromSquareSafe)(benchmark::State& state) {
    measureExchange(state, seeFromSquareSafe);
}
