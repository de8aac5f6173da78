// The opening book's key, against keys that other programs published.
#include "endgame/polyglot_keys.h"

#include "support/board_environment.h"
#include "support/shared_data.h"

#include <fstream>

TEST(BookKey, EqualsTheListedKeys) {
    REQUIRE_SHARED_DATA();
    std::ifstream file(*sharedData() / "polyglot_keys.txt");
    int rows = 0;
    for (std::string line; std::getline(file, line);) {
        const std::size_t bar = line.find(" | ");
        if (line[0] == '#' || bar == std::string::npos) continue;
        const Position pos = positionOf(line.substr(0, bar));
        EXPECT_EQ(bookKey(pos), std::stoull(line.substr(bar + 3), nullptr, 16)) << line;
        ++rows;
    }
    EXPECT_GT(rows, 50);
}

// Two keys that need no file: the start, and an en-passant capture on offer.
TEST(BookKey, KnowsTheStartAndEnPassant) {
    EXPECT_EQ(bookKey(positionOf("")), 0x463b96181691fc9cULL);
    const std::vector<Position> line = playLine("", {"e2e4", "d7d5", "e4e5", "f7f5"});
    EXPECT_EQ(bookKey(line[1]), 0x823c9b50fd114196ULL);
    EXPECT_EQ(bookKey(line[4]), 0x22a48b5a8e47ff78ULL);
}
