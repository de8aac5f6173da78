#include "shell/start_up.h"

#include "base/end_process.h"
#include "base/output.h"
#include "base/settings.h"
#include "base/start_thread.h"
#include "board/sliders.h"
#include "endgame/book.h"
#include "endgame/tb_files.h"
#include "eval/king_pawn_bitbase.h"
#include "eval/material.h"
#include "eval/parameters.h"
#include "search/strength.h"
#include "search/thread_pool.h"
#include "search/trans_table.h"
#include "shell/host.h"
#include "shell/log.h"
#include "shell/options.h"

#include <cerrno>
#include <cpuid.h>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <unistd.h>

static constexpr const char* Maker = "by the Tarvok team";
static constexpr const char* Licensee = "every chess player";

static bool hasPopcnt() {
    constexpr unsigned PopcntBit = 1u << 23;
    unsigned a, b, c, d;
    return __get_cpuid(1, &a, &b, &c, &d) && (c & PopcntBit);
}

static void printStartLines() {
    sendLine("Tarvok %s 64-bit %s\n", Version, Maker);
    if (hasPopcnt()) sendLine("using hardware POPCNT\n");
    sendLine("using BMI2\n");  // always: there is no other build
    sendLine("info string Licensed to %s\n", Licensee);
}

// A pipe or a file would otherwise get the number of a standard descriptor that is closed, and be read as
// commands, or answers would be written to it. Reads from what stands in end at once. Standard output is open
// for reading alone, so that its writes fail as on a closed one.
static void fillStandardDescriptors() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) >= 0) continue;
        const int mode = descriptor == STDERR_FILENO ? O_WRONLY : O_RDONLY;
        if (open("/dev/null", mode) < 0) endForRefusal("open /dev/null", errno);
    }
}

// The thread that a process begins with has the stack that its starter allows, which may be too small for a
// search and can't be replaced.
int runProgram(int (*program)(int argc, char** argv), int argc, char** argv) {
    fillStandardDescriptors();
    std::signal(SIGPIPE, SIG_IGN);  // the write fails instead
    int status = 0;
    std::function<void()> body = [&] { status = program(argc, argv); };
    const auto entry = [](void* argument) -> void* {
        (*static_cast<std::function<void()>*>(argument))();
        return nullptr;
    };
    pthread_join(startThread("start the main thread", SearchStackBytes, entry, &body), nullptr);
    return status;
}

void startUp() {
    startLogClock();
    seedRandom();
    initSliders();
    installSearchHost();
    threadPool.resize(true);
    printStartLines();
    openBook();
    initKingPawnBitbase();
    buildOptionTable();
    initMaterialTable();
    initEvalParameters();
    tbInit(settings.syzygyPath.c_str());
    transTable.resize(settings.hash);
}
