// Tables through the binary: what a user sees of them, and that won games are won.
#include "e2e/uci_process.h"
#include "support/shared_data.h"
#include "support/temporary_folder.h"

#include <filesystem>

struct Tables : testing::Test {
    void SetUp() override {
        REQUIRE_SHARED_DATA();
        path = (*sharedData() / "syzygy").string();
        engine.ask("setoption name SyzygyPath value " + path,
                   "info string Found 37 WDL and 37 DTZ tablebase files \\(up to 5-man\\)\\.");
        engine.expect("info string Probing tablebases up to 5-man\\.");
    }
    // Searches, keeps the best move, and returns the last report with a score.
    std::string search(const std::string& fen, const std::string& go) {
        engine.send("position fen " + fen);
        best = engine.ask("go " + go, "bestmove .*");
        best = best.substr(9, best.find(' ', 9) - 9);
        const Lines reports = engine.matching("info depth .* score .*");
        return reports.empty() ? "" : reports.back();
    }

    UciProcess engine;
    std::string path, best;
};

TEST_F(Tables, ScoresAndHitsFollowTheOptions) {
    struct Row {
        std::string option, fen, go, score;
        bool hit;
    };
    const std::string none = "Ponder value true", queenWins = "8/8/8/2q5/5K2/8/8/2k5 b - -";
    const std::string cursedWin = "8/8/8/1N2k3/p7/8/K4N2/8 w - -";
    const TemporaryFolder damaged;
    std::filesystem::copy_file(path + "/KQvK.rtbw", damaged.file("KRvK.rtbw"));
    const Row rows[] = {
        {none, queenWins, "depth 2", "mate 1000", true},
        {none, "8/8/8/2q5/8/4K3/8/2k5 w - -", "depth 2", "mate -1000", true},
        {none, "8/kP6/8/8/8/8/8/3b1K2 b - -", "depth 2", "cp 0", true},
        {none, cursedWin, "depth 2", "cp 2", true},
        {none, "8/5k2/8/3P1K2/8/7p/7P/8 w - -", "depth 24", ".*", true},   // inside the search
        {none, "8/8/8/4k3/8/8/8/R3K3 w Q -", "depth 2", "cp .*", false},   // tables know no castling
        {none, queenWins, "movetime 100", "(cp .*|mate \\d\\d?)", false},  // too little time
        {"Syzygy 50 Move Rule value false", cursedWin, "depth 2", "mate 1000", true},
        {"Syzygy Probe Limit value 0", queenWins, "depth 2", "cp .*", false},
        {"Syzygy Probe Limit value 9", queenWins, "depth 2", "mate 1000", true},
        {"Use Syzygy value false", queenWins, "depth 2", "cp .*", false},
        {"Use Syzygy value true", queenWins, "depth 2", "mate 1000", true},
        {"SyzygyPath value " + damaged.path(), "8/8/8/2r5/5K2/8/8/2k5 b - -", "depth 4", "cp .*", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.option + ' ' + row.fen);
        engine.send("setoption name Clear Hash", "setoption name " + row.option);
        const std::string report = search(row.fen, row.go);
        EXPECT_TRUE(matches(report, ".* score " + row.score + " nps .*"));
        EXPECT_EQ(numberAfter("tbhits", report) > 0, row.hit);
        EXPECT_NE(best, "0000");
    }
    EXPECT_EQ(engine.standardError(), "Corrupted table.\n");
}

// Both sides play from the tables: the loser resists to the end, the winner may dawdle, and mate still comes.
TEST_F(Tables, WonEndingsEndInMate) {
    for (const std::string start :
         {"8/8/8/4k3/8/8/8/KBN5 w - -", "8/8/8/4k3/8/8/8/KBB5 w - -", "8/8/8/4k3/8/7r/8/KQ6 w - -",
          "8/8/8/4k3/7b/8/8/KQ6 w - -", "8/8/8/4k3/8/8/3P4/KB6 w - -", "8/8/8/4k3/8/8/2PP4/K7 w - -",
          "8/8/8/8/8/8/1kp5/4K2Q w - -"}) {
        std::string game = start + " moves";
        int plies = 0;
        for (; plies < 300; ++plies) {
            const std::string report = search(game, "nodes 2000");
            if (best == "0000") break;
            EXPECT_TRUE(plies % 2 || matches(report, ".* score mate .*")) << game;
            game += ' ' + best;
        }
        EXPECT_EQ(plies % 2, 1) << "the loser must be to move: " << game;
    }
}
