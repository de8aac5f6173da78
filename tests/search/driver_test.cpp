// Whole searches from the root, with reports recorded instead of printed; the pool under many kinds of use.
#include "endgame/book.h"
#include "endgame/polyglot_keys.h"
#include "search/search_environment.h"
#include "support/allocation_count.h"
#include "support/book_record.h"
#include "support/temporary_folder.h"

#include <algorithm>
#include <fstream>
#include <regex>

// What the last search said, without allocating while it searches.
static struct Recorder {
    Move best, ponder;
    int answers, lastDepth, lastScore;
    Move line[PvLength];
} said;

class Driver : public SearchTest {
   protected:
    Driver() {
        said = {};
        searchControl.moveTime = 0;
        searchControl.nodes = NoNodeLimit;
        searchControl.ponder = false;
        searchControl.quitRequested = false;
        searchHost.reportBestMove = [](Move best, Move ponder) {
            said.best = best;
            said.ponder = ponder;
            ++said.answers;
        };
        searchHost.reportDepth = [](int depth, int score, const Move* pv, int) {
            said.lastDepth = depth;
            said.lastScore = score;
            std::copy(pv, pv + PvLength, said.line);
        };
    }

    static void search(const std::string& fen, int depth, const char* searchMoves = "") {
        Position root;
        setFen(&root, fen.c_str());
        searchAt(root, depth, searchMoves);
    }
    static void searchAt(Position& root, int depth, const char* searchMoves = "") {
        think(root, depth, NoTimeLimit, NoTimeLimit, searchMoves, false);
    }
};

TEST_F(Driver, AnswersOnceAtItsDepth) {
    search("", 7);
    EXPECT_EQ(said.answers, 1);
    EXPECT_EQ(said.lastDepth, 7);
    EXPECT_EQ(said.best, said.line[0]);
    EXPECT_EQ(said.ponder, said.line[1]);
    EXPECT_FALSE(searchControl.searching);
}

TEST_F(Driver, RepeatsItselfOnOneThread) {
    const std::string fen = "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -";
    search(fen, 9);
    const std::uint64_t first = ThreadPool::totalNodes();
    const Recorder firstSaid = said;
    forgetEverything();
    ThreadPool::clearEvalCaches();
    transTable.newSearch(1);
    search(fen, 9);
    EXPECT_EQ(ThreadPool::totalNodes(), first);
    EXPECT_TRUE(std::equal(said.line, said.line + 5, firstSaid.line));
}

TEST_F(Driver, AMateEndsTheDeepening) {
    search("6k1/5ppp/8/8/8/8/8/K2R4 w - -", 30);
    EXPECT_EQ(moveText(said.best), "d1d8");
    EXPECT_EQ(said.lastScore, 31999);
    EXPECT_LT(said.lastDepth, 5);
}

TEST_F(Driver, SeesRepetitionAndTheClock) {
    // The queen gives perpetual check, and nothing else saves White.
    search("5rk1/5ppp/8/4Q3/8/8/1r4PP/1r5K w - -", 4);
    EXPECT_LE(said.lastScore, -31000);
    search("6k1/6p1/8/6KQ/1r6/q2b4/8/8 w - -", 10);
    EXPECT_EQ(said.lastScore, 0);
    EXPECT_EQ(moveText(said.best), "h5e8");
    // On the ninety-ninth half-move every quiet move draws; the mate on the hundredth does not.
    Position root;
    setFen(&root, "7k/8/5K2/8/8/8/8/6Q1 w - -");
    root.halfmoveClock = 99;
    searchAt(root, 6);
    EXPECT_EQ(moveText(said.best), "g1g7");
    EXPECT_EQ(said.lastScore, 31999);
    setFen(&root, "7k/8/8/8/8/8/4K3/6Q1 w - -");
    root.halfmoveClock = 99;
    searchAt(root, 6);
    EXPECT_EQ(said.lastScore, 0);
}

TEST_F(Driver, StopBeforeAnyResultGivesTheFirstMove) {
    searchControl.nodes = 1;
    search("", 20);
    EXPECT_NE(said.best, NoMove);
    EXPECT_EQ(said.answers, 1);
}

TEST_F(Driver, ContemptMovesTheScoreForItsSide) {
    settings.contempt = 100;
    search("", 5);
    const int hopeful = said.lastScore;
    forgetEverything();
    settings.contempt = -100;
    ThreadPool::clearEvalCaches();
    search("", 5);
    EXPECT_GT(hopeful, said.lastScore + 100);
}

TEST_F(Driver, QuitLeavesWithoutAnAnswer) {
    static int endings;
    endings = 0;
    searchHost.shutDown = [] { ++endings; };
    searchControl.quitRequested = true;
    search("", 5);
    EXPECT_EQ(endings, 1);
    EXPECT_EQ(said.answers, 0);
    searchControl.quitRequested = false;
}

TEST_F(Driver, ReportsTheEndInItsOrder) {
    static std::string ends;
    ends.clear();
    searchHost.reportDepthEnd = [](int depth) { ends += std::to_string(depth); };
    searchHost.reportSearchEnd = [] { ends += 's'; };
    searchHost.reportBestMove = [](Move, Move) { ends += 'b'; };
    searchHost.searchOver = [] { ends += searchControl.searching ? '-' : 'o'; };
    search("", 3);
    EXPECT_EQ(ends, "3sbo");
    ends.clear();
    searchControl.benchMode = true;
    search("", 3);
    EXPECT_EQ(ends, "o");
}

// A quit that comes while the answer is held back ends the wait, and the interpreter then ends the process.
TEST_F(Driver, AQuitEndsTheWaitForTheUser) {
    static int waits;
    waits = 0;
    searchHost.waitForInput = [] { searchControl.quitRequested = ++waits == 3; };
    searchControl.ponder = true;
    search("", 3);
    EXPECT_EQ(waits, 3);
    EXPECT_FALSE(searchControl.searching);
    searchControl.quitRequested = false;
    searchControl.ponder = false;
}

// Writes a book that knows one move of the start position, as the format has it, and opens it.
static void openBookOf(const TemporaryFolder& folder, unsigned move) {
    Position start;
    setFen(&start, "");
    // No group may be the last.
    folder.write("book.bin", bookRecord(bookKey(start), move, 1) + bookRecord(~std::uint64_t{0}, 0, 0));
    settings.bookFile = folder.file("book.bin");
    openBook();
}

TEST_F(Driver, TheBookAnswersOnlyWhatIsAskedFor) {
    constexpr unsigned A2A4 = 1 << 9 | 3 << 3;  // ranks and files from 0
    const TemporaryFolder folder;
    openBookOf(folder, A2A4);
    search("", 4);
    EXPECT_EQ(moveText(said.best), "a2a4");
    EXPECT_EQ(said.ponder, NoMove);
    EXPECT_EQ(said.lastDepth, 0) << "nothing is searched";
    search("", 4, "h2h3 a2a4 ");
    EXPECT_EQ(moveText(said.best), "a2a4");
    search("", 4, "h2h3 b2b3 ");
    EXPECT_NE(moveText(said.best), "a2a4");
    EXPECT_EQ(said.lastDepth, 4);
    settings.ownBook = 0;
    search("", 4, "h2h3 ");
    EXPECT_EQ(moveText(said.best), "h2h3");
    closeBook();
}

TEST_F(Driver, AllocatesNothingWhileItSearches) {
    search("", 6);
    Position root;
    setFen(&root, "r1bq1rk1/pp2bppp/2n1pn2/2pp4/2P5/1P3NP1/PB1PPPBP/RN1Q1RK1 w - -");
    const long before = allocationCount();
    searchAt(root, 9);
    EXPECT_EQ(allocationCount(), before);
    EXPECT_GT(ThreadPool::totalNodes(), 1000u);
}

TEST_F(Driver, SurvivesChangesOfThePool) {
    for (const int threads : {1, 3, 2, 4, 1}) {
        settings.threads = threads;
        for (int i = 0; i < 5; ++i) search("", 4 + i % 3);
        EXPECT_EQ(threadCount, threads);
        for (int i = 0; i < ThreadPool::threadRecordCount; ++i) {
            EXPECT_EQ(ThreadPool::threadRecords[i].stopFlag, 0);
            // Thread 0 keeps no depth; a worker that still has one is not idle.
            EXPECT_EQ(ThreadPool::threadRecords[i].iterationDepth, 0);
        }
    }
    EXPECT_EQ(said.answers, 25);
    ThreadPool::stopWorkers();
    ThreadPool::resize(true);
}

TEST_F(Driver, StrengthLimitsDepthAndNoise) {
    settings.skill = 0;
    search("", 12);
    EXPECT_EQ(said.lastDepth, 1);
    settings.skill = 12;
    search("", 12);
    EXPECT_EQ(said.lastDepth, 4);
    settings.skill = 20;
    search("", 5);
    EXPECT_EQ(said.lastDepth, 5);
}

struct MateRow {
    std::string fen;
    int moves;
};

static std::vector<MateRow> mateRows() {
    std::vector<MateRow> rows;
    std::ifstream file(std::string(TARVOK_SOURCE_DIR) + "/tests/data/mates.epd");
    std::string line;
    std::smatch match;
    while (std::getline(file, line))
        if (std::regex_match(line, match, std::regex("(.*); dm (\\d+).*")))
            rows.push_back({match[1], std::stoi(match[2])});
    return rows;
}

TEST_F(Driver, FindsEveryMate) {
    const std::vector<MateRow> rows = mateRows();
    ASSERT_GE(rows.size(), 50u);
    for (const MateRow& row : rows) {
        forgetEverything();
        search(row.fen, 8 + 4 * row.moves);
        EXPECT_GE(said.lastScore, MateBound) << row.fen;
        // A selective search may find a longer mate first, but overlooks none in one.
        if (row.moves == 1) {
            EXPECT_EQ(said.lastScore, MateScore - 1) << row.fen;
        }
    }
}
