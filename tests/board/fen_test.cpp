// Reading and writing FEN: castling tables, en passant, and texts that no one should send.
#include "board/fen.h"

#include "board/attacks.h"
#include "board/zobrist.h"
#include "support/board_environment.h"

#include <cctype>
#include <random>

struct CastlingRow {
    const char* name;
    const char* fen;
    int lost;                       // expected `castleLost`
    std::uint32_t rooks[4];         // expected `castleRook`
    Bitboard path[4], kingPath[4];  // 0 where the right isn't granted
};

static void PrintTo(const CastlingRow& row, std::ostream* out) { *out << row.fen; }

class CastlingTables : public ::testing::TestWithParam<CastlingRow> {};

TEST_P(CastlingTables, FollowTheField) {
    const CastlingRow& row = GetParam();
    const Position pos = positionOf(row.fen);
    EXPECT_EQ(pos.castleLost, row.lost);
    Bitboard homes[2] = {pos.pieces[White][King], pos.pieces[Black][King]};
    for (int right = 0; right < 4; ++right) {
        SCOPED_TRACE(right);
        EXPECT_EQ(castleRook[right], row.rooks[right]);
        EXPECT_EQ(castlePath[right], row.path[right]);
        EXPECT_EQ(castleKingPath[right], row.kingPath[right]);
        EXPECT_EQ(castleKeep[right], ~(homes[right / 2] | bit(int(row.rooks[right]))));
    }
    // A right that stands is lost from the king's and from its own rook's square, and from no other.
    for (int right = 0; right < 4; ++right) {
        if (pos.castleLost >> right & 1) continue;
        for (int square = 0; square < 64; ++square) {
            const bool ends = (homes[right / 2] & bit(square)) || square == int(row.rooks[right]);
            EXPECT_EQ((castleMask[square] >> right & 1) != 0, ends) << right << " on " << square;
        }
    }
}

// Rows of squares on the first and eighth rank are written as that rank's byte.
static constexpr Bitboard Top = 56;
static const CastlingRow CastlingRows[] = {
    {"Start",
     StartFen,
     0,
     {7, 0, 63, 56},
     {0xf0, 0x1f, 0xf0ULL << Top, 0x1fULL << Top},
     {0x70, 0x1c, 0x70ULL << Top, 0x1cULL << Top}},
    {"NoneAsked", "r3k2r/8/8/8/8/8/8/R3K2R w - -", 15, {7, 0, 63, 56}, {}, {}},
    {"FieldMissing", "r3k2r/8/8/8/8/8/8/R3K2R w", 15, {7, 0, 63, 56}, {}, {}},
    {"OddCharacterEndsField", "r3k2r/8/8/8/8/8/8/R3K2R w Kxkq -", 14, {7, 0, 63, 56}, {0xf0}, {0x70}},
    {"RookHidesBehindKing", "4k3/8/8/8/8/8/8/6RK w K -", 15, {7, 6, 63, 56}, {}, {}},
    {"NoRookThere",
     "4k2r/8/8/8/8/8/8/R3K3 w KQkq -",
     9,
     {7, 0, 63, 56},
     {0, 0x1f, 0xf0ULL << Top, 0},
     {0, 0x1c, 0x70ULL << Top, 0}},
    {"KingOffItsRank", "r6r/4k3/8/8/8/8/4K3/R6R w KQkq -", 15, {7, 0, 63, 56}, {}, {}},
    {"LoneRookIsShort", "4k3/8/8/8/8/8/4K3/R7 w KQ -", 15, {0, 0, 63, 56}, {}, {}},
    {"RookFiles",
     "bqnb1rkr/8/8/8/8/8/8/BQ1BNRKR w HFhf -",
     0,
     {7, 5, 63, 61},
     {0xe0, 0x7c, 0xe0ULL << Top, 0x7cULL << Top},
     {0x40, 0x7c, 0x40ULL << Top, 0x7cULL << Top}},
    {"LettersFindTheSameRooks",
     "bqnb1rkr/8/8/8/8/8/8/BQ1BNRKR w KQkq -",
     0,
     {7, 5, 63, 61},
     {0xe0, 0x7c, 0xe0ULL << Top, 0x7cULL << Top},
     {0x40, 0x7c, 0x40ULL << Top, 0x7cULL << Top}},
    {"OutermostByLetter", "4k3/8/8/8/8/8/8/RR2K1RR w KQ -", 12, {7, 0, 63, 56}, {0xf0, 0x1f}, {0x70, 0x1c}},
    {"InnerByFile", "4k3/8/8/8/8/8/8/RR2K1RR w GB -", 12, {6, 1, 63, 56}, {0x70, 0x1e}, {0x70, 0x1c}},
    {"KingOnTheBFile",
     "rkr5/8/8/8/8/8/8/RKR5 w CAca -",
     0,
     {2, 0, 58, 56},
     {0x7e, 0x0f, 0x7eULL << Top, 0x0fULL << Top},
     {0x7e, 0x06, 0x7eULL << Top, 0x06ULL << Top}},
};
INSTANTIATE_TEST_SUITE_P(Fen, CastlingTables, ::testing::ValuesIn(CastlingRows),
                         [](const auto& row) { return row.param.name; });

struct EnPassantRow {
    const char* name;
    const char* fen;
    int target;  // NoSquare: no capture on offer
    Move lastMove;
};

static void PrintTo(const EnPassantRow& row, std::ostream* out) { *out << row.fen; }

class EnPassantField : public ::testing::TestWithParam<EnPassantRow> {};

TEST_P(EnPassantField, IsKeptOnlyForARealCapture) {
    const EnPassantRow& row = GetParam();
    const Position pos = positionOf(row.fen);
    EXPECT_EQ(pos.epMask, row.target == NoSquare ? 0 : bit(row.target));
    EXPECT_EQ(pos.lastMove, row.lastMove);
    Position without = pos;
    without.epMask = 0;
    const Key plain = computeKey(without);
    EXPECT_EQ(pos.key, row.target == NoSquare ? plain : plain ^ zobrist[1][NoPiece][row.target]);
}

static const EnPassantRow EnPassantRows[] = {
    {"BesideWhitesPush", "4k3/8/8/8/3pP3/8/8/4K3 b - e3", E3, makeWord(E2, E4)},
    {"BesideBlacksPush", "4k3/8/8/3pP3/8/8/8/4K3 w - d6", D6, makeWord(D7, D5)},
    {"NobodyBeside", "4k3/8/8/8/4P3/8/8/4K3 b - e3", NoSquare, makeWord(E2, E4)},
    {"PinnedCapturerCounts", "8/8/8/8/k2pP2R/8/8/4K3 b - e3", E3, makeWord(E2, E4)},
    {"NoWrapRoundTheEdge", "4k3/8/8/7p/P7/8/8/4K3 b - a3", NoSquare, makeWord(A2, A4)},
    {"NoWrapUpward", "4k3/8/8/p7/7P/8/8/4K3 b - h3", NoSquare, makeWord(H2, H4)},
    {"NoPawnWasPushed", "4k3/8/8/8/3p4/8/8/4K3 b - e3", NoSquare, makeWord(E2, E4)},
    {"WrongSidesPush", "4k3/8/8/8/3PP3/8/8/4K3 w - e3", NoSquare, makeWord(E2, E4)},
    {"NotACaptureRank", "4k3/8/8/8/3pP3/8/8/4K3 b - e4", NoSquare, NoMove},
    {"NotASquare", "4k3/8/8/8/3pP3/8/8/4K3 b - zz", NoSquare, NoMove},
    {"Dash", "4k3/8/8/8/3pP3/8/8/4K3 b - -", NoSquare, NoMove},
    {"Missing", "4k3/8/8/8/3pP3/8/8/4K3 b", NoSquare, NoMove},
};
INSTANTIATE_TEST_SUITE_P(Fen, EnPassantField, ::testing::ValuesIn(EnPassantRows),
                         [](const auto& row) { return row.param.name; });

TEST(Fen, FillsTheRecord) {
    const Position pos = positionOf("r3k3/8/8/1B6/8/8/8/4K2R b Kq - 57 90");
    EXPECT_EQ(pos.board[A8], boardCode(Black, Rook));
    EXPECT_EQ(pos.board[B5], boardCode(White, Bishop));
    EXPECT_EQ(pos.pieceCount, 5u);
    EXPECT_EQ(pos.gamePly, 1);
    EXPECT_EQ(pos.inCheck, 1);
    EXPECT_EQ(pos.castleLost, 2 + 4);
    EXPECT_EQ(pos.halfmoveClock, 0) << "the clocks of the text are not read";
    EXPECT_EQ(pos.prev, nullptr);
    EXPECT_EQ(pos.contHist, boardArrays.continuationHistory);
    EXPECT_EQ(pos.history, boardArrays.history);
    EXPECT_TRUE(isConsistent(pos, true));
    // An empty text is the start position.
    const Position start = positionOf("");
    EXPECT_EQ(start.key, positionOf(StartFen).key);
    EXPECT_EQ(start.phase, MaxPhase);
}

TEST(FenDeathTest, AWrongSideToMoveEndsTheProcess) {
    Position pos;
    EXPECT_EXIT(setFen(&pos, "8/8/8/8/8/8/8/8 x - -"), ::testing::ExitedWithCode(1),
                "^Error in ctm for fen \"8/8/8/8/8/8/8/8 x - -\"$");
    EXPECT_EXIT(setFen(&pos, "8/8/8/8/8/8/8/8"), ::testing::ExitedWithCode(1), "Error in ctm");
    EXPECT_EXIT(setFen(&pos, "   "), ::testing::ExitedWithCode(1), "Error in ctm");
    // Only 255 bytes are read, so a side to move behind them isn't seen.
    const std::string late = std::string(255, '/') + " w - -";
    EXPECT_EXIT(setFen(&pos, late.c_str()), ::testing::ExitedWithCode(1), "/{255}\"$");
}

TEST(Fen, AnyTextGivesASoundRecord) {
    std::mt19937 random(7);
    const std::string letters = "pnbrqkPNBRQK/12345678/90xKk \t-eEhHaA36\x80\xff";
    int playable = 0;
    for (int round = 0; round < 20000; ++round) {
        std::string text;
        for (std::size_t length = random() % 120; length > 0; --length) {
            const char letter = letters[random() % letters.size()];
            if (!std::isspace(static_cast<unsigned char>(letter))) text += letter;
        }
        text += random() % 2 ? " w " : " b ";
        for (std::size_t length = random() % 12; length > 0; --length)
            text += letters[random() % letters.size()];
        const Position pos = positionOf(text);
        ASSERT_TRUE(isConsistent(pos, true)) << text;
        if (isPlayable(pos)) ++playable;
        for (int right = 0; right < 4; ++right) {
            if (pos.castleLost >> right & 1) continue;
            ASSERT_EQ(typeOfCode(pos.board[castleRook[right]]), Rook) << text;
        }
    }
    EXPECT_GT(playable, 0);
}

TEST(Fen, UnplayableRecordsAreKnown) {
    EXPECT_TRUE(isPlayable(positionOf(StartFen)));
    EXPECT_TRUE(isPlayable(positionOf("4k3/8/8/8/8/8/8/4K2r w - -")))
        << "the side to move may stand in check";
    for (const char* fen : {
             "8/8/8/8/8/8/8/8 w - -",       // no king
             "4k3/8/8/8/8/8/8/8 w - -",     // one king missing
             "4k3/8/8/8/8/8/8/K3K3 w - -",  // one too many
             "4k2P/8/8/8/8/8/8/4K3 w - -",  // pawns on back ranks
             "4k3/8/8/8/8/8/8/p3K3 w - -",  //
             "4k2R/8/8/8/8/8/8/4K3 w - -",  // the waiting side in check
             "8/8/8/8/8/4k3/4K3/8 b - -",   // kings side by side
         })
        EXPECT_FALSE(isPlayable(positionOf(fen))) << fen;
}

TEST(Fen, WritesFourFields) {
    EXPECT_EQ(writeFen(positionOf(StartFen)), "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -");
    // "Q" goes with White's short right and nothing else.
    EXPECT_EQ(writeFen(positionOf("4k3/8/8/8/3pP3/8/8/R3K3 b Q e3")), "4k3/8/8/8/3pP3/8/8/R3K3 b Kkq e3");
    EXPECT_EQ(writeFen(positionOf("4k3/8/8/8/4P3/8/8/4K2R b K e3")), "4k3/8/8/8/4P3/8/8/4K2R b KQkq -");
}
