// The opening book, on small books made for each test and on one that another program made, and its keys
// against those that other programs published.
#include "endgame/book.h"

#include "board/move_text.h"
#include "endgame/polyglot_keys.h"
#include "endgame/table_files.h"
#include "support/book_record.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>

struct BookRecord {
    std::uint64_t key;
    std::string move;  // as the book writes it
    int weight;
};

using Counts = std::map<std::string, int>;

class Book : public testing::Test {
   protected:
    void SetUp() override {
        settings.bookFile = folder.file("book.bin");
        bookMoveLimit = 1000;
    }
    void TearDown() override { closeBook(); }

    static std::string bytesOf(const BookRecord& record) {
        const char* const text = record.move.c_str();
        unsigned move = unsigned(squareFromText(text + 2)) | unsigned(squareFromText(text)) << 6;
        if (record.move.size() == 5) move |= unsigned(std::string(" nbrq").find(record.move[4])) << 12;
        return bookRecord(record.key, move, unsigned(record.weight));
    }
    // Sorts by key alone, so that a group keeps its order, and ends with a record of another key.
    void open(std::vector<BookRecord> records, bool withEnd = true) {
        std::stable_sort(records.begin(), records.end(),
                         [](const auto& a, const auto& b) { return a.key < b.key; });
        std::string bytes;
        for (const BookRecord& record : records) bytes += bytesOf(record);
        if (withEnd) bytes += bookRecord(~0ULL, 0, 0);
        openBytes(bytes);
    }
    void openBytes(const std::string& bytes) {
        folder.write("book.bin", bytes);
        openBook();
    }
    // The moves that come up in many probes, and how often.
    static Counts drawn(Position pos, int times = 400) {
        Counts counts;
        for (int i = 0; i < times; ++i) ++counts[moveText(bookProbe(pos))];
        return counts;
    }

    const SettingsGuard guard;
    const TemporaryFolder folder;
    Position start = positionOf("");
    const Key startKey = bookKey(start);
};
TEST_F(Book, ATinyBookIsSilent) {
    testing::internal::CaptureStderr();
    for (const std::size_t size : {0u, 15u}) {
        openBytes(std::string(size, '\0'));
        EXPECT_EQ(bookProbe(start), NoMove);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(Book, ManyRepeatedRecordsStayInBounds) {
    open(std::vector<BookRecord>(1000, BookRecord{startKey, "e2e4", 65535}));
    EXPECT_EQ(drawn(start, 20), (Counts{{"e2e4", 20}}));
}

TEST_F(Book, DrawsByWeightOrAmongTheHeaviest) {
    open(
        {{startKey, "a2a3", 0}, {startKey, "e2e4", 300}, {startKey, "d2d4", 100}, {startKey + 1, "h2h4", 9}});
    Counts counts = drawn(start, 4000);
    EXPECT_EQ(counts.size(), 2u);
    EXPECT_NEAR(counts["e2e4"], 3000, 200);
    EXPECT_NEAR(counts["d2d4"], 1000, 200);

    settings.bestBookLine = true;
    open({{startKey, "a2a3", 3}, {startKey, "e2e4", 5}, {startKey, "d2d4", 5}});
    counts = drawn(start);
    EXPECT_EQ(counts.size(), 2u);
    EXPECT_NEAR(counts["e2e4"], 200, 60);
    EXPECT_NEAR(counts["d2d4"], 200, 60);
    open({{startKey, "a2a3", 3}});
    EXPECT_EQ(drawn(start), (Counts{{"a2a3", 400}}));
}

// Every place that a group can have in small books, whichever way the search halves it.
TEST_F(Book, FindsAGroupWhereverItStands) {
    for (int before = 0; before < 12; ++before)
        for (int group = 1; group < 5; ++group)
            for (int after = 1; after < 12; ++after) {
                std::vector<BookRecord> records;
                for (int i = 0; i < before; ++i) records.push_back({startKey - 1 - Key(i), "a2a3", 1});
                for (int i = 0; i < group; ++i) records.push_back({startKey, i ? "d2d4" : "e2e4", 1});
                for (int i = 0; i < after; ++i) records.push_back({startKey + 1 + Key(i), "a2a3", 1});
                open(records, false);
                const Counts counts = drawn(start, 30);
                EXPECT_EQ(counts.count("e2e4"), 1u) << before << " " << group << " " << after;
                EXPECT_EQ(counts.count("a2a3") + counts.count("0000"), 0u);
            }
}

TEST_F(Book, OneIllegalMoveThrowsOutTheGroup) {
    open({{startKey, "e2e4", 1}, {startKey, "e2e5", 1}});
    EXPECT_EQ(drawn(start), (Counts{{"0000", 400}}));
    open({{startKey, "e2e4", 1}, {startKey, "e2e5", 0}});
    EXPECT_EQ(drawn(start), (Counts{{"e2e4", 400}})) << "without weight it doesn't count";
    open({{startKey, "e2e4", 0}});
    EXPECT_EQ(drawn(start), (Counts{{"0000", 400}})) << "nothing to draw from";
}

// Intended: the castling text is rewritten in Chess960 too, and then matches no move.
TEST_F(Book, ReadsCastlingAndPromotions) {
    const char* const castling[] = {"r3k2r/8/8/8/8/8/8/R3K2R w KQkq -", "r3k2r/8/8/8/8/8/8/R3K2R b KQkq -"};
    const char* const promotion = "7k/P7/8/8/8/8/8/K7 w - -";
    const char* const chess960 = "4k3/8/8/8/8/8/8/4K2R w H -";
    const std::array<const char*, 3> rows[] = {
        {castling[0], "e1h1", "e1g1"}, {castling[0], "e1a1", "e1c1"},
        {castling[1], "e8h8", "e8g8"}, {castling[1], "e8a8", "e8c8"},
        {promotion, "a7a8n", "a7a8n"}, {promotion, "a7a8b", "a7a8b"},
        {promotion, "a7a8q", "a7a8q"}, {chess960, "e1h1", "0000"},
        {chess960, "e1f1", "e1f1"},    {"k7/8/8/8/8/8/K7/4R3 w - -", "e1h1", "e1h1"}};
    for (const auto& [fen, book, played] : rows) {
        settings.chess960 = fen == chess960;
        const Position pos = positionOf(fen);
        open({{bookKey(pos), book, 1}});
        EXPECT_EQ(drawn(pos, 5), (Counts{{played, 5}})) << fen << " " << book;
    }
}

TEST_F(Book, EndsWithTheMoveLimitAndTheSwitches) {
    open({{startKey, "e2e4", 1}});
    bookMoveLimit = 10;
    for (const int ply : {0, 18, 20}) {
        start.gamePly = std::uint16_t(ply);
        EXPECT_EQ(bookProbe(start) != NoMove, ply < 20) << ply;
    }
    start.gamePly = 0;
    settings.ownBook = 0;
    EXPECT_EQ(bookProbe(start), NoMove);
    settings.ownBook = 1000;
    EXPECT_NE(bookProbe(start), NoMove) << "the file stayed open";
    settings.bookMoves = 0;
    openBook();
    EXPECT_EQ(bookProbe(start), NoMove);
}

TEST_F(Book, AKeyAboveTheBookReadsPastItsEnd) {
    open({{startKey - 1, "e2e4", 1}}, false);
    EXPECT_EQ(errorsOf([this] { EXPECT_EQ(bookProbe(start), NoMove); }),
              "info Error with fread opening book\n");
    open({{startKey + 1, "e2e4", 1}, {startKey + 2, "e2e4", 1}}, false);
    EXPECT_EQ(errorsOf([this] { EXPECT_EQ(bookProbe(start), NoMove); }), "") << "below all keys";
}

// Intended: a group at the very end of the file ends the process.
TEST_F(Book, AGroupAtTheEndIsFatal) {
    open({{startKey - 1, "e2e4", 1}, {startKey, "e2e4", 1}}, false);
    EXPECT_EXIT(bookProbe(start), testing::ExitedWithCode(1), "^Error with fread opening book\n$");
}

// The rows of a file of test data, split at their bars.
static std::vector<std::vector<std::string>> rowsOf(const char* name) {
    std::vector<std::vector<std::string>> rows;
    std::ifstream file(testData() / name);
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line[0] == '#') continue;
        rows.emplace_back();
        for (std::size_t begin = 0, end; begin < line.size(); begin = end + 3) {
            end = std::min(line.find(" | ", begin), line.size());
            rows.back().push_back(line.substr(begin, end - begin));
        }
    }
    return rows;
}

TEST_F(Book, PlaysTheMovesOfAListedBook) {
    settings.bookFile = testData() / "book.bin";
    openBook();
    std::map<std::string, std::set<std::string>> listed;
    for (const std::vector<std::string>& row : rowsOf("book.txt")) {
        std::string move = row.at(1);
        const bool king = typeOfCode(positionOf(row[0]).board[squareFromText(move.c_str())]) == King;
        if (king && move[0] == 'e')  // castling, where the target is the rook
            move[2] = move[2] == 'h' ? 'g' : move[2] == 'a' ? 'c' : move[2];
        if (row.at(2) != "0") listed[row[0]].insert(move);
    }
    EXPECT_GT(listed.size(), 100u);
    for (const auto& [fen, moves] : listed)
        for (const auto& [move, times] : drawn(positionOf(fen), 200))
            EXPECT_TRUE(moves.count(move)) << fen << " " << move;
}

TEST(BookKey, EqualsThePublishedKeys) {
    EXPECT_EQ(bookKey(positionOf("")), 0x463b96181691fc9cULL);
    const std::vector<std::vector<std::string>> rows = rowsOf("polyglot_keys.txt");
    EXPECT_GT(rows.size(), 50u);
    for (const std::vector<std::string>& row : rows)
        EXPECT_EQ(bookKey(positionOf(row.at(0))), std::stoull(row.at(1), nullptr, 16)) << row[0];
}
