// Searches through the binary: every form of `go`, and commands that arrive while one runs.
#include "e2e/uci_process.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>
#include <regex>
#include <unistd.h>

static int depthOf(const std::string& line) {
    std::smatch match;
    return std::regex_search(line, match, std::regex("info depth (\\d+) time .* score")) ? std::stoi(match[1])
                                                                                         : 0;
}

static std::vector<std::string> linesMatching(const std::vector<std::string>& lines,
                                              const std::string& pattern) {
    const std::regex wanted(pattern);
    std::vector<std::string> found;
    for (const std::string& line : lines)
        if (std::regex_match(line, wanted)) found.push_back(line);
    return found;
}

TEST(Go, DepthReportsEachIterationAndTheEnd) {
    UciProcess engine;
    engine.sync();
    engine.send("go depth 19");
    engine.expect("bestmove [a-h][1-8][a-h][1-8] ponder [a-h][1-8][a-h][1-8]");
    const std::vector<std::string> lines = engine.passed;
    static const std::regex Main(
        "info depth (\\d+) time \\d+ nodes \\d+ score cp -?\\d+( lowerbound| upperbound)? nps \\d+"
        "( hashfull \\d+)? tbhits 0 pv( [a-h][1-8][a-h][1-8][qnrb]?)+");
    int deepest = 0;
    for (std::size_t i = 0; i + 2 < lines.size(); ++i) {
        std::smatch match;
        if (std::regex_match(lines[i], std::regex("info (currmove|nodes) .*"))) continue;
        ASSERT_TRUE(std::regex_match(lines[i], match, Main)) << lines[i];
        const int depth = std::stoi(match[1]);
        EXPECT_GE(depth, deepest);
        deepest = depth;
        EXPECT_EQ(match[3].matched, depth >= 18) << lines[i];
    }
    EXPECT_EQ(deepest, 19);
    ASSERT_GE(lines.size(), 2u);
    EXPECT_TRUE(
        std::regex_match(lines[lines.size() - 2], std::regex("info depth 19 time \\d+ nodes \\d+ nps \\d+")));
    EXPECT_TRUE(std::regex_match(lines.back(), std::regex("info time \\d+ nodes \\d+ nps \\d+")));
}

TEST(Go, MinimalReportingHidesShallowLines) {
    UciProcess engine;
    engine.send("setoption name Minimal Reporting value 6");
    engine.send("go depth 9");
    engine.expect("bestmove .*");
    const std::vector<std::string> lines = linesMatching(engine.passed, "info depth \\d+ time .* pv .*");
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(depthOf(lines.front()), 7);
}

TEST(Go, MovetimeEndsOnTime) {
    UciProcess engine;
    engine.sync();
    const double start = steadySeconds();
    engine.send("go movetime 500");
    engine.expect("bestmove .*");
    const double seconds = steadySeconds() - start;
    EXPECT_GT(seconds, 0.35);
    EXPECT_LT(seconds, 1.5);
}

TEST(Go, NodesOfTheLastSearchDontCount) {
    UciProcess engine;
    engine.send("setoption name Threads value 4");
    // Many enough that thread 0 gets its turn on a busy machine.
    for (const int limit : {600000, 400000, 400000}) {
        engine.send("go nodes " + std::to_string(limit));
        engine.expect("bestmove .*");
        EXPECT_FALSE(linesMatching(engine.passed, "info depth [2-9] time .* pv .*").empty()) << limit;
    }
}

TEST(Go, NodesStopNearTheirNumber) {
    for (const int limit : {1, 100, 1000, 50000}) {
        UciProcess engine;
        engine.sync();
        engine.send("go nodes " + std::to_string(limit));
        engine.expect("bestmove [a-h][1-8].*");
        std::smatch match;
        ASSERT_TRUE(std::regex_search(engine.passed.back(), match, std::regex("nodes (\\d+)")));
        EXPECT_GE(std::stoi(match[1]), limit);
        EXPECT_LE(std::stoi(match[1]), limit + 200);
    }
}

TEST(Go, ShortClocksAreNeverOverstepped) {
    UciProcess engine;
    engine.sync();
    for (int i = 0; i < 20; ++i) {
        const double start = steadySeconds();
        engine.send("go wtime 50 btime 50");
        engine.expect("bestmove [a-h][1-8].*");
        EXPECT_LT(steadySeconds() - start, 0.05) << i;
    }
    for (const char* line : {"go wtime 0 btime 0", "go wtime -5 btime -5", "go movestogo 1 wtime 0",
                             "go winc 0", "go wtime 1000 foo btime 1000"}) {
        engine.send(line);
        engine.expect("bestmove [a-h][1-8].*", 3);
    }
}

TEST(Go, InfiniteHoldsItsAnswerUntilStop) {
    UciProcess engine;
    engine.sync();
    // A mate in one is known at once; the answer waits all the same.
    engine.send("position fen 6k1/5ppp/8/8/8/8/8/K2R4 w - - 0 1");
    engine.send("go infinite");
    EXPECT_FALSE(engine.saysWithin("bestmove .*", 0.5));
    engine.send("stop");
    EXPECT_EQ(engine.expect("bestmove .*", 5), "bestmove d1d8");
}

TEST(Go, PonderWaitsForItsHit) {
    UciProcess engine;
    engine.sync();
    engine.send("position startpos moves e2e4 e7e5");
    engine.send("go ponder wtime 400 btime 400");
    EXPECT_FALSE(engine.saysWithin("bestmove .*", 1.0));
    const double start = steadySeconds();
    engine.send("ponderhit");
    engine.expect("bestmove [a-h][1-8].*", 5);
    EXPECT_LT(steadySeconds() - start, 0.5);
    engine.send("go ponder depth 4");
    EXPECT_FALSE(engine.saysWithin("bestmove .*", 0.3));
    engine.send("stop");
    engine.expect("bestmove [a-h][1-8].*", 5);
}

TEST(Go, SearchmovesLimitTheAnswer) {
    UciProcess engine;
    engine.send("go searchmoves a2a3 h2h4 depth 6");
    engine.expect("bestmove (a2a3|h2h4).*");
    engine.send("go depth 4 searchmoves e2e5 nonsense");
    engine.expect("bestmove 0000");
    engine.send("position fen 7k/P7/8/8/8/8/8/K7 w - - 0 1");
    engine.send("go depth 3 searchmoves a7a8n");
    engine.expect("bestmove a7a8n.*");
}

TEST(Go, PositionsWithoutAMoveAnswerWithNone) {
    UciProcess engine;
    for (const char* fen : {"7k/5KQ1/8/8/8/8/8/8 b - -", "7k/5K2/6Q1/8/8/8/8/8 b - -"}) {
        engine.send(std::string("position fen ") + fen);
        engine.send("go depth 5");
        engine.expect("bestmove 0000");
    }
}

TEST(Go, MultiPvPrintsDifferentMovesBestFirst) {
    UciProcess engine;
    engine.send("setoption name MultiPV value 4");
    engine.send("go depth 8");
    engine.expect("bestmove .*");
    const std::vector<std::string> lines = linesMatching(engine.passed, "info multipv \\d+ depth 8 .*");
    ASSERT_GE(lines.size(), 4u);
    std::vector<std::string> moves;
    int last = 100000;
    for (std::size_t i = lines.size() - 4; i < lines.size(); ++i) {
        std::smatch match;
        ASSERT_TRUE(
            std::regex_search(lines[i], match, std::regex("multipv (\\d) .* cp (-?\\d+) .* pv (\\S+)")));
        EXPECT_EQ(std::size_t(std::stoi(match[1])), i - (lines.size() - 4) + 1);
        EXPECT_LE(std::stoi(match[2]), last);
        last = std::stoi(match[2]);
        for (const std::string& other : moves) EXPECT_NE(other, match[3]);
        moves.push_back(match[3]);
    }
    // No more lines than there are moves.
    engine.send("position fen 7k/8/8/8/8/8/r7/7K w - - 0 1");
    engine.send("go depth 4");
    engine.expect("bestmove h1g1.*");
    for (const std::string& line : engine.passed) EXPECT_EQ(line.find("multipv 2"), std::string::npos);
}

TEST(Go, SameCommandsGiveTheSameLines) {
    const auto run = [] {
        UciProcess engine;
        std::vector<std::string> lines;
        engine.sync();
        for (const char* line :
             {"position startpos", "position startpos moves d2d4 g8f6",
              "position fen r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -"}) {
            engine.send(line);
            engine.send("go depth 9");
            lines.push_back(engine.expect("bestmove .*"));
            for (const std::string& text : engine.passed) {
                // These come by the clock.
                if (std::regex_match(text, std::regex("info (nodes|currmove) .*"))) continue;
                lines.push_back(std::regex_replace(text, std::regex(" (time|nps) \\d+"), ""));
            }
        }
        return lines;
    };
    const std::vector<std::string> first = run();
    EXPECT_EQ(first, run());
    EXPECT_GT(first.size(), 20u);
}

// A shallow search with the file of a deep one. Each engine is fresh, so the file alone can save the work.
TEST(Go, AHashFileSavesWork) {
    const TemporaryFolder folder;
    const auto setUp = [&](UciProcess& engine) {
        engine.send("setoption name Contempt value 0");
        engine.send("setoption name Hash value 16");
        engine.send("setoption name Hash File Name value " + folder.file("hash").string());
        engine.send("position fen r1bq1rk1/pp2bppp/2n1pn2/3p4/2PP4/2N2N2/PP2BPPP/R1BQ1RK1 w - -");
        engine.sync();
    };
    const auto nodesTo = [](UciProcess& engine, int depth) {
        engine.send("go depth " + std::to_string(depth));
        engine.expect("bestmove .*");
        std::smatch match;
        std::regex_search(engine.passed.back(), match, std::regex("nodes (\\d+)"));
        return std::stol(match[1]);
    };
    UciProcess deep, cold, warm;
    for (UciProcess* engine : {&deep, &cold, &warm}) setUp(*engine);
    nodesTo(deep, 12);
    deep.send("setoption name Save Hash to File");
    deep.expect("info string Hash Saved");
    warm.send("setoption name Load Hash from File");
    warm.expect("info string Hash Loaded");
    EXPECT_LT(nodesTo(warm, 8), nodesTo(cold, 8) / 2);
}

// ---- While a search runs ----

TEST(DuringASearch, CommandsAreAnsweredOrWait) {
    UciProcess engine;
    engine.sync();
    engine.send("setoption name Contempt value 5");
    engine.send("go infinite");
    engine.expect("info depth 8 .*");
    engine.send("isready");
    engine.expect("readyok", 3);
    engine.send("go depth 1");
    engine.send("setoption name Hash value 5");
    engine.send("setoption name Skill value 19");
    engine.send("setoption name Threads value 2");
    engine.send("position startpos moves e2e4");
    engine.send("perft 1");
    engine.send("isready");
    engine.expect("readyok", 3);
    for (const std::string& line : engine.passed) {
        EXPECT_EQ(line.find("bestmove"), std::string::npos);
        EXPECT_EQ(line.find("Hash table"), std::string::npos);
    }
    engine.send("stop");
    engine.expect("bestmove .*", 5);
    engine.expect("info string Hash table size is now 5 meg", 3);
    engine.expect("info string Threads now set to 2", 3);
    engine.expect("20, MNPS=.*", 3);
    engine.send("uci");
    engine.expect("uciok");
    EXPECT_EQ(linesMatching(engine.passed, "option name (Hash|Skill|Contempt|Threads) .* default (5|19|2) .*")
                  .size(),
              4u);
}

TEST(DuringASearch, QuitAndEndOfInputEndAtOnce) {
    for (const bool quits : {true, false}) {
        for (const int threads : {1, 4}) {
            UciProcess engine;
            engine.send("setoption name Threads value " + std::to_string(threads));
            engine.sync();
            engine.send("go infinite");
            engine.expect("info depth 6 .*");
            if (quits)
                engine.send("quit");
            else
                engine.closeInput();
            EXPECT_EQ(engine.exitStatus(5), 0);
        }
    }
}

class Threads : public ::testing::TestWithParam<int> {};

TEST_P(Threads, StopCyclesAnswerOnceEach) {
    UciProcess engine;
    engine.send("setoption name Threads value " + std::to_string(GetParam()));
    engine.sync();
    for (int i = 0; i < 170; ++i) {
        engine.send("go infinite");
        if (i % 3 == 0) usleep(unsigned(i % 7) * 1500);
        engine.send("stop");
        engine.expect("bestmove [a-h][1-8].*", 10);
    }
    const std::vector<std::string> after = engine.sync();
    EXPECT_TRUE(after.empty());
}

TEST_P(Threads, AgreeOnMates) {
    UciProcess engine;
    engine.send("setoption name Threads value " + std::to_string(GetParam()));
    engine.send("position fen r1b1kb1r/pppp1ppp/5q2/4n3/3KP3/2N3PN/PPP4P/R1BQ1B1R b kq - 0 1");
    engine.send("go depth 12");
    engine.expect("bestmove f8c5.*");
    EXPECT_FALSE(linesMatching(engine.passed, "info depth \\d+ .* score mate 3 .*").empty());
}

INSTANTIATE_TEST_SUITE_P(Counts, Threads, ::testing::Values(1, 2, 4));

TEST(ManyThreads, RunWithTheSmallestTables) {
    UciProcess engine;
    engine.send("setoption name Table Memory value 1");
    engine.send("setoption name Threads value 128");
    engine.expect("info string Threads now set to 128");
    engine.send("go depth 5");
    engine.expect("bestmove [a-h][1-8].*", 60);
    engine.send("quit");
    EXPECT_EQ(engine.exitStatus(), 0);
}

// ---- Bench ----

static std::vector<std::string> benchLines(const std::vector<std::string>& arguments) {
    UciProcess engine(arguments);
    std::vector<std::string> lines = engine.rest(120);
    EXPECT_EQ(engine.exitStatus(), 0);
    lines.erase(lines.begin(), lines.begin() + 4);  // the banner
    return lines;
}

TEST(Bench, CountsAndRepeats) {
    const std::vector<std::string> lines = benchLines({"bench", "1", "6"});
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0], "");
    EXPECT_TRUE(std::regex_match(lines[1], std::regex(" 5 \\.{50} +\\d+ nds +[0-9.]+ sec"))) << lines[1];
    EXPECT_TRUE(std::regex_match(lines[2], std::regex(" 6 \\.{50} +\\d+ nds +[0-9.]+ sec +[0-9.]+ bf")))
        << lines[2];
    const auto nodes = [](const std::vector<std::string>& all) {
        std::string text;
        for (const std::string& line : all)
            if (line.size() > 70) text += line.substr(53, 15);
        return text;
    };
    EXPECT_EQ(nodes(lines), nodes(benchLines({"bench", "1", "6"})));
    EXPECT_EQ(benchLines({"bench", "2", "6", "2"}).size(), 8u);
    EXPECT_EQ(benchLines({"bench", "1", "4"}), (std::vector<std::string>{"", ""}));
    EXPECT_TRUE(benchLines({"bench", "1", "6", "0"}).empty());
}
