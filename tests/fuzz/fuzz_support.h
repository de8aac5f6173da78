// What the fuzzers share: the end of the process made bearable, checks that keep an input, and a folder of
// files.
#pragma once

#include "board/end_process.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

// Thrown where the engine would have ended the process.
struct ProcessEnded {
    int status;
};
inline void takeOverProcessEnd() {
    endProcessHook = [](int status) { throw ProcessEnded{status}; };
}

// Crashes, so that the fuzzer keeps the input, unless a property holds.
inline void require(bool holds, const char* property) {
    if (holds) return;
    std::fprintf(stderr, "fuzzer: does not hold: %s\n", property);
    std::abort();
}

// A folder of one run of a fuzzer. It stays behind after a crash.
class FuzzFolder {
   public:
    FuzzFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "tarvok-fuzz-XXXXXX").string();
        if (!mkdtemp(name.data())) std::abort();
        folder = name;
    }
    ~FuzzFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    FuzzFolder(const FuzzFolder&) = delete;
    FuzzFolder& operator=(const FuzzFolder&) = delete;

    std::string path() const { return folder.string(); }
    std::string file(const std::string& name) const { return (folder / name).string(); }
    void write(const std::string& name, const std::string& bytes) const {
        std::ofstream(file(name), std::ios::binary).write(bytes.data(), std::streamsize(bytes.size()));
    }

   private:
    std::filesystem::path folder;
};

// libFuzzer finds these by name.
extern "C" int LLVMFuzzerInitialize(int* argumentCount, char*** arguments);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
