// Win/draw/loss probes on warm tables, by one thread and by two that share them. Reads the tables and listed
// positions that lie beside the work tree; the environment's TARVOK_TABLE_DATA names another folder.
#include "bench_hooks.h"
#include "board/fen.h"
#include "board/sliders.h"
#include "endgame/tb_files.h"
#include "endgame/tb_probe.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

namespace {

std::vector<Position> positions;

void readPositions() {
    if (!positions.empty()) return;
    initSliders();
    // A row for each thread, for good: captures that a probe tries are made, and counted.
    static const BenchHooks first(0), second(1);
    const char* const given = std::getenv("TARVOK_TABLE_DATA");
    const std::string folder = given ? given : "../shared/data";
    tbInit((folder + "/syzygy").c_str());
    std::ifstream file(folder + "/tb_positions.epd");
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line[0] == '#') continue;
        Position pos;
        setFen(&pos, line.c_str());
        // Warms the table.
        if (tbProbeWdl(pos).state != ProbeState::Failed) positions.push_back(pos);
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
        for (const Position& pos : own) benchmark::DoNotOptimize(tbProbeWdl(pos));
        probes += std::int64_t(own.size());
    }
    state.SetItemsProcessed(probes);
}
BENCHMARK(probeWdl)->Threads(1)->Threads(2)->UseRealTime();

}  // namespace
