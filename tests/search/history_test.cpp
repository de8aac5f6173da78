// The arithmetic of what the searches learn about moves.
#include "search/history.h"

#include <gtest/gtest.h>

TEST(History, CountersMoveByTheBonusAndTruncate) {
    struct Row {
        int before, bonus, rewarded, penalised;
    };
    for (const Row& row :
         {Row{16000, 700, 16700, 15300}, Row{16700, 700, 17370, 15970},  // 490000 / 16000 = 30
          Row{15300, 700, 16030, 14630},                                 // -30, towards 0
          Row{15999, 700, 16699, 15299}, Row{32000, 10500, 32000, 11000}, Row{0, 10500, 21000, 0}}) {
        std::int32_t rewarded = row.before, penalised = row.before;
        std::uint16_t narrow = std::uint16_t(row.before);  // of continuations
        rewardCounter<HistoryCentre, HistoryScale>(rewarded, row.bonus);
        penaliseCounter<HistoryCentre, HistoryScale>(penalised, row.bonus);
        penaliseCounter<HistoryCentre, HistoryScale>(narrow, row.bonus);
        EXPECT_EQ(rewarded, row.rewarded) << row.before;
        EXPECT_EQ(penalised, row.penalised) << row.before;
        EXPECT_EQ(narrow, row.penalised) << row.before;
    }
}

TEST(History, NothingIsLearntAboveDepth30) {
    EXPECT_EQ(historyBonus(30), 10500);
    EXPECT_EQ(contBonus(30), 6000);
    EXPECT_EQ(historyBonus(31), 0);
    EXPECT_EQ(contBonus(31), 0);
}
