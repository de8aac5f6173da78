// Leaf counts of the legal move tree against counts of an independent program, standard and Chess960.
#include "board/perft.h"

#include "board/move_text.h"
#include "support/board_environment.h"
#include "support/slow_chess.h"

#include <cstdio>
#include <fstream>
#include <sstream>

struct PerftRow {
    std::string name;
    std::string fen;
    int depth;
    std::uint64_t leaves;
    bool chess960;
};

static void PrintTo(const PerftRow& row, std::ostream* out) { *out << row.fen; }

// Reads lines "FEN ;D1 n ;D2 n ...", where '#' begins a comment. A line gives its deepest count that is at
// most `most`, or no row if that count is below `least`.
static void readRows(const char* file, bool chess960, std::uint64_t least, std::uint64_t most,
                     std::vector<PerftRow>& rows) {
    std::ifstream in(std::string(TARVOK_SOURCE_DIR) + "/tests/data/" + file);
    int number = 0;
    for (std::string line; std::getline(in, line);) {
        if (line.empty() || line[0] == '#') continue;
        PerftRow row{(chess960 ? "Chess960Line" : "StandardLine") + std::to_string(++number), "", 0, 0,
                     chess960};
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

static std::vector<PerftRow> perftRows(std::uint64_t least, std::uint64_t most) {
    std::vector<PerftRow> rows;
    readRows("perft.epd", false, least, most, rows);
    readRows("perft960.epd", true, least, most, rows);
    return rows;
}

// Leaves below each move, in the form in which other programs print them.
static std::string dividedCounts(const Position& root, int depth) {
    std::ostringstream text;
    Position child;
    for (const Move move : pseudoLegalMoves(root))
        if (makeChild(root, child, move))
            text << moveText(move) << ": " << (depth > 1 ? perft(child, depth - 1) : 1) << '\n';
    return text.str();
}

static void checkRow(const PerftRow& row) {
    const SettingsGuard guard;
    settings.chess960 = row.chess960;
    const Position root = positionOf(row.fen);
    EXPECT_EQ(perft(root, row.depth), row.leaves) << "depth " << row.depth << '\n'
                                                  << dividedCounts(root, row.depth);
}

class Perft : public ::testing::TestWithParam<PerftRow> {};
class SlowPerft : public ::testing::TestWithParam<PerftRow> {};

constexpr std::uint64_t QuickLeaves = 100'000;
constexpr std::uint64_t SlowLeaves = 20'000'000;
constexpr std::uint64_t PlainLeaves = 10'000;

TEST_P(Perft, CountsTheLine) { checkRow(GetParam()); }
TEST_P(SlowPerft, CountsTheLine) { checkRow(GetParam()); }

static std::string nameOf(const ::testing::TestParamInfo<PerftRow>& info) { return info.param.name; }
INSTANTIATE_TEST_SUITE_P(Collections, Perft, ::testing::ValuesIn(perftRows(1, QuickLeaves)), nameOf);
INSTANTIATE_TEST_SUITE_P(Collections, SlowPerft, ::testing::ValuesIn(perftRows(QuickLeaves + 1, SlowLeaves)),
                         nameOf);

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

TEST(PerftCommand, CountsOnePlyForAnyDepthBelowTwo) {
    const Position start = positionOf("");
    for (const int depth : {1, 0, -3}) EXPECT_EQ(perft(start, depth), 20u);
}

TEST(PerftCommand, PrintsTheCountAndTheSpeed) {
    ::testing::internal::CaptureStdout();
    perftTimed(positionOf(""), 3);
    unsigned long long leaves = 0;
    double millions = 0;
    const std::string text = ::testing::internal::GetCapturedStdout();
    ASSERT_EQ(std::sscanf(text.c_str(), "%llu, MNPS=%lf\n", &leaves, &millions), 2) << text;
    EXPECT_EQ(leaves, 8902u);
    EXPECT_GT(millions, 0);
}

// Castling and the other rights of a record that a game has reached differ from those of a fresh one.
TEST(PerftCommand, CountsAfterMovesAsFromTheSamePositionsText) {
    const std::vector<Position> line = playLine("", {"e2e4", "c7c5", "g1f3", "d7d5", "f1b5", "c8d7", "e1g1"});
    EXPECT_EQ(perft(line.back(), 3),
              perft(positionOf("rn1qkbnr/pp1bpppp/8/1Bpp4/4P3/5N2/PPPP1PPP/RNBQ1RK1 b kq - 0 1"), 3));
}
