// The time for a move, against numbers worked out by hand.
#include "shell/time_budget.h"

#include "search/limits.h"

#include <gtest/gtest.h>

static BudgetInput clockOf(double time, double increment) {
    BudgetInput input;
    input.time = time;
    input.increment = increment;
    input.overheadMs = 50;
    return input;
}

TEST(TimeBudgetTest, WholeGame) {
    TimeBudget budget = computeTimeBudget(clockOf(60, 0));
    EXPECT_NEAR(budget.soft, 1.038, 1e-9);
    EXPECT_NEAR(budget.hard, 57.504, 1e-9);
    EXPECT_EQ(budget.extendPercent, 600);
    EXPECT_NEAR(computeTimeBudget(clockOf(60, 1)).soft, 2.537, 1e-9);
    BudgetInput later = clockOf(300, 3);
    later.gamePly = 20;
    later.threads = 4;
    budget = computeTimeBudget(later);
    EXPECT_NEAR(budget.soft, 12.106, 1e-9);
    EXPECT_NEAR(budget.hard, 287.904, 1e-9);
}

TEST(TimeBudgetTest, MovesToTheControl) {
    struct Row {
        int moves;
        double soft;
        int extend;
    };
    for (const Row& row : {Row{40, 2.891857, 500}, Row{1, 20.549014, 262}, Row{2, 15.399142, 194}}) {
        BudgetInput input = clockOf(60, 0);
        input.movesToGo = row.moves;
        const TimeBudget budget = computeTimeBudget(input);
        EXPECT_NEAR(budget.soft, row.soft, 1e-5) << row.moves;
        EXPECT_EQ(budget.extendPercent, row.extend) << row.moves;
        EXPECT_EQ(budget.hard, NoTimeLimit);
    }
    // The factor of 100 comes first, which rounds down here: 5 times 100 isn't reached.
    BudgetInput input = clockOf(1, 0);
    input.movesToGo = 12;
    EXPECT_EQ(computeTimeBudget(input).extendPercent, 499);
}

TEST(TimeBudgetTest, PonderingAndTreeSearchGetMore) {
    const BudgetInput plain = clockOf(100, 0);
    BudgetInput pondering = plain;
    pondering.ponderCredit = true;
    EXPECT_NEAR((computeTimeBudget(pondering).soft + 0.051) / (computeTimeBudget(plain).soft + 0.051), 1.3,
                0.001);
    BudgetInput tree = plain;
    tree.treeSearch = true;
    tree.carry = 2;
    EXPECT_NEAR(computeTimeBudget(tree).soft + 0.051, 1.5 * (computeTimeBudget(plain).soft + 0.051) + 2,
                0.01);
}

TEST(TimeBudgetTest, EmptyClocksLeaveTheFloor) {
    for (const int moves : {0, 1, 20}) {
        BudgetInput input = clockOf(0, 0);
        input.movesToGo = moves;
        const TimeBudget budget = computeTimeBudget(input);
        EXPECT_DOUBLE_EQ(budget.soft, moves ? 0.005 : 0.004);
        EXPECT_GE(budget.extendPercent, 0);
    }
    EXPECT_LE(computeTimeBudget(clockOf(1, 5)).soft, 0.9) << "never more than nine tenths of the clock";
}
