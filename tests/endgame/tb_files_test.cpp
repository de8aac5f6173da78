// Which tables are found where, and what becomes of files that are not what their name says.
#include "endgame/tb_files.h"

#include "endgame/table_files.h"
#include "endgame/tb_entry.h"
#include "endgame/tb_probe.h"
#include "endgame/tb_setup.h"
#include "support/board_environment.h"

#include <algorithm>
#include <atomic>
#include <random>
#include <set>
#include <sys/stat.h>
#include <thread>

namespace fs = std::filesystem;

static int probeSuccess(const std::string& fen) {
    Position pos = positionOf(fen);
    int success;
    tbProbeWdl(pos, &success);
    return success;
}
static int distanceSuccess(const std::string& fen) {
    Position pos = positionOf(fen);
    int success;
    tbProbeDtz(pos, &success);
    return success;
}
static const char* const QueenWins = "8/8/8/2q5/5K2/8/8/2k5 b - -";
static const char* const QueenTurned = "8/8/8/2Q5/5k2/8/8/2K5 w - -";
static const char* const RookWins = "8/8/8/2r5/5K2/8/8/2k5 b - -";

// All sides of `count` men besides the king, each in the order that names have.
static std::set<std::string> sidesOf(int count) {
    std::set<std::string> sides{"K"};
    for (int i = 0; i < count; ++i) {
        std::set<std::string> longer;
        for (const std::string& side : sides)
            for (const char piece : std::string("QRBNP"))
                if (std::string("KQRBNP").find(piece) >= std::string("KQRBNP").find(side.back()))
                    longer.insert(side + piece);
        sides = longer;
    }
    return sides;
}

// Both names of every material, so that a table under a name it should not have would count twice.
static void writeAllNames(const TableFolder& folder, int men) {
    for (int first = 0; first <= men - 2; ++first)
        for (const std::string& white : sidesOf(first))
            for (const std::string& black : sidesOf(men - 2 - first))
                folder.write(std::string(white).append("v").append(black).append(".rtbw"));
}

TEST(TbRegistration, FindsEveryMaterialOnce) {
    const TableFolder folder;
    int total = 0;
    const int expected[] = {5, 30, 110, 365, 1001};
    for (int men = 3; men <= 7; ++men) {
        writeAllNames(folder, men);
        total += expected[men - 3];
        EXPECT_EQ(initTables(folder.path()), "info string Found " + std::to_string(total) +
                                                 " WDL and 0 DTZ tablebase files (up to " +
                                                 std::to_string(men) + "-man).\n");
    }
    // Found under the key of either colouring: a file without content is then read, and refused.
    for (const char* fen : {"k7/8/2QRB3/8/8/3p4/4p3/K7 w - -", "K7/8/2qrn3/8/8/3P4/4P3/k7 w - -",
                            "k7/8/2R5/8/8/3r4/8/K7 b - -"})
        EXPECT_EQ(errorsOf([fen] { EXPECT_EQ(probeSuccess(fen), 0); }), "Corrupted table.\n") << fen;
}

TEST(TbRegistration, ReadsSeveralDirectoriesAndCountsKinds) {
    const TableFolder first, second;
    first.write("KQvK.rtbw");
    first.write("KQvK.rtbm");
    second.write("KRvK.rtbw");
    second.write("KRvK.rtbz");
    second.write("KQvKR.rtbz");  // without its win/draw/loss file it doesn't count
    EXPECT_EQ(initTables(":" + first.path() + "::" + second.path() + ":"),
              "info string Found 2 WDL and 1 DTZ tablebase files (up to 3-man).\n");
    EXPECT_EQ(tbDtmCount, 1);
    EXPECT_EQ(tbMaxMenDtm, 3);

    EXPECT_EQ(initTables("<empty>"), "");
    EXPECT_EQ(tbWdlCount + tbDtmCount + tbDtzCount, 0);
    EXPECT_EQ(tbMaxMen, 3) << "kept when the path is emptied";
    EXPECT_EQ(errorsOf([] { EXPECT_EQ(probeSuccess(QueenWins), 0); }), "");

    const TableFolder distancesOnly;
    distancesOnly.write("KQvK.rtbz");
    EXPECT_EQ(initTables(distancesOnly.path()),
              "info string Found 0 WDL and 0 DTZ tablebase files (up to 0-man).\n");
    EXPECT_EQ(initTables("/nonexistent/tables"),
              "info string Found 0 WDL and 0 DTZ tablebase files (up to 0-man).\n");
}

TEST(TbRegistration, PassesOverWhatIsNoFile) {
    const TableFolder first, second;
    fs::create_directory(first.file("KQvK.rtbw"));
    fs::create_symlink("nowhere", first.file("KRvK.rtbw"));
    ASSERT_EQ(mkfifo(first.file("KBvK.rtbw").c_str(), 0600), 0);
    EXPECT_EQ(initTables(first.path()), "info string Found 0 WDL and 0 DTZ tablebase files (up to 0-man).\n");
    second.write("KQvK.rtbw", singleValueTable("KQvK", 2));
    initTables(first.path() + ":" + second.path());
    EXPECT_EQ(tbWdlCount, 1);
    EXPECT_EQ(probeSuccess(QueenWins), 1);

    const fs::path deep = second.file(std::string(120, 'a')) / std::string(120, 'b');
    fs::create_directories(deep);
    fs::copy_file(second.file("KQvK.rtbw"), deep / "KRvK.rtbw");
    initTables(deep.string() + ":" + second.path());
    EXPECT_EQ(tbWdlCount, 1) << "a path that doesn't fit is skipped, the next directory is read";
}

TEST(TbDamage, MessageOnceAndTableAbsent) {
    const TableFolder folder;
    std::vector<char> magic = singleValueTable("KQvK", 2);
    magic[0] = 0;
    const std::pair<const char*, std::vector<char>> damaged[] = {
        {"wrong magic", magic},
        {"empty", {}},
        {"one byte", {'\x71'}},
        {"other material", singleValueTable("KRvK", 2)},
        {"other kind of material", singleValueTable("KPvK", 2)},
        {"no result", singleValueTable("KQvK", 3)},
    };
    folder.write("KRvK.rtbw", singleValueTable("KRvK", 2));
    for (const auto& [what, bytes] : damaged) {
        SCOPED_TRACE(what);
        folder.write("KQvK.rtbw", bytes);
        initTables(folder.path());
        EXPECT_EQ(errorsOf([] { EXPECT_EQ(probeSuccess(QueenWins), 0); }), "Corrupted table.\n");
        EXPECT_EQ(errorsOf([] {
                      EXPECT_EQ(probeSuccess(QueenWins), 0);
                      EXPECT_EQ(probeSuccess(QueenTurned), 0);
                  }),
                  "");
        EXPECT_EQ(probeSuccess(RookWins), 1) << "other tables are still read";
    }
}

TEST(TbDamage, DistancesAbsentOrDamaged) {
    REQUIRE_SHARED_DATA();
    const TableFolder folder;
    folder.copyReal("KQvK.rtbw");
    initTables(folder.path());
    EXPECT_EQ(distanceSuccess(QueenWins), 0);
    EXPECT_EQ(probeSuccess(QueenWins), 1);

    folder.copyReal("KQvK.rtbz");
    initTables(folder.path());
    fs::remove(folder.file("KQvK.rtbz"));
    EXPECT_EQ(errorsOf([] { EXPECT_EQ(distanceSuccess(QueenWins), 0); }), "");
    EXPECT_EQ(probeSuccess(QueenWins), 1) << "only that probe fails";
    folder.copyReal("KQvK.rtbz");
    EXPECT_EQ(distanceSuccess(QueenWins), 1) << "and the file is looked for again";

    folder.write("KQvK.rtbz", std::vector<char>(80));
    initTables(folder.path());
    EXPECT_EQ(errorsOf([] { EXPECT_EQ(distanceSuccess(QueenWins), 0); }), "Corrupted table.\n");
    EXPECT_EQ(probeSuccess(QueenWins), 0) << "a damaged copy is not trusted at all";
}

// Positions of one table, of both sides, with what is known of them.
static std::vector<ListedResult> listedFor(const std::string& table) {
    std::vector<ListedResult> rows;
    for (const ListedResult& row : listedResults()) {
        const Position pos = positionOf(row.fen);
        char mirrored[TbNameSize];
        tbTableName(pos, mirrored, true);
        if (tableNameOf(pos) == table || mirrored == table) rows.push_back(row);
    }
    return rows;
}

// One table each of: no pawns, kings leading, symmetric, pawns of one side, of both, a mapped distance.
static const char* const SampleTables[] = {"KRvKN", "KBBvK", "KQvKQ", "KPPvK", "KPvKP", "KQvKP"};

TEST(TbDamage, NoCutFileIsRead) {
    REQUIRE_SHARED_DATA();
    std::mt19937 random(5);
    for (const std::string table : SampleTables)
        for (const std::string suffix : {".rtbw", ".rtbz"}) {
            const TableFolder folder;
            folder.copyReal(table + ".rtbw");
            folder.copyReal(table + ".rtbz");
            const fs::path file = folder.file(table + suffix);
            const std::uintmax_t size = fs::file_size(file);
            const std::string fen = listedFor(table)[0].fen;
            std::set<std::uintmax_t> lengths{0,   1,        4,         16,        79,        80,
                                             144, size - 1, size - 16, size - 64, size - 128};
            while (lengths.size() < 50)
                lengths.insert(random() % 2 ? random() % size : random() % size / 64 * 64 + 16);
            for (const std::uintmax_t length : lengths) {
                fs::remove(file);
                folder.copyReal(table + suffix);
                fs::resize_file(file, length);
                initTables(folder.path());
                Position pos = positionOf(fen);
                EXPECT_EQ(errorsOf([&] {
                              EXPECT_EQ(tbTableFor(pos, suffix == ".rtbw" ? TbWdl : TbDtz), nullptr);
                              EXPECT_EQ(tbTableFor(pos, TbWdl), nullptr);
                          }),
                          "Corrupted table.\n")
                    << table << suffix << " cut to " << length;
            }
        }
}

// Wrong bytes may give wrong results, but only results, and no read outside of the file.
TEST(TbDamage, AlteredFilesGiveResultsInRangeOrNone) {
    REQUIRE_SHARED_DATA();
    std::mt19937 random(9);
    for (const std::string table : SampleTables) {
        const std::vector<ListedResult> rows = listedFor(table);
        ASSERT_FALSE(rows.empty());
        const std::vector<char> wdl = readBytes(realTables() / (table + ".rtbw"));
        const std::vector<char> dtz = readBytes(realTables() / (table + ".rtbz"));
        const TableFolder folder;
        for (int round = 0; round < 60; ++round) {
            for (const bool distances : {false, true}) {
                std::vector<char> bytes = distances ? dtz : wdl;
                // Half of the rounds hit the head alone, where the structure is.
                const std::size_t reach = round % 2 ? bytes.size() : std::min<std::size_t>(bytes.size(), 400);
                for (auto i = 1 + random() % 20; i > 0; --i)
                    bytes[6 + random() % (reach - 6)] = char(random());
                folder.write(table + (distances ? ".rtbz" : ".rtbw"), bytes);
            }
            initTables(folder.path());
            testing::internal::CaptureStderr();
            for (const ListedResult& row : rows) {
                Position pos = positionOf(row.fen);
                int success;
                const int result = tbProbeWdl(pos, &success);
                EXPECT_TRUE(!success || (result >= -2 && result <= 2)) << row.fen;
                tbProbeDtz(pos, &success);
            }
            testing::internal::GetCapturedStderr();
        }
    }
}

// A table read from memory of exactly its size, where a sanitizer sees every read beyond the end.
class TableInMemory {
   public:
    TableInMemory(const std::string& table, TbKind kind, const std::vector<char>& file)
        : bytes(file.begin(), file.end()), tableKind(kind) {
        const TbMenCounts men = tbCountMen(table.c_str());
        const std::uint8_t white = men.of[Pawn], black = men.of[boardCode(Black, Pawn)];
        entry.hasPawns = white || black;
        entry.symmetric = table.substr(0, table.find('v')) == table.substr(table.find('v') + 1);
        entry.menCount = std::uint8_t(table.size() - 1);
        entry.kkEncoding = std::count(std::begin(men.of), std::end(men.of), 1) == 2;
        entry.pawnsLeading = white && (!black || white <= black) ? white : black;
        entry.pawnsOther = std::uint8_t(white + black - entry.pawnsLeading);
        entry.mappedData[kind] = bytes.data();
        entry.mappedSize[kind] = bytes.size();
        readable = tbReadTable(entry, table.c_str(), kind);
    }
    ~TableInMemory() {
        if (readable) tbFreeTable(entry, tableKind);
    }
    TableInMemory(const TableInMemory&) = delete;
    TableInMemory& operator=(const TableInMemory&) = delete;

    bool isReadable() const { return readable; }
    // Looks up random numbers and the ends of every slice; the highest value, or -1 if none could be told.
    int highestValue(std::mt19937& random) {
        int highest = -1;
        for (int file = 0; file < (entry.hasPawns ? LeadingFiles : 1); ++file)
            for (int side = 0; side < (tableKind == TbWdl && !entry.symmetric ? 2 : 1); ++side) {
                const TbFileSlices& slices = entry.slices[file];
                const TbSlice& slice = tableKind == TbWdl ? slices.wdl[side] : slices.dtz;
                for (int i = 0; i < 100; ++i)
                    highest = std::max(highest, tbRawValue(slice, random() % slice.size));
                for (const std::uint64_t number : {std::uint64_t(0), slice.size - 1, slice.size})
                    highest = std::max(highest, tbRawValue(slice, number));
            }
        return highest;
    }

   private:
    std::vector<std::uint8_t> bytes;
    TbPawnEntry entry{};
    TbKind tableKind;
    bool readable;
};

TEST(TbDamage, NothingIsReadBeyondTheEnd) {
    REQUIRE_SHARED_DATA();
    std::mt19937 random(11);
    int survivors = 0;
    for (const std::string table : {"KPPvK", "KPvKP", "KQvKP"})
        for (const TbKind kind : {TbWdl, TbDtz}) {
            const std::vector<char> whole =
                readBytes(realTables() / (table + (kind == TbWdl ? ".rtbw" : ".rtbz")));
            TableInMemory good(table, kind, whole);
            ASSERT_TRUE(good.isReadable()) << table;
            EXPECT_GT(good.highestValue(random), 0) << table;
            for (std::size_t length = 0; length < whole.size(); length += 1 + whole.size() / 50) {
                // The first 16 bytes of a block of 64 end a file that may look whole.
                for (const std::size_t cut : {length, length / 64 * 64 + 16}) {
                    const std::vector<char> part(whole.begin(), whole.begin() + std::ptrdiff_t(cut));
                    EXPECT_TRUE(cut >= whole.size() || !TableInMemory(table, kind, part).isReadable())
                        << table << " cut to " << cut;
                }
            }
            for (int round = 0; round < 150; ++round) {
                std::vector<char> bytes = whole;
                const std::size_t reach =
                    round % 3 ? bytes.size() : std::min<std::size_t>(bytes.size(), 1200);
                for (auto i = 1 + random() % 40; i > 0; --i)
                    bytes[6 + random() % (reach - 6)] = char(random());
                TableInMemory damaged(table, kind, bytes);
                if (!damaged.isReadable()) continue;
                ++survivors;
                const int highest = damaged.highestValue(random);
                EXPECT_LE(highest, kind == TbWdl ? 4 : 4095);
            }
        }
    EXPECT_GT(survivors, 50) << "too few files were damaged where it goes unnoticed";
}

// The same table with its maps of distances widened from 8 to 16 bits, which no table of so few men has.
static std::vector<char> withWideMap(const std::vector<char>& file, const TbEntry& entry) {
    const TbSlice& slice = tbSlicesOf(const_cast<TbEntry&>(entry), 0).dtz;
    const std::uint8_t* data = entry.mappedData[TbDtz];
    const std::size_t header = std::size_t(slice.first - data) - 10;
    std::size_t from = tbSlicesOf(const_cast<TbEntry&>(entry), 0).dtzMap;
    std::vector<char> bytes(file.begin(), file.begin() + std::ptrdiff_t(from));
    bytes[header] = char(bytes[header] | TbWideMap);
    for (int list = 0; list < 4; ++list)
        for (int left = data[from]; left >= 0; --left) bytes.insert(bytes.end(), {file[from++], '\0'});
    const auto append = [&](const std::uint8_t* begin, const std::uint8_t* end) {
        bytes.insert(bytes.end(), file.begin() + (begin - data), file.begin() + (end - data));
    };
    const auto pad = [&] { bytes.resize((bytes.size() + 63) / 64 * 64); };
    append(slice.sparse, slice.lengths + 2 * slice.blockCount);
    pad();
    append(slice.blocks, slice.blocks + (std::size_t(slice.realBlocks) << slice.blockLog));
    pad();
    bytes.resize(bytes.size() + 16);
    return bytes;
}

TEST(TbMaps, MayBeWide) {
    REQUIRE_SHARED_DATA();
    const std::string table = "KQvKR";
    const TableFolder folder;
    initTables(realTables().string());
    const std::vector<ListedResult> rows = listedFor(table);
    int decisive = 0;
    for (const ListedResult& row : rows) {
        Position pos = positionOf(row.fen);
        TbEntry* const entry = tbTableFor(pos, TbDtz);
        ASSERT_NE(entry, nullptr);
        ASSERT_TRUE(tbSlicesOf(*entry, 0).dtz.flags & TbMapped);
        folder.write(table + ".rtbz", withWideMap(readBytes(realTables() / (table + ".rtbz")), *entry));
        break;
    }
    for (const std::string name : {"KQvKR", "KQvK", "KRvK"}) folder.copyReal(name + ".rtbw");
    initTables(folder.path());
    for (const ListedResult& row : rows) {
        Position pos = positionOf(row.fen);
        int success;
        EXPECT_EQ(tbProbeDtz(pos, &success), row.dtz) << row.fen;
        EXPECT_GT(success, 0) << row.fen;
        decisive += std::abs(row.dtz) > 1;
    }
    EXPECT_GT(decisive, 0);
}

TEST(TbThreads, ShareTheFirstUseOfATable) {
    REQUIRE_SHARED_DATA();
    const std::vector<ListedResult> rows = listedFor("KQvKR");
    std::vector<Position> positions;
    positions.reserve(rows.size());
    for (const ListedResult& row : rows) positions.push_back(positionOf(row.fen));
    for (int round = 0; round < 20; ++round) {
        initTables(realTables().string());
        std::atomic<int> waiting = 4, wrong = 0;
        const auto probeAll = [&] {
            --waiting;
            while (waiting > 0) std::this_thread::yield();
            for (std::size_t i = 0; i < rows.size(); ++i) {
                Position pos = positions[i];
                int success;
                wrong += tbProbeWdl(pos, &success) != rows[i].wdl || success == 0;
                wrong += tbProbeDtz(pos, &success) != rows[i].dtz || success == 0;
            }
        };
        std::vector<std::thread> threads;
        threads.reserve(4);
        for (int i = 0; i < 4; ++i) threads.emplace_back(probeAll);
        for (std::thread& thread : threads) thread.join();
        EXPECT_EQ(wrong, 0);
    }
    tbInit("");
}
