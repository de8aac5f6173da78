// The engine as a process of its own: lines in, lines out, and its end. Every wait has a deadline, after
// which the test fails with what the engine has said so far.
#pragma once

#include <gtest/gtest.h>
#include <string>
#include <sys/resource.h>
#include <sys/types.h>
#include <vector>

using Lines = std::vector<std::string>;

// How many times as slow as a plain build the engine may be.
#ifdef TARVOK_TIMED
inline constexpr int Slowness = 1;
#else
inline constexpr int Slowness = 10;  // sanitizers cost time and memory
#endif

class UciProcess {
   public:
    // Seconds that a wait may last. It is to end hangs, and no bet on the machine's speed.
    static constexpr double Patience = 100 * Slowness;

    // Starts the binary with these arguments, in the test's own directory. Commands of the shell may come
    // ahead of it, to set limits or close descriptors for it; "$@" is then its command line.
    explicit UciProcess(const Lines& arguments = {}, const std::string& shellCommands = "");
    ~UciProcess();  // kills what still runs
    UciProcess(const UciProcess&) = delete;
    UciProcess& operator=(const UciProcess&) = delete;

    // Writes raw bytes, or lines.
    void write(const std::string& bytes);
    template <class... Texts>
    void send(const Texts&... lines) {
        (write(std::string(lines) + '\n'), ...);
    }
    void closeInput();
    void closeOutput();  // nobody reads it any more

    // Reads on until a whole line matches the pattern, and returns it; the lines ahead of it are kept in
    // `passed`. At the deadline or the end of the output the test fails, and the engine is killed, so that no
    // later wait lasts.
    std::string expect(const std::string& pattern);
    std::string ask(const std::string& line, const std::string& pattern) {
        send(line);
        return expect(pattern);
    }
    // All lines until `isready` is answered.
    Lines sync() {
        ask("isready", "readyok");
        return passed;
    }
    // All lines until the end of the output.
    Lines rest() {
        saysWithin("\n", Patience);  // which no line has
        return passed;
    }
    // Whether a line matches within the time; nothing is failed.
    bool saysWithin(const std::string& pattern, double seconds);

    // Waits for the end and returns the exit status, or minus the signal.
    int exitStatus();
    // All that it has written to standard error.
    std::string standardError() const;

    Lines passed;
    Lines matching(const std::string& pattern) const;  // of those
    rusage usage = {};                                 // once it has ended

   private:
    bool readLine(std::string& line, double deadline);

    pid_t child = -1;
    int input = -1, output = -1, errors = -1;
    std::string pending;
    int status = 0;
    bool ended = false;
};

// Whether the whole text matches; if not, it is told.
testing::AssertionResult matches(const std::string& text, const std::string& pattern);

// Each line followed by a bar.
std::string joined(const Lines& lines);

// The number behind a word; a failure and -1 if there is none.
long numberAfter(const std::string& word, const std::string& line);

// Seconds of a clock that never goes back.
double steadySeconds();
