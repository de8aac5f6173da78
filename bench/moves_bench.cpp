// The cost of a generator's list, of a picker's walk and of an exchange, over the benchmark positions.
#include "bench_hooks.h"
#include "board/exchange.h"
#include "board/fen.h"
#include "board/move_picker.h"
#include "board/movegen.h"
#include "board/sliders.h"
#include "shell/bench_positions.h"

#include <benchmark/benchmark.h>
#include <optional>
#include <random>
#include <vector>

// The positions with their moves, and full history tables.
class MovesBenchmark : public benchmark::Fixture {
   public:
    void SetUp(benchmark::State&) override {
        initSliders();
        hooks.emplace();
        // Counters as learning spreads them, so that lists need sorting.
        std::mt19937 random(4);
        for (std::int32_t& counter : hooks->history) counter = std::int32_t(random() % 32001);
        for (std::uint16_t& counter : hooks->continuations) counter = std::uint16_t(random() % 32001);
        for (int i = 0; i < 16 * 64 * 16; ++i)
            hooks->captures[std::size_t(i / 1024)][i / 16 % 64][i % 16] =
                std::int32_t(4000 + random() % 8001);
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
    void TearDown(benchmark::State&) override { hooks.reset(); }

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
    static void report(benchmark::State& state, std::int64_t callsPerRound, std::int64_t handedOut) {
        state.counters["call"] = perCall(callsPerRound * std::int64_t(state.iterations()));
        state.counters["move"] = perCall(handedOut);
    }

    std::vector<Position> positions;
    std::vector<std::vector<Move>> moves;
    std::optional<BenchHooks> hooks;
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
