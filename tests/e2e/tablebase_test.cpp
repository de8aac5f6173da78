// Tables through the binary: what a user sees of them, and that won games are won.
#include "e2e/uci_process.h"
#include "support/shared_data.h"
#include "support/temporary_folder.h"

#include <filesystem>

struct Tables : testing::Test {
    // Takes the tables of a folder, of which there are so many of so many men.
    void open(const std::string& folder, const std::string& count, const std::string& men) {
        engine.ask("setoption name SyzygyPath value " + folder, "info string Found " + count + " WDL and " +
                                                                    count + " DTZ tablebase files \\(up to " +
                                                                    men + "-man\\)\\.");
        engine.expect("info string Probing tablebases up to " + men + "-man\\.");
    }
    void openSmall() { open((testData() / "syzygy").string(), "13", "4"); }
    void openMany() { open((sharedData() / "syzygy").string(), "37", "5"); }
    // Searches, keeps the best move, and returns the last report with a score.
    std::string search(const std::string& fen, const std::string& go) {
        engine.send("position fen " + fen);
        best = engine.ask("go " + go, "bestmove .*");
        best = best.substr(9, best.find(' ', 9) - 9);
        const Lines reports = engine.matching("info depth .* score .*");
        return reports.empty() ? "" : reports.back();
    }

    UciProcess engine;
    std::string best;
};

struct TableRow {
    std::string option, fen, go, score;
    bool hit;
};
static const std::string NoChange = "Ponder value true";

static void expectRows(Tables& tables, const std::vector<TableRow>& rows) {
    for (const TableRow& row : rows) {
        SCOPED_TRACE(row.option + ' ' + row.fen);
        tables.engine.send("setoption name Clear Hash", "setoption name " + row.option);
        const std::string report = tables.search(row.fen, row.go);
        EXPECT_TRUE(matches(report, ".* score " + row.score + " nps .*"));
        EXPECT_EQ(numberAfter("tbhits", report) > 0, row.hit);
        EXPECT_NE(tables.best, "0000");
    }
}

TEST_F(Tables, ScoresAndHitsFollowTheOptions) {
    openSmall();
    const std::string queenWins = "8/8/8/2q5/5K2/8/8/2k5 b - -";
    const TemporaryFolder damaged;
    std::filesystem::copy_file(testData() / "syzygy/KQvK.rtbw", damaged.file("KRvK.rtbw"));
    expectRows(
        *this,
        {
            {NoChange, queenWins, "depth 2", "mate 1000", true},
            {NoChange, "8/8/8/2q5/8/4K3/8/2k5 w - -", "depth 2", "mate -1000", true},
            {NoChange, "8/8/2b1k3/8/8/5K2/2N5/8 w - -", "depth 2", "cp 0", true},
            {NoChange, "8/5k2/8/8/5K2/6p1/6P1/8 w - -", "depth 24", ".*", true},   // inside the search
            {NoChange, "8/8/8/4k3/8/8/8/R3K3 w Q -", "depth 2", "cp .*", false},   // tables know no castling
            {NoChange, queenWins, "movetime 100", "(cp .*|mate \\d\\d?)", false},  // too little time
            {"Syzygy Probe Limit value 0", queenWins, "depth 2", "cp .*", false},
            {"Syzygy Probe Limit value 9", queenWins, "depth 2", "mate 1000", true},
            {"Use Syzygy value false", queenWins, "depth 2", "cp .*", false},
            {"Use Syzygy value true", queenWins, "depth 2", "mate 1000", true},
            {"SyzygyPath value " + damaged.path(), "8/8/8/2r5/5K2/8/8/2k5 b - -", "depth 4", "cp .*", false},
        });
    EXPECT_EQ(engine.standardError(), "Corrupted table.\n");
}

TEST_F(Tables, OptionalWinsBeyondTheFiftyMoveRuleFollowTheOption) {
    OPTIONAL_WITH_SHARED_DATA();
    openMany();
    const std::string cursedWin = "8/8/8/1N2k3/p7/8/K4N2/8 w - -";
    expectRows(*this, {{NoChange, cursedWin, "depth 2", "cp 2", true},
                       {"Syzygy 50 Move Rule value false", cursedWin, "depth 2", "mate 1000", true}});
}

// Both sides play from the tables: the loser resists to the end, the winner may dawdle, and mate still comes.
static void expectMates(Tables& tables, const Lines& starts) {
    for (const std::string& start : starts) {
        std::string game = start + " moves";
        int plies = 0;
        for (; plies < 300; ++plies) {
            const std::string report = tables.search(game, "nodes 2000");
            if (tables.best == "0000") break;
            EXPECT_TRUE(plies % 2 || matches(report, ".* score mate .*")) << game;
            game += ' ' + tables.best;
        }
        EXPECT_EQ(plies % 2, 1) << "the loser must be to move: " << game;
    }
}

TEST_F(Tables, WonEndingsEndInMate) {
    openSmall();
    expectMates(*this,
                {"8/8/8/4k3/8/8/8/KQ6 w - -", "8/8/8/4k3/8/8/8/KR6 w - -", "4k3/8/4K3/4P3/8/8/8/8 w - -"});
}

TEST_F(Tables, OptionalWonEndingsOfFourMenEndInMate) {
    OPTIONAL_WITH_SHARED_DATA();
    openMany();
    expectMates(*this,
                {"8/8/8/4k3/8/8/8/KBN5 w - -", "8/8/8/4k3/8/8/8/KBB5 w - -", "8/8/8/4k3/8/7r/8/KQ6 w - -",
                 "8/8/8/4k3/7b/8/8/KQ6 w - -", "8/8/8/4k3/8/8/3P4/KB6 w - -", "8/8/8/4k3/8/8/2PP4/K7 w - -",
                 "8/8/8/8/8/8/1kp5/4K2Q w - -"});
}
