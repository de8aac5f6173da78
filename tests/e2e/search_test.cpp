// Searches through the binary: every form of `go`, and commands that arrive while one runs.
#include "e2e/uci_process.h"
#include "support/temporary_folder.h"

#include <algorithm>
#include <fstream>
#include <regex>
#include <tuple>
#include <unistd.h>

static const std::string AnyMove = "bestmove [a-h][1-8][a-h][1-8].*";

TEST(Go, DepthReportsEachIterationAndTheEnd) {
    UciProcess engine;
    engine.sync();
    engine.send("position fen 8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1");
    engine.ask("go depth 19", "bestmove [a-h][1-8][a-h][1-8] ponder [a-h][1-8][a-h][1-8]");
    const Lines lines = engine.passed;
    ASSERT_GE(lines.size(), 2u);
    long deepest = 0;
    for (std::size_t i = 0; i + 2 < lines.size(); ++i) {
        if (std::regex_match(lines[i], std::regex("info (currmove|nodes) .*"))) continue;
        const long depth = numberAfter("depth", lines[i]);
        EXPECT_TRUE(matches(lines[i], std::string("info depth \\d+ time \\d+ nodes \\d+ score cp -?\\d+"
                                                  "( lowerbound| upperbound)? nps \\d+") +
                                          (depth >= 18 ? " hashfull \\d+" : "") +
                                          " tbhits 0 pv( [a-h][1-8][a-h][1-8][qnrb]?)+"));
        EXPECT_GE(depth, deepest);
        deepest = depth;
    }
    EXPECT_EQ(deepest, 19);
    EXPECT_TRUE(matches(lines[lines.size() - 2], "info depth 19 time \\d+ nodes \\d+ nps \\d+"));
    EXPECT_TRUE(matches(lines.back(), "info time \\d+ nodes \\d+ nps \\d+"));
}

TEST(Go, SeveralLinesAreNumberedAndShallowOnesHidden) {
    UciProcess engine;
    engine.send("setoption name MultiPV value 3", "setoption name Minimal Reporting value 6");
    engine.ask("go depth 8", AnyMove);
    const Lines lines = engine.matching(
        "info multipv [123] depth [78] time \\d+ nodes \\d+ score cp -?\\d+ nps \\d+ tbhits 0 pv( \\S+)+");
    EXPECT_EQ(engine.matching("info (multipv|depth) .* pv .*"), lines);
    ASSERT_FALSE(lines.empty());
    EXPECT_TRUE(matches(lines.front(), "info multipv 1 depth 7 .*"));
    EXPECT_TRUE(matches(lines.back(), "info multipv 3 depth 8 .*"));
}

TEST(Go, TimesAreKept) {
    UciProcess engine;
    engine.sync();
    const auto secondsOf = [&](const std::string& go) {
        const double start = steadySeconds();
        engine.ask(go, AnyMove);
        return steadySeconds() - start;
    };
    const double fixed = secondsOf("go movetime 500");
    EXPECT_GT(fixed, 0.35);
    EXPECT_LT(fixed, 5);
    // A busy machine may hold up some of the answers, but not most of them.
    std::vector<double> seconds(20);
    for (double& each : seconds) each = secondsOf("go wtime 50 btime 50");
    std::sort(seconds.begin(), seconds.end());
    EXPECT_LT(seconds[10], 0.05 * Slowness);
}

TEST(Go, NodesAreLimitedAndCountedAnew) {
    UciProcess engine;
    const auto nodesOf = [&](int limit) {
        engine.ask("go nodes " + std::to_string(limit), AnyMove);
        return numberAfter("nodes", joined(engine.matching("info time .*")));
    };
    for (const int limit : {50000, 1000, 100, 1}) {
        const long nodes = nodesOf(limit);
        EXPECT_GE(nodes, limit);
        EXPECT_LE(nodes, limit + 200);
    }
    // Nor do those of other threads, which may run on for a while.
    engine.send("setoption name Threads value 4");
    for (int i = 0; i < 20; ++i) EXPECT_LT(nodesOf(2), 2000);
}

TEST(Go, InfiniteAndPonderingHoldTheAnswer) {
    struct Row {
        std::string position, go, release, answer;
    };
    const std::string mateInOne = "fen 6k1/5ppp/8/8/8/8/8/K2R4 w - - 0 1";  // no search of it lasts
    const Row rows[] = {{mateInOne, "go infinite", "stop", "bestmove d1d8"},
                        {mateInOne, "go ponder depth 4", "ponderhit", "bestmove d1d8"},
                        {"startpos", "go ponder wtime 400 btime 400", "ponderhit", AnyMove},
                        {"startpos moves e2e4", "go ponder movetime 100", "stop", AnyMove}};
    UciProcess engine;
    engine.sync();
    for (const Row& row : rows) {
        engine.send("position " + row.position, row.go);
        EXPECT_FALSE(engine.saysWithin("bestmove .*", 0.5)) << row.go;
        engine.ask(row.release, row.answer);
    }
}

TEST(Go, AnyNumberOfThreadsFindsAMate) {
    UciProcess engine;
    engine.send("position fen r1b1kb1r/pppp1ppp/5q2/4n3/3KP3/2N3PN/PPP4P/R1BQ1B1R b kq - 0 1");
    for (const char* threads : {"1", "2", "4"}) {
        engine.send("setoption name Clear Hash", std::string("setoption name Threads value ") + threads);
        engine.ask("go depth 12", "bestmove f8c5.*");
        EXPECT_FALSE(engine.matching("info depth \\d+ .* score mate 3 .*").empty()) << threads;
    }
    // As many as there may be, with the smallest tables.
    engine.send("setoption name Table Memory value 1", "setoption name Threads value 128");
    engine.ask("go depth 5", AnyMove);
    EXPECT_FALSE(engine.matching("info string Threads now set to 128").empty());
    engine.send("quit");
    EXPECT_EQ(engine.exitStatus(), 0);
}

// ---- The same search again ----

// What searches of fixed depth say, apart from what comes by the clock.
static Lines searchLines(UciProcess& engine, int depth) {
    Lines lines;
    for (const char* position : {"startpos moves d2d4 g8f6", "fen 8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1",
                                 "fen r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -"}) {
        engine.send(std::string("position ") + position);
        lines.push_back(engine.ask("go depth " + std::to_string(depth), AnyMove));
        for (const std::string& line : engine.matching("info depth .*"))
            lines.push_back(std::regex_replace(line, std::regex(" (time|nps) \\d+"), ""));
    }
    EXPECT_GT(lines.size(), 20u);
    return lines;
}

TEST(SameSearch, IsAsBeforeOnceTheTreeModeIsOffAgain) {
    UciProcess engine;
    const auto linesNow = [&] {
        // A new pool has forgotten what its threads have learnt.
        engine.send("setoption name Threads value 2", "setoption name Threads value 1",
                    "setoption name Clear Hash");
        return searchLines(engine, 13);
    };
    const Lines before = linesNow();
    engine.send("setoption name Use MCTS value true");
    engine.ask("go movetime 500", AnyMove);
    engine.send("setoption name Use MCTS value false");
    EXPECT_EQ(linesNow(), before);
}

// Each engine is fresh, so the file alone can save the work.
TEST(SameSearch, IsShorterWithAHashFile) {
    const TemporaryFolder folder;
    UciProcess deep, cold, warm;
    for (UciProcess* engine : {&deep, &cold, &warm})
        engine->send("setoption name Contempt value 0", "setoption name Hash value 16",
                     "setoption name Hash File Name value " + folder.path() + "/hash with blank");
    const auto nodesTo = [](UciProcess& engine, int depth) {
        engine.send("position fen r1bq1rk1/pp2bppp/2n1pn2/3p4/2PP4/2N2N2/PP2BPPP/R1BQ1RK1 w - -");
        engine.ask("go depth " + std::to_string(depth), AnyMove);
        return numberAfter("nodes", joined(engine.matching("info time .*")));
    };
    nodesTo(deep, 12);
    deep.ask("setoption name Save Hash to File", "info string Hash Saved");
    warm.ask("setoption name Load Hash from File", "info string Loading Hash from .*/hash with blank");
    warm.expect("info string Hash Loaded");
    EXPECT_LT(nodesTo(warm, 8), nodesTo(cold, 8) / 2);
}

// ---- While a search runs ----

TEST(DuringASearch, CommandsAreAnsweredOrWait) {
    UciProcess engine;
    engine.send("setoption name Contempt value 5");
    engine.ask("go infinite", "info depth 8 .*");
    engine.send("go depth 1", "setoption name Hash value 5", "setoption name Skill value 19",
                "setoption name Threads value 2", "setoption name MCTS Hash value 256",
                "setoption name MCTS Hash value 0", "setoption name Load Hash from File",
                "position fen 7k/8/8/8/8/8/r7/7K w - - 0 1");
    engine.ask("perft 2", "400, MNPS=.*");
    engine.sync();
    EXPECT_EQ(engine.passed, engine.matching("info (depth|nodes|currmove) .*")) << "reports only";
    engine.ask("stop", AnyMove);
    for (const char* late :
         {"info string Hash table size is now 5 meg", "info string Threads now set to 2",
          // That of its own line, whatever the next line says.
          "info string MCTS Hash table size is now 256 meg", "info string no such file <empty>"})
        engine.expect(late);
    engine.ask("perft 1", "1, MNPS=.*");
    engine.ask("uci", "uciok");
    EXPECT_EQ(engine.matching("option name (Hash|Skill|Contempt|Threads) .* default (5|19|2) .*").size(), 4u);
    engine.send("setoption name Use MCTS value true", "position startpos");
    engine.ask("go movetime 300", AnyMove);
}

class Modes : public ::testing::TestWithParam<std::tuple<int, bool>> {};  // threads, and the tree mode

TEST_P(Modes, EachStopIsAnsweredOnceAndTheEndComesAtOnce) {
    const auto [threads, tree] = GetParam();
    for (const bool quits : {true, false}) {
        UciProcess engine;
        engine.send("setoption name Threads value " + std::to_string(threads),
                    std::string("setoption name Use MCTS value ") + (tree ? "true" : "false"));
        engine.sync();
        for (unsigned i = 0; i < 85; ++i) {
            engine.send("go infinite");
            if (i % 3 == 0) usleep(i % 7 * (tree ? 12000 : 1500));  // the tree comes after another search
            engine.ask("stop", AnyMove);
        }
        EXPECT_EQ(engine.sync(), Lines{});
        engine.ask("go infinite", "info depth (6|\\d+ seldepth) .*");
        if (quits)
            engine.send("quit");
        else
            engine.closeInput();
        EXPECT_EQ(engine.exitStatus(), 0);
    }
}

INSTANTIATE_TEST_SUITE_P(ThreadsAndTree, Modes,
                         ::testing::Combine(::testing::Values(1, 2, 4), ::testing::Bool()));

// ---- Bench ----

// The nodes of a fixed search: whatever changes a score, the order of moves or what is pruned changes them.
TEST(BenchSlow, SearchesTheNodesOfTheSignature) {
    std::ifstream file(TARVOK_SOURCE_DIR "/tests/data/signature.txt");
    for (std::string depth, nodes; file >> depth >> nodes;) {
        UciProcess engine({"bench", "1", depth, "1"});
        EXPECT_TRUE(engine.saysWithin(depth + " \\.{50} +" + nodes + " nds .*", UciProcess::Patience))
            << depth;
    }
}

// Of any other number than 1 to 64, one thread is left, whose nodes are always the same.
TEST(Bench, PassesOverNumbersOfThreadsThatItDoesNotTake) {
    const auto nodes = [](const std::string& threads) {
        UciProcess engine({"bench", threads, "5"});
        const std::string row = engine.expect(" 5 \\.{50} +\\d+ nds .*");
        return row.substr(0, row.find(" nds"));
    };
    const std::string single = nodes("1");
    for (const char* threads : {"0", "-1", "65", "4294967298"}) EXPECT_EQ(nodes(threads), single) << threads;
}

TEST(Bench, PrintsADepthALineForEachPass) {
    struct Row {
        Lines arguments;
        std::string output;
    };
    const std::string dots = "\\.{50} +\\d+ nds +[0-9.]+ sec";
    const std::string pass = "\\| 5 " + dots + "\\| 6 " + dots + " +[0-9.]+ bf\\|\\|";
    for (const Row& row : {Row{{"bench", "1", "6"}, pass}, Row{{"bench", "2", "6", "2"}, pass + pass},
                           Row{{"bench", "1", "4"}, "\\|\\|"}, Row{{"bench", "1", "6", "0"}, ""}}) {
        UciProcess engine(row.arguments);
        Lines lines = engine.rest();
        EXPECT_EQ(engine.exitStatus(), 0);
        lines.erase(lines.begin(), lines.begin() + std::min<long>(4, long(lines.size())));  // the banner
        EXPECT_TRUE(matches(joined(lines), row.output));
    }
}
