// Parameter tables against numbers worked out by hand.
#include "eval/eval_environment.h"

#include <set>

using Tables = EvalTest;

TEST_F(Tables, ScalesAndPricesFollowThePhase) {
    EXPECT_FLOAT_EQ(MaterialPhaseScale[24], 1.0f);
    EXPECT_FLOAT_EQ(MaterialPhaseScale[96], 1.15f);
    const int late[7] = {75, 180, 465, 541, 636, 1425, 10000};
    const int early[7] = {75, 178, 552, 621, 770, 1644, 10000};
    for (int type = 0; type < 7; ++type) {
        EXPECT_EQ(PhasePieceValue[0][type], late[type]);
        EXPECT_EQ(PhasePieceValue[96][type], early[type]);
    }
}

TEST_F(Tables, StyleFollowsOptionsAndThreads) {
    struct Row {
        int threads, mg, eg;
    };
    for (const Row& row : {Row{1, 160, 185}, Row{2, 166, 192}, Row{4, 172, 199}, Row{8, 179, 207}}) {
        settings.threads = row.threads;
        initEvalParameters();
        EXPECT_EQ(dynamismMg, row.mg);
        EXPECT_EQ(dynamismEg, row.eg);
    }
    EXPECT_EQ(KingDanger[0], Score{});
    EXPECT_EQ(mgOf(KingDanger[20]), 72 * 248 / 10);
    EXPECT_EQ(mgOf(KingDanger[128]), 72 * 1476 / 10);
    EXPECT_EQ(KingDanger[255], KingDanger[128]);
    EXPECT_EQ(egOf(KingDanger[50]), 0);
    kingSafetyJitter = 20;
    std::set<std::uint64_t> seen;
    for (int i = 0; i < 40; ++i) {
        buildKingSafetyTable(72);
        seen.insert(KingDanger[60].word);
        EXPECT_NEAR(mgOf(KingDanger[60]), 72 * 1111 / 10, 19 * 1111 / 10 + 1);
    }
    EXPECT_GT(seen.size(), 5u);
}
