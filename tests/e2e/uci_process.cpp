#include "e2e/uci_process.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <regex>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

double steadySeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

UciProcess::UciProcess(const Lines& arguments, const std::string& shellCommands) {
    signal(SIGPIPE, SIG_IGN);
    int in[2], out[2];
    errors = memfd_create("errors", MFD_CLOEXEC);
    if (pipe2(in, O_CLOEXEC) || pipe2(out, O_CLOEXEC) || errors < 0) std::abort();
    // As some parents have it: a write into a full pipe returns at once.
    fcntl(out[1], F_SETFL, O_NONBLOCK);
    // The build says where the engine is; the environment may name another one.
    const char* const named = std::getenv("TARVOK_BINARY");
    Lines line = {named ? named : TARVOK_BINARY};
    line.insert(line.end(), arguments.begin(), arguments.end());
    const Lines shell = {"/bin/sh", "-c", shellCommands + "\nexec \"$@\"", "sh"};
    if (!shellCommands.empty()) line.insert(line.begin(), shell.begin(), shell.end());
    child = fork();
    if (child == 0) {
        dup2(in[0], STDIN_FILENO);
        dup2(out[1], STDOUT_FILENO);
        dup2(errors, STDERR_FILENO);
        std::vector<char*> words;
        for (const std::string& word : line) words.push_back(const_cast<char*>(word.c_str()));
        words.push_back(nullptr);
        execv(words[0], words.data());
        _exit(127);
    }
    close(in[0]);
    close(out[1]);
    input = in[1];
    output = out[0];
}

UciProcess::~UciProcess() {
    if (!ended) {
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        ended = true;
    }
    closeInput();
    // A sanitized engine tells its findings here, and some tests never ask how it ended.
    EXPECT_EQ(standardError().find("Sanitizer"), std::string::npos) << "a sanitizer has found something";
    closeOutput();
    close(errors);
}

// Blocks until all is written, unless the engine is gone; then what it said tells why.
void UciProcess::write(const std::string& bytes) {
    [[maybe_unused]] const ssize_t count = ::write(input, bytes.data(), bytes.size());
}

void UciProcess::closeInput() {
    if (input >= 0) close(input);
    input = -1;
}

void UciProcess::closeOutput() {
    if (output >= 0) close(output);
    output = -1;
}

bool UciProcess::readLine(std::string& line, double deadline) {
    while (true) {
        const std::size_t end = pending.find('\n');
        if (end != std::string::npos) {
            line = pending.substr(0, end);
            pending.erase(0, end + 1);
            return true;
        }
        const double left = deadline - steadySeconds();
        pollfd source{output, POLLIN, 0};
        if (left <= 0 || poll(&source, 1, int(left * 1000) + 1) <= 0) return false;
        char buffer[65536];
        const ssize_t count = read(output, buffer, sizeof buffer);
        if (count <= 0) return false;
        pending.append(buffer, std::size_t(count));
    }
}

bool UciProcess::saysWithin(const std::string& pattern, double seconds) {
    const std::regex wanted(pattern);
    const double deadline = steadySeconds() + seconds;
    passed.clear();
    for (std::string line; readLine(line, deadline);) {
        passed.push_back(line);
        if (std::regex_match(line, wanted)) return true;
    }
    return false;
}

std::string UciProcess::expect(const std::string& pattern) {
    if (!saysWithin(pattern, Patience)) {
        ADD_FAILURE() << "no line matches \"" << pattern << "\" in: " << joined(passed) << pending;
        if (!ended) kill(child, SIGKILL);
        return {};
    }
    const std::string line = passed.back();
    passed.pop_back();
    return line;
}

Lines UciProcess::matching(const std::string& pattern) const {
    const std::regex wanted(pattern);
    Lines found;
    for (const std::string& line : passed)
        if (std::regex_match(line, wanted)) found.push_back(line);
    return found;
}

int UciProcess::exitStatus() {
    const double deadline = steadySeconds() + Patience;
    while (!ended && steadySeconds() < deadline) {
        ended = wait4(child, &status, WNOHANG, &usage) == child;
        if (!ended) usleep(2000);
    }
    if (!ended) {
        ADD_FAILURE() << "the engine still runs after " << Patience << " seconds";
        return -1000;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

std::string UciProcess::standardError() const {
    char text[65536];
    const ssize_t count = pread(errors, text, sizeof text, 0);
    return {text, std::size_t(std::max<ssize_t>(count, 0))};
}

// ---- Lines ----

testing::AssertionResult matches(const std::string& text, const std::string& pattern) {
    if (std::regex_match(text, std::regex(pattern))) return testing::AssertionSuccess();
    return testing::AssertionFailure() << '"' << text << "\" doesn't match \"" << pattern << '"';
}

std::string joined(const Lines& lines) {
    std::string text;
    for (const std::string& line : lines) text += line + '|';
    return text;
}

long numberAfter(const std::string& word, const std::string& line) {
    const std::size_t place = line.find(' ' + word + ' ');
    if (place != std::string::npos) return std::strtol(line.c_str() + place + word.size() + 2, nullptr, 10);
    ADD_FAILURE() << "no " << word << " in: " << line;
    return -1;
}
