// The numbers that options turn into search tables.
#include "search/search_tables.h"

#include "search/search_environment.h"

class SearchTablesTest : public SearchTest {};

// Worked out by hand. Intended: a larger selectivity lets fewer moves pass, more threads reduce more, and a
// tree search hears of neither option.
TEST_F(SearchTablesTest, FollowOptionsAndMode) {
    struct Row {
        bool tree;
        int threads, selectivity, reduction;
        int count[2];   // at depth 20, by not improving, improving
        int high, low;  // at depth 100 and move 60, not improving and improving
    };
    for (const Row& row :
         {Row{false, 1, 170, -15, {26, 44}, 21, 16}, Row{false, 1, 10, -15, {440, 721}, 21, 16},
          Row{false, 1, 250, 51, {18, 30}, 36, 26}, Row{false, 2, 170, -15, {25, 43}, 22, 17},
          Row{false, 3, 170, -15, {25, 42}, 22, 17}, Row{false, 4, 170, -15, {24, 41}, 24, 18},
          Row{false, 5, 170, -15, {24, 41}, 24, 18}, Row{false, 6, 170, -15, {24, 41}, 26, 19},
          Row{false, 9, 170, -15, {24, 40}, 26, 19}, Row{false, 10, 170, -15, {24, 40}, 28, 21},
          Row{true, 1, 10, 50, {35, 58}, 14, 11}, Row{true, 3, 10, 50, {35, 58}, 15, 12},
          Row{true, 4, 10, 50, {35, 58}, 16, 12}}) {
        SCOPED_TRACE(testing::Message() << row.threads << " threads, tree " << row.tree << ", selectivity "
                                        << row.selectivity << ", reduction " << row.reduction);
        searchState.treeSearchActive = row.tree;
        settings.threads = row.threads;
        settings.selectivity = row.selectivity;
        settings.reduction = row.reduction;
        buildSearchTables();
        for (int improving = 0; improving < 2; ++improving)
            EXPECT_EQ(searchTables.moveCountTable[improving][20], row.count[improving]);
        EXPECT_EQ(searchTables.reduceHigh[0][100][60], row.high);
        EXPECT_EQ(searchTables.reduceLow[1][100][60], row.low);
        EXPECT_EQ(reductionOf(searchTables.reduceHigh, false, 300, 200), searchTables.reduceHigh[0][127][63]);
        EXPECT_EQ(searchTables.historyBase, row.tree ? 45000 : 44000);
        EXPECT_EQ(searchTables.futilityStep, row.tree ? 45 : 40);
        EXPECT_EQ(contBonus(10), row.tree ? 2500 : 2000);
    }
    EXPECT_GT(historyBonus(30), 0);
    EXPECT_EQ(historyBonus(31) + contBonus(31), 0) << "nothing is learnt from so deep a search";
}
