#include "shell/main_loop.h"

#include "base/end_process.h"
#include "base/relaxed.h"
#include "base/start_thread.h"
#include "search/limits.h"
#include "search/thread_pool.h"
#include "shell/commands.h"
#include "shell/log.h"

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <list>
#include <mutex>
#include <optional>
#include <poll.h>
#include <unistd.h>

namespace {

// What the two threads share. It outlives the process's end, where the input thread may still use it.
struct InputState {
    std::list<std::string> inputQueue;  // oldest first; `searchControl.linesWaiting` is its length
    std::mutex inputQueueMutex;

    bool inputSignalled = false;
    std::mutex inputMutex;
    std::condition_variable inputCondition;
};
InputState& input = *new InputState;

std::optional<pthread_t> inputThread;
int stopPipe[2] = {-1, -1};  // written to end the input thread

// Reads standard input line by line, and can be told to stop while it waits.
class LineReader {
   public:
    // The next line without its line feed. False at the end of input, on an error, or when asked to stop. A
    // last line without a line feed counts.
    bool readLine(std::string& line) {
        while (true) {
            const std::size_t end = pending.find('\n', scanned);
            if (end != std::string::npos) {
                line = pending.substr(0, end);
                pending.erase(0, end + 1);
                scanned = 0;
                return true;
            }
            scanned = pending.size();
            if (readMore()) continue;
            line.swap(pending);
            pending.clear();
            scanned = 0;
            return !stopped && !line.empty();
        }
    }

   private:
    bool readMore() {
        pollfd sources[2] = {{STDIN_FILENO, POLLIN, 0}, {stopPipe[0], POLLIN, 0}};
        while (poll(sources, 2, -1) < 0)
            if (errno != EINTR) return false;
        if (sources[1].revents) {
            stopped = true;
            return false;
        }
        char buffer[4096];
        ssize_t length;
        do {
            length = ::read(STDIN_FILENO, buffer, sizeof buffer);
        } while (length < 0 && errno == EINTR);
        if (length <= 0) return false;
        pending.append(buffer, std::size_t(length));
        return true;
    }

    std::string pending;
    std::size_t scanned = 0;  // of `pending`, known to hold no line feed
    bool stopped = false;
};

void* inputThreadMain(void*) {
    LineReader reader;
    std::string line;
    while (reader.readLine(line)) {
        if (line.empty()) continue;
        pushInputLine(line);
        // Intended: any line that begins with these four letters ends the input.
        if (line.compare(0, 4, "quit") == 0) break;
        signalInput();
    }
    searchControl.quitRequested = true;
    signalInput();
    return nullptr;
}

void startInputThread() {
    if (::pipe(stopPipe) != 0) endForRefusal("make a pipe", errno);
    inputThread = startThread("start the input thread", SmallStackBytes, inputThreadMain, nullptr);
}

}  // namespace

void pushInputLine(const std::string& line) {
    {
        const std::lock_guard lock(input.inputQueueMutex);
        input.inputQueue.push_back(line);
        searchControl.linesWaiting.add(1);
    }
    logPrintf("uci inp: %s\n", line.c_str());
}

std::string popInputLine() {
    const std::lock_guard lock(input.inputQueueMutex);
    if (input.inputQueue.empty()) return {};
    std::string line = std::move(input.inputQueue.front());
    input.inputQueue.pop_front();
    searchControl.linesWaiting.add(-1);
    return line;
}

bool nextInputLineBegins(const char* text) {
    const std::lock_guard lock(input.inputQueueMutex);
    return !input.inputQueue.empty() && input.inputQueue.front().compare(0, std::strlen(text), text) == 0;
}

bool isInputWaiting() { return searchControl.linesWaiting > 0; }

void signalInput() {
    {
        const std::lock_guard lock(input.inputMutex);
        input.inputSignalled = true;
    }
    input.inputCondition.notify_one();
    if (searchControl.quitRequested) threadPool.stopAllThreads();
}

void waitForInput() {
    constexpr std::chrono::milliseconds LongestWait(5);
    std::unique_lock lock(input.inputMutex);
    input.inputCondition.wait_for(lock, LongestWait, [] { return input.inputSignalled; });
    input.inputSignalled = false;
}

static void stopReading() {
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = ::write(stopPipe[1], &byte, 1);
}

void stopInputThread() {
    if (!inputThread) return;
    stopReading();
    pthread_join(*inputThread, nullptr);
    inputThread.reset();
}

void endInput() {
    if (searchControl.quitRequested) return;
    searchControl.quitRequested = true;
    if (inputThread) stopReading();
    signalInput();
}

static void waitForCommand() {
    std::unique_lock lock(input.inputMutex);
    input.inputCondition.wait(
        lock, [] { return input.inputSignalled || isInputWaiting() || searchControl.quitRequested; });
    input.inputSignalled = false;
}

void mainLoop() {
    if (!searchControl.quitRequested) startInputThread();
    while (true) {
        if (!isInputWaiting()) waitForCommand();
        processCommand();
        if (searchControl.quitRequested) threadPool.stopAllThreads();
    }
}
