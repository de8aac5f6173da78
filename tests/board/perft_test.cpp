// Leaf counts of the legal move tree against counts of an independent program, standard and Chess960.
#include "board/perft.h"

#include "support/board_environment.h"
#include "support/slow_chess.h"

#include <cstdio>
#include <fstream>
#include <sstream>

struct PerftRow {
    std::string name, fen;
    int depth = 0;
    std::uint64_t leaves = 0;
    bool chess960 = false;
};

static void PrintTo(const PerftRow& row, std::ostream* out) { *out << row.fen; }

// Reads lines "FEN ;D1 n ;D2 n ...", where '#' begins a comment. A line gives its deepest count that is at
// most `most`, or no row if that count is below `least`.
static std::vector<PerftRow> perftRows(std::uint64_t least, std::uint64_t most) {
    std::vector<PerftRow> rows;
    for (const bool chess960 : {false, true}) {
        const std::string folder = std::string(TARVOK_SOURCE_DIR) + "/tests/data/";
        std::ifstream in(folder + (chess960 ? "perft960.epd" : "perft.epd"));
        int number = 0;
        for (std::string line; std::getline(in, line);) {
            if (line.empty() || line[0] == '#') continue;
            PerftRow row;
            row.name = (chess960 ? "Chess960Line" : "StandardLine") + std::to_string(++number);
            row.chess960 = chess960;
            std::istringstream fields(line);
            std::getline(fields, row.fen, ';');
            for (std::string field; std::getline(fields, field, ';');) {
                int depth = 0;
                unsigned long long leaves = 0;
                if (std::sscanf(field.c_str(), "D%d %llu", &depth, &leaves) != 2 || leaves > most) continue;
                row.depth = depth;
                row.leaves = leaves;
            }
            if (row.leaves >= least) rows.push_back(row);
        }
    }
    return rows;
}

class Perft : public ::testing::TestWithParam<PerftRow> {};

TEST_P(Perft, CountsTheLine) {
    const PerftRow& row = GetParam();
    const SettingsGuard guard;
    settings.chess960 = row.chess960;
    EXPECT_EQ(perft(positionOf(row.fen), row.depth), row.leaves) << "depth " << row.depth;
}

constexpr std::uint64_t QuickLeaves = 100'000;
constexpr std::uint64_t SlowLeaves = 20'000'000;
constexpr std::uint64_t PlainLeaves = 10'000;

static std::string nameOf(const ::testing::TestParamInfo<PerftRow>& info) { return info.param.name; }
INSTANTIATE_TEST_SUITE_P(Quick, Perft, ::testing::ValuesIn(perftRows(1, QuickLeaves)), nameOf);
INSTANTIATE_TEST_SUITE_P(Slow, Perft, ::testing::ValuesIn(perftRows(QuickLeaves + 1, SlowLeaves)), nameOf);

TEST(PerftRows, AreRead) { EXPECT_EQ(perftRows(1, QuickLeaves).size(), 84u); }

// Other tests judge the generators by the plain rules, which are judged here. They read the record of a root
// and then play on by themselves, so they also keep rights and en passant without make.
TEST(PlainRules, CountTheLinesToo) {
    for (const PerftRow& row : perftRows(1, PlainLeaves)) {
        const SettingsGuard guard;
        settings.chess960 = row.chess960;
        EXPECT_EQ(slowPerft(slowBoardOf(positionOf(row.fen)), row.depth), row.leaves) << row.fen;
    }
}
