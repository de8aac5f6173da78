// Probes against results that an independent prober listed, and against the rules of the game themselves.
#include "endgame/tb_probe.h"

#include "board/attacks.h"
#include "board/fen.h"
#include "board/move_text.h"
#include "endgame/table_files.h"
#include "support/allocation_count.h"
#include "support/board_environment.h"

#include <cctype>
#include <map>
#include <random>

struct TbProbe : testing::Test {
    void SetUp() override {
        REQUIRE_SHARED_DATA();
        initTables(realTables().string());
    }
    void TearDown() override { tbInit(""); }
};

static int wdlOf(const std::string& fen) {
    Position pos = positionOf(fen);
    int success;
    const int wdl = tbProbeWdl(pos, &success);
    EXPECT_GT(success, 0) << fen;
    return wdl;
}

TEST_F(TbProbe, EqualsTheListedResults) {
    std::map<std::string, int> tables;
    int cursed = 0;
    for (const ListedResult& row : listedResults()) {
        Position pos = positionOf(row.fen);
        int success;
        EXPECT_EQ(wdlOf(row.fen), row.wdl) << row.fen;
        EXPECT_EQ(tbProbeDtz(pos, &success), row.dtz) << row.fen;
        EXPECT_GT(success, 0) << row.fen;
        ++tables[tableNameOf(pos) + (pos.sideToMove() == White ? " w" : " b")];
        cursed += row.wdl == 1 || row.wdl == -1;
    }
    // The list must not have shrunk to the easy ones.
    EXPECT_GT(tables.size(), 100u);
    EXPECT_GT(cursed, 0);
}

// Each of these takes another way through the probe: a turned table, a look ahead of one ply, two kings on
// the diagonal, captures that decide, en passant, and results that the fifty-move rule spoils or saves.
struct ProbeRow {
    const char* name;
    const char* fen;
    int wdl, success, dtz;
};
struct TbProbeRow : TbProbe, testing::WithParamInterface<ProbeRow> {};
TEST_P(TbProbeRow, HasResultSuccessAndDistance) {
    Position pos = positionOf(GetParam().fen);
    int success;
    EXPECT_EQ(tbProbeWdl(pos, &success), GetParam().wdl);
    EXPECT_EQ(success, GetParam().success);
    EXPECT_EQ(tbProbeDtz(pos, &success), GetParam().dtz);
}
INSTANTIATE_TEST_SUITE_P(
    Paths, TbProbeRow,
    testing::Values(ProbeRow{"Turned", "8/8/8/2q5/5K2/8/8/2k5 b - -", 2, 1, 13},
                    ProbeRow{"OnePlyAhead", "3r4/8/8/8/6K1/k7/8/8 w - -", -2, 1, -28},
                    ProbeRow{"KingsOnDiagonal", "7k/6b1/8/8/8/8/1K6/7b w - -", -2, 1, -33},
                    ProbeRow{"WinningCapture", "8/8/N6r/2K5/5k2/8/8/8 b - -", 2, 2, 1},
                    ProbeRow{"SymmetricBlack", "4k3/7r/4K3/8/8/8/8/4R3 b - -", 2, 1, 3},
                    ProbeRow{"LeadersTied", "k7/8/8/2p2p2/8/5K2/8/8 b - -", 2, 1, 3},
                    ProbeRow{"BlackLeads", "7K/6P1/8/8/8/1k6/4q3/8 b - -", 2, 1, 19},
                    ProbeRow{"EnPassantWins", "8/8/8/8/1Pp3K1/8/2k5/8 b - b3", 2, 2, 1},
                    ProbeRow{"DrawsByCapture", "8/kP6/8/8/8/8/8/3b1K2 b - -", 0, 1, 0},
                    ProbeRow{"BlessedLoss", "8/8/3n4/3P4/8/6K1/k7/1n6 w - -", -1, 1, -149},
                    ProbeRow{"CursedWin", "8/8/8/1N2k3/p7/8/K4N2/8 w - -", 1, 1, 130}),
    [](const auto& row) { return row.param.name; });

// A legal position of the given material with random squares; `withEnPassant` asks for a pawn that may be
// captured so.
static Position randomPosition(const std::string& table, std::mt19937& random, bool withEnPassant) {
    for (;;) {
        char board[64] = {};
        bool white = true;
        for (const char letter : table) {
            if (letter == 'v') white = false;
            if (letter == 'v') continue;
            int square;
            do square = letter == 'P' ? 8 + int(random() % 48) : int(random() % 64);
            while (board[square]);
            board[square] = white ? letter : char(std::tolower(letter));
        }
        std::string fen;
        for (int rank = 7; rank >= 0; --rank) {
            for (int file = 0; file < 8; ++file) fen += board[rank * 8 + file] ? board[rank * 8 + file] : '1';
            fen += rank ? "/" : "";
        }
        const bool whiteToMove = random() % 2;
        fen += whiteToMove ? " w - " : " b - ";
        std::string target = "-";
        for (int file = 0; file < 8 && withEnPassant; ++file) {
            const int from = (whiteToMove ? 48 : 8) + file, step = whiteToMove ? -8 : 8;
            if (board[from + 2 * step] == (whiteToMove ? 'p' : 'P') && !board[from + step] && !board[from])
                target = squareText(from + step);
        }
        const Position pos = positionOf(fen + target);
        if (isPlayable(pos) && (!withEnPassant || pos.epMask)) return pos;
    }
}

// The best that a position's moves can do by the results of its children, which a table never looks at.
struct ByChildren {
    int wdl = -3;
    int fastestWin = 1000, slowestLoss = 0;  // plies, at least 1
};
static ByChildren judgeByChildren(const Position& pos) {
    ByChildren result;
    Position child;
    std::vector<std::pair<int, int>> moves;  // result, distance
    for (const Move move : legalMoves(pos)) {
        makeChild(pos, child, move);
        int success;
        const int wdl = -tbProbeWdl(child, &success);
        EXPECT_GT(success, 0) << writeFen(child);
        const bool mates = child.inCheck && legalMoves(child).empty();
        const int zeroing = wdl == 2 || wdl == -2 ? 1 : 101;
        const int distance =
            mates || child.halfmoveClock == 0 ? zeroing : 1 + std::abs(tbProbeDtz(child, &success));
        EXPECT_GT(success, 0) << writeFen(child);
        result.wdl = std::max(result.wdl, wdl);
        moves.push_back({wdl, distance});
    }
    for (const auto& [wdl, distance] : moves)
        if (wdl == result.wdl && wdl > 0)
            result.fastestWin = std::min(result.fastestWin, distance);
        else if (wdl == result.wdl && wdl < 0)
            result.slowestLoss = std::max(result.slowestLoss, distance);
    if (moves.empty()) result.wdl = isInCheck(pos) ? -2 : 0;
    if (moves.empty()) result.slowestLoss = 1;
    return result;
}

static void expectConsistent(Position pos) {
    const ByChildren expected = judgeByChildren(pos);
    int success;
    EXPECT_EQ(tbProbeWdl(pos, &success), expected.wdl) << writeFen(pos);
    EXPECT_GT(success, 0) << writeFen(pos);
    const int dtz = tbProbeDtz(pos, &success);
    EXPECT_GT(success, 0) << writeFen(pos);
    // Where a table stores moves instead of plies, a distance may be one ply too small.
    if (expected.wdl > 0)
        EXPECT_NEAR(dtz, expected.fastestWin, 1) << writeFen(pos);
    else if (expected.wdl < 0)
        EXPECT_NEAR(-dtz, expected.slowestLoss, 1) << writeFen(pos);
    else
        EXPECT_EQ(dtz, 0) << writeFen(pos);
}

TEST_F(TbProbe, AgreesWithTheChildrenInEveryTable) {
    std::mt19937 random(6);
    int tables = 0;
    for (const auto& file : std::filesystem::directory_iterator(realTables())) {
        const std::string name = file.path().stem();
        if (file.path().extension() != ".rtbw" || name.size() > 5)
            continue;  // children of KNNvKP are missing
        ++tables;
        for (int i = 0; i < 150; ++i) expectConsistent(randomPosition(name, random, false));
        if (HasFailure()) return;
    }
    EXPECT_EQ(tables, 35);
}

TEST_F(TbProbe, AgreesWithTheChildrenWhereEnPassantIsLegal) {
    std::mt19937 random(7);
    for (int i = 0; i < 500; ++i) expectConsistent(randomPosition("KPvKP", random, true));
}

// White is stalemated for the table; e5xd6 is legal and forced, and loses. The invented table holds nothing
// but draws.
TEST_F(TbProbe, KnowsThatEnPassantIsNoStalemate) {
    const TableFolder folder;
    for (const char* name : {"KQvKP.rtbw", "KQvK.rtbw"}) folder.copyReal(name);
    folder.write("KQPvKP.rtbw", singleValueTable("KQPvKP", 0));
    initTables(folder.path());
    Position forced = positionOf("8/8/4k3/3pP3/8/8/5q2/7K w - d6");
    Position free = positionOf("k7/8/8/3pP3/8/8/5q2/7K w - d6");
    int success;
    EXPECT_EQ(tbProbeWdl(forced, &success), -2);
    EXPECT_EQ(success, 2);
    EXPECT_EQ(tbProbeWdl(free, &success), 0);
    EXPECT_EQ(success, 1);
}

TEST_F(TbProbe, NeedsNoTableForBareKings) {
    tbInit("");
    Position kings = positionOf("8/8/8/4k3/8/8/8/K7 w - -");
    Position queen = positionOf("8/8/8/4k3/8/8/8/KQ6 w - -");
    int success = 0;
    EXPECT_EQ(tbProbeWdl(kings, &success), 0);
    EXPECT_EQ(success, 1);
    tbProbeWdl(queen, &success);
    EXPECT_EQ(success, 0);
}

TEST_F(TbProbe, ScoresResultsForTheSearch) {
    const SettingsGuard guard;
    struct Row {
        const char* fen;
        int withRule, withoutRule;  // at ply 7
    };
    const Row rows[] = {{"8/8/8/2q5/5K2/8/8/2k5 b - -", 31793, 31793},
                        {"8/8/8/2q5/5K2/8/8/2k5 w - -", -31793, -31793},
                        {"8/8/8/1N2k3/p7/8/K4N2/8 w - -", 2, 31793},
                        {"8/8/3n4/3P4/8/6K1/k7/1n6 w - -", -2, -31793},
                        {"8/kP6/8/8/8/8/8/3b1K2 b - -", 0, 0}};
    for (const Row& row : rows)
        for (const bool rule : {true, false}) {
            settings.syzygy50MoveRule = rule;
            Position pos = positionOf(row.fen);
            int score = -1;
            EXPECT_TRUE(probeSearchTablebase(pos, 7, &score)) << row.fen;
            EXPECT_EQ(score, rule ? row.withRule : row.withoutRule) << row.fen;
        }
}

TEST_F(TbProbe, RefusesCastlingRightsAndCountsLookups) {
    int score;
    Position castling = positionOf("8/8/8/4k3/8/8/8/R3K3 w Q -");
    EXPECT_FALSE(probeSearchTablebase(castling, 2, &score));
    Position pos = positionOf("8/8/8/4k3/8/8/8/R3K3 w - -");
    const std::uint64_t before = tbHits;
    EXPECT_TRUE(probeSearchTablebase(pos, 2, &score));
    EXPECT_EQ(tbHits, before + 1);
}

TEST_F(TbProbe, AllocatesNothingOnceTheTableIsReady) {
    Position pos = positionOf("8/8/8/8/1Pp3K1/8/2k5/8 b - b3");
    int success;
    tbProbeDtz(pos, &success);
    const long before = allocationCount();
    for (int i = 0; i < 100; ++i) tbProbeDtz(pos, &success);
    const long after = allocationCount();
    EXPECT_EQ(after, before);
    EXPECT_GT(before, 0);
}
