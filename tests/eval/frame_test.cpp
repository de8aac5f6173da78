// The frame of the evaluation: caches, the clock, symmetry, and the options that reach the score.
#include "eval/eval_environment.h"

using Frame = EvalTest;

TEST_F(Frame, CachedEqualsUncached) {
    int compared = 0;
    walkRandomGames(2, 60, [&](const Position& game) {
        Position pos = withCaches(game);
        forgetCaches();
        const int fresh = scoreOf(pos);
        EXPECT_EQ(scoreOf(pos), fresh);
        EXPECT_EQ(caches.eval[pos.key & (Entries - 1)].key, pos.key);
        // The pawn and material caches alone must not change it either.
        std::memset(static_cast<void*>(caches.eval), 0, sizeof caches.eval);
        EXPECT_EQ(scoreOf(pos), fresh);
        ++compared;
    });
    EXPECT_GT(compared, 500);
}

TEST_F(Frame, BareKingsAreWorthTheContemptAlone) {
    contemptPair[White] = pair(160, 40);
    EXPECT_EQ(scoreOf("4k3/8/8/8/8/8/8/4K3 w - -"), 4);  // 40 * 96 blended units
    EXPECT_EQ(scoreOf("4k3/8/8/8/8/8/8/4K3 b - -"), -4);
}

TEST_F(Frame, ScoresShrinkWithTheClockAlsoFromTheCache) {
    Position pos = rootOf("4k3/pp6/8/8/8/8/PP3PPP/R3K3 w - -");
    const int full = scoreOf(pos);
    ASSERT_GT(full, 300);
    for (const int clock : {30, 31, 60, 100, 101}) {
        pos.halfmoveClock = std::uint16_t(clock);
        EXPECT_EQ(scoreOf(pos), clock <= 30 ? full : (101 - clock) * full / 70) << clock;
    }
    settings.progressThreshold = 99;
    pos.halfmoveClock = 60;
    EXPECT_EQ(scoreOf(pos), full);
}

// The same position with colours exchanged.
static std::string flipped(const Position& pos) {
    std::string board;
    for (int rank = 0; rank < 8; ++rank) {
        if (rank) board += '/';
        for (int file = 0; file < 8; ++file) {
            const int code = pos.board[makeSquare(file, rank)];
            // Ranks from the first up read as ranks from the eighth down.
            board += code ? " pnbrqk  PNBRQK"[code] : '1';
        }
    }
    std::string rights;
    if (!(pos.castleLost & 4)) rights += 'K';
    if (!(pos.castleLost & 8)) rights += 'Q';
    if (!(pos.castleLost & 1)) rights += 'k';
    if (!(pos.castleLost & 2)) rights += 'q';
    return board + (pos.sideToMove() == White ? " b " : " w ") + (rights.empty() ? "-" : rights) + " -";
}

// Whether one of the rules that favour a colour on purpose may act: a bishop that stands alone or against
// one, without an enemy knight, and the rook and pawn ending.
static bool favoursAColour(const Position& pos) {
    for (const Colour us : {White, Black}) {
        const Bitboard* own = pos.pieces[us];
        const Bitboard* enemy = pos.pieces[opponent(us)];
        if (own[Bishop] && popcount(enemy[Bishop]) <= 1 && !enemy[Knight]) return true;
    }
    return pos.pieceCount == 5 && popcount(pos.pieces[White][Rook]) == 1 &&
           popcount(pos.pieces[Black][Rook]) == 1;
}

TEST_F(Frame, ColoursAreAlike) {
    // Reading a FEN sets the castling tables anew, so the games are played to their end first.
    std::vector<Position> positions;
    walkRandomGames(4, 120, [&](const Position& game) {
        if (!settings.chess960 && !favoursAColour(game)) positions.push_back(game);
    });
    ASSERT_GT(positions.size(), 500u);
    for (const Position& game : positions) {
        const Position pos = withCaches(game);
        Position mirrored = rootOf(flipped(pos));
        mirrored.halfmoveClock = pos.halfmoveClock;
        forgetCaches();
        const int score = scoreOf(pos);
        forgetCaches();
        EXPECT_EQ(scoreOf(mirrored), score) << writeFen(pos);
    }
}

TEST_F(Frame, DynamismAndKingSafetyActUnlessTheTreeSearches) {
    const char* fen = "r4rk1/ppp2ppp/2n5/3q4/6b1/5N2/PPP1BPPP/R1BQ1RK1 w - -";
    const int usual = scoreOf(fen);
    settings.dynamism = 400;
    initEvalParameters();
    const int lively = scoreOf(fen);
    EXPECT_NE(lively, usual);
    settings.kingSafety = 200;
    initEvalParameters();
    EXPECT_NE(scoreOf(fen), lively);
    treeSearchActive = true;
    initEvalParameters();
    EXPECT_EQ(scoreOf(fen), usual);
    treeSearchActive = false;
    settings.dynamism = 125;
    settings.kingSafety = 72;
    initEvalParameters();
    EXPECT_EQ(scoreOf(fen), usual);
}
