// The numbers that options turn into search tables, and the sides that contempt falls to.
#include "search/search_tables.h"

#include "search/search_environment.h"

#include <array>

namespace {

class SearchTables : public SearchTest {};

using CountRow = std::array<int, MoveCountDepths>;

CountRow countRow(int improving) {
    CountRow row{};
    std::copy(std::begin(moveCountTable[improving]), std::end(moveCountTable[improving]), row.begin());
    return row;
}

TEST_F(SearchTables, MoveCountsOfTheDefaults) {
    EXPECT_EQ(countRow(0),
              (CountRow{1, 1, 1, 1, 1, 2, 2, 3, 4, 5, 6, 8, 9, 11, 13, 15, 17, 19, 21, 23, 26, 29, 31, 34}));
    EXPECT_EQ(countRow(1), (CountRow{3,  3,  3,  3,  3,  4,  5,  6,  8,  10, 12, 14,
                                     16, 19, 22, 25, 28, 32, 36, 40, 44, 48, 53, 58}));
}

// A larger selectivity lets fewer moves pass, against what its name may suggest.
TEST_F(SearchTables, SelectivityDividesTheMoveCounts) {
    settings.selectivity = 10;
    buildSearchTables();
    EXPECT_EQ(moveCountTable[0][20], 440);
    settings.selectivity = 250;
    buildSearchTables();
    EXPECT_EQ(moveCountTable[0][20], 18);
}

struct ReductionRow {
    int depth, count;
    int high[2], low[2];  // by not improving, improving
};

TEST_F(SearchTables, ReductionsOfTheDefaults) {
    for (const ReductionRow& row :
         {ReductionRow{10, 10, {5, 4}, {3, 2}}, ReductionRow{20, 30, {10, 9}, {8, 7}},
          ReductionRow{40, 20, {12, 10}, {10, 8}}})
        for (int improving = 0; improving < 2; ++improving) {
            EXPECT_EQ(reduceHigh[improving][row.depth][row.count], row.high[improving]) << row.depth;
            EXPECT_EQ(reduceLow[improving][row.depth][row.count], row.low[improving]) << row.depth;
        }
}

// Values just beside a half tell the rounding and the distance between the tables exactly.
TEST_F(SearchTables, ReductionsRoundToTheNearest) {
    EXPECT_EQ(reduceLow[1][5][29], 2);   // 1.508
    EXPECT_EQ(reduceLow[1][4][23], 0);   // 0.495
    EXPECT_EQ(reduceLow[1][1][29], -5);  // -4.513
}

// The tables end at depth 127 and count 63; the first plies have nothing to take away.
TEST_F(SearchTables, ReductionsAtTheEdges) {
    EXPECT_GT(reduceHigh[0][127][63], reduceHigh[0][100][63]);
    EXPECT_EQ(reductionOf(reduceHigh, false, 300, 200), reduceHigh[0][127][63]);
    EXPECT_LE(reduceHigh[1][1][63], 0);
    EXPECT_EQ(reduceLow[1][2][63], -2);
}

// A move count passes to the wider tables of more threads, and reductions grow step by step.
TEST_F(SearchTables, MoreThreadsReduceMore) {
    int before = 0;
    for (const int threads : {1, 2, 4, 6, 10}) {
        settings.threads = threads;
        buildSearchTables();
        EXPECT_GT(reduceHigh[0][100][63], before) << threads;
        before = reduceHigh[0][100][63];
        settings.threads = threads == 1 ? 1 : threads + 1;
        buildSearchTables();
        EXPECT_EQ(reduceHigh[0][100][63], before) << threads;
    }
}

TEST_F(SearchTables, TheTreeSearchHasItsOwn) {
    const int plain = reduceHigh[0][60][60];
    treeSearchActive = true;
    settings.selectivity = 10;
    settings.reduction = 50;
    buildSearchTables();
    EXPECT_EQ(moveCountTable[0][20], 35);  // round(11 / 130 * 400) and one more
    EXPECT_EQ(moveCountTable[1][0], 4);
    EXPECT_LT(reduceHigh[0][60][60], plain);
    EXPECT_EQ(historyBase, 45000);
    EXPECT_EQ(futilityStep, 45);
    EXPECT_EQ(contBonus(10), 2500);
    treeSearchActive = false;
    buildSearchTables();
    EXPECT_EQ(historyBase, 44000);
    EXPECT_EQ(futilityStep, 40);
    EXPECT_EQ(contBonus(10), 2000);
}

TEST_F(SearchTables, BonusesStopAtDepth30) {
    EXPECT_EQ(historyBonus(1), 700);
    EXPECT_EQ(historyBonus(30), 10500);
    EXPECT_EQ(historyBonus(31), 0);
    EXPECT_EQ(contBonus(0), 400);
    EXPECT_EQ(contBonus(31), 0);
}

TEST_F(SearchTables, RootStatFloorsFallByAFixedShare) {
    const int expected[] = {18000, 16560, 15235, 14016, 12895, 11863};
    for (int number = 1; number <= 6; ++number)
        EXPECT_EQ(rootStatFloor[number], expected[number - 1]) << number;
}

TEST_F(SearchTables, ContemptFallsToTheMoverAtTheRoot) {
    setContempt(-17, Black);
    EXPECT_EQ(contemptValue[Black], -17);
    EXPECT_EQ(contemptValue[White], 17);
    EXPECT_EQ(mgOf(contemptPair[Black]), -170);
    EXPECT_EQ(egOf(contemptPair[Black]), -42);
    EXPECT_EQ(mgOf(contemptPair[White]), 170);
    EXPECT_EQ(egOf(contemptPair[White]), 42);
    settings.whiteContempt = true;
    setContempt(16, Black);
    EXPECT_EQ(contemptValue[White], 16);
    EXPECT_EQ(mgOf(contemptPair[White]), 160);
    EXPECT_EQ(egOf(contemptPair[White]), 40);
}

TEST_F(SearchTables, ATreeSearchKnowsContemptOnlyAsAValue) {
    treeSearchActive = true;
    setContempt(16, White);
    EXPECT_EQ(contemptValue[White], 16);
    EXPECT_EQ(contemptPair[White], Score{});
    EXPECT_EQ(contemptPair[Black], Score{});
}

TEST_F(SearchTables, ContemptFollowsTheScore) {
    EXPECT_EQ(contemptFromScore(0, 16), 16);
    EXPECT_EQ(contemptFromScore(100, 16), 27);
    EXPECT_EQ(contemptFromScore(-100, 16), 5);
    EXPECT_EQ(contemptFromScore(-31990, 0), -21);  // truncated towards 0
}

}  // namespace
