// The root filter: it may drop moves, but never the result, and what it keeps must win within the fifty-move
// rule.
#include "endgame/tb_root.h"

#include "endgame/table_files.h"

#include <map>

struct TbRoot : RealTables {
    RootMove list[MaxListMoves];
    int score = 12345;
    int probeDtz(const std::string& fen, int clock = 0) {
        Position pos = positionOf(fen);
        pos.halfmoveClock = std::uint16_t(clock);
        return tbRootProbeDtz(pos, list, &score);
    }
    int probeWdl(const std::string& fen) {
        Position pos = positionOf(fen);
        return tbRootProbeWdl(pos, list, &score);
    }
    // The moves of the list, which must have its end, with their values.
    std::map<Move, int> kept(int count) const {
        EXPECT_EQ(list[count].move, NoMove);
        std::map<Move, int> moves;
        for (int i = 0; i < count; ++i) moves[list[i].move] = list[i].score;
        return moves;
    }
};

// Five men have no tables of their promotions, so that pawns must be farther from it.
static constexpr Bitboard MiddleRanks = 0x000000ffff000000;

FOR_SMALL_AND_MANY_TABLES(TbRoot);

// By distances, winners keep what wins within the clock, or only the fastest when it is too late; losers all
// moves, or the longest resistance once the rule comes near. By results, all keep what is best.
TEST_P(TbRoot, KeepsTheRightMovesOfEveryListedPosition) {
    const SettingsGuard guard;
    for (const ListedResult& row : listedResults(many())) {
        Position pos = positionOf(row.fen);
        const Bitboard pawns = pos.pieces[White][Pawn] | pos.pieces[Black][Pawn];
        if (pos.pieceCount > 4 && pawns & ~MiddleRanks) continue;  // a promotion is too near
        const std::vector<MoveResult> moves = resultsOfMoves(pos);
        int fastest = 1000, longest = 0;
        for (const MoveResult& move : moves) {
            if (move.distance > 0) fastest = std::min(fastest, move.distance);
            longest = std::max(longest, -move.distance);
        }
        for (const int clock : {0, 50, 93 - fastest, 98 - fastest, 99 - fastest, 100 - fastest,
                                99 - 2 * longest, 100 - 2 * longest, 99}) {
            if (clock < 0) continue;
            SCOPED_TRACE(row.fen + ", clock " + std::to_string(clock));
            const int limit = fastest + clock < 100 ? 99 - clock : fastest;
            std::map<Move, int> expected;
            for (const auto& [move, wdl, distance] : moves)
                if (row.wdl == 0  ? distance == 0
                    : row.wdl < 0 ? clock + 2 * longest < 100 || distance == -longest
                                  : distance > 0 && distance <= limit)
                    expected[move] = distance;
            pos.halfmoveClock = std::uint16_t(clock);
            const int count = tbRootProbeDtz(pos, list, &score);
            ASSERT_EQ(kept(count), expected);
            for (int i = 1; i < count && row.wdl > 0; ++i)
                EXPECT_LE(list[i].score, list[i - 1].score) << "slowest first";
        }
        for (const bool rule : {true, false}) {
            SCOPED_TRACE(row.fen + (rule ? ", fifty-move rule" : ""));
            settings.syzygy50MoveRule = rule;
            const auto valueOf = [rule](int wdl) { return rule ? wdl : wdl > 0 ? 2 : wdl < 0 ? -2 : 0; };
            std::map<Move, int> expected;
            for (const MoveResult& move : moves)
                if (valueOf(move.wdl) == valueOf(row.wdl)) expected[move.move] = valueOf(row.wdl);
            ASSERT_EQ(kept(tbRootProbeWdl(pos, list, &score)), expected);
            const int scores[] = {-31799, -2, 0, 2, 31799};
            EXPECT_EQ(score, scores[row.wdl + 2]) << "raised without the rule by the caller alone";
        }
    }
}

TEST_P(TbRoot, ScoresByResultAndClock) {
    const std::string cursed = "8/8/8/1N2k3/p7/8/K4N2/8 w - -", queen = "8/8/8/2q5/5K2/8/8/2k5 b - -";
    struct Case {
        std::string fen;
        int clock, score;
    };
    const Case cases[] = {{queen, 0, 31799},
                          {queen, 87, 31799},  // 13 plies, the last of them on ply 100
                          {queen, 88, (200 - 88 - 13) / 2},
                          {"3r4/8/8/8/6K1/k7/8/8 w - -", 0, -31799},
                          {"3r4/8/8/8/6K1/k7/8/8 w - -", 73, -(200 - 73 - 28) / 2},
                          {"8/8/2b1k3/8/8/5K2/2N5/8 w - -", 50, 0},
                          {cursed, 0, 2}};
    for (const Case& c : cases) {
        if (c.fen == cursed && !many()) continue;  // its table is large
        EXPECT_GT(probeDtz(c.fen, c.clock), 0) << c.fen;
        EXPECT_EQ(score, c.score) << c.fen << " at " << c.clock;
    }
}

TEST_P(TbRoot, ARepetitionLeavesOnlyTheFastestWins) {
    const std::vector<Position> line =
        playLine("8/8/8/8/4k3/8/7r/K7 b - -", {"h2h3", "a1a2", "h3h2", "a2a1"});
    EXPECT_FALSE(positionHasRepeated(line[3]));
    EXPECT_TRUE(positionHasRepeated(line[4]));
    Position fresh = line[0], repeated = line[4];
    const int all = tbRootProbeDtz(fresh, list, &score);
    const int fastest = tbRootProbeDtz(repeated, list, &score);
    EXPECT_GT(fastest, 0);
    EXPECT_LT(fastest, all);
    for (int i = 0; i < fastest; ++i) EXPECT_EQ(list[i].score, list[0].score);

    // A capture ends the walk: what came before it can't come again.
    const std::vector<Position> captured = playLine(
        "8/8/8/8/4k3/8/P6r/K7 b - -", {"h2h3", "a1b1", "h3h2", "b1a1", "h2a2", "a1b1", "e4d4", "b1a2"});
    EXPECT_TRUE(positionHasRepeated(captured[4]));
    EXPECT_FALSE(positionHasRepeated(captured[7]));
    EXPECT_FALSE(positionHasRepeated(captured[8]));
}

TEST_P(TbRoot, RefusesWhatItCannotJudge) {
    for (const char* fen : {"8/8/8/4k3/8/8/8/R3K3 w Q -", "8/8/8/2qqq3/5K2/8/8/2k5 b - -"}) {
        EXPECT_EQ(probeDtz(fen), 0) << fen;
        EXPECT_EQ(probeWdl(fen), 0) << fen;
    }
    const std::string fen = "8/8/8/8/8/8/5k2/K1R5 w - -";
    const TableFolder folder;
    folder.copyReal("KRvK.rtbw");
    initTables(folder.path());
    EXPECT_EQ(probeDtz(fen), 0) << "no distances";
    EXPECT_GT(probeWdl(fen), 0);
}
