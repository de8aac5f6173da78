// What the benchmarks share: rows of thread hooks on plain arrays, and the counter that they report by.
#pragma once

#include "board/history_tables.h"
#include "board/thread_hooks.h"

#include <benchmark/benchmark.h>
#include <cstdint>
#include <memory>
#include <vector>

// One thread's row on plain arrays for as long as this lives; then the row is as it was.
class BenchHooks {
   public:
    explicit BenchHooks(int threadIndex = 0) : row(threadHooks[threadIndex]), before(row) {
        row.nodes = &nodes;
        row.stopFlag = &stopFlag;
        row.history = history.data();
        row.captureHistory = captures.get();
        row.continuationHistory = continuations.data();
    }
    ~BenchHooks() { row = before; }
    BenchHooks(const BenchHooks&) = delete;
    BenchHooks& operator=(const BenchHooks&) = delete;

    std::vector<std::int32_t> history = std::vector<std::int32_t>(CodeCount * FromToCount);
    std::unique_ptr<CaptureRow[]> captures = std::make_unique<CaptureRow[]>(CodeCount);
    std::vector<std::uint16_t> continuations =
        std::vector<std::uint16_t>(ContinuationSlices * ContinuationSlice);

   private:
    Relaxed<std::uint64_t> nodes;
    Relaxed<std::uint8_t> stopFlag;
    ThreadHooks& row;
    const ThreadHooks before;
};

// Seconds a call, which the console shows with a metric prefix.
inline benchmark::Counter perCall(std::int64_t calls) {
    return benchmark::Counter(double(calls), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
