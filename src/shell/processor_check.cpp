// Ends the process, with a word on standard error, where the processor lacks instructions that the engine is
// compiled to. Only this file is compiled without them, and outside of the whole-program optimisation, which
// could bring code of other files into it. It runs ahead of every static initialiser, when all else may end
// in an illegal instruction; so it calls nothing but the system.
#include <cpuid.h>
#include <cstddef>
#include <unistd.h>

namespace {

template <std::size_t size>
[[noreturn]] void refuse(const char (&text)[size]) {
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text, size - 1);
    _exit(1);
}

void checkProcessor() {
    constexpr unsigned Basics = 1, Extensions = 7;  // leaves of the CPUID instruction
    unsigned a, b, c, d;
    const bool hasPopcnt = __get_cpuid(Basics, &a, &b, &c, &d) && (c & bit_POPCNT);
    const bool hasBmi2 = __get_cpuid_count(Extensions, 0, &a, &b, &c, &d) && (b & bit_BMI2);
    if (!hasBmi2 && !hasPopcnt) refuse("Tarvok needs BMI2 and POPCNT, and this processor has neither.\n");
    if (!hasBmi2) refuse("Tarvok needs BMI2, which this processor does not have.\n");
    if (!hasPopcnt) refuse("Tarvok needs POPCNT, which this processor does not have.\n");
}

// What the start of a process calls first of all, by glibc. A C library without such a list passes over it.
[[gnu::section(".preinit_array"), gnu::used]] void (*beforeInitialisers)() = checkProcessor;

}  // namespace
