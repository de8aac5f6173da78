// Probes against results that an independent prober listed, and against the rules of the game themselves.
#include "endgame/tb_probe.h"

#include "board/attacks.h"
#include "endgame/table_files.h"
#include "support/allocation_count.h"

struct TbProbe : RealTables {};
FOR_SMALL_AND_MANY_TABLES(TbProbe);

TEST_P(TbProbe, EqualsTheListedResults) {
    std::vector<ListedResult> rows = listedResults(many());
    // Beyond the fifty-move rule, from the table's own value.
    if (many()) rows.push_back({"8/8/8/1N2k3/p7/8/K4N2/8 w - -", 1, 130});
    if (many()) rows.push_back({"8/8/3n4/3P4/8/6K1/k7/1n6 w - -", -1, -149});
    for (const ListedResult& row : rows) {
        EXPECT_EQ(wdlOf(positionOf(row.fen)), row.wdl) << row.fen;
        EXPECT_EQ(dtzOf(positionOf(row.fen)), row.dtz) << row.fen;
    }
}

// What the moves lead to is what the position is worth, by tables that the position itself never looks at.
static void expectConsistent(const Position& pos) {
    const std::vector<MoveResult> moves = resultsOfMoves(pos);
    int wdl = moves.empty() && !isInCheck(pos) ? 0 : -2;
    for (const MoveResult& move : moves) wdl = std::max(wdl, move.wdl);
    // The fastest win, or the slowest loss.
    int distance = wdl > 0 ? 1000 : wdl < 0 ? -1 : 0;
    for (const MoveResult& move : moves)
        if (move.wdl == wdl) distance = std::min(distance, move.distance);
    EXPECT_EQ(wdlOf(pos), wdl) << writeFen(pos);
    // Where a table stores moves instead of plies, a distance may be one ply too small.
    const int tolerance = wdl == 0 || distance == 1 ? 0 : 1;
    EXPECT_NEAR(dtzOf(pos).value_or(9999), distance, tolerance) << writeFen(pos);
}

TEST_P(TbProbe, AgreesWithTheChildrenInEveryTable) {
    std::mt19937 random(6);
    int tables = 0;
    for (const auto& file : std::filesystem::directory_iterator(many() ? manyTables() : smallTables())) {
        const std::string name = file.path().stem();
        if (file.path().extension() != ".rtbw" || name == "KNNvKP" || (!many() && name == "KPPvK"))
            continue;  // tables of their children are missing
        ++tables;
        for (int i = 0; i < 150; ++i) expectConsistent(randomPosition(name, random));
        if (HasFailure()) return;
    }
    EXPECT_EQ(tables, many() ? 36 : 12);
}

TEST(TbProbeOptional, AgreesWithTheChildrenWhereEnPassantIsPossible) {
    OPTIONAL_WITH_SHARED_DATA();
    initTables(manyTables());
    std::mt19937 random(7);
    for (int found = 0; found < 500;) {
        const Position pos = randomPosition("KPvKP", random);
        Position child;
        for (const Move move : legalMoves(pos)) {
            makeChild(pos, child, move);
            if (!child.epMask) continue;
            expectConsistent(child);
            ++found;
        }
        if (HasFailure()) return;
    }
}

// White is stalemated for the table; e5xd6 is legal and forced, and loses. The invented tables hold nothing
// but draws and wins.
TEST(TbInvented, EnPassantIsNoStalemate) {
    const TableFolder folder;
    folder.copyReal("KQvK.rtbw");
    folder.write("KQvKP.rtbw", singleValueTable("KQvKP", 2));
    folder.write("KQPvKP.rtbw", singleValueTable("KQPvKP", 0));
    initTables(folder.path());
    const Position forced = positionOf("8/8/4k3/3pP3/8/8/5q2/7K w - d6");
    EXPECT_EQ(wdlOf(forced), -2);
    EXPECT_EQ(dtzOf(forced), -1) << "by the capture: no distances are there";
    EXPECT_EQ(wdlOf(positionOf("k7/8/8/3pP3/8/8/5q2/7K w - d6")), 0);
}

TEST(TbInvented, ResultsBecomeScoresOfTheSearch) {
    const TableFolder folder;
    for (const char* name : {"KQvK.rtbw", "KRvK.rtbw", "KBvKN.rtbw", "KBvK.rtbw", "KNvK.rtbw"})
        folder.copyReal(name);
    folder.write("KNNvKP.rtbw", singleValueTable("KNNvKP", 1));
    folder.write("KRNvKB.rtbw", singleValueTable("KRNvKB", -1));
    initTables(folder.path());
    const SettingsGuard guard;
    struct Case {
        const char* fen;
        int withRule, withoutRule;  // at ply 7
    };
    const Case cases[] = {{"8/8/8/2q5/5K2/8/8/2k5 b - -", 31793, 31793},
                          {"8/8/8/2q5/5K2/8/8/2k5 w - -", -31793, -31793},
                          {"8/8/8/1N2k3/p7/8/K4N2/8 w - -", 2, 31793},
                          {"8/8/3n4/8/8/6K1/k7/1r2B3 w - -", -2, -31793},
                          {"8/8/2b1k3/8/8/5K2/2N5/8 w - -", 0, 0}};
    for (const Case& c : cases)
        for (const bool rule : {true, false}) {
            settings.syzygy50MoveRule = rule;
            EXPECT_EQ(probeSearchTablebase(positionOf(c.fen), 7), rule ? c.withRule : c.withoutRule) << c.fen;
        }
    const Position rook = positionOf("8/8/8/4k3/8/8/8/R3K3 w - -");
    const Position castling = positionOf("8/8/8/4k3/8/8/8/R3K3 w Q -");
    const std::uint64_t before = tbSearch.hits();
    EXPECT_TRUE(probeSearchTablebase(rook, 2));
    EXPECT_FALSE(probeSearchTablebase(castling, 2)) << "tables know no castling";
    EXPECT_EQ(tbSearch.hits(), before + 1);
}

TEST_P(TbProbe, AllocatesNothingOnceTheTableIsReady) {
    const Position pos = positionOf("8/8/8/8/2p3K1/8/2k5/8 b - -");
    dtzOf(pos);
    const long before = allocationCount();
    for (int i = 0; i < 100; ++i) dtzOf(pos);
    const long after = allocationCount();
    EXPECT_EQ(after, before);
    EXPECT_GT(before, 0);
}
