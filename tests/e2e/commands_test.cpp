// The interpreter through the binary: start, identity, options, positions, and input that no interface should
// send.
#include "e2e/uci_process.h"
#include "support/book_record.h"
#include "support/temporary_folder.h"

#include <fstream>
#include <regex>
#include <set>

// Each option as a row of a table has it, without the markup: name, default and range between bars.
static std::set<std::string> optionRows(const char* document) {
    std::set<std::string> rows;
    std::ifstream file(std::string(TARVOK_SOURCE_DIR "/docs/") + document);
    for (std::string line; std::getline(file, line);) {
        line = std::regex_replace(line, std::regex("^\\| `|[`\\\\]"), "");
        std::smatch row;
        if (std::regex_match(line, row,
                             std::regex("([A-Z][^|]*?) ?\\| ?([^|]*?) ?\\| ?(-?\\d+ to \\d+|) ?\\|.*")))
            rows.insert(row[1].str() + '|' + row[2].str() + '|' + row[3].str());
    }
    return rows;
}

TEST(Commands, UciListsTheDocumentedOptions) {
    UciProcess engine;
    engine.ask("uci", "uciok");
    std::set<std::string> options;
    std::string names;
    for (const std::string& line : engine.matching("option name .*")) {
        std::smatch part;
        ASSERT_TRUE(std::regex_match(
            line, part,
            std::regex("option name (.*) type (button|\\w+ default (.*?)( min (.*) max (.*))?)")));
        names += part[1].str() + '|';
        const std::string value = part[2] == "button"    ? "button"
                                  : part[3] == "<empty>" ? "none"
                                                         : part[3].str();
        options.insert(part[1].str() + '|' + value + '|' +
                       (part[4].matched ? part[5].str() + " to " + part[6].str() : ""));
    }
    EXPECT_GT(options.size(), 30u);
    EXPECT_EQ(names,
              "Threads|Ponder|Hash|Clear Hash|Table Memory|MultiPV|OwnBook|Book File|Book Moves|"
              "Best Book Line|Log File|Hash File Name|Save Hash to File|Load Hash from File|"
              "UCI_Chess960|UCI_AnalyseMode|Use LMR|Null Move Pruning|Minimal Reporting|Overhead ms|"
              "Time Usage|Use Syzygy|SyzygyPath|Syzygy Probe Depth|Syzygy Probe Limit|"
              "Syzygy 50 Move Rule|Smart Syzygy|King Safety|Selectivity|Reduction|Dynamism|Contempt|"
              "White Contempt|MCTS Hash|Use MCTS|MCTS Explore|Progress Threshold|Variety|Skill|")
        << "interfaces show the options in this order";
    const std::set<std::string> documented = optionRows("uci.md"), manual = optionRows("tarvok.6");
    EXPECT_EQ(documented, options);
    EXPECT_GT(manual.size(), 10u);
    for (const std::string& row : manual) EXPECT_TRUE(options.contains(row)) << row;
}

TEST(Commands, AStartIsCheap) {
    UciProcess engine;
    engine.expect("info string Licensed to .+");
    EXPECT_TRUE(matches(joined(engine.passed),
                        "Tarvok 13\\.02 64-bit [^|]+\\|using hardware POPCNT\\|using BMI2\\|"));
    engine.ask("uci", "uciok");
    const Lines lines = engine.passed;
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines[0], "id name Tarvok 13.02 64-bit ");
    EXPECT_TRUE(matches(lines[1], "id author .+"));
    engine.send("quit");
    EXPECT_EQ(engine.exitStatus(), 0);
    const auto seconds = [](const timeval& time) {
        return double(time.tv_sec) + 1e-6 * double(time.tv_usec);
    };
    EXPECT_LT(seconds(engine.usage.ru_utime) + seconds(engine.usage.ru_stime), 0.3 * Slowness);
    EXPECT_LT(engine.usage.ru_maxrss, (100 << 10) * Slowness) << "kilobytes";
}

// Defaults: 192 megabytes of hash table, 128 of caches, 128 of tree.
TEST(Commands, IsreadyBringsTheTablesThatTheModeUsesIntoMemory) {
    struct Row {
        const char* lines;
        long least, most;  // megabytes
    };
    for (const Row& row :
         {Row{"isready", 300, 400}, Row{"ucinewgame", 300, 400},
          Row{"ucinewgame\nposition startpos\nisready", 300, 400},
          Row{"setoption name Use MCTS value true\nisready\nisready", 428, 528},
          Row{"setoption name Threads value 3\nisready", 300, 420}, Row{"go depth 1\nisready", 0, 100}}) {
        UciProcess engine;
        engine.ask("uci", "uciok");
        engine.send(row.lines);
        // The next line ends what a new game has begun.
        if (std::string(row.lines) == "ucinewgame") engine.saysWithin("readyok", 3.0 * Slowness);
        engine.ask("perft 1", "20, .*");
        engine.send("quit");
        EXPECT_EQ(engine.exitStatus(), 0);
        EXPECT_GE(engine.usage.ru_maxrss >> 10, row.least) << row.lines;
        EXPECT_LE(engine.usage.ru_maxrss >> 10, row.most * Slowness) << row.lines;
    }
}

TEST(Commands, IsreadyIsAnsweredInTimeWhateverTheTablesTake) {
    for (const char* threads : {"1", "2"}) {
        UciProcess engine;
        engine.send(std::string("setoption name Threads value ") + threads,
                    "setoption name Table Memory value 512", "setoption name Hash value 4096");
        engine.expect("info string Hash table size is now 4096 meg");
        const double start = steadySeconds();
        engine.sync();
        EXPECT_LT(steadySeconds() - start, 2.0 * Slowness) << threads;
        engine.ask("go nodes 100", "bestmove .*");
        engine.send("setoption name Clear Hash", "quit");
        EXPECT_EQ(engine.exitStatus(), 0);
    }
}

TEST(Commands, OptionsAnswerWordForWordAndHoldTheirValues) {
    struct Row {
        std::string option, answer;  // the whole answer, each line followed by a bar
    };
    const Row rows[] = {
        {" name Hash value 192", ""},  // as it is
        {" name hASH value -3", "info string Hash table size is now 1 meg|"},
        {" name Hash value 8", "info string Hash table size is now 8 meg|"},
        {" name Clear Hash", "info string Clearing Hash|"},
        {" name Threads value 999", "info string Threads now set to 128|"},
        {" name Threads value 3", "info string Threads now set to 3|"},
        {" name Book File value my  own book.bin", "info string Book file is my  own book.bin|"},
        {" name Syzygy Probe Limit value 5", "info string Probing tablebases up to 0-man.|"},
        {" name SyzygyPath value /nowhere",
         "info string Found 0 WDL and 0 DTZ tablebase files (up to 0-man).|"
         "info string Probing tablebases up to 0-man.|"},
        {" name SyzygyPath value <empty>", "info string Probing tablebases up to 0-man.|"},
        {" name MCTS Hash value 256", "info string MCTS Hash table size is now 256 meg|"},
        {" name MCTS Hash value 0", ""},
        {" name Load Hash from File", "info string no such file <empty>|"},
        {" name Log File value <empty>", ""},
        {" name Nonsense value 1", "info string Nonsense not recognized|"},
        {"", "info string  not recognized|"},
        {" name Contempt value 9999", ""},
        {" name OwnBook value false", ""},
        {" name Ponder value nonsense", ""},
        {" name skill value -5", ""},
        {" name MultiPV", ""},
    };
    UciProcess engine;
    engine.sync();
    for (const Row& row : rows) {
        engine.send("setoption" + row.option);
        EXPECT_EQ(joined(engine.sync()), row.answer) << row.option;
    }
    engine.ask("uci", "uciok");
    for (const char* held :
         {"Threads type spin default 3", "Hash type spin default 8",
          "Book File type string default my  own book.bin", "Contempt type spin default 250",
          "OwnBook type check default false", "Ponder type check default false", "Skill type spin default 0",
          "MultiPV type spin default 1"})
        EXPECT_EQ(engine.matching(std::string("option name ") + held + "( .*)?").size(), 1u) << held;
}

TEST(Commands, LogIsStampedAppendedToAndCut) {
    const TemporaryFolder folder;
    const std::string path = folder.file("log");
    for (int run = 0; run < 2; ++run) {
        UciProcess engine;
        engine.ask("setoption name Log File value " + path, "info string Log file is " + path);
        engine.sync();  // the file is open now
        engine.send("foo " + std::string(400, 'x'), "isready", "quit");
        EXPECT_EQ(engine.exitStatus(), 0);
    }
    std::ifstream log(path);
    int cut = 0;
    for (std::string line; std::getline(log, line);) {
        EXPECT_TRUE(matches(line, " {0,9}\\d+\\.\\d{3} uci inp: .*"));
        // A text of 255 characters has lost its new line, so the next entry stands behind it.
        if (line.find("foo xxx") == std::string::npos) continue;
        ++cut;
        EXPECT_EQ(line.find("isready"), 11 + 255 + 11 + std::string("uci inp: ").size());
    }
    EXPECT_EQ(cut, 2);
}

TEST(Commands, PositionsAreSetAndAsked) {
    struct Row {
        std::string position, command, answer;
    };
    const TemporaryFolder folder;
    constexpr std::uint64_t StartKey = 0x463b96181691fc9c;
    constexpr unsigned A2A4 = 1 << 9 | 3 << 3;  // ranks and files from 0
    folder.write("a book.bin", bookRecord(StartKey, A2A4, 1) + bookRecord(~std::uint64_t{0}, 0, 0));
    const std::string chess960 = "4k3/8/8/8/8/8/PPPPPPPP/R3KR2 w AF - 0 1";
    const Row rows[] = {
        {"startpos moves e2e4 e7e5 g1f3 b8c6 f1b5 a7a6 e1g1", "perft 3", "28710, MNPS=([0-9.]+|inf)"},
        {"startpos", "perft", "20, MNPS=.*"},
        {"fen r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1 moves e1g1 e8c8", "perft 1", "24, MNPS=.*"},
        {"fen 4k3/8/8/8/8/8/4P3/R3K3 w - - 0 1", "attacks",
         "2621440 2621440 0 72340172838076702 9313761861428380446 14376 0 0 0 0 0 2898066360212914176 "
         "4096 0 "},
        {"startpos", "go searchmoves a2a3 h2h4 depth 6", "bestmove (a2a3|h2h4).*"},
        {"startpos", "go depth 4 searchmoves e2e5 nonsense", "bestmove 0000"},
        {"fen 7k/P7/8/8/8/8/8/K7 w - - 0 1", "go depth 3 searchmoves a7a8n", "bestmove a7a8n.*"},
        // Mate and stalemate, and positions that no game has.
        {"fen 7k/5KQ1/8/8/8/8/8/8 b - -", "go depth 5", "bestmove 0000"},
        {"fen 7k/5K2/6Q1/8/8/8/8/8 b - -", "go depth 5", "bestmove 0000"},
        {"fen 4k3/8/8/8/8/8/4r3/4K3 b - -", "go depth 3", "bestmove 0000"},
        {"fen w w w w", "go depth 3", "bestmove 0000"},
        {"fen w w w w", "perft 2", "0, MNPS=.*"},
        // Without UCI_Chess960 this castling opens the line onto its king, which then can't be taken.
        {"fen Qr3k2/8/8/5p2/PbP1BBPP/P4K2/7R/8 b q -", "perft 4", "580872, MNPS=.*"},
        {"fen Qr3k2/8/8/8/8/5K2/8/8 b q -", "go depth 12", "bestmove \\S+.*"},
        // The pinned bishop may not leave the file, which standard error tells.
        {"fen 4r1k1/8/8/8/8/8/4B3/4K3 w - - 0 1 moves e2d3", "isready", "readyok"},
        {"startpos moves e2e4", "perft 1", "20, MNPS=.*"},
        // A token that is no move leaves a stale record behind, on which the engine answers without a crash.
        {"startpos moves e2e4 zzzz e7e5", "go depth 1", "bestmove \\S+.*"},
        // One from a game with other castling rights has only those that the new game's start knows.
        {"fen r3k2r/8/8/8/8/8/8/R3K2R w KQkq - moves a1b1", "isready", "readyok"},
        {"fen 4k2r/8/8/8/8/8/8/R3K2R b k - moves zzzz", "perft 1", "25, MNPS=.*"},
        {"startpos", "setoption name Book File value " + folder.path() + "/a book.bin",
         "info string Book file is .*/a book\\.bin"},
        {"startpos", "go wtime 60000 btime 60000", "info book move is a2a4"},
        {"startpos", "isready", "readyok"},
        // In Chess960 the king takes its rook to castle.
        {"startpos", "setoption name UCI_Chess960 value true\nisready", "readyok"},
        {"fen " + chess960, "go depth 1 searchmoves e1a1", "bestmove e1a1.*"},
        {"fen " + chess960 + " moves e1f1", "go depth 1 searchmoves e8d8", "bestmove e8d8.*"},
    };
    UciProcess engine;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.position);
        engine.send("position " + row.position);
        engine.ask(row.command, row.answer);
    }
    EXPECT_EQ(engine.standardError(), "Cannot execute move e2d3\n");
}

TEST(Commands, OddAndHostileInputDoesNoHarm) {
    UciProcess engine;
    engine.sync();
    engine.write("\n\n   \t \nxyzzy\nUCI\r\n\xff\xfe position\nisready\r\n");
    engine.expect("readyok");
    EXPECT_EQ(engine.passed, Lines{}) << "foreign words are silent";
    std::string moves;
    for (int i = 0; i < 1500; ++i) moves += " g1f3 g8f6 f3g1 f6g8";
    engine.send("position startpos moves" + moves);
    engine.ask("go depth 2", "bestmove \\S+.*");
    engine.send(std::string(300000, 'a'));
    engine.ask("setoption name " + std::string(5000, 'z'), "info string z+ not recognized");
    engine.send("setoption name Hash", "setoption value", "setoption name value", "perft x",
                "position startpos");
    for (const char* line : {"go depth", "go movetime", "go wtime", "go nodes", "go searchmoves", "go winc 0",
                             "go wtime 0 btime 0", "go wtime -5 btime -5", "go movestogo 0 wtime x",
                             "go wtime 1000 foo btime 1000", "go movestogo 1 wtime 0"})
        engine.ask(line, "bestmove [a-h][1-8].*");
    engine.ask("go depth 10", "info depth 10 .*");  // an empty clock has left nothing behind
    engine.send("quit");
    EXPECT_EQ(engine.exitStatus(), 0);
}

TEST(Commands, InputMayEndInAnyWay) {
    struct Row {
        std::string input, lastLine;
        int status = 0;
        const char* error = "";
    };
    const std::string banner = "info string Licensed .*";
    const Row rows[] = {
        {"", banner},
        {" quit\n", banner},
        {std::string("\0\0\n", 3), banner},
        {"uci", "uciok"},
        {"go depth 3\nquit\n", ".*"},
        {"position startpos\ngo infinite\n", ".*"},
        {"isready\nquitter\nuci\n", "readyok"},
        {"uci\nposition startpos\nperft 3\nquit\n",
         "8902, MNPS=.*"},  // what stands ahead of a quit still runs
        {"position\n", banner, 1, "Error here!\n"},
        {"isready\nposition foo\n", "readyok", 1, "Error here!\n"},
        {"position fen 8/8/8/8/8/8/8/K1k5 x - -\n", banner, 1,
         "Error in ctm for fen \"8/8/8/8/8/8/8/K1k5 x - -\""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.input);
        UciProcess engine;
        engine.write(row.input);
        if (row.status == 0) engine.closeInput();  // an error ends the process with its input open
        const Lines lines = engine.rest();
        EXPECT_TRUE(matches(lines.empty() ? "" : lines.back(), row.lastLine));
        EXPECT_EQ(engine.exitStatus(), row.status);
        EXPECT_EQ(engine.standardError(), row.error);
    }
}
