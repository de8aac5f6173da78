// The opening book, on small books made for each test and on one that another program made.
#include "endgame/book.h"

#include "board/move_text.h"
#include "endgame/polyglot_keys.h"
#include "endgame/table_files.h"
#include "support/board_environment.h"
#include "support/book_record.h"
#include "support/temporary_folder.h"

#include <algorithm>
#include <map>
#include <set>

struct BookRecord {
    std::uint64_t key;
    std::string move;  // as the book writes it
    int weight;
};

class Book : public testing::Test {
   protected:
    void SetUp() override {
        settings.bookFile = folder.file("book.bin");
        bookMoveLimit = 1000;
    }
    void TearDown() override { closeBook(); }

    static std::string bytesOf(const BookRecord& record) {
        unsigned move = 0;
        if (record.move != "0000")
            move = unsigned(squareFromText(&record.move[2])) | unsigned(squareFromText(&record.move[0])) << 6;
        if (record.move.size() == 5) move |= unsigned(std::string(" nbrq").find(record.move[4])) << 12;
        return bookRecord(record.key, move, unsigned(record.weight));
    }
    // Sorts by key alone, so that a group keeps its order, and ends with a record of another key.
    void open(std::vector<BookRecord> records, bool withEnd = true) {
        if (withEnd) records.push_back({~0ULL, "0000", 0});
        std::stable_sort(records.begin(), records.end(),
                         [](const auto& a, const auto& b) { return a.key < b.key; });
        std::string bytes;
        for (const BookRecord& record : records) bytes += bytesOf(record);
        openBytes(bytes);
    }
    void openBytes(const std::string& bytes) {
        folder.write("book.bin", bytes);
        openBook();
    }
    // The moves that come up in many probes, and how often.
    static std::map<std::string, int> drawn(const Position& pos, int times = 400) {
        std::map<std::string, int> counts;
        Position copy = pos;
        for (int i = 0; i < times; ++i) ++counts[moveText(bookProbe(copy))];
        return counts;
    }

    const SettingsGuard guard;
    const TemporaryFolder folder;
    const Position start = positionOf("");
    const Key startKey = bookKey(start);
};
using Counts = std::map<std::string, int>;

TEST_F(Book, DrawsByWeight) {
    open(
        {{startKey, "e2e4", 300}, {startKey, "d2d4", 100}, {startKey, "a2a3", 0}, {startKey + 1, "h2h4", 9}});
    const Counts counts = drawn(start, 4000);
    EXPECT_EQ(counts.size(), 2u);
    EXPECT_NEAR(counts.at("e2e4"), 3000, 200);
    EXPECT_NEAR(counts.at("d2d4"), 1000, 200);
}

TEST_F(Book, BestLineKeepsTheHeaviestMoves) {
    settings.bestBookLine = true;
    open({{startKey, "a2a3", 3}, {startKey, "e2e4", 5}, {startKey, "d2d4", 5}});
    const Counts counts = drawn(start);
    EXPECT_EQ(counts.size(), 2u);
    EXPECT_NEAR(counts.at("e2e4"), 200, 60);
    EXPECT_NEAR(counts.at("d2d4"), 200, 60);
    open({{startKey, "a2a3", 3}});
    EXPECT_EQ(drawn(start), (Counts{{"a2a3", 400}}));
}

// Every place that a group can have in small books, whichever way the search halves it.
TEST_F(Book, FindsAGroupWhereverItStands) {
    for (int before = 0; before < 12; ++before)
        for (int group = 1; group < 5; ++group)
            for (int after = 1; after < 12; ++after) {
                std::vector<BookRecord> records;
                records.reserve(28);
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

TEST_F(Book, ReadsCastlingAndPromotions) {
    struct Row {
        const char* fen;
        const char* book;
        const char* played;
    };
    const Row rows[] = {{"r3k2r/8/8/8/8/8/8/R3K2R w KQkq -", "e1h1", "e1g1"},
                        {"r3k2r/8/8/8/8/8/8/R3K2R w KQkq -", "e1a1", "e1c1"},
                        {"r3k2r/8/8/8/8/8/8/R3K2R b KQkq -", "e8h8", "e8g8"},
                        {"r3k2r/8/8/8/8/8/8/R3K2R b KQkq -", "e8a8", "e8c8"},
                        {"7k/P7/8/8/8/8/8/K7 w - -", "a7a8n", "a7a8n"},
                        {"7k/P7/8/8/8/8/8/K7 w - -", "a7a8q", "a7a8q"},
                        {"k7/8/8/8/8/8/K7/4R3 w - -", "e1h1", "e1h1"}};
    for (const Row& row : rows) {
        const Position pos = positionOf(row.fen);
        open({{bookKey(pos), row.book, 1}});
        EXPECT_EQ(drawn(pos, 5), (Counts{{row.played, 5}})) << row.fen;
    }
}

// Intended: the castling text is rewritten in Chess960 too, and then matches no move.
TEST_F(Book, LosesCastlingInChess960) {
    settings.chess960 = true;
    const Position pos = positionOf("4k3/8/8/8/8/8/8/4K2R w H -");
    open({{bookKey(pos), "e1h1", 1}});
    EXPECT_EQ(drawn(pos, 5), (Counts{{"0000", 5}}));
    open({{bookKey(pos), "e1f1", 1}});
    EXPECT_EQ(drawn(pos, 5), (Counts{{"e1f1", 5}}));
}

TEST_F(Book, EndsWithTheMoveLimitAndTheSwitches) {
    Position pos = start;
    open({{startKey, "e2e4", 1}});
    bookMoveLimit = 10;
    for (const int ply : {0, 18, 19, 20}) {
        pos.gamePly = std::uint16_t(ply & ~1);  // the key knows the side to move
        EXPECT_EQ(bookProbe(pos) != NoMove, ply < 20) << ply;
    }
    pos = start;
    settings.ownBook = 0;
    EXPECT_EQ(bookProbe(pos), NoMove);
    settings.ownBook = 1000;
    EXPECT_NE(bookProbe(pos), NoMove) << "the file stayed open";
    settings.bookMoves = 0;
    openBook();
    EXPECT_EQ(bookProbe(pos), NoMove);
}

TEST_F(Book, MissingAndTinyBooksAreSilent) {
    Position pos = start;
    EXPECT_EQ(errorsOf([&] {
                  settings.bookFile = folder.file("absent.bin");
                  openBook();
                  EXPECT_EQ(bookProbe(pos), NoMove);
                  settings.bookFile = folder.path();
                  openBook();
                  EXPECT_EQ(bookProbe(pos), NoMove) << "a folder";
                  settings.bookFile = folder.file("book.bin");
                  for (const std::size_t size : {0u, 1u, 15u}) {
                      openBytes(std::string(size, '\0'));
                      EXPECT_EQ(bookProbe(pos), NoMove);
                  }
              }),
              "");
}

TEST_F(Book, AKeyAboveTheBookReadsPastItsEnd) {
    Position pos = start;
    open({{startKey - 1, "e2e4", 1}}, false);
    EXPECT_EQ(errorsOf([&] { EXPECT_EQ(bookProbe(pos), NoMove); }), "info Error with fread opening book\n");
    open({{startKey + 1, "e2e4", 1}, {startKey + 2, "e2e4", 1}}, false);
    EXPECT_EQ(errorsOf([&] { EXPECT_EQ(bookProbe(pos), NoMove); }), "") << "below all keys";
}

// Intended: a group at the very end of the file ends the process.
TEST_F(Book, AGroupAtTheEndIsFatal) {
    Position pos = start;
    open({{startKey - 1, "e2e4", 1}, {startKey, "e2e4", 1}}, false);
    EXPECT_EXIT(bookProbe(pos), testing::ExitedWithCode(1), "^Error with fread opening book\n$");
}

TEST_F(Book, ManyRepeatedRecordsStayInBounds) {
    std::vector<BookRecord> records(1000, BookRecord{startKey, "e2e4", 65535});
    records.push_back({startKey, "d2d4", 65535});
    open(records);
    EXPECT_EQ(drawn(start, 20), (Counts{{"e2e4", 20}}));
}

TEST_F(Book, PlaysTheMovesOfAListedBook) {
    REQUIRE_SHARED_DATA();
    settings.bookFile = *sharedData() / "book.bin";
    openBook();
    std::map<std::string, std::set<std::string>> listed;
    std::ifstream file(*sharedData() / "book.txt");
    for (std::string line; std::getline(file, line);) {
        const std::size_t bar = line.find(" | ");
        if (line[0] == '#' || bar == std::string::npos) continue;
        std::string move = line.substr(bar + 3, line.find(" | ", bar + 3) - bar - 3);
        const Position pos = positionOf(line.substr(0, bar));
        if (typeOfCode(pos.board[squareFromText(move.c_str())]) == King && (move == "e1h1" || move == "e8h8"))
            move[2] = 'g';
        if (typeOfCode(pos.board[squareFromText(move.c_str())]) == King && (move == "e1a1" || move == "e8a8"))
            move[2] = 'c';
        if (line.substr(line.rfind('|')) != "| 0") listed[line.substr(0, bar)].insert(move);
    }
    EXPECT_GT(listed.size(), 100u);
    for (const auto& [fen, moves] : listed) {
        std::set<std::string> played;
        for (const auto& [move, times] : drawn(positionOf(fen), 200)) played.insert(move);
        EXPECT_TRUE(std::includes(moves.begin(), moves.end(), played.begin(), played.end())) << fen;
    }
}
