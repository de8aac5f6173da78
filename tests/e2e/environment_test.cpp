// What the engine does where the machine or the system does not give what it needs: each time it ends by
// itself, with a word that tells why.
#include "e2e/uci_process.h"

#include <cstdlib>

// A processor of another kind is played by an emulator, which the sanitizers do not bear.
TEST(Environment, AProcessorWithoutItsInstructionsIsRefused) {
    const bool hasEmulator = std::system("command -v qemu-x86_64 >/dev/null") == 0;
    if (Slowness > 1) GTEST_SKIP() << "the engine is sanitized";
    if (!hasEmulator && !std::getenv("CI")) GTEST_SKIP() << "qemu-x86_64 (package qemu-user) is missing";
    struct Row {
        const char *processor, *error;
    };
    for (const Row& row : {Row{"Nehalem", "Tarvok needs BMI2, which this processor does not have.\n"},
                           Row{"max,-popcnt", "Tarvok needs POPCNT, which this processor does not have.\n"},
                           Row{"core2duo", "Tarvok needs BMI2 and POPCNT, and this processor has neither.\n"},
                           Row{"max", ""}}) {
        UciProcess engine({}, std::string("set -- qemu-x86_64 -cpu ") + row.processor + " \"$@\"");
        engine.send("quit");
        const bool refused = row.error[0] != 0;
        EXPECT_EQ(engine.rest().empty(), refused) << row.processor;
        EXPECT_EQ(engine.exitStatus(), refused ? 1 : 0) << row.processor;
        EXPECT_EQ(engine.standardError(), row.error) << row.processor;
    }
}

TEST(Environment, WhatTheSystemRefusesIsToldAndEndsTheProcess) {
    struct Row {
        const char *limit, *line, *error;
        int status = 1;
    };
    const Row rows[] = {
        // Whoever runs the tests may have left a descriptor open that the loader needs.
        {"exec 3>&-; ulimit -n 4", "isready", "Unable to make a pipe: Too many open files\n"},
#ifdef TARVOK_TIMED  // the sanitizers need more address space than any limit leaves
        {"ulimit -v 1500000", "setoption name Threads value 128",
         "Unable to start a search thread: Resource temporarily unavailable\n"},
        {"ulimit -v 700000", "setoption name Threads value 128",
         "Unable to allocate \\d+ bytes of memory for thread records\n"},
        {"ulimit -v 50000", "isready", "Unable to start the main thread: .*\n"},
        {"ulimit -v 300000", "isready",
         "Unable to allocate \\d+ bytes of memory for (mat_hash|pawn_hash|eval_cache)\n", 255},
#endif
    };
    for (const Row& row : rows) {
        UciProcess engine({}, row.limit);
        engine.send(row.line);
        EXPECT_EQ(engine.exitStatus(), row.status) << row.error;
        EXPECT_TRUE(matches(engine.standardError(), row.error));
    }
}

// No search fits on the stack that the first thread gets here.
TEST(Environment, ThreadsMakeTheirOwnStacks) {
    UciProcess engine({}, "ulimit -s 128");
    engine.send("setoption name Threads value 3", "position fen 8/k7/3p4/p2P1p2/P2P1P2/8/8/K7 w - -");
    engine.ask("go depth 24", "bestmove .*");
    engine.send("quit");
    EXPECT_EQ(engine.exitStatus(), 0);
}

// The test keeps its end of the input open in each row.
TEST(Environment, AClosedOrFullDescriptorCountsAsTheEndOfInput) {
    struct Row {
        const char *commands, *error;
        Lines arguments = {};
        int status = 0;
    };
    constexpr const char* Closed = "Unable to write an answer: Bad file descriptor\n";
    constexpr const char* Full = "Unable to write an answer: No space left on device\n";
    for (const Row& row :
         {Row{"exec <&-", ""}, Row{"exec <&- 2>&-", ""}, Row{"exec >&-", Closed},
          Row{"exec >/dev/full", Full}, Row{"exec >/dev/full", Full, {"bench", "1", "8"}, 1}}) {
        UciProcess engine(row.arguments, row.commands);
        EXPECT_EQ(engine.exitStatus(), row.status) << row.commands;
        EXPECT_EQ(engine.standardError(), row.error) << row.commands;
    }
}

TEST(Environment, ASearchEndsWhenNobodyReadsItsLines) {
    UciProcess engine;
    engine.send("setoption name Threads value 2");
    engine.ask("go infinite", "info depth .*");
    engine.closeOutput();
    EXPECT_EQ(engine.exitStatus(), 0);
    EXPECT_EQ(engine.standardError(), "");
}

TEST(Environment, NoLineIsLostInAPipeThatIsFullForAWhile) {
    constexpr std::size_t Rounds = 100;  // of some kilobytes; a pipe holds 64
    UciProcess engine;
    for (std::size_t i = 0; i < Rounds; ++i) engine.send("uci");
    engine.send("quit");
    engine.rest();
    EXPECT_EQ(engine.matching("uciok").size(), Rounds);
    EXPECT_EQ(engine.exitStatus(), 0);
}
