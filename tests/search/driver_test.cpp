// Whole searches from the root, with reports recorded instead of printed; the pool under many kinds of use.
#include "board/legality.h"
#include "endgame/book.h"
#include "endgame/polyglot_keys.h"
#include "eval/king_danger.h"
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
        think(root, depth, NoTimeLimit, NoTimeLimit, searchMoves, false);
    }
};

TEST_F(Driver, ReportsTheEndInItsOrder) {
    static std::string ends;
    ends.clear();
    searchHost.reportDepthEnd = [](int depth) { ends += std::to_string(depth); };
    searchHost.reportSearchEnd = [] { ends += said.answers ? '-' : 's'; };
    searchHost.searchOver = [] { ends += searchControl.searching || said.answers != 1 ? '-' : 'o'; };
    search("", 7);
    EXPECT_EQ(ends, "7so");
    EXPECT_EQ(said.lastDepth, 7);
    EXPECT_EQ(said.best, said.line[0]);
    EXPECT_EQ(said.ponder, said.line[1]);
    searchControl.benchMode = true;
    search("", 3);
    EXPECT_EQ(ends, "7soo") << "bench hears only of the end";
}

// A quit that comes while the answer is held back ends the wait; one that came before leaves no answer.
TEST_F(Driver, AQuitEndsTheSearchAndTheWaitForTheUser) {
    static int waits, endings;
    waits = endings = 0;
    searchHost.waitForInput = [] { searchControl.quitRequested = ++waits == 3; };
    searchHost.shutDown = [] { ++endings; };
    searchControl.ponder = true;
    search("", 3);
    EXPECT_EQ(waits, 3);
    EXPECT_EQ(said.answers, 1);
    EXPECT_EQ(endings, 0);
    search("", 5);
    EXPECT_EQ(endings, 1);
    EXPECT_EQ(said.answers, 1);
    EXPECT_FALSE(searchControl.searching);
}

TEST_F(Driver, TheBookAnswersOnlyWhatIsAskedFor) {
    constexpr unsigned A2A4 = 1 << 9 | 3 << 3;  // ranks and files from 0
    const TemporaryFolder folder;
    Position start;
    setFen(&start, "");
    // No group may be the last.
    folder.write("book.bin", bookRecord(bookKey(start), A2A4, 1) + bookRecord(~std::uint64_t{0}, 0, 0));
    settings.bookFile = folder.file("book.bin");
    openBook();
    for (const char* searchMoves : {"", "h2h3 a2a4 "}) {
        search("", 4, searchMoves);
        EXPECT_EQ(moveText(said.best), "a2a4");
        EXPECT_EQ(said.ponder, NoMove);
        EXPECT_EQ(said.lastDepth, 0) << "nothing is searched";
    }
    search("", 4, "h2h3 b2b3 ");
    EXPECT_NE(moveText(said.best), "a2a4");
    EXPECT_EQ(said.lastDepth, 4);
    settings.ownBook = 0;
    said.lastDepth = 0;
    search("", 4);
    EXPECT_EQ(said.lastDepth, 4);
    closeBook();
}

TEST_F(Driver, AllocatesNothingWhileItSearches) {
    search("", 6);
    Position root;
    setFen(&root, "r1bq1rk1/pp2bppp/2n1pn2/2pp4/2P5/1P3NP1/PB1PPPBP/RN1Q1RK1 w - -");
    const long before = allocationCount();
    think(root, 9, NoTimeLimit, NoTimeLimit, "", false);
    EXPECT_EQ(allocationCount(), before);
    EXPECT_GT(threadPool.totalNodes(), 1000u);
}

TEST_F(Driver, StrengthLimitsTheDepth) {
    for (const auto& [skill, depth] : {std::pair{0, 1}, std::pair{12, 4}, std::pair{20, 6}}) {
        settings.skill = skill;
        search("", 6);
        EXPECT_EQ(said.lastDepth, depth) << skill;
    }
}

// What varies the play leaves nothing behind when it is switched off.
TEST_F(Driver, FullStrengthForgetsTheVariation) {
    const auto kingDanger = [] { return std::vector<Lanes>(KingDanger, KingDanger + KingDangerEntries); };
    initEvalParameters();
    const std::vector<Lanes> plain = kingDanger();
    settings.variety = 20;
    for (int i = 0; i < 200 && kingDanger() == plain; ++i) {
        search("8/8/8/8/8/8/k7/2K5 b - -", 1);
        search("", 1);  // a new game
    }
    EXPECT_NE(kingDanger(), plain);
    settings.variety = 0;
    std::srand(1);
    const int first = std::rand();
    std::srand(1);
    search("8/8/8/8/8/8/k7/2K5 b - -", 1);
    EXPECT_EQ(kingDanger(), plain);
    EXPECT_EQ(std::rand(), first) << "nothing is drawn for it";
}

// Each move of the line is legal, the last one mates, and there are as many as the score says.
TEST_F(Driver, FindsEveryMateAndShowsItsLine) {
    std::ifstream file(std::string(TARVOK_SOURCE_DIR) + "/tests/data/mates.epd");
    int rows = 0;
    for (std::string line; std::getline(file, line);) {
        std::smatch match;
        if (!std::regex_match(line, match, std::regex("(.*); dm (\\d+)"))) continue;
        SCOPED_TRACE(line);
        const int moves = std::stoi(match[2]);
        ++rows;
        forgetEverything();
        search(match[1], 8 + 4 * moves);
        EXPECT_GE(said.lastScore, MateBound);
        // A selective search may find a longer mate first, but overlooks none in one.
        if (moves == 1) {
            EXPECT_EQ(said.lastScore, MateScore - 1);
            EXPECT_LT(said.lastDepth, 5) << "a mate ends the deepening";
        }
        std::vector<std::string> texts;
        for (const Move* move = said.line; *move; ++move) texts.push_back(moveText(*move));
        EXPECT_EQ(int(texts.size()), MateScore - said.lastScore);
        const auto chain = play(match[1], texts);
        EXPECT_TRUE(chain.back().inCheck);
        EXPECT_FALSE(hasLegalMove(chain.back()));
    }
    EXPECT_GE(rows, 50);
}
