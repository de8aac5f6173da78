#include "shell/bench.h"

#include "base/clock.h"
#include "base/end_process.h"
#include "base/output.h"
#include "base/settings.h"
#include "board/fen.h"
#include "eval/parameters.h"
#include "search/limits.h"
#include "search/search.h"
#include "search/search_tables.h"
#include "search/thread_pool.h"
#include "search/time_manager.h"
#include "search/trans_table.h"
#include "shell/bench_positions.h"
#include "shell/commands.h"

#include <algorithm>
#include <cstdlib>

namespace {

constexpr int FirstDepth = 5;  // plies

struct BenchPlan {
    int lastDepth = 12;
    int passes = 1;
};

int numberOf(const char* text) {
    constexpr long Most = 1000000;
    return int(std::clamp(std::strtol(text, nullptr, 10), -Most, Most));
}

BenchPlan readPlan(int argumentCount, char** arguments) {
    constexpr int MostThreads = 64;
    BenchPlan plan;
    if (argumentCount > 0) {
        const int threads = numberOf(arguments[0]);
        if (threads >= 1 && threads <= MostThreads) {
            settings.threads = threads;
            threadPool.restart();
        }
    }
    if (argumentCount > 1) plan.lastDepth = numberOf(arguments[1]);
    if (argumentCount > 2) plan.passes = numberOf(arguments[2]);
    return plan;
}

std::uint64_t nodesOf(const char* text, int depth) {
    Position pos;
    setFen(&pos, text);
    think(pos, depth, NoTimeLimit, NoTimeLimit, "", false);
    return threadPool.totalNodes();
}

// All positions at one depth; a dot each.
std::uint64_t searchAll(int depth) {
    std::uint64_t sum = 0;
    for (const char* text : benchPositions) {
        sum += nodesOf(text, depth);
        sendLine(".");
    }
    return sum;
}

void runPass(int lastDepth, BenchResult& result) {
    searchControl.benchMode = true;
    readyMemory();
    initEvalParameters();
    buildSearchTables();
    const double start = currentTime();
    double previous = 0;  // seconds at the end of the depth before
    if (lastDepth < FirstDepth) {
        sendLine("\n\n");
        return;
    }
    sendLine("\n%2d ", FirstDepth);
    for (int depth = FirstDepth; depth <= lastDepth; ++depth) {
        result.nodes = searchAll(depth);
        result.allNodes += result.nodes;
        const long long nodes = static_cast<long long>(result.nodes);
        const double elapsed = currentTime() - start;  // since the pass began, over all depths
        if (depth == FirstDepth)
            sendLine(" %14lld nds %7.2f sec", nodes, elapsed);
        else
            sendLine(" %14lld nds %7.2f sec  %6.2f bf", nodes, elapsed, elapsed / previous);
        previous = elapsed;
        if (depth < lastDepth) sendLine("\n%2d ", depth + 1);
    }
    result.seconds += previous;
    sendLine("\n\n");
}

}  // namespace

BenchResult runBench(int argumentCount, char** arguments) {
    outputFailedHook = [] { endProcess(1); };  // what it prints is all that it is for
    settings.useMcts = false;
    const BenchPlan plan = readPlan(argumentCount, arguments);
    BenchResult result;
    for (int pass = 0; pass < plan.passes; ++pass) runPass(plan.lastDepth, result);
    searchControl.quitRequested = true;
    threadPool.stopWorkers();
    transTable.free();
    threadPool.resize(false);
    return result;
}
