// The time for a move, against numbers worked out by hand.
#include "search/time_budget.h"

#include "search/limits.h"

#include <gtest/gtest.h>

TEST(TimeBudgetTest, FollowsFromTheClock) {
    struct Row {
        BudgetInput input;
        double soft, hard;
        int extend;
    };
    for (Row row : {
             Row{{.time = 60}, 1.038, 57.504, 600},
             Row{{.time = 60, .increment = 1}, 2.537, 57.504, 600},
             Row{{.time = 300, .increment = 3, .threads = 4, .gamePly = 20}, 12.106, 287.904, 600},
             // Moves to the next control.
             Row{{.time = 60, .movesToGo = 40}, 2.891857, NoTimeLimit, 500},
             Row{{.time = 60, .movesToGo = 2}, 15.399142, NoTimeLimit, 194},
             Row{{.time = 60, .movesToGo = 1}, 20.549014, NoTimeLimit, 262},
         }) {
        SCOPED_TRACE(testing::Message() << row.input.time << ' ' << row.input.movesToGo);
        row.input.overheadMs = 50;
        const TimeBudget budget = computeTimeBudget(row.input);
        EXPECT_NEAR(budget.soft, row.soft, 1e-6);
        EXPECT_NEAR(budget.hard, row.hard, 1e-6);
        EXPECT_EQ(budget.extendPercent, row.extend);
    }
    // The factor of 100 comes first, which rounds down here: 5 times 100 isn't reached.
    EXPECT_EQ(computeTimeBudget({.time = 1, .movesToGo = 12, .overheadMs = 50}).extendPercent, 499);
}

TEST(TimeBudgetTest, PonderingAndTreeSearchGetMore) {
    const auto softOf = [](const BudgetInput& input) { return computeTimeBudget(input).soft; };
    const double plain = softOf({.time = 100});
    EXPECT_NEAR(softOf({.time = 100, .ponderCredit = true}), 1.3 * plain, 0.002);
    EXPECT_NEAR(softOf({.time = 100, .movesToGo = 9, .ponderCredit = true}),
                1.33 * softOf({.time = 100, .movesToGo = 9}), 0.002);
    EXPECT_NEAR(softOf({.time = 100, .treeSearch = true, .carry = 2}), 1.5 * plain + 2, 0.01);
    const auto nineMoves = [&](double carry) {
        return softOf({.time = 1, .movesToGo = 9, .treeSearch = true, .carry = carry});
    };
    EXPECT_GT(nineMoves(0.2), nineMoves(0) + 0.1);
    EXPECT_EQ(nineMoves(60), nineMoves(0)) << "another clock's time";
}

TEST(TimeBudgetTest, EmptyClocksLeaveTheFloor) {
    for (const int moves : {0, 1, 20}) {
        const TimeBudget budget = computeTimeBudget({.movesToGo = moves, .overheadMs = 50});
        EXPECT_DOUBLE_EQ(budget.soft, moves ? 0.005 : 0.004);
        EXPECT_GE(budget.extendPercent, 0);
    }
    EXPECT_LE(computeTimeBudget({.time = 1, .increment = 5, .overheadMs = 50}).soft, 0.9)
        << "never more than nine tenths of the clock";
}
