// What tests and fuzzers of endgame tables share: folders of table files, the real ones beside the repository
// and small ones made for a test, tables in memory, positions of a table's men, and what probes tell.
#pragma once

#include "board/fen.h"
#include "board/legality.h"
#include "endgame/tb_entry.h"
#include "endgame/tb_probe.h"
#include "endgame/tb_setup.h"
#include "support/board_environment.h"
#include "support/shared_data.h"
#include "support/temporary_folder.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <iterator>
#include <memory>
#include <optional>
#include <random>

// ---- Files ----

// Real tables: all of three men and the smallest of four, which the repository has, and the folder of many.
inline std::filesystem::path smallTables() { return testData() / "syzygy"; }
inline std::filesystem::path manyTables() { return sharedData() / "syzygy"; }

// What `call` writes to standard error.
template <class Call>
std::string errorsOf(Call call) {
    testing::internal::CaptureStderr();
    call();
    return testing::internal::GetCapturedStderr();
}

// Registers the tables of a path without its line in the test's output; returns the line.
inline std::string initTables(const std::string& path) {
    testing::internal::CaptureStdout();
    tbInit(path.c_str());
    return testing::internal::GetCapturedStdout();
}

// With the small tables, and where they are at hand with many.
struct RealTables : testing::TestWithParam<const char*> {
    bool many() const { return *GetParam() == 'M'; }
    void SetUp() override {
        if (many()) OPTIONAL_WITH_SHARED_DATA();
        initTables(many() ? manyTables() : smallTables());
    }
    void TearDown() override { tbInit(""); }
};
#define FOR_SMALL_AND_MANY_TABLES(suite)                                                \
    INSTANTIATE_TEST_SUITE_P(With, suite, testing::Values("SmallTables", "ManyTables"), \
                             [](const auto& row) { return std::string(row.param); })

// A folder whose tables are given up before it goes away.
class TableFolder : public TemporaryFolder {
   public:
    TableFolder() = default;
    ~TableFolder() { tbInit(""); }

    void write(const std::string& name, const std::vector<char>& bytes = {}) const {
        TemporaryFolder::write(name, {bytes.data(), bytes.size()});
    }
    void copyReal(const std::string& name) const {
        std::filesystem::copy_file(smallTables() / name, file(name),
                                   std::filesystem::copy_options::overwrite_existing);
    }
};

inline std::string fileName(const std::string& table, TbKind kind) {
    return table + (kind == TbWdl ? ".rtbw" : ".rtbz");
}

inline std::vector<char> readBytes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// A well-formed win/draw/loss table that holds the same result for every position.
inline std::vector<char> singleValueTable(const std::string& name, int wdl) {
    const TbMenCounts men = tbCountMen(name.c_str());
    std::string codes;  // pawns first, kings last
    for (int type = Pawn; type <= King; ++type)
        for (const int code : {type, type + 8}) codes.append(men.of[code], char(code | code << 4));
    const int sidesWithPawns = (men.of[Pawn] > 0) + (men.of[Pawn + 8] > 0);
    std::string bytes = "\x71\xe8\x23\x5d";
    bytes += char(1 | (sidesWithPawns ? 2 : 0) | int(codes.size()) << 4);
    for (int file = 0; file < (sidesWithPawns ? LeadingFiles : 1); ++file) {
        bytes += '\0';
        if (sidesWithPawns == 2) bytes += '\x11';
        bytes += codes;
    }
    if (bytes.size() % 2) bytes += '\0';
    for (int slice = 0; slice < (sidesWithPawns ? 8 : 2); ++slice) bytes += {'\x80', char(wdl + 2)};
    bytes.resize((bytes.size() + 63) / 64 * 64 + 16);
    return {bytes.begin(), bytes.end()};
}

// A table read from memory of exactly its size, where a sanitizer sees every read beyond the end.
class TableInMemory {
   public:
    TableInMemory(const std::string& name, TbKind kind, const std::vector<char>& file)
        : bytes(new std::uint8_t[file.size()]), tableKind(kind) {
        std::copy(file.begin(), file.end(), bytes.get());
        const TbMenCounts men = tbCountMen(name.c_str());
        const std::uint8_t white = men.of[Pawn], black = men.of[Pawn + 8];
        entry.hasPawns = white || black;
        entry.symmetric = std::equal(men.of, men.of + 8, men.of + 8);
        entry.menCount = std::uint8_t(name.size() - 1);
        entry.kkEncoding = !entry.hasPawns && std::count(std::begin(men.of), std::end(men.of), 1) == 2;
        entry.pawnsLeading = white && (!black || white <= black) ? white : black;
        entry.pawnsOther = std::uint8_t(white + black - entry.pawnsLeading);
        entry.mappedData[kind] = bytes.get();
        entry.mappedSize[kind] = file.size();
        readable = tbReadTable(entry, name.c_str(), kind);
    }
    ~TableInMemory() {
        if (readable) tbFreeTable(entry, tableKind);
    }
    TableInMemory(const TableInMemory&) = delete;
    TableInMemory& operator=(const TableInMemory&) = delete;

    bool isReadable() const { return readable; }
    // Looks up the ends of every slice and random numbers: each has a value in range or none, and there is
    // none beyond the end.
    bool holdsValuesInRange(std::mt19937& random, int reads) {
        const int highest = tableKind == TbWdl ? 4 : 4095;
        bool holds = true;
        for (int file = 0; file < (entry.hasPawns ? LeadingFiles : 1); ++file)
            for (int side = 0; side < (tableKind == TbWdl && !entry.symmetric ? 2 : 1); ++side) {
                const TbFileSlices& slices = tbSlicesOf(entry, file);
                const TbSlice& slice = tableKind == TbWdl ? slices.wdl[side] : slices.dtz;
                for (int i = 0; i < reads; ++i) {
                    const std::uint64_t any = (std::uint64_t(random()) << 32 | random()) % slice.size;
                    const int value = tbRawValue(slice, i == 0 ? 0 : i == 1 ? slice.size - 1 : any);
                    holds &= value >= -1 && value <= highest;
                }
                holds &= slice.flags & TbSingleValue || tbRawValue(slice, slice.size) == -1;
            }
        return holds;
    }

   private:
    std::unique_ptr<std::uint8_t[]> bytes;
    TbPawnEntry entry{};
    TbKind tableKind;
    bool readable;
};

// ---- Positions and their results ----

// A table's men on random squares, of either colouring and with either side to move. The en-passant field
// counts only where a pawn can be taken.
inline std::string randomFen(const std::string& table, std::mt19937& random) {
    std::string squares(64, '1');
    bool black = random() % 2;
    for (const char letter : table) {
        if (letter == 'v') {
            black = !black;
            continue;
        }
        std::size_t square;
        do square = random() % 64;
        while (squares[square] != '1');
        squares[square] = char(black ? std::tolower(letter) : letter);
    }
    const char* const turn = random() % 2 ? " b - " : " w - ";
    return boardText(squares) + turn + char('a' + random() % 8) + (turn[1] == 'b' ? '3' : '6');
}
inline Position randomPosition(const std::string& table, std::mt19937& random) {
    for (;;)
        if (const Position pos = positionOf(randomFen(table, random)); isPlayable(pos)) return pos;
}

// A probe's value, or nothing where it fails.
inline std::optional<int> wdlOf(const Position& pos) {
    const WdlProbe probe = tbProbeWdl(pos);
    return probe.state == ProbeState::Failed ? std::nullopt : std::optional<int>(probe.value);
}
inline std::optional<int> dtzOf(const Position& pos) { return tbProbeDtz(pos); }

struct ListedResult {
    std::string fen;
    int wdl;
    int dtz;
};

// The positions that an independent prober judged, all or those of the small tables. With four men these lack
// the tables of promotions, so that pawns must be farther from it.
inline std::vector<ListedResult> listedResults(bool all) {
    constexpr Bitboard MiddleRanks = 0x000000ffff000000;
    const auto isSmall = [](const Position& pos) {
        const Bitboard pawns = pos.pieces[White][Pawn] | pos.pieces[Black][Pawn];
        if (pos.pieceCount > 3 && pawns & ~MiddleRanks) return false;
        char name[2][TbNameSize];
        for (const bool mirrored : {false, true}) tbTableName(pos, name[mirrored], mirrored);
        return exists(smallTables() / fileName(name[0], TbWdl)) ||
               exists(smallTables() / fileName(name[1], TbWdl));
    };
    std::ifstream file(testData() / "tb_positions.epd");
    std::vector<ListedResult> rows;
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line[0] == '#') continue;
        ListedResult row;
        row.fen = line.substr(0, line.find(';'));
        if (std::sscanf(line.c_str() + row.fen.size(), "; wdl %d; dtz %d", &row.wdl, &row.dtz) != 2)
            ADD_FAILURE() << line;
        if (all || isSmall(positionOf(row.fen))) rows.push_back(row);
    }
    EXPECT_GT(rows.size(), all ? 700u : 100u) << "the list has shrunk";
    return rows;
}

// What a move comes to for the side that makes it, by the probes of the child: a result, and the plies to the
// zeroing move with the result's sign.
struct MoveResult {
    Move move;
    int wdl, distance;
};
inline std::vector<MoveResult> resultsOfMoves(const Position& pos) {
    std::vector<MoveResult> results;
    Position child;
    for (const Move move : legalMoves(pos)) {
        makeChild(pos, child, move);
        const std::optional<int> wdl = wdlOf(child), dtz = dtzOf(child);
        EXPECT_TRUE(wdl && dtz) << writeFen(child);
        const int result = -wdl.value_or(0);
        const bool mates = child.inCheck && legalMoves(child).empty();
        const int zeroing = std::abs(result) == 2 ? 1 : 101;
        const int plies = mates || child.halfmoveClock == 0 ? zeroing : 1 + std::abs(dtz.value_or(0));
        results.push_back({move, result, result > 0 ? plies : result < 0 ? -plies : 0});
    }
    return results;
}
