// Tables through the binary: what a user sees of them, and that won games are won.
#include "e2e/uci_process.h"
#include "support/shared_data.h"
#include "support/temporary_folder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <regex>

struct Tables : testing::Test {
    void SetUp() override {
        REQUIRE_SHARED_DATA();
        path = (*sharedData() / "syzygy").string();
        engine.send("setoption name SyzygyPath value " + path);
        engine.expect("info string Found 37 WDL and 37 DTZ tablebase files \\(up to 5-man\\)\\.");
        engine.expect("info string Probing tablebases up to 5-man\\.");
    }
    // Searches, and returns the last report with a score.
    std::string search(const std::string& fen, const std::string& go) {
        engine.send("position fen " + fen);
        engine.send("go " + go);
        best = engine.expect("bestmove .*");
        best = best.substr(9, best.find(' ', 9) - 9);
        std::string report;
        for (const std::string& line : engine.passed)
            if (line.find(" score ") != std::string::npos) report = line;
        return report;
    }
    static long hitsOf(const std::string& report) {
        std::smatch match;
        return std::regex_search(report, match, std::regex(" tbhits (\\d+)")) ? std::stol(match[1]) : -1;
    }
    static std::string scoreOf(const std::string& report) {
        std::smatch match;
        return std::regex_search(report, match, std::regex(" score (.*?) nps")) ? match[1].str() : "";
    }

    UciProcess engine;
    std::string path, best;
};

static const std::string QueenWins = "8/8/8/2q5/5K2/8/8/2k5 b - -";
static const std::string CursedWin = "8/8/8/1N2k3/p7/8/K4N2/8 w - -";

TEST_F(Tables, RootScoresHaveTheirWords) {
    EXPECT_EQ(scoreOf(search(QueenWins, "depth 2")), "mate 1000");
    EXPECT_EQ(scoreOf(search("8/8/8/2q5/8/4K3/8/2k5 w - -", "depth 2")), "mate -1000");
    EXPECT_EQ(scoreOf(search("8/kP6/8/8/8/8/8/3b1K2 b - -", "depth 2")), "cp 0");
    EXPECT_EQ(scoreOf(search(CursedWin, "depth 2")), "cp 2");
    engine.send("setoption name Syzygy 50 Move Rule value false");
    EXPECT_EQ(scoreOf(search(CursedWin, "depth 2")), "mate 1000");
}

TEST_F(Tables, HitsFollowTheOptionsAndTheClock) {
    const std::string nearTables = "8/5k2/8/3P1K2/8/7p/7P/8 w - -";
    EXPECT_GT(hitsOf(search(QueenWins, "depth 2")), 0);
    EXPECT_GT(hitsOf(search(nearTables, "depth 24")), 0) << "inside the search";
    EXPECT_EQ(hitsOf(search(QueenWins, "movetime 100")), 0) << "too little time";
    EXPECT_EQ(hitsOf(search("8/8/8/4k3/8/8/8/R3K3 w Q -", "depth 2")), 0) << "tables know no castling";
    engine.send("setoption name Syzygy Probe Limit value 0");
    EXPECT_EQ(hitsOf(search(QueenWins, "depth 2")), 0);
    engine.send("setoption name Syzygy Probe Limit value 9");
    engine.expect("info string Probing tablebases up to 5-man\\.");
    EXPECT_GT(hitsOf(search(QueenWins, "depth 2")), 0);
    engine.send("setoption name Use Syzygy value false");
    EXPECT_EQ(hitsOf(search(QueenWins, "depth 2")), 0);
}

TEST_F(Tables, ADamagedTableCostsOneMessageAndNoMove) {
    const TemporaryFolder folder;
    std::filesystem::copy_file(path + "/KQvK.rtbw", folder.file("KRvK.rtbw"));
    engine.send("setoption name SyzygyPath value " + folder.path());
    engine.expect("info string Found 1 WDL and 0 DTZ tablebase files \\(up to 3-man\\)\\.");
    EXPECT_EQ(hitsOf(search("8/8/8/2r5/5K2/8/8/2k5 b - -", "depth 4")), 0);
    EXPECT_NE(best, "0000");
    engine.send("quit");
    EXPECT_EQ(engine.exitStatus(), 0);
    EXPECT_EQ(engine.standardError(), "Corrupted table.\n");
}

// Both sides play from the tables: the loser resists to the end, the winner may dawdle, and mate still comes.
TEST_F(Tables, WonEndingsEndInMate) {
    const char* const starts[] = {"8/8/8/4k3/8/8/8/KBN5 w - -",  "8/8/8/4k3/8/8/8/KBB5 w - -",
                                  "8/8/8/4k3/8/7r/8/KQ6 w - -",  "8/8/8/4k3/7b/8/8/KQ6 w - -",
                                  "8/8/8/4k3/8/8/3P4/KB6 w - -", "8/8/8/4k3/8/8/2PP4/K7 w - -",
                                  "8/8/8/8/8/8/1kp5/4K2Q w - -"};
    for (const std::string start : starts) {
        std::string moves, report;
        int plies = 0;
        for (; plies < 300; ++plies) {
            report = search(start + moves, "nodes 2000");
            if (best == "0000") break;
            EXPECT_TRUE(plies % 2 || scoreOf(report).find("mate") == 0) << start << moves;
            if (moves.empty()) moves = " moves";
            moves.append(" ").append(best);
        }
        EXPECT_EQ(plies % 2, 1) << "the loser must be to move: " << start << moves;
    }
}
