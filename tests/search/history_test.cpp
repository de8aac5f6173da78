// The arithmetic of what the searches learn: counters, killers and counter moves.
#include "search/history.h"

#include "search/search_environment.h"

namespace {

struct CounterRow {
    const char* name;
    int before, bonus, rewarded, penalised;
};

class HistoryCounter : public ::testing::TestWithParam<CounterRow> {};

TEST_P(HistoryCounter, MovesByTheBonusAndTruncates) {
    const CounterRow& row = GetParam();
    std::int32_t rewarded = row.before, penalised = row.before;
    rewardCounter<HistoryCentre, HistoryScale>(rewarded, row.bonus);
    penaliseCounter<HistoryCentre, HistoryScale>(penalised, row.bonus);
    EXPECT_EQ(rewarded, row.rewarded);
    EXPECT_EQ(penalised, row.penalised);
    // The narrow counters of continuations follow the same rule.
    std::uint16_t narrow = std::uint16_t(row.before);
    penaliseCounter<HistoryCentre, HistoryScale>(narrow, row.bonus);
    EXPECT_EQ(narrow, row.penalised);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, HistoryCounter,
    ::testing::Values(CounterRow{"Centre", 16000, 700, 16700, 15300},
                      CounterRow{"Above", 16700, 700, 17370, 15970},  // 490000 / 16000 = 30
                      CounterRow{"Below", 15300, 700, 16030, 14630},  // -30, towards 0
                      CounterRow{"NearlyNothing", 15999, 700, 16699, 15299},
                      CounterRow{"Top", 32000, 10500, 32000, 11000}, CounterRow{"Bottom", 0, 10500, 21000, 0},
                      CounterRow{"NoBonus", 20000, 0, 20000, 20000}),
    [](const auto& row) { return std::string(row.param.name); });

class History : public SearchTest {};

TEST_F(History, CapturesLearnFromASixthAndSettleFourThousandFromTheCentre) {
    const Position pos = rootOf("4k3/8/8/3p1p2/4P3/8/8/4K3 w - -");
    const Move winner = moveOf(pos, "e4d5"), other = moveOf(pos, "e4f5");
    TriedMoves tried;
    tried.addTactical(other);
    tried.addTactical(winner);
    tried.learnCaptures(pos, winner, 10);  // 3500 / 6 = 583
    const std::int32_t& won = thread().captureHistory[1][D5][9];
    const std::int32_t& lost = thread().captureHistory[1][F5][9];
    EXPECT_EQ(won, 8583);
    EXPECT_EQ(lost, 7417);
    tried.learnCaptures(pos, winner, 10);  // 583 * 583 / 4000 = 84
    EXPECT_EQ(won, 8583 + 583 - 84);
    EXPECT_EQ(lost, 7417 - 583 + 84);
    tried.learnCaptures(pos, winner, 31);
    EXPECT_EQ(won, 9082);
    for (int i = 0; i < 500; ++i) tried.learnCaptures(pos, winner, 30);
    EXPECT_NEAR(won, 12000, 5);
    EXPECT_NEAR(lost, 4000, 5);
}

TEST_F(History, ACutoffPenalisesOnlyWhatCameBefore) {
    const Position pos = rootOf("4k3/8/8/8/8/8/PPP5/4K3 w - -");
    const QuietMove first = quietMoveOf(pos, moveOf(pos, "a2a3")),
                    second = quietMoveOf(pos, moveOf(pos, "b2b3")),
                    third = quietMoveOf(pos, moveOf(pos, "c2c3"));
    TriedMoves tried;
    for (const QuietMove quiet : {first, second, third}) tried.addQuiet(quiet);
    tried.learnCutoff(pos, second, true, 1000, 500);
    EXPECT_EQ(historyEntry(pos, first), 15000);
    EXPECT_EQ(historyEntry(pos, second), 17000);
    EXPECT_EQ(historyEntry(pos, third), 16000);
    // Both continuations are the same slice here, so it learns twice.
    EXPECT_EQ(pos.contHist[continuationIndex(second)], 16500 + 500 - 500 * 500 / 16000);
    EXPECT_EQ(pos.contHist[continuationIndex(third)], 16000);
    tried.learnCutoff(pos, third, false, 1000, 500);
    EXPECT_EQ(historyEntry(pos, first), 15000);
    tried.learnBest(pos, first, 1000, 500);
    EXPECT_LT(historyEntry(pos, second), 17000);
    EXPECT_LT(historyEntry(pos, third), 17000);
}

TEST_F(History, AKillerMovesUpOnce) {
    KillerRow row{};
    noteKiller(row, 1);
    noteKiller(row, 1);
    EXPECT_EQ(row.second, NoMove);
    noteKiller(row, 2);
    EXPECT_EQ(row.first, 2u);
    EXPECT_EQ(row.second, 1u);
}

// No move to answer, no answer; but a refutation is kept under the mover and its move.
TEST_F(History, CounterMovesAnswerTheLastMove) {
    const auto chain = play("4k3/8/8/8/8/8/4P3/4K3 w - -", {"e2e4"});
    const Move answer = moveOf(chain[1], "e8d7");
    EXPECT_EQ(counterMoveOf(thread(), chain[1]), NoMove);
    noteRefutation(thread(), chain[1], 3, answer);
    EXPECT_EQ(counterMoveOf(thread(), chain[1]), answer);
    EXPECT_EQ(thread().counterMoves[Black][Pawn][E2 * 64 + E4], answer);
    EXPECT_EQ(thread().killers[3].first, answer);
    noteRefutation(thread(), chain[0], 3, answer);
    EXPECT_EQ(counterMoveOf(thread(), chain[0]), NoMove);
}

}  // namespace
