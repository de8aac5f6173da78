// Which tables are found where, and what becomes of files that are not what their name says.
#include "endgame/tb_files.h"

#include "endgame/table_files.h"

#include <atomic>
#include <set>
#include <sys/stat.h>
#include <thread>

namespace fs = std::filesystem;

static const char* const QueenWins = "8/8/8/2q5/5K2/8/8/2k5 b - -";
static const char* const QueenTurned = "8/8/8/2Q5/5k2/8/8/2K5 w - -";
static const char* const RookWins = "8/8/8/2r5/5K2/8/8/2k5 b - -";

static bool isKnown(const char* fen) { return wdlOf(positionOf(fen)).has_value(); }
static bool hasDistance(const char* fen) { return dtzOf(positionOf(fen)).has_value(); }

static std::string foundLine(int wdl, int dtz, int men) {
    return "info string Found " + std::to_string(wdl) + " WDL and " + std::to_string(dtz) +
           " DTZ tablebase files (up to " + std::to_string(men) + "-man).\n";
}

// All sides of `count` men besides the king, each in the order that names have.
static std::set<std::string> sidesOf(int count) {
    const std::string order = "KQRBNP";
    std::set<std::string> sides{"K"};
    for (int i = 0; i < count; ++i) {
        std::set<std::string> longer;
        for (const std::string& side : sides)
            for (const char piece : order.substr(std::max<std::size_t>(order.find(side.back()), 1)))
                longer.insert(side + piece);
        sides = longer;
    }
    return sides;
}

TEST(TbRegistration, FindsEveryMaterialOnce) {
    const TableFolder folder;
    int total = 0;
    const int expected[] = {5, 30, 110, 365, 1001};
    for (int men = 3; men <= 7; ++men) {
        // Both names of every material, so that a table under a name it should not have would count twice.
        for (int first = 0; first <= men - 2; ++first)
            for (const std::string& white : sidesOf(first))
                for (const std::string& black : sidesOf(men - 2 - first))
                    folder.write(std::string(white).append("v").append(black).append(".rtbw"));
        total += expected[men - 3];
        EXPECT_EQ(initTables(folder.path()), foundLine(total, 0, men));
    }
}

TEST(TbRegistration, ReadsSeveralDirectoriesAndCountsKinds) {
    const TableFolder first, second;
    first.write("KQvK.rtbw");
    first.write("KQvK.rtbm");
    second.write("KRvK.rtbw");
    second.write("KRvK.rtbz");
    second.write("KRvKB.rtbz");  // without its win/draw/loss file it doesn't count
    EXPECT_EQ(initTables(":" + first.path() + "::" + second.path() + ":"), foundLine(2, 1, 3));

    EXPECT_EQ(initTables("<empty>"), "");
    EXPECT_EQ(tbLargestTable(), 3) << "kept when the path is emptied";
    EXPECT_EQ(errorsOf([] { EXPECT_FALSE(isKnown(QueenWins)); }), "");
    EXPECT_EQ(initTables(second.path()), foundLine(1, 1, 3)) << "counted anew";
}

TEST(TbRegistration, PassesOverWhatIsNoFile) {
    const TableFolder first, second;
    fs::create_directory(first.file("KQvK.rtbw"));
    fs::create_symlink("nowhere", first.file("KRvK.rtbw"));
    ASSERT_EQ(mkfifo(first.file("KBvK.rtbw").c_str(), 0600), 0);
    EXPECT_EQ(initTables(first.path() + ":/nonexistent/tables"), foundLine(0, 0, 0));
    second.write("KQvK.rtbw", singleValueTable("KQvK", 2));
    EXPECT_EQ(initTables(first.path() + ":" + second.path()), foundLine(1, 0, 3));
    EXPECT_TRUE(isKnown(QueenWins));

    const fs::path deep = second.file(std::string(120, 'a')) / std::string(120, 'b');
    fs::create_directories(deep);
    fs::copy_file(second.file("KQvK.rtbw"), deep / "KRvK.rtbw");
    EXPECT_EQ(initTables(deep.string() + ":" + second.path()), foundLine(1, 0, 3))
        << "a path that doesn't fit is skipped, the next directory is read";
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
        EXPECT_EQ(errorsOf([] {
                      for (const char* fen : {QueenWins, QueenWins, QueenTurned}) EXPECT_FALSE(isKnown(fen));
                  }),
                  "Corrupted table.\n");
        EXPECT_TRUE(isKnown(RookWins)) << "other tables are still read";
    }
}

TEST(TbDamage, DistancesAbsentOrDamaged) {
    const TableFolder folder;
    folder.copyReal("KQvK.rtbw");
    initTables(folder.path());
    EXPECT_FALSE(hasDistance(QueenWins));
    EXPECT_TRUE(isKnown(QueenWins));

    folder.copyReal("KQvK.rtbz");
    initTables(folder.path());
    fs::remove(folder.file("KQvK.rtbz"));
    EXPECT_EQ(errorsOf([] { EXPECT_FALSE(hasDistance(QueenWins)); }), "");
    EXPECT_TRUE(isKnown(QueenWins)) << "only that probe fails";
    folder.copyReal("KQvK.rtbz");
    EXPECT_TRUE(hasDistance(QueenWins)) << "and the file is looked for again";

    folder.write("KQvK.rtbz", std::vector<char>(80));
    initTables(folder.path());
    EXPECT_EQ(errorsOf([] { EXPECT_FALSE(hasDistance(QueenWins)); }), "Corrupted table.\n");
    EXPECT_FALSE(isKnown(QueenWins)) << "a damaged copy is not trusted at all";
}

// Positions of one table, of both sides, with what is known of them.
static std::vector<ListedResult> listedFor(const std::string& table) {
    std::vector<ListedResult> rows;
    for (const ListedResult& row : listedResults(false))
        for (const bool mirrored : {false, true}) {
            char name[TbNameSize];
            tbTableName(positionOf(row.fen), name, mirrored);
            if (name != table) continue;
            rows.push_back(row);
            break;
        }
    return rows;
}

// The same table with its maps of distances widened from 8 to 16 bits, which no table of so few men has.
static std::vector<char> withWideMap(const std::vector<char>& file, TbEntry& entry) {
    const TbSlice& slice = tbSlicesOf(entry, 0).dtz;
    const std::uint8_t* data = entry.mappedData[TbDtz];
    const std::size_t header = std::size_t(slice.first - data) - 10;
    std::size_t from = tbSlicesOf(entry, 0).dtzMap;
    std::vector<char> bytes(file.begin(), file.begin() + std::ptrdiff_t(from));
    bytes[header] = char(bytes[header] | TbWideMap);
    for (int list = 0; list < 4; ++list)
        for (int left = data[from]; left >= 0; --left) bytes.insert(bytes.end(), {file[from++], '\0'});
    const auto append = [&bytes](const std::uint8_t* begin, const std::uint8_t* end) {
        bytes.insert(bytes.end(), begin, end);
        bytes.resize((bytes.size() + 63) / 64 * 64);
    };
    append(slice.sparse, slice.lengths + 2 * slice.blockCount);
    append(slice.blocks, slice.blocks + (std::size_t(slice.realBlocks) << slice.blockLog));
    bytes.resize(bytes.size() + 16);
    return bytes;
}

TEST(TbMaps, MayBeWide) {
    const TableFolder folder;
    initTables(smallTables());
    const std::vector<ListedResult> rows = listedFor("KQvKQ");
    TbEntry* const entry = tbTableFor(positionOf(rows.at(0).fen), TbDtz);
    ASSERT_TRUE(entry && tbSlicesOf(*entry, 0).dtz.flags & TbMapped);
    folder.write("KQvKQ.rtbz", withWideMap(readBytes(smallTables() / "KQvKQ.rtbz"), *entry));
    for (const char* name : {"KQvKQ.rtbw", "KQvK.rtbw"}) folder.copyReal(name);
    initTables(folder.path());
    int decisive = 0;
    for (const ListedResult& row : rows) {
        EXPECT_EQ(dtzOf(positionOf(row.fen)), row.dtz) << row.fen;
        decisive += std::abs(row.dtz) > 1;
    }
    EXPECT_GT(decisive, 0);
}

TEST(TbThreads, ShareTheFirstUseOfATable) {
    const std::vector<ListedResult> rows = listedFor("KRvKB");
    std::vector<Position> positions;
    positions.reserve(rows.size());
    for (const ListedResult& row : rows) positions.push_back(positionOf(row.fen));
    for (int round = 0; round < 20; ++round) {
        initTables(smallTables());
        std::atomic<int> waiting = 4, wrong = 0;
        const auto probeAll = [&] {
            --waiting;
            while (waiting > 0) std::this_thread::yield();
            for (std::size_t i = 0; i < rows.size(); ++i)
                wrong += wdlOf(positions[i]) != rows[i].wdl || dtzOf(positions[i]) != rows[i].dtz;
        };
        std::vector<std::thread> threads;
        threads.reserve(4);
        for (int i = 0; i < 4; ++i) threads.emplace_back(probeAll);
        for (std::thread& thread : threads) thread.join();
        EXPECT_EQ(wrong, 0);
    }
    tbInit("");
}
