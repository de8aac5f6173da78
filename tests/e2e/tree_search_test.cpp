// The tree search through the binary.
#include "e2e/uci_process.h"

#include <fstream>
#include <regex>

static void startTree(UciProcess& engine, int threads) {
    engine.send("setoption name Threads value " + std::to_string(threads),
                "setoption name Use MCTS value true");
    engine.sync();
}

TEST(TreeSearch, FindsMatesAndReportsInItsOwnForm) {
    UciProcess engine;
    for (const int threads : {1, 4}) {
        startTree(engine, threads);
        engine.send("position fen r1b1kb1r/pppp1ppp/5q2/4n3/3KP3/2N3PN/PPP4P/R1BQ1B1R b kq - 0 1");
        engine.ask(
            "go infinite",
            "info depth \\d+ seldepth \\d+ time \\d+ score cp -?\\d+ nodes \\d+ nps -?\\d+ pv f8c5( \\S+)+");
        engine.send("stop");
        engine.expect("info nodes \\d+");
        // The tree never says mate.
        engine.expect(
            "info depth \\d+ seldepth \\d+ time \\d+ nodes \\d+ nps -?\\d+ score cp \\d+ tbhits 0 "
            "hashfull \\d+ pv f8c5( \\S+)*");
        engine.expect("bestmove f8c5 ponder d4\\S+");
        engine.send("setoption name MultiPV value 2", "go infinite");
        for (const char* number : {"1", "2"})
            engine.expect(std::string("info multipv ") + number +
                          " depth \\d+ seldepth \\d+ time \\d+ nodes \\d+ nps \\d+ score cp -?\\d+ tbhits 0 "
                          "pv( \\S+)+");
        engine.ask("stop", "bestmove f8c5.*");
        engine.send("setoption name MultiPV value 1", "position fen 7k/8/8/8/8/8/r7/7K w - - 0 1");
        engine.ask("go wtime 60000 btime 60000", "bestmove h1g1.*");
        engine.send("position fen 7k/5K2/6Q1/8/8/8/8/8 b - - 0 1");
        engine.ask("go wtime 60000 btime 60000", "bestmove 0000");
    }
}

// The depth is looked at every two seconds, and ends a ponder search only after the hit.
TEST(TreeSearch, DepthWaitsForTheUser) {
    UciProcess engine;
    startTree(engine, 1);
    engine.ask("go ponder depth 1", "info depth .*");
    EXPECT_FALSE(engine.saysWithin("bestmove .*", 0.5));
    engine.ask("ponderhit", "bestmove .*");
    engine.ask("go infinite depth 1", "info depth .*");
    EXPECT_FALSE(engine.saysWithin("bestmove .*", 0.5));
    engine.ask("stop", "bestmove .*");
    engine.ask("go depth 1", "bestmove .*");
}

// The tree adds what the last move has left over, but a shorter clock doesn't hold it.
TEST(TreeSearch, OutlastsNoClock) {
    UciProcess engine;
    startTree(engine, 1);
    engine.send("position startpos moves e2e4", "go btime 60000 movestogo 2");
    engine.ask("stop", "bestmove .*");
    const double start = steadySeconds();
    engine.ask("go btime 300 movestogo 10", "bestmove .*");
    EXPECT_LT(steadySeconds() - start, 3);
}

// Up to mate in four, and the other mode must agree that the answer mates. Takes more time only for what was
// not found in less.
TEST(TreeMatesSlow, AreFoundWithinSeconds) {
    constexpr int CertainWin = 20000;  // centipawns
    UciProcess engine, judge;
    startTree(engine, 1);
    std::ifstream file(TARVOK_SOURCE_DIR "/tests/data/mates.epd");
    int rows = 0;
    for (std::string line; std::getline(file, line);) {
        std::smatch match;
        if (!std::regex_match(line, match, std::regex("(.*); dm ([1-4])"))) continue;
        SCOPED_TRACE(line);
        ++rows;
        const std::string position = "position fen " + match[1].str();
        std::string best;
        for (int milliseconds : {500, 3000, 10000}) {
            engine.send("ucinewgame", position);
            const std::string go = "go movetime " + std::to_string(milliseconds * Slowness);
            const std::string report = engine.ask(go, "info depth .* hashfull .*");
            best = engine.expect("bestmove .*").substr(9, 5);
            if (numberAfter("cp", report) >= CertainWin) break;
            best.clear();
        }
        ASSERT_FALSE(best.empty()) << "no mate seen";
        judge.send(position + " moves " + best);
        // The mated side has no move; a stalemate would not have scored.
        const std::string go = "go depth " + std::to_string(8 + 4 * std::stoi(match[2]));
        const bool isOver = judge.ask(go, "bestmove .*") == "bestmove 0000";
        EXPECT_TRUE(isOver || !judge.matching(".* score mate -.*").empty()) << best;
    }
    EXPECT_GE(rows, 45);
}
