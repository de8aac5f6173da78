// The transposition table: what a store keeps, what it replaces, and its sizes.
#include "search/trans_table.h"

#include "search/limits.h"

#include <cstdlib>
#include <gtest/gtest.h>

class TransTableTest : public ::testing::Test {
   protected:
    TransTableTest() { table.resize(1); }
    ~TransTableTest() override {
        table.free();
        searchState.analysisSearch = false;
        // The process-wide table owns the prefetch base.
        if (transTable.bucketCount() > 0) {
            const int megabytes = 16;
            transTable.free();
            transTable.resize(megabytes);
        }
    }

    // Keys that fall into one bucket, told apart by their high halves.
    static Key keyOf(std::uint32_t check) { return Key(check) << 32 | 77; }
    TransData at(std::uint32_t check) const {
        TransData data;
        EXPECT_TRUE(table.probe(keyOf(check), data)) << check;
        return data;
    }
    bool holds(std::uint32_t check) const {
        TransData data;
        return table.probe(keyOf(check), data);
    }
    void store(std::uint32_t check, int depth, int score = 10, int flags = LowerBound, Move move = 0x123,
               int nodeRank = 0) {
        table.store(keyOf(check), depth, score, flags, move, nodeRank);
    }
    // Ages the table.
    void nextSearch() { table.newSearch(++lastRoot); }

    TransTable table;
    Key lastRoot = 1000;
};

TEST_F(TransTableTest, KeepsEveryFieldOfAnEntry) {
    store(9, -2, -31990, TerminalFlags, 0x7fff, 5);
    const TransData data = at(9);
    EXPECT_EQ(data.score(), -31990);
    EXPECT_EQ(data.depth(), -2);
    EXPECT_EQ(data.move(), 0x7fffu);
    EXPECT_EQ(data.bound(), ExactBound);
    EXPECT_TRUE(data.terminal());
    EXPECT_EQ(data.nodeRank(), 5);
    EXPECT_FALSE(data.busy());
}

TEST_F(TransTableTest, DropsScoresBeyondItsRange) {
    store(1, 4, 32501);
    store(2, 4, -32501);
    EXPECT_FALSE(holds(1) || holds(2));
    store(3, 4, 32500);
    EXPECT_TRUE(holds(3));
}

TEST_F(TransTableTest, AStoreWithoutAMoveKeepsTheOldOne) {
    store(1, 4, 10, LowerBound, 0x456);
    nextSearch();
    store(1, 8, 20, UpperBound, NoMove);
    EXPECT_EQ(at(1).move(), 0x456u);
    EXPECT_EQ(at(1).depth(), 8);
}

TEST_F(TransTableTest, DeeperResultsOfTheSameKindStand) {
    struct Row {
        int oldFlags, oldScore, newFlags, newScore;
        bool stands;
    };
    for (const Row& row :
         {Row{ExactBound, 10, LowerBound, 99, true}, Row{LowerBound, 50, LowerBound, 40, true},
          Row{LowerBound, 50, LowerBound, 60, false}, Row{LowerBound, 50, UpperBound, 40, false},
          Row{UpperBound, 30, UpperBound, 40, true}, Row{UpperBound, 30, UpperBound, 20, false},
          Row{UpperBound, 30, LowerBound, 40, false}}) {
        table.clear();
        store(1, 10, row.oldScore, row.oldFlags, 0x111);
        store(1, 8, row.newScore, row.newFlags, 0x222);
        EXPECT_EQ(at(1).depth(), row.stands ? 10 : 8);
        EXPECT_EQ(at(1).move(), 0x222u);  // the move is taken either way
    }
    // In the next search nothing stands.
    table.clear();
    store(1, 10, 10, ExactBound);
    nextSearch();
    store(1, 2, 5, UpperBound);
    EXPECT_EQ(at(1).depth(), 2);
}

TEST_F(TransTableTest, AnalysisKeepsDeeperExactEntriesOverSearches) {
    searchState.analysisSearch = true;
    store(1, 10, 10, ExactBound, 0x111);
    nextSearch();
    store(1, 8, 99, LowerBound, 0x222);
    EXPECT_EQ(at(1).depth(), 10);
    EXPECT_EQ(at(1).score(), 10);
    EXPECT_EQ(at(1).move(), 0x222u);
    nextSearch();
    store(1, 10, 99, LowerBound, 0x222);  // of the same depth: an ordinary store
    EXPECT_EQ(at(1).score(), 99);
}

TEST_F(TransTableTest, TheOldAndShallowMakeRoom) {
    for (std::uint32_t check : {1u, 2u, 3u, 4u}) store(check, 20);
    store(5, 6);  // no free slot: the first of equals goes
    EXPECT_FALSE(holds(1));
    EXPECT_TRUE(holds(5));
    store(6, 30);
    EXPECT_FALSE(holds(5));  // the shallowest
    // A search of age weighs six half plies.
    nextSearch();
    store(2, 20);
    store(3, 20);
    store(6, 20);
    store(7, 13);
    EXPECT_FALSE(holds(4)) << "aged by one search: 6 - 20 against -20";
    store(8, 20);
    EXPECT_FALSE(holds(7));
}

TEST_F(TransTableTest, NodeRankKeepsEntriesLonger) {
    store(1, 10, 0, LowerBound, 1, 2);
    store(2, 10, 0, LowerBound, 1, 1);
    store(3, 10, 0, LowerBound, 1, 0);
    store(4, 10, 0, LowerBound, 1, 2);
    store(5, 10);
    EXPECT_FALSE(holds(3));
    store(6, 12);
    EXPECT_FALSE(holds(5));
    EXPECT_TRUE(holds(2));
}

TEST_F(TransTableTest, AgeWrapsRound) {
    for (int i = 0; i < 255; ++i) nextSearch();
    store(1, 10);
    EXPECT_EQ(at(1).generation(), 255);
    nextSearch();
    store(2, 10);
    EXPECT_EQ(at(2).generation(), 0);
    store(3, 10);
    store(4, 10);
    store(5, 10);  // one search old loses to none, whatever the number says
    EXPECT_FALSE(holds(1));
    table.newSearch(lastRoot);
    store(6, 40);
    EXPECT_EQ(at(6).generation(), 0);  // the same root again ages nothing
}

TEST_F(TransTableTest, BusyMarksComeAndGo) {
    table.markBusy(keyOf(1), true);
    EXPECT_TRUE(at(1).busy());
    EXPECT_EQ(at(1).bound(), NoBound);
    EXPECT_EQ(at(1).depth(), -10);
    store(1, 8);
    EXPECT_TRUE(at(1).busy()) << "a store keeps the mark";
    table.markBusy(keyOf(1), false);
    EXPECT_FALSE(at(1).busy());
    EXPECT_EQ(at(1).depth(), 8);
    for (std::uint32_t check : {2u, 3u, 4u}) store(check, 20);
    table.markBusy(keyOf(9), true);
    EXPECT_FALSE(holds(1)) << "a placeholder takes the shallowest slot";
    store(10, 2);
    EXPECT_FALSE(holds(9)) << "and gives it up first";
}

TEST_F(TransTableTest, MateScoresCountFromTheNode) {
    for (const int ply : {0, 7}) {
        for (const int score : {31990, 31800, -31800, -31999, 31799, 0, -500}) {
            const int stored = scoreToTable(score, ply);
            EXPECT_EQ(std::abs(stored), std::abs(score) >= 31800 ? std::abs(score) + ply : std::abs(score));
            EXPECT_EQ(scoreFromTable(stored, ply), score);
        }
    }
}

TEST_F(TransTableTest, SizesAreThoseOfTheFile) {
    struct Row {
        int megabytes;
        std::uint64_t buckets, bytes;
    };
    for (const Row& row :
         {Row{1, 16384, 786432}, Row{16, 262144, 12582912}, Row{64, 1048576, 50331648},
          Row{192, 4194304, 201326592}, Row{256, 4194304, 201326592}, Row{95, 2097152, 100663296}}) {
        table.resize(row.megabytes);
        EXPECT_EQ(table.bucketCount(), row.buckets);
        EXPECT_EQ(table.byteSize(), row.bytes);
    }
    EXPECT_FALSE(table.resize(95)) << "the same size only clears";
}

TEST_F(TransTableTest, ClearingEmptiesAndStartsTheAgesAgain) {
    for (int i = 0; i < 3; ++i) nextSearch();
    for (std::uint32_t check : {1u, 2u, 3u, 4u}) store(check, 10);
    table.markBusy(keyOf(4), true);
    table.clear();
    for (std::uint32_t check : {1u, 2u, 3u, 4u}) EXPECT_FALSE(holds(check));
    store(4, 6);
    EXPECT_EQ(at(4).generation(), 0);
    EXPECT_FALSE(at(4).busy());
}

TEST_F(TransTableTest, OccupancyCountsThisSearch) {
    nextSearch();
    EXPECT_EQ(table.occupancy(), 0);
    for (Key bucket = 0; bucket < 500; ++bucket) table.store(Key(5) << 32 | bucket, 4, 0, LowerBound, 1, 0);
    EXPECT_EQ(table.occupancy(), 500);
    nextSearch();
    EXPECT_EQ(table.occupancy(), 0);
}
