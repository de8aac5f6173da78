// The transposition table: what a store keeps, what it replaces, its sizes, and its image in a file.
#include "search/search_environment.h"
#include "support/temporary_folder.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <sstream>

class TransTableTest : public SearchTest {
   protected:
    TransTableTest() { transTable.resize(1); }
    ~TransTableTest() override { transTable.resize(16); }

    // Keys that fall into one bucket, told apart by their high halves.
    static Key keyOf(std::uint32_t check, Key bucket = 77) { return Key(check) << 32 | bucket; }
    static bool holds(std::uint32_t check) {
        TransData data;
        return transTable.probe(keyOf(check), data);
    }
    static TransData at(std::uint32_t check, Key bucket = 77) {
        TransData data;
        EXPECT_TRUE(transTable.probe(keyOf(check, bucket), data)) << check << " in " << bucket;
        return data;
    }
    static void store(std::uint32_t check, int depth, int score = 10, int flags = LowerBound,
                      Move move = 0x123, int nodeRank = 0) {
        transTable.store(keyOf(check), depth, score, flags, move, nodeRank);
    }
    // Ages the table.
    static void nextSearch() { transTable.newSearch(++lastRoot); }
    static inline Key lastRoot = 1000;
};

TEST_F(TransTableTest, DeeperResultsOfTheSameKindStand) {
    struct Row {
        int oldFlags, oldScore, newFlags, newScore;
        bool stands;
    };
    for (const Row& row :
         {Row{ExactBound, 10, LowerBound, 99, true}, Row{LowerBound, 50, LowerBound, 40, true},
          Row{LowerBound, 50, LowerBound, 60, false}, Row{LowerBound, 50, UpperBound, 40, false},
          Row{UpperBound, 30, UpperBound, 40, true}, Row{UpperBound, 30, UpperBound, 20, false},
          Row{UpperBound, 30, LowerBound, 40, false}}) {
        transTable.clear();
        store(1, 10, row.oldScore, row.oldFlags, 0x111);
        store(1, 8, row.newScore, row.newFlags, 0x222);
        EXPECT_EQ(at(1).depth(), row.stands ? 10 : 8) << row.oldFlags << " by " << row.newFlags;
        EXPECT_EQ(at(1).move(), 0x222u) << "the move is taken either way";
    }
    // In the next search nothing stands but the move.
    store(2, 10, 10, ExactBound, 0x111);
    nextSearch();
    store(2, 2, 5, UpperBound, NoMove);
    EXPECT_EQ(at(2).depth(), 2);
    EXPECT_EQ(at(2).move(), 0x111u);
}

TEST_F(TransTableTest, DropsScoresBeyondItsRange) {
    for (const int sign : {1, -1}) {
        store(1, 4, sign * 32501);
        EXPECT_FALSE(holds(1));
    }
}

TEST_F(TransTableTest, AnalysisKeepsDeeperExactEntriesOverSearches) {
    searchState.analysisSearch = true;
    store(1, 10, 10, ExactBound, 0x111);
    nextSearch();
    store(1, 8, 99, LowerBound, 0x222);
    EXPECT_EQ(at(1).depth(), 10);
    EXPECT_EQ(at(1).score(), 10);
    EXPECT_EQ(at(1).move(), 0x222u);
    nextSearch();
    store(1, 10, 99, LowerBound, 0x222);  // of the same depth: an ordinary store
    EXPECT_EQ(at(1).score(), 99);
}

TEST_F(TransTableTest, TheOldAndShallowMakeRoom) {
    for (std::uint32_t check : {1u, 2u, 3u, 4u}) store(check, 20);
    store(5, 6);
    EXPECT_FALSE(holds(1)) << "without a free slot the first of equals goes";
    store(6, 30);
    EXPECT_FALSE(holds(5)) << "the shallowest";
    nextSearch();
    store(2, 20);
    store(3, 15);
    store(6, 20);
    store(7, 13);
    EXPECT_FALSE(holds(4)) << "a search of age weighs six half plies: 6 - 20 against -15";
    store(8, 20);
    EXPECT_FALSE(holds(7));
    // Among equals off the principal variation goes first.
    transTable.clear();
    for (std::uint32_t check : {1u, 2u, 3u, 4u}) store(check, 20, 0, LowerBound, 1, check == 3 ? 1 : 2);
    store(5, 20);
    EXPECT_FALSE(holds(3));
}

TEST_F(TransTableTest, AgeWrapsRound) {
    for (int i = 0; i < 255; ++i) nextSearch();
    store(1, 10);
    EXPECT_EQ(at(1).generation(), 255);
    nextSearch();
    for (std::uint32_t check : {2u, 3u, 4u, 5u}) store(check, 10);
    EXPECT_EQ(at(2).generation(), 0);
    EXPECT_FALSE(holds(1)) << "one search old loses to none, whatever the number says";
    transTable.newSearch(lastRoot);
    store(6, 40);
    EXPECT_EQ(at(6).generation(), 0) << "the same root again ages nothing";
}

TEST_F(TransTableTest, BusyMarksComeAndGo) {
    transTable.markBusy(keyOf(1), true);
    EXPECT_TRUE(at(1).busy());
    EXPECT_EQ(at(1).bound(), NoBound);
    EXPECT_EQ(at(1).depth(), -10);
    store(1, 8);
    EXPECT_TRUE(at(1).busy()) << "a store keeps the mark";
    transTable.markBusy(keyOf(1), false);
    EXPECT_FALSE(at(1).busy());
    EXPECT_EQ(at(1).depth(), 8);
    for (std::uint32_t check : {2u, 3u, 4u}) store(check, 20);
    transTable.markBusy(keyOf(9), true);
    EXPECT_FALSE(holds(1)) << "a placeholder takes the shallowest slot";
    store(10, 2);
    EXPECT_FALSE(holds(9)) << "and gives it up first";
}

TEST_F(TransTableTest, SizesAreThoseOfTheFile) {
    struct Row {
        int megabytes;
        std::uint64_t buckets, bytes;
    };
    for (const Row& row :
         {Row{1, 16384, 786432}, Row{16, 262144, 12582912}, Row{64, 1048576, 50331648},
          Row{192, 4194304, 201326592}, Row{256, 4194304, 201326592}, Row{95, 2097152, 100663296}}) {
        transTable.resize(row.megabytes);
        EXPECT_EQ(transTable.bucketCount(), row.buckets);
        EXPECT_EQ(transTable.byteSize(), row.bytes);
    }
    EXPECT_FALSE(transTable.resize(95)) << "the same size only clears";
}

// A petabyte and more, which no system gives: each refusal is told, and the next attempt is half of it.
TEST_F(TransTableTest, IsHalvedUntilItFits) {
    constexpr int Megabytes = 1 << 30;
    ::testing::internal::CaptureStderr();
    EXPECT_TRUE(transTable.resize(Megabytes));
    std::istringstream errors(::testing::internal::GetCapturedStderr());
    std::uint64_t refused = 0;
    std::string line;
    for (std::uint64_t bytes = 844424930131968; std::getline(errors, line); bytes /= 2) {
        EXPECT_EQ(line, "Unable to allocate " + std::to_string(bytes) + " bytes of memory for hash table");
        refused = bytes;
    }
    EXPECT_EQ(transTable.byteSize(), refused / 2);
    EXPECT_EQ(prefetchBases.transMask + 1, transTable.bucketCount());
    transTable.resize(16);
}

TEST_F(TransTableTest, ClearingStartsTheAgesAgain) {
    nextSearch();
    EXPECT_EQ(transTable.occupancy(), 0);
    for (Key bucket = 0; bucket < 500; ++bucket) transTable.store(keyOf(5, bucket), 4, 0, LowerBound, 1, 0);
    EXPECT_EQ(transTable.occupancy(), 500);
    nextSearch();
    EXPECT_EQ(transTable.occupancy(), 0) << "only this search counts";
    transTable.markBusy(keyOf(5), true);
    transTable.clear();
    EXPECT_FALSE(holds(5));
    store(5, 6);
    EXPECT_EQ(at(5).generation(), 0);
    EXPECT_FALSE(at(5).busy());
}

// Idle and during a search, and from every state of the table's pages.
TEST_F(TransTableTest, ClearingLeavesNothing) {
    threadPool.stopWorkers();
    threadPool.threadCount = 3;
    threadPool.resize(true);
    transTable.resize(128);
    for (const bool searching : {false, true}) {
        for (const int touched : {0, 4, 0, 1000}) {
            transTable.pages().askForHugePages();
            for (int i = 0; i < touched && transTable.pages().touchNext(); ++i) {
            }
            const Key last = transTable.bucketCount() - 1;
            for (Key bucket = 0; bucket < last; bucket += 20011)
                transTable.store(keyOf(5, bucket), 4, 0, 2, 1, 0);
            transTable.store(keyOf(5, last), 4, 0, LowerBound, 1, 0);
            searchControl.searching = searching;
            transTable.clear();
            searchControl.searching = false;
            const auto* bytes = static_cast<const char*>(transTable.pages().data());
            EXPECT_EQ(std::count(bytes, bytes + transTable.byteSize(), '\0'),
                      std::ptrdiff_t(transTable.byteSize()))
                << searching << ' ' << touched;
        }
        EXPECT_EQ(transTable.pages().touchedBytes(), transTable.byteSize()) << "a ready table stays ready";
        transTable.resize(64);
    }
    threadPool.stopWorkers();
    threadPool.threadCount = 1;
    threadPool.resize(true);
}

// ---- The file ----

class HashFile : public TransTableTest {
   protected:
    static std::string save(const std::string& to) {
        ::testing::internal::CaptureStdout();
        transTable.saveToFile(to.c_str());
        return ::testing::internal::GetCapturedStdout();
    }
    static std::string load(const std::string& from) {
        ::testing::internal::CaptureStdout();
        transTable.loadFromFile(from.c_str());
        return ::testing::internal::GetCapturedStdout();
    }
    // Fills all slots of the buckets in a search of age 1.
    static void fill(std::initializer_list<Key> buckets) {
        transTable.clear();
        nextSearch();
        for (const Key bucket : buckets)
            for (std::uint32_t check = 1; check <= 4; ++check)
                transTable.store(keyOf(check, bucket), 12, 34, ExactBound, 0x321, 2);
    }
    static void expectAge(Key bucket, int age) {
        for (std::uint32_t check = 1; check <= 4; ++check)
            EXPECT_EQ(at(check, bucket).generation(), age) << bucket << ' ' << check;
    }

    const TemporaryFolder folder;
    const std::string path = folder.file("hash").string();
};

// Of 16,384 buckets a quarter forgets its ages: the first 16,384 entries are those of the first 4,096.
TEST_F(HashFile, LoadsBackWithAQuarterOfTheAgesForgotten) {
    fill({0, 4095, 4096, 16383});
    save(path);
    transTable.clear();
    EXPECT_EQ(load(path), "info string Loading Hash from " + path + "\ninfo string Hash Loaded\n");
    expectAge(0, 0);
    expectAge(4095, 0);
    expectAge(4096, 1);
    expectAge(16383, 1);
    store(9, 4);
    EXPECT_EQ(at(9).generation(), 0) << "the table itself is new again";
}

TEST_F(HashFile, FailedLoadsKeepTheTableButForgetTheAges) {
    const std::string missing = "info string no such file " + path + "\n";
    const std::string mismatch =
        "info string Loading Hash from " + path + "\ninfo string File size does not match Hash size\n";
    for (const std::uintmax_t size : {0u, 786431u, 786433u, 1572864u}) {  // 0: there is no file
        std::filesystem::remove(path);
        if (size) {
            folder.write("hash", "x");
            std::filesystem::resize_file(path, size);
        }
        fill({7, 9000});
        EXPECT_EQ(load(path), size ? mismatch : missing) << size;
        expectAge(7, 0);
        expectAge(9000, 1);
    }
}

TEST_F(HashFile, SaysWhatCannotBeWritten) {
    const std::string nowhere = path + "-missing/file";
    EXPECT_EQ(save(nowhere), "info string failed to open " + nowhere + "\n");
    // A disk that is full.
    EXPECT_EQ(save("/dev/full"), "info string Saving Hash\ninfo string error writing file /dev/full\n");
}
