// The tree search through the binary.
#include "e2e/uci_process.h"

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
    for (int i = 0; i < 40; ++i) {
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

TEST_P(TreeSearch, TurnedOffLeavesTheOtherSearchAsItWas) {
    engine.send("go movetime 300");
    engine.expect("bestmove .*");
    engine.send("setoption name Use MCTS value false");
    engine.send("go depth 6");
    engine.expect("info depth 6 time \\d+ nodes \\d+ score cp .*");
    engine.expect("bestmove .*");
}

INSTANTIATE_TEST_SUITE_P(Counts, TreeSearch, ::testing::Values(1, 4));

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
