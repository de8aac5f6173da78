// The engine as a process of its own: lines in, lines out, and its end. Every wait has a deadline, after
// which the test fails with what the engine has said so far.
#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

class UciProcess {
   public:
    static constexpr double Patience = 30;  // seconds; sanitized builds are slow

    // Starts the binary with these arguments, in the test's own directory.
    explicit UciProcess(const std::vector<std::string>& arguments = {});
    ~UciProcess();  // kills what still runs
    UciProcess(const UciProcess&) = delete;
    UciProcess& operator=(const UciProcess&) = delete;

    // Writes raw bytes, or a line.
    void write(const std::string& bytes);
    void send(const std::string& line) { write(line + "\n"); }
    void closeInput();

    // Reads on until a whole line matches the pattern, and returns it; fails the test at the deadline or at
    // the end of the output. The lines on the way are kept in `passed`.
    std::string expect(const std::string& pattern, double seconds = Patience);
    // Reads all that comes until `isready` is answered, and returns it.
    std::vector<std::string> sync();
    // All lines until the end of the output.
    std::vector<std::string> rest(double seconds = Patience);
    // Whether a line matches within the time; nothing is failed.
    bool saysWithin(const std::string& pattern, double seconds);

    // Waits for the end and returns the exit status, or minus the signal.
    int exitStatus(double seconds = Patience);
    // All that it has written to standard error.
    std::string standardError();

    std::vector<std::string> passed;
    pid_t pid() const { return child; }

   private:
    bool readLine(std::string& line, double deadline);

    pid_t child = -1;
    int input = -1, output = -1, errors = -1;
    std::string pending, errorText;
    int status = 0;
    bool ended = false;
};

// Seconds of a clock that never goes back.
double steadySeconds();
