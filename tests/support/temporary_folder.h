// A folder of its own for the files of a test or a fuzzer. It goes away with them, also when the test fails,
// and stays behind after a crash.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <ios>
#include <string>
#include <string_view>
#include <system_error>

class TemporaryFolder {
   public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "tarvok-test-XXXXXX").string();
        if (!mkdtemp(name.data())) std::abort();
        folder = name;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string path() const { return folder.string(); }
    std::filesystem::path file(const std::string& name) const { return folder / name; }
    void write(const std::string& name, std::string_view bytes) const {
        std::ofstream(file(name), std::ios::binary).write(bytes.data(), std::streamsize(bytes.size()));
    }

   private:
    std::filesystem::path folder;
};
