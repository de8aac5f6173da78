// The engine as engine-testing frameworks start it; `make EXE=name` builds it. They run `./name bench` and
// read "N nodes N nps" from the output, which the engine's own bench does not print.
//
// It is a main of its own over the engine's libraries, and no script beside the engine: a framework renames,
// copies and moves the one file that it asked for, and starts many of it at once. One file that is a whole
// engine stands all of that, and UCI runs through it as through the engine.
#include "base/output.h"
#include "shell/bench.h"
#include "shell/main_loop.h"
#include "shell/start_up.h"

#include <algorithm>
#include <cinttypes>
#include <cstring>

static int program(int argc, char** argv) {
    constexpr double LeastSeconds = 0.01;  // so that a bench without a search has a speed
    const bool benchMode = argc >= 2 && std::strcmp(argv[1], "bench") == 0;
    startUp();
    if (!benchMode) mainLoop();
    const BenchResult result = runBench(argc - 2, argv + 2);
    const double speed = double(result.allNodes) / std::max(result.seconds, LeastSeconds);
    sendLine("%" PRIu64 " nodes %" PRIu64 " nps\n", result.nodes, std::uint64_t(speed));
    return 0;
}

int main(int argc, char** argv) { return runProgram(program, argc, argv); }
