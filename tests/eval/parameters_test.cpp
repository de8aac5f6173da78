// What the parameter tables hold, the style that options and threads ask for, and the sides that
// contempt falls to.
#include "eval/eval_environment.h"

#include <set>

using Parameters = EvalTest;

TEST_F(Parameters, StyleFollowsOptionsAndThreadsUnlessTheTreeSearches) {
    struct Case {
        int threads, dynamism, kingSafety;
        bool tree;
        int mg, eg, danger;
    };
    const Case cases[] = {
        {1, 125, 72, false, 160, 185, 7999},   {2, 125, 72, false, 166, 192, 7999},
        {4, 125, 72, false, 172, 199, 7999},   {8, 125, 72, false, 179, 207, 7999},
        {1, 400, 200, false, 512, 592, 22220}, {8, 400, 200, true, 160, 185, 7999},
    };
    for (const Case& expected : cases) {
        settings.threads = expected.threads;
        settings.dynamism = expected.dynamism;
        settings.kingSafety = expected.kingSafety;
        applyStyle(expected.tree ? Style::Tree : Style::AlphaBeta);
        initEvalParameters();
        EXPECT_EQ(evalStyle.dynamismMg, expected.mg) << expected.threads;
        EXPECT_EQ(evalStyle.dynamismEg, expected.eg) << expected.threads;
        EXPECT_EQ(KingDanger[60], Lanes(expected.danger, 0)) << expected.kingSafety;
    }
    buildKingSafetyTable(10);
    int sum = 0;  // of the typed table, of which positions reach the beginning alone
    for (int units = 0; units <= 128; ++units) sum += mgOf(KingDanger[units]);
    EXPECT_EQ(sum, 123803);
    setKingSafetyJitter(20);
    std::set<int> seen;
    for (int i = 0; i < 40; ++i) {
        buildKingSafetyTable(72);
        EXPECT_EQ(KingDanger[255], KingDanger[128]);
        EXPECT_NEAR(mgOf(KingDanger[60]), 7999, 19 * 1111 / 10 + 1);
        seen.insert(mgOf(KingDanger[60]));
    }
    EXPECT_GT(seen.size(), 5u);
}

// Double precision would give one centipawn less here and there.
TEST_F(Parameters, PricesAreFormedInSinglePrecision) {
    EXPECT_EQ(PhasePieceValue[0][Queen], 1425);
    EXPECT_EQ(PhasePieceValue[96][Knight], 552);
    EXPECT_EQ(PhasePieceValue[96][Bishop], 621);
}

TEST_F(Parameters, ContemptFallsToTheMoverAtTheRootOrToWhite) {
    setContempt(-17, Black, false);
    EXPECT_EQ(contemptValue[Black], -17);
    EXPECT_EQ(contemptValue[White], 17);
    EXPECT_EQ(contemptPair[Black], pair(-170, -42));
    EXPECT_EQ(contemptPair[White], pair(170, 42));
    settings.whiteContempt = true;
    setContempt(16, Black, false);
    EXPECT_EQ(contemptValue[White], 16);
    EXPECT_EQ(contemptPair[White], pair(160, 40));
    // A tree search knows it only as a value.
    setContempt(15, Black, true);
    EXPECT_EQ(contemptValue[White], 15);
    EXPECT_EQ(contemptPair[White], Score{});
    EXPECT_EQ(contemptPair[Black], Score{});
    // An iteration's score moves it, truncated towards 0.
    EXPECT_EQ(contemptFromScore(100, 16), 27);
    EXPECT_EQ(contemptFromScore(-100, 16), 5);
    EXPECT_EQ(contemptFromScore(-31990, 0), -21);
}
