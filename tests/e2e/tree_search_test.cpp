// The tree search through the binary.
#include "e2e/uci_process.h"

#include <fstream>
#include <gtest/gtest.h>
#include <regex>

class TreeSearch : public ::testing::TestWithParam<int> {
   protected:
    TreeSearch() {
        engine.send("setoption name Threads value " + std::to_string(GetParam()));
        engine.send("setoption name Use MCTS value true");
        engine.sync();
    }
    UciProcess engine;
};

TEST_P(TreeSearch, FindsMatesAndReportsInItsOwnForm) {
    engine.send("position fen r1b1kb1r/pppp1ppp/5q2/4n3/3KP3/2N3PN/PPP4P/R1BQ1B1R b kq - 0 1");
    engine.send("go infinite");
    engine.expect(
        "info depth \\d+ seldepth \\d+ time \\d+ score cp -?\\d+ nodes \\d+ nps -?\\d+ pv f8c5( \\S+)+", 100);
    engine.send("stop");
    engine.expect("info nodes \\d+");
    const std::string last = engine.expect(
        "info depth \\d+ seldepth \\d+ time \\d+ nodes \\d+ nps -?\\d+ score cp \\d+ tbhits 0 hashfull \\d+ "
        "pv f8c5( \\S+)*");
    EXPECT_EQ(last.find("mate"), std::string::npos);
    engine.expect("bestmove f8c5 ponder d4\\S+");
}

TEST_P(TreeSearch, StopCyclesAnswerOnceEach) {
    for (int i = 0; i < 100; ++i) {
        engine.send("go infinite");
        if (i % 4 == 0) engine.saysWithin("nothing", 0.02 * (i % 5));
        engine.send("stop");
        engine.expect("bestmove [a-h][1-8].*", 20);
    }
    EXPECT_TRUE(engine.sync().empty());
    engine.send("go infinite");
    engine.send("quit");
    EXPECT_EQ(engine.exitStatus(20), 0);
}

TEST_P(TreeSearch, SingleMovesAndNoMovesAreAnswered) {
    engine.send("position fen 7k/8/8/8/8/8/r7/7K w - - 0 1");
    engine.send("go wtime 60000 btime 60000");
    engine.expect("bestmove h1g1.*", 20);
    engine.send("position fen 7k/5K2/6Q1/8/8/8/8/8 b - - 0 1");
    engine.send("go wtime 60000 btime 60000");
    engine.expect("bestmove 0000", 20);
}

INSTANTIATE_TEST_SUITE_P(Counts, TreeSearch, ::testing::Values(1, 4));

// ---- The mode and the other search ----

// The nodes of fixed depths. A new pool has forgotten what its threads have learnt.
static std::vector<std::string> fixedDepthNodes(UciProcess& engine) {
    std::vector<std::string> nodes;
    for (const char* position :
         {"startpos", "fen r1bq1rk1/pp2bppp/2n1pn2/2pp4/2P5/1P3NP1/PB1PPPBP/RN1Q1RK1 w - - 0 1",
          "fen 8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1"}) {
        engine.send("setoption name Threads value 2");
        engine.send("setoption name Threads value 1");
        engine.send("setoption name Clear Hash");
        engine.send(std::string("position ") + position);
        engine.send("go depth 13");
        engine.expect("bestmove .*");
        for (const std::string& line : engine.passed) {
            std::smatch match;
            if (std::regex_match(line, match, std::regex("info depth 13 .* nodes (\\d+) .*")))
                nodes.push_back(match[1]);
        }
    }
    return nodes;
}

TEST(TreeMode, OnAndOffAgainTheOtherSearchIsAsBefore) {
    UciProcess engine;
    const std::vector<std::string> before = fixedDepthNodes(engine);
    EXPECT_GE(before.size(), 3u);
    engine.send("setoption name Use MCTS value true");
    engine.send("position startpos");
    engine.send("go movetime 500");
    engine.expect("bestmove .*");
    engine.send("setoption name Use MCTS value false");
    EXPECT_EQ(fixedDepthNodes(engine), before);
}

// ---- Mates ----

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr int Slowness = 10;
#else
constexpr int Slowness = 1;
#endif

// Up to mate in four, and the other mode must agree that the answer mates. Takes more time only for what was
// not found in less.
TEST(TreeMatesSlow, AreFoundWithinSeconds) {
    constexpr int CertainWin = 20000;  // centipawns; the tree never says mate
    UciProcess engine, judge;
    engine.send("setoption name Use MCTS value true");
    std::ifstream file(std::string(TARVOK_SOURCE_DIR) + "/tests/data/mates.epd");
    std::string line;
    int rows = 0;
    while (std::getline(file, line)) {
        std::smatch match;
        if (!std::regex_match(line, match, std::regex("(.*); dm ([1-4])"))) continue;
        const std::string position = "position fen " + match[1].str();
        const int moves = std::stoi(match[2]);
        ++rows;
        std::string best;
        for (const int milliseconds : {500, 3000, 10000}) {
            engine.send("ucinewgame");
            engine.send(position);
            engine.send("go movetime " + std::to_string(milliseconds * Slowness));
            const std::string report = engine.expect("info depth .* hashfull .*", 200);
            best = engine.expect("bestmove .*").substr(9, 5);
            if (std::stoi(report.substr(report.find(" cp ") + 4)) >= CertainWin) break;
            best.clear();
        }
        ASSERT_FALSE(best.empty()) << "no mate seen: " << line;
        judge.send(position + " moves " + best);
        judge.send("go depth " + std::to_string(8 + 4 * moves));
        // The mated side has no move; a stalemate would not have scored.
        bool mates = judge.expect("bestmove .*", 60) == "bestmove 0000";
        for (const std::string& said : judge.passed) mates |= said.find(" score mate -") != std::string::npos;
        EXPECT_TRUE(mates) << best << " in " << line;
    }
    EXPECT_GE(rows, 45);
}

// ---- The node store ----

// A size that is set during a search is that of its own line, whatever the next line says.
TEST(TreeStore, SizesSetDuringASearchWaitForItsEnd) {
    UciProcess engine;
    engine.sync();
    engine.send("go infinite");
    engine.expect("info depth 6 .*");
    engine.send("setoption name MCTS Hash value 256");
    engine.send("setoption name MCTS Hash value 0");
    engine.send("stop");
    engine.expect("bestmove .*");
    engine.expect("info string MCTS Hash table size is now 256 meg");
    engine.send("setoption name Use MCTS value true");
    engine.send("go movetime 300");
    engine.expect("bestmove [a-h][1-8].*");
    engine.send("quit");
    EXPECT_EQ(engine.exitStatus(), 0);
}

// The smallest store is full within seconds in an ending that is searched quickly.
TEST(TreeStoreSlow, AFullOneWaitsForTheStop) {
    UciProcess engine;
    engine.send("setoption name Threads value 4");
    engine.send("setoption name MCTS Hash value 1");
    engine.send("setoption name Use MCTS value true");
    engine.send("position fen 8/8/4k3/p1p1p1p1/P1P1P1P1/4K3/8/8 w - - 0 1");
    engine.send("go infinite");
    engine.expect("info nodes 1[56]\\d{3}", 1500);
    EXPECT_FALSE(engine.saysWithin("bestmove .*", 1));
    engine.send("stop");
    engine.expect("bestmove e3\\S+ ponder e6\\S+");
    engine.send("position startpos");
    engine.send("go movetime 200");
    engine.expect("bestmove [a-h][1-8].*");
}
