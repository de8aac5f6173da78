// The interpreter through the binary: start, identity, options, positions, and input that no interface should
// send.
#include "e2e/uci_process.h"
#include "support/temporary_folder.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <regex>

static std::string firstMatch(const std::vector<std::string>& lines, const std::string& pattern) {
    const std::regex wanted(pattern);
    for (const std::string& line : lines)
        if (std::regex_match(line, wanted)) return line;
    return {};
}

TEST(Commands, StartPrintsTheBannerAndNothingElse) {
    UciProcess engine;
    const std::vector<std::string> lines = engine.sync();
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_TRUE(std::regex_match(lines[0], std::regex("Tarvok 13\\.02 64-bit .+")));
    EXPECT_EQ(lines[1], "using hardware POPCNT");
    EXPECT_EQ(lines[2], "using BMI2");
    EXPECT_TRUE(std::regex_match(lines[3], std::regex("info string Licensed to .+")));
}

#ifdef TARVOK_TIMED  // sanitizers cost time and memory
TEST(Commands, StartIsQuickAndLight) {
    const double start = steadySeconds();
    UciProcess engine;
    engine.sync();
    EXPECT_LT(steadySeconds() - start, 0.3);
    std::ifstream status("/proc/" + std::to_string(engine.pid()) + "/statm");
    long pages = 0, resident = 0;
    status >> pages >> resident;
    EXPECT_LT(resident * 4096, 100L << 20);
}
#endif

TEST(Commands, UciListsEveryOptionInOrder) {
    static const char* const Options[] = {
        "Threads type spin default 1 min 1 max 128",
        "Ponder type check default true",
        "Hash type spin default 192 min 1 max 65536",
        "Clear Hash type button",
        "Table Memory type spin default 128 min 1 max 1024",
        "MultiPV type spin default 1 min 1 max 218",
        "OwnBook type check default true",
        "Book File type string default tarvok.bin",
        "Book Moves type spin default 1000 min 0 max 1000",
        "Best Book Line type check default false",
        "Log File type string default <empty>",
        "Hash File Name type string default <empty>",
        "Save Hash to File type button",
        "Load Hash from File type button",
        "UCI_Chess960 type check default false",
        "UCI_AnalyseMode type check default false",
        "Use LMR type check default true",
        "Null Move Pruning type check default true",
        "Minimal Reporting type spin default 0 min 0 max 200",
        "Overhead ms type spin default 50 min 0 max 10000",
        "Time Usage type spin default 0 min -9 max 10",
        "Use Syzygy type check default true",
        "SyzygyPath type string default <empty>",
        "Syzygy Probe Depth type spin default 8 min 0 max 99",
        "Syzygy Probe Limit type spin default 6 min 0 max 7",
        "Syzygy 50 Move Rule type check default true",
        "Smart Syzygy type check default true",
        "King Safety type spin default 72 min 0 max 200",
        "Selectivity type spin default 170 min 10 max 250",
        "Reduction type spin default -15 min -500 max 51",
        "Dynamism type spin default 125 min 0 max 400",
        "Contempt type spin default 16 min -250 max 250",
        "White Contempt type check default false",
        "MCTS Hash type spin default 128 min 128 max 32768",
        "Use MCTS type check default false",
        "MCTS Explore type spin default 40 min 1 max 500",
        "Progress Threshold type spin default 30 min 10 max 99",
        "Variety type spin default 0 min 0 max 20",
        "Skill type spin default 20 min 0 max 20",
    };
    UciProcess engine;
    engine.sync();
    engine.send("uci");
    engine.expect("uciok");
    ASSERT_EQ(engine.passed.size(), 2 + std::size(Options));
    EXPECT_EQ(engine.passed[0], "id name Tarvok 13.02 64-bit ");
    EXPECT_TRUE(std::regex_match(engine.passed[1], std::regex("id author .+")));
    for (std::size_t i = 0; i < std::size(Options); ++i)
        EXPECT_EQ(engine.passed[i + 2], std::string("option name ") + Options[i]);
}

struct OptionTextRow {
    const char* name;
    const char* command;
    const char* answer;  // the whole output, lines ended by "|"
};

static void PrintTo(const OptionTextRow& row, std::ostream* out) { *out << row.name; }

class OptionText : public ::testing::TestWithParam<OptionTextRow> {};

TEST_P(OptionText, IsWordForWord) {
    UciProcess engine;
    engine.sync();
    engine.send(GetParam().command);
    std::string answer;
    for (const std::string& line : engine.sync()) answer += line + '|';
    EXPECT_EQ(answer, GetParam().answer);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, OptionText,
    ::testing::Values(
        OptionTextRow{"Hash", "setoption name Hash value 8", "info string Hash table size is now 8 meg|"},
        OptionTextRow{"HashInAnyCase", "setoption name hASH value 9",
                      "info string Hash table size is now 9 meg|"},
        OptionTextRow{"HashBelowItsRange", "setoption name Hash value -3",
                      "info string Hash table size is now 1 meg|"},
        OptionTextRow{"HashOfTheSameSize", "setoption name Hash value 192", ""},
        OptionTextRow{"ClearHash", "setoption name Clear Hash", "info string Clearing Hash|"},
        OptionTextRow{"Threads", "setoption name Threads value 3", "info string Threads now set to 3|"},
        OptionTextRow{"ThreadsBeyondTheirRange", "setoption name Threads value 999",
                      "info string Threads now set to 128|"},
        OptionTextRow{"BookFileWithBlanks", "setoption name Book File value my  own book.bin",
                      "info string Book file is my  own book.bin|"},
        OptionTextRow{"ProbeLimit", "setoption name Syzygy Probe Limit value 5",
                      "info string Probing tablebases up to 0-man.|"},
        OptionTextRow{"TablesNowhere", "setoption name SyzygyPath value /nowhere",
                      "info string Found 0 WDL and 0 DTZ tablebase files (up to 0-man).|"
                      "info string Probing tablebases up to 0-man.|"},
        OptionTextRow{"NoTables", "setoption name SyzygyPath value <empty>",
                      "info string Probing tablebases up to 0-man.|"},
        OptionTextRow{"TreeHash", "setoption name MCTS Hash value 256",
                      "info string MCTS Hash table size is now 256 meg|"},
        OptionTextRow{"NoTreeHash", "setoption name MCTS Hash value 0", ""},
        OptionTextRow{"LoadNoFile", "setoption name Load Hash from File",
                      "info string no such file <empty>|"},
        OptionTextRow{"LogClosed", "setoption name Log File value <empty>", ""},
        OptionTextRow{"Unknown", "setoption name Nonsense value 1", "info string Nonsense not recognized|"},
        OptionTextRow{"NoName", "setoption", "info string  not recognized|"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(Commands, UciShowsTheValuesNowHeld) {
    UciProcess engine;
    for (const char* line : {"setoption name Contempt value 9999", "setoption name OwnBook value false",
                             "setoption name skill value -5", "setoption name Ponder value nonsense",
                             "setoption name MultiPV", "setoption name Reduction value 51"})
        engine.send(line);
    engine.sync();
    engine.send("uci");
    engine.expect("uciok");
    EXPECT_NE(firstMatch(engine.passed, "option name Contempt type spin default 250 .*"), "");
    EXPECT_NE(firstMatch(engine.passed, "option name OwnBook type check default false"), "");
    EXPECT_NE(firstMatch(engine.passed, "option name Skill type spin default 0 .*"), "");
    EXPECT_NE(firstMatch(engine.passed, "option name Ponder type check default false"), "");
    EXPECT_NE(firstMatch(engine.passed, "option name MultiPV type spin default 1 .*"), "");
    EXPECT_NE(firstMatch(engine.passed, "option name Reduction type spin default 51 .*"), "");
}

TEST(Commands, HashFileHasTheTableAndLoadsBack) {
    const TemporaryFolder folder;
    const std::string path = folder.file("hash with blank").string();
    UciProcess engine;
    engine.send("setoption name Hash value 1");
    engine.send("setoption name Hash File Name value " + path);
    engine.send("setoption name Contempt value 0");
    engine.sync();
    engine.send("go depth 12");
    engine.expect("bestmove .*");
    engine.send("setoption name Save Hash to File");
    engine.expect("info string Saving Hash");
    engine.expect("info string Hash Saved");
    EXPECT_EQ(std::filesystem::file_size(path), 786432u);
    engine.send("setoption name Load Hash from File");
    engine.expect("info string Loading Hash from .*hash with blank");
    engine.expect("info string Hash Loaded");
    engine.send("setoption name Hash value 4");
    engine.send("setoption name Load Hash from File");
    engine.expect("info string File size does not match Hash size");
    engine.send("setoption name Hash File Name value /nowhere/at/all");
    engine.send("setoption name Save Hash to File");
    engine.expect("info string failed to open /nowhere/at/all");
}

TEST(Commands, LogIsStampedAppendedToAndCut) {
    const TemporaryFolder folder;
    const std::string path = folder.file("log").string();
    for (int run = 0; run < 2; ++run) {
        UciProcess engine;
        engine.send("setoption name Log File value " + path);
        engine.sync();  // the file is open now
        engine.send("foo " + std::string(400, 'x'));
        engine.send("isready");
        engine.expect("readyok");
        engine.send("quit");
        EXPECT_EQ(engine.exitStatus(), 0);
    }
    std::ifstream log(path);
    std::string line;
    std::vector<std::string> lines;
    while (std::getline(log, line)) lines.push_back(line);
    int cut = 0;
    for (const std::string& entry : lines) {
        EXPECT_TRUE(std::regex_search(entry, std::regex("^ {0,9}\\d+\\.\\d{3} uci inp: "))) << entry;
        // A text of 255 characters has lost its new line, so the next entry stands behind it.
        if (entry.find("foo xxx") == std::string::npos) continue;
        ++cut;
        EXPECT_EQ(entry.find("isready"), 11 + 255 + 11 + std::string("uci inp: ").size());
    }
    EXPECT_EQ(cut, 2);
}

TEST(Commands, PerftCountsAndTimes) {
    UciProcess engine;
    engine.send("position startpos moves e2e4 e7e5 g1f3 b8c6 f1b5 a7a6 e1g1");
    engine.send("perft 3");
    engine.expect("28710, MNPS=([0-9.]+|inf)");
    engine.send("position startpos");
    engine.send("perft");
    engine.expect("20, MNPS=.*");
    engine.send("position fen R6R/3Q4/1Q4Q1/4Q3/2Q4Q/Q4Q2/pp1Q4/kBNN1KB1 w - - 0 1");
    engine.send("perft 1");
    engine.expect("218, MNPS=.*");
}

TEST(Commands, AttacksPrintsFourteenSets) {
    UciProcess engine;
    engine.sync();
    engine.send("position fen 4k3/8/8/8/8/8/4P3/R3K3 w - - 0 1");
    engine.send("attacks");
    engine.expect(
        "2621440 2621440 0 72340172838076702 9313761861428380446 14376 0 0 0 0 0 2898066360212914176 4096 "
        "0 ");
}

TEST(Commands, ForeignWordsAndOddLinesAreSilent) {
    UciProcess engine;
    engine.sync();
    engine.write("\n\n   \t \nxyzzy\nUCI\r\n\xff\xfe position\nisready\r\n");
    EXPECT_EQ(engine.expect("readyok"), "readyok");
    EXPECT_TRUE(engine.passed.empty());
}

TEST(Commands, WrongPositionsEndTheProcess) {
    struct Row {
        const char* line;
        const char* error;
    };
    for (const Row& row : {Row{"position foo", "Error here!\n"}, Row{"position", "Error here!\n"},
                           Row{"position fen 8/8/8/8/8/8/8/K1k5 x - -",
                               "Error in ctm for fen \"8/8/8/8/8/8/8/K1k5 x - -\""}}) {
        UciProcess engine;
        engine.sync();
        engine.send(row.line);
        EXPECT_EQ(engine.exitStatus(), 1) << row.line;
        EXPECT_EQ(engine.standardError(), row.error);
    }
}

TEST(Commands, RefusedMovesAreToldAndPlayGoesOn) {
    UciProcess engine;
    // The pinned bishop may not leave the file.
    engine.send("position fen 4r1k1/8/8/8/8/8/4B3/4K3 w - - 0 1 moves e2d3");
    engine.send("isready");
    engine.expect("readyok");
    EXPECT_EQ(engine.standardError(), "Cannot execute move e2d3\n");
    engine.send("position startpos moves e2e4");
    engine.send("perft 1");
    engine.expect("20, MNPS=.*");
    // A token that is no move leaves a stale record behind, on which the engine answers without a crash.
    engine.send("position startpos moves e2e4 zzzz e7e5");
    engine.send("go depth 1");
    engine.expect("bestmove \\S+.*");
    // A stale record from a game with other castling rights has only those that the new game's start knows.
    engine.send("position fen r3k2r/8/8/8/8/8/8/R3K2R w KQkq - moves a1b1");
    engine.send("position fen 4k2r/8/8/8/8/8/8/R3K2R b k - moves zzzz");
    engine.send("perft 1");
    engine.expect("25, MNPS=.*");
}

TEST(Commands, UnplayablePositionsGetNoMove) {
    UciProcess engine;
    for (const char* fen : {"8/8/8/8/8/8/8/8 w - -", "4k3/8/8/8/8/8/8/8 w - -", "4k3/8/8/8/8/8/4r3/4K3 b - -",
                            "P3k3/8/8/8/8/8/8/4K3 w - -", "kkkkkkkk/8/8/8/8/8/8/4K3 w - -", "w w w w"}) {
        engine.send(std::string("position fen ") + fen);
        engine.send("go depth 3");
        engine.expect("bestmove 0000");
        engine.send("perft 2");
        engine.expect("0, MNPS=.*");
    }
}

TEST(Commands, HostileInputDoesNoHarm) {
    UciProcess engine;
    engine.send("position startpos moves " + [] {
        std::string moves;
        for (int i = 0; i < 1500; ++i) moves += "g1f3 g8f6 f3g1 f6g8 ";
        return moves;
    }());
    engine.send("go depth 2");
    engine.expect("bestmove \\S+.*");
    engine.send(std::string(300000, 'a'));
    engine.send("setoption name " + std::string(5000, 'z'));
    engine.expect("info string z+ not recognized");
    engine.send("position fen qqqqqqqq/qqqqqqqq/qqqqqqqq/k7/K7/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ w KQkq e3");
    engine.send("go depth 1");
    engine.expect("bestmove .*");
    for (const char* line :
         {"go depth", "go movetime", "go wtime", "go nodes", "go searchmoves", "perft x",
          "setoption name Hash", "setoption value", "setoption name value", "go movestogo 0 wtime x"}) {
        engine.send("position startpos");
        engine.send(line);
        engine.send("stop");
        engine.sync();
    }
    engine.send("quit");
    EXPECT_EQ(engine.exitStatus(), 0);
}

TEST(Commands, InputMayEndInAnyWay) {
    for (const std::string& input :
         {std::string(), std::string("uci\n"), std::string("uci"), std::string("\0\0\n", 3),
          std::string("position startpos\ngo infinite\n"), std::string("isready\nquitter\n"),
          std::string("go depth 3\nquit\n"), std::string(" quit\n")}) {
        UciProcess engine;
        engine.write(input);
        engine.closeInput();
        EXPECT_EQ(engine.exitStatus(), 0) << input;
    }
}

TEST(Commands, LinesAheadOfQuitStillRun) {
    UciProcess engine;
    engine.write("uci\nposition startpos\nperft 3\nisready\nquit\n");
    engine.expect("uciok");
    engine.expect("8902, MNPS=.*");
    engine.expect("readyok");
    EXPECT_EQ(engine.exitStatus(), 0);
}

TEST(Commands, Chess960CastlingIsKingTakesRook) {
    UciProcess engine;
    engine.send("setoption name UCI_Chess960 value true");
    engine.send("position fen 4k3/8/8/8/8/8/PPPPPPPP/R3KR2 w AF - 0 1");
    engine.send("go depth 1 searchmoves e1a1");
    engine.expect("bestmove e1a1.*");
    engine.send("position fen 4k3/8/8/8/8/8/PPPPPPPP/R3KR2 w AF - 0 1 moves e1f1");
    engine.send("go depth 1 searchmoves e8d8");
    engine.expect("bestmove e8d8.*");
    engine.send("setoption name UCI_Chess960 value false");
    engine.send("position fen r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1 moves e1g1 e8c8");
    engine.send("perft 1");
    engine.expect("24, MNPS=.*");
}
