// The process: commands from standard input, or the benchmark where the first argument asks for it.
#include "shell/bench.h"
#include "shell/main_loop.h"
#include "shell/start_up.h"

#include <cstring>

static int program(int argc, char** argv) {
    const bool benchMode = argc >= 2 && std::strcmp(argv[1], "bench") == 0;
    startUp();
    if (benchMode)
        runBench(argc - 2, argv + 2);
    else
        mainLoop();
    return 0;
}

int main(int argc, char** argv) { return runProgram(program, argc, argv); }
