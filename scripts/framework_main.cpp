// The engine as engine-testing frameworks start it; `make EXE=name` builds it. They run `./name bench` and
// read "N nodes N nps" from the output, which the engine's own bench does not print.
//
// It is a main of its own over the engine's libraries, and no script beside the engine: a framework renames,
// copies and moves the one file that it asked for, and starts many of it at once. One file that is a whole
// engine stands all of that, and UCI runs through it as through the engine, without a process in between.
#include "shell/bench.h"
#include "shell/main_loop.h"
#include "shell/start_up.h"

#include <cinttypes>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <sstream>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

struct BenchResult {
    std::uint64_t nodes = 0;     // of the last row: the signature, as commit messages give it
    std::uint64_t allNodes = 0;  // of all rows
    double seconds = 0;          // of all passes
};

// A row is "<depth> <dots> <nodes> nds <seconds> sec", with the seconds since the first depth of its pass.
BenchResult readRows(const std::string& output) {
    BenchResult result;
    double passSeconds = 0;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        int depth;
        unsigned long long nodes;
        double seconds;
        if (std::sscanf(line.c_str(), "%d %*[.] %llu nds %lf sec", &depth, &nodes, &seconds) != 3) continue;
        result.nodes = nodes;
        result.allNodes += nodes;
        if (seconds < passSeconds) result.seconds += passSeconds;  // a new pass has begun
        passSeconds = seconds;
    }
    result.seconds += passSeconds;
    return result;
}

bool writeAll(const char* text, std::size_t length) {
    while (length > 0) {
        const ssize_t written = write(STDOUT_FILENO, text, length);
        if (written < 0) return false;
        text += written;
        length -= std::size_t(written);
    }
    return true;
}

// The other end of the pipe: passes everything on as it comes, and returns it at the end.
std::string passOn(int descriptor) {
    std::string output;
    char piece[4096];
    for (ssize_t length; (length = read(descriptor, piece, sizeof piece)) > 0;) {
        if (!writeAll(piece, std::size_t(length))) break;
        output.append(piece, std::size_t(length));
    }
    close(descriptor);
    return output;
}

// The bench runs in a child process, so that whatever ends it, its output and its end are seen here.
int benchWithSummary(int argumentCount, char** arguments) {
    int ends[2];
    if (pipe(ends) != 0) {
        std::perror("bench");
        return 1;
    }
    const pid_t child = fork();
    if (child < 0) {
        std::perror("bench");
        return 1;
    }
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);  // a framework that gives up kills only the process it started
        dup2(ends[1], STDOUT_FILENO);
        close(ends[0]);
        close(ends[1]);
        startUp();
        runBench(argumentCount, arguments);
        return 0;
    }
    close(ends[1]);
    const BenchResult result = readRows(passOn(ends[0]));
    int status = 0;
    if (waitpid(child, &status, 0) != child || !WIFEXITED(status)) {
        std::fputs("The bench did not end by itself.\n", stderr);
        return 1;
    }
    if (WEXITSTATUS(status) != 0) return WEXITSTATUS(status);
    constexpr double LeastSeconds = 0.01;  // what the rows can show
    const double seconds = result.seconds > LeastSeconds ? result.seconds : LeastSeconds;
    const std::uint64_t speed = std::uint64_t(double(result.allNodes) / seconds);
    std::printf("%" PRIu64 " nodes %" PRIu64 " nps\n", result.nodes, speed);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc >= 2 && std::strcmp(argv[1], "bench") == 0) return benchWithSummary(argc - 2, argv + 2);
    startUp();
    mainLoop();
}
