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
