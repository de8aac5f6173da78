#include "e2e/uci_process.h"

#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <regex>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

// The build says where the engine is; the environment may name another one.
static std::string binaryPath() {
    if (const char* path = std::getenv("TARVOK_BINARY")) return path;
    return TARVOK_BINARY;
}

double steadySeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

UciProcess::UciProcess(const std::vector<std::string>& arguments) {
    signal(SIGPIPE, SIG_IGN);
    int in[2], out[2], err[2];
    if (pipe2(in, O_CLOEXEC) || pipe2(out, O_CLOEXEC) || pipe2(err, O_CLOEXEC)) std::abort();
    const std::string path = binaryPath();
    child = fork();
    if (child == 0) {
        dup2(in[0], STDIN_FILENO);
        dup2(out[1], STDOUT_FILENO);
        dup2(err[1], STDERR_FILENO);
        std::vector<char*> words{const_cast<char*>(path.c_str())};
        for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
        words.push_back(nullptr);
        execv(path.c_str(), words.data());
        _exit(127);
    }
    close(in[0]);
    close(out[1]);
    close(err[1]);
    input = in[1];
    output = out[0];
    errors = err[0];
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
    close(output);
    close(errors);
}

void UciProcess::write(const std::string& bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count = ::write(input, bytes.data() + done, bytes.size() - done);
        if (count <= 0) return;  // the engine is gone; what it said tells why
        done += std::size_t(count);
    }
}

void UciProcess::closeInput() {
    if (input >= 0) close(input);
    input = -1;
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

std::string UciProcess::expect(const std::string& pattern, double seconds) {
    const std::regex wanted(pattern);
    const double deadline = steadySeconds() + seconds;
    passed.clear();
    std::string line;
    while (readLine(line, deadline)) {
        if (std::regex_match(line, wanted)) return line;
        passed.push_back(line);
    }
    std::string said;
    for (const std::string& text : passed) said += text + '\n';
    ADD_FAILURE() << "no line matches \"" << pattern << "\" in:\n" << said << pending;
    return {};
}

bool UciProcess::saysWithin(const std::string& pattern, double seconds) {
    const std::regex wanted(pattern);
    const double deadline = steadySeconds() + seconds;
    std::string line;
    while (readLine(line, deadline))
        if (std::regex_match(line, wanted)) return true;
    return false;
}

std::vector<std::string> UciProcess::sync() {
    send("isready");
    expect("readyok");
    return passed;
}

std::vector<std::string> UciProcess::rest(double seconds) {
    const double deadline = steadySeconds() + seconds;
    std::vector<std::string> lines;
    std::string line;
    while (readLine(line, deadline)) lines.push_back(line);
    if (!pending.empty()) lines.push_back(pending);
    return lines;
}

int UciProcess::exitStatus(double seconds) {
    const double deadline = steadySeconds() + seconds;
    while (!ended && steadySeconds() < deadline) {
        if (waitpid(child, &status, WNOHANG) == child)
            ended = true;
        else
            usleep(2000);
    }
    if (!ended) {
        ADD_FAILURE() << "the engine still runs after " << seconds << " seconds";
        return -1000;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

std::string UciProcess::standardError() {
    char buffer[4096];
    pollfd source{errors, POLLIN, 0};
    while (poll(&source, 1, ended ? 0 : 100) > 0) {
        const ssize_t count = read(errors, buffer, sizeof buffer);
        if (count <= 0) break;
        errorText.append(buffer, std::size_t(count));
    }
    return errorText;
}
