// Folders of table files for tests: the real ones beside the repository, and small ones made for a test.
#pragma once

#include "endgame/tb_files.h"
#include "support/shared_data.h"
#include "support/temporary_folder.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <vector>

// The folder of real tables. Only behind REQUIRE_SHARED_DATA().
inline std::filesystem::path realTables() { return *sharedData() / "syzygy"; }

// What `call` writes to standard output, and what to standard error.
template <class Call>
std::string outputOf(Call call) {
    testing::internal::CaptureStdout();
    call();
    return testing::internal::GetCapturedStdout();
}
template <class Call>
std::string errorsOf(Call call) {
    testing::internal::CaptureStderr();
    call();
    return testing::internal::GetCapturedStderr();
}

// Registers the tables of a path without its line in the test's output; returns the line.
inline std::string initTables(const std::string& path) {
    return outputOf([&] { tbInit(path.c_str()); });
}

// A folder whose tables are given up before it goes away.
class TableFolder : public TemporaryFolder {
   public:
    TableFolder() = default;
    ~TableFolder() { tbInit(""); }

    void write(const std::string& name, const std::vector<char>& bytes = {}) const {
        TemporaryFolder::write(name, {bytes.data(), bytes.size()});
    }
    void copyReal(const std::string& name) const {
        std::filesystem::copy_file(realTables() / name, file(name),
                                   std::filesystem::copy_options::overwrite_existing);
    }
};

inline std::vector<char> readBytes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

struct ListedResult {
    std::string fen;
    int wdl;
    int dtz;
};

// The positions that an independent prober judged.
inline std::vector<ListedResult> listedResults() {
    std::ifstream file(*sharedData() / "tb_positions.epd");
    std::vector<ListedResult> rows;
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line[0] == '#') continue;
        ListedResult row;
        row.fen = line.substr(0, line.find(';'));
        if (std::sscanf(line.c_str() + row.fen.size(), "; wdl %d; dtz %d", &row.wdl, &row.dtz) != 2)
            ADD_FAILURE() << line;
        rows.push_back(row);
    }
    return rows;
}

inline std::string tableNameOf(const Position& pos) {
    char name[TbNameSize];
    tbTableName(pos, name, false);
    return name;
}

// A well-formed win/draw/loss table that holds the same result for every position.
inline std::vector<char> singleValueTable(const std::string& name, int wdl) {
    std::vector<int> men;  // board codes, pawns first, kings last; like men together
    const std::size_t middle = name.find('v');
    const std::string letters = " PNBRQK";
    bool pawns[2] = {};
    for (int type = 1; type <= 6; ++type)
        for (std::size_t i = 0; i < name.size(); ++i)
            if (name[i] == letters[std::size_t(type)]) {
                men.push_back(type + (i > middle ? 8 : 0));
                if (type == 1) pawns[i > middle] = true;
            }
    const bool hasPawns = pawns[0] || pawns[1];
    std::string bytes = "\x71\xe8\x23\x5d";
    bytes += char(1 | (hasPawns ? 2 : 0) | int(men.size()) << 4);
    for (int file = 0; file < (hasPawns ? 4 : 1); ++file) {
        bytes += '\0';
        if (pawns[0] && pawns[1]) bytes += '\x11';
        for (const int code : men) bytes += char(code | code << 4);
    }
    if (bytes.size() % 2) bytes += '\0';
    for (int slice = 0; slice < (hasPawns ? 8 : 2); ++slice) bytes += {'\x80', char(wdl + 2)};
    bytes.resize((bytes.size() + 63) / 64 * 64 + 16);
    return {bytes.begin(), bytes.end()};
}
