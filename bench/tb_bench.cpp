// Win/draw/loss probes on warm tables, by one thread and by two that share them. Reads the tables and listed
// positions that lie beside the work tree; the environment's TARVOK_TABLE_DATA names another folder.
#include "board/fen.h"
#include "board/sliders.h"
#include "board/thread_hooks.h"
#include "endgame/tb_files.h"
#include "endgame/tb_probe.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

namespace {

std::vector<Position> positions;

// One row of hooks for each thread: captures that a probe tries are made, and counted.
Relaxed<std::uint64_t> nodes[2];
Relaxed<std::uint8_t> stopFlag;
std::vector<std::int32_t> history(16 * 4096);
std::vector<std::uint16_t> continuations(1024 * ContinuationSlice);

void readPositions() {
    if (!positions.empty()) return;
    initSliders();
    for (int i = 0; i < 2; ++i) {
        threadHooks[i].nodes = &nodes[i];
        threadHooks[i].stopFlag = &stopFlag;
        threadHooks[i].history = history.data();
        threadHooks[i].continuationHistory = continuations.data();
    }
    const char* const given = std::getenv("TARVOK_TABLE_DATA");
    const std::string folder = given ? given : "../shared/data";
    tbInit((folder + "/syzygy").c_str());
    std::ifstream file(folder + "/tb_positions.epd");
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line[0] == '#') continue;
        Position pos;
        setFen(&pos, line.c_str());
        int success;
        tbProbeWdl(pos, &success);  // warms the table
        if (success) positions.push_back(pos);
    }
}

void probeWdl(benchmark::State& state) {
    if (state.thread_index() == 0) readPositions();
    std::int64_t probes = 0;
    std::vector<Position> own;
    for (auto _ : state) {
        if (own.empty()) {  // the positions are there only when all threads have met
            own = positions;
            for (Position& pos : own) pos.threadIndex = std::int16_t(state.thread_index());
            if (own.empty()) {
                state.SkipWithError("no tables");
                break;
            }
        }
        for (Position& pos : own) {
            int success;
            benchmark::DoNotOptimize(tbProbeWdl(pos, &success));
        }
        probes += std::int64_t(own.size());
    }
    state.SetItemsProcessed(probes);
}
BENCHMARK(probeWdl)->Threads(1)->Threads(2)->UseRealTime();

}  // namespace
