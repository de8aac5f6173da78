// The transposition table as a file: its exact bytes, what is said of each failure, and what loading does to
// ages.
#include "search/search_environment.h"
#include "support/temporary_folder.h"

#include <filesystem>
#include <fstream>
#include <iterator>

class HashFile : public SearchTest {
   protected:
    static constexpr std::size_t BucketBytes = 48, EntryBytes = 12;

    HashFile() {
        table.resize(1);
        table.newSearch(1);  // generation 1
    }
    ~HashFile() override {
        table.free();
        // The process-wide table owns the prefetch base.
        transTable.free();
        transTable.resize(16);
    }

    // What a call prints.
    template <class Call>
    static std::string said(Call call) {
        ::testing::internal::CaptureStdout();
        call();
        return ::testing::internal::GetCapturedStdout();
    }
    std::string save(const std::string& to) {
        return said([&] { table.saveToFile(to.c_str()); });
    }
    std::string load(const std::string& from) {
        return said([&] { table.loadFromFile(from.c_str()); });
    }
    std::string fileBytes() const {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    // Fills the four slots of a bucket, told apart by the high halves 1 to 4 of their keys.
    void fillBucket(Key bucket) {
        for (Key check = 1; check <= 4; ++check)
            table.store(check << 32 | bucket, 12, 34, ExactBound, 0x321, 2);
    }
    // The age of one of them, or -1 if it is gone.
    int generationOf(Key bucket, Key check) const {
        TransData data;
        return table.probe(check << 32 | bucket, data) ? data.generation() : -1;
    }
    void expectGenerations(Key bucket, int generation) const {
        for (Key check = 1; check <= 4; ++check)
            EXPECT_EQ(generationOf(bucket, check), generation) << bucket << ' ' << check;
    }

    const TemporaryFolder folder;
    const std::string path = folder.file("hash").string();
    TransTable table;
    Key lastRoot = 2;
};

TEST_F(HashFile, IsTheImageOfTheBuckets) {
    const Key key = 0x0a0b0c0d00000000ULL | 5;
    fillBucket(5);
    table.clear();
    table.newSearch(2);
    table.store(key, -2, -3, TerminalFlags, 0x1234, 6);
    table.markBusy(key, true);
    EXPECT_EQ(save(path), "info string Saving Hash\ninfo string Hash Saved\n");
    const std::string bytes = fileBytes();
    ASSERT_EQ(bytes.size(), 786432u);
    // Key check, score, move, depth, rank with busy mark over flags, generation; the lowest byte first.
    const std::string entry("\x0d\x0c\x0b\x0a\xfd\xff\x34\x12\xfe\xff\xe7\x01", EntryBytes);
    EXPECT_EQ(bytes.substr(5 * BucketBytes, EntryBytes), entry);
    EXPECT_EQ(std::count(bytes.begin(), bytes.end(), '\0'), 786432 - 12);
}

TEST_F(HashFile, LoadsBackWithAQuarterOfTheAgesForgotten) {
    // A table of 16,384 buckets: the first 16,384 entries are those of the first 4,096.
    for (const Key bucket : {0u, 4095u, 4096u, 16383u}) fillBucket(bucket);
    save(path);
    table.clear();
    EXPECT_EQ(load(path), "info string Loading Hash from " + path + "\ninfo string Hash Loaded\n");
    expectGenerations(0, 0);
    expectGenerations(4095, 0);
    expectGenerations(4096, 1);
    expectGenerations(16383, 1);
    // The table itself is of generation 0 again.
    table.store(Key(9) << 32 | 77, 4, 0, LowerBound, 1, 0);
    EXPECT_EQ(generationOf(77, 9), 0);
}

TEST_F(HashFile, FailedLoadsKeepTheTableButForgetTheAges) {
    struct Row {
        const char* name;
        std::uintmax_t bytes;  // of the file; 0: there is none
        std::string lines;
    };
    const std::string missing = "info string no such file " + path + "\n";
    const std::string mismatch =
        "info string Loading Hash from " + path + "\ninfo string File size does not match Hash size\n";
    for (const Row& row : {Row{"missing", 0, missing}, Row{"short", 786431, mismatch},
                           Row{"long", 786433, mismatch}, Row{"of another size", 1572864, mismatch}}) {
        SCOPED_TRACE(row.name);
        std::filesystem::remove(path);
        if (row.bytes) {
            std::ofstream(path).put('x');
            std::filesystem::resize_file(path, row.bytes);
        }
        table.clear();
        table.newSearch(lastRoot++);
        for (const Key bucket : {7u, 9000u}) fillBucket(bucket);
        EXPECT_EQ(load(path), row.lines);
        expectGenerations(7, 0);
        expectGenerations(9000, 1);
    }
}

TEST_F(HashFile, SaysWhatCannotBeWritten) {
    const std::string nowhere = path + "-missing/file";
    EXPECT_EQ(save(nowhere), "info string failed to open " + nowhere + "\n");
    // A disk that is full.
    EXPECT_EQ(save("/dev/full"), "info string Saving Hash\ninfo string error writing file /dev/full\n");
}
