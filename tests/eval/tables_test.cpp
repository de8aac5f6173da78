// Parameter tables against numbers worked out by hand.
#include "eval/eval_environment.h"
#include "eval/term_tables.h"

#include <set>

using Tables = EvalTest;

static std::vector<int> endgameLane(const Score (&row)[9]) {
    std::vector<int> lane;
    for (const Score value : row) {
        EXPECT_EQ(mgOf(value), 0);
        lane.push_back(egOf(value));
    }
    return lane;
}

TEST_F(Tables, DistancesFollowTheirRule) {
    using Row = std::vector<int>;
    EXPECT_EQ(endgameLane(PasserOwnKing[2]), (Row{390, 270, 157, 64, 18, -23, -55, -86, -87}));
    EXPECT_EQ(endgameLane(PasserOwnKing[3]), (Row{390, 270, 109, -49, -127, -191, -226, -259, -263}));
    EXPECT_EQ(endgameLane(PasserOwnKing[5]), (Row{390, 270, -60, -445, -637, -779, -826, -867, -878}));
    EXPECT_EQ(endgameLane(PasserEnemyKing[2]), (Row{-390, -270, -118, 25, 97, 156, 190, 223, 226}));
    EXPECT_EQ(endgameLane(PasserEnemyKing[5]), (Row{-390, -270, 439, 1334, 1782, 2100, 2173, 2232, 2261}));
    EXPECT_EQ(endgameLane(CandidateOwnKing[5]), (Row{253, 175, -39, -289, -414, -506, -536, -563, -570}));
    EXPECT_EQ(endgameLane(PawnEndOwnKing[6]), (Row{0, 0, -154, -363, -467, -539, -550, -557, -564}));
    EXPECT_EQ(endgameLane(PawnEndEnemyKing[6]), (Row{0, 0, 194, 455, 585, 675, 689, 698, 707}));
}

TEST_F(Tables, PieceSquaresAreMirroredAndBalanced) {
    struct Row {
        int type, square, mg, eg;
    };
    for (const Row& row :
         {Row{Pawn, A2, -116, -3}, Row{Pawn, E2, 48, -21}, Row{Pawn, E4, 96, -10}, Row{Pawn, D7, 160, 3},
          Row{Pawn, H7, -88, 21}, Row{Knight, A1, -330, -150}, Row{Knight, A8, -1210, -400},
          Row{Rook, D7, 91, 32}, Row{Queen, D4, 45, 81}, Row{King, G1, 0, -880}, Row{King, E1, -400, -704}}) {
        const Score value = PieceSquare[boardCode(White, row.type)][row.square];
        EXPECT_EQ(mgOf(value), row.mg);
        EXPECT_EQ(egOf(value), row.eg);
        EXPECT_EQ(PieceSquare[boardCode(Black, row.type)][row.square ^ 56], -value);
    }
    EXPECT_EQ(computePsqPair(rootOf("")), Score{});
    EXPECT_EQ(PieceSquare[boardCode(White, Pawn)][E8], Score{});
}

// Sums weighted by place, worked out apart from the program, so that no entry can change or move unseen.
TEST_F(Tables, LongTablesAddUp) {
    const int expected[7][2] = {{0, 0},         {39960, 9120},    {-214148, -79190},  {-29652, 690},
                                {41652, 29504}, {-11700, -21060}, {-1066480, -705408}};
    for (int type = Pawn; type <= King; ++type) {
        int mg = 0, eg = 0;
        for (int square = 0; square < 64; ++square) {
            mg += (square + 1) * mgOf(PieceSquare[type][square]);
            eg += (square + 1) * egOf(PieceSquare[type][square]);
        }
        EXPECT_EQ(mg, expected[type][0]) << type;
        EXPECT_EQ(eg, expected[type][1]) << type;
    }
    int danger = 0;
    for (int units = 0; units < KingDangerEntries; ++units) danger += (units + 1) * mgOf(KingDanger[units]);
    EXPECT_EQ(danger, 335056850);
}

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

TEST_F(Tables, SpansCountFiles) {
    EXPECT_EQ(PawnSpan[0], 0);
    EXPECT_EQ(PawnSpan[8], 1);
    EXPECT_EQ(PawnSpan[0x81], 8);
    EXPECT_EQ(PawnSpan[0x14], 3);
}
