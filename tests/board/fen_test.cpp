// Reading and writing FEN: castling tables, en passant, and texts that no one should send.
#include "board/fen.h"

#include "board/castling.h"
#include "board/legality.h"
#include "support/board_environment.h"

#include <cctype>
#include <random>

TEST(Fen, CastlingTablesFollowTheField) {
    // White's back rank, where the squares of a walk are a byte. Black's case is the mirror image.
    struct Case {
        std::string rank, field;
        int rooks[2];  // files of the short and the long right, -1 where it isn't granted
        Bitboard path[2], kingPath[2];
    };
    const Case cases[] = {
        {"R3K2R", "KQ", {7, 0}, {0xf0, 0x1f}, {0x70, 0x1c}},
        {"R3K2R", "-", {-1, -1}, {}, {}},
        {"R3K2R", "KxQ", {7, -1}, {0xf0}, {0x70}},  // an odd character ends the field
        {"6RK", "K", {-1, -1}, {}, {}},             // the rook hides behind the king
        {"R3K3", "KQ", {-1, 0}, {0, 0x1f}, {0, 0x1c}},
        {"BQ1BNRKR", "HF", {7, 5}, {0xe0, 0x7c}, {0x40, 0x7c}},
        {"BQ1BNRKR", "KQ", {7, 5}, {0xe0, 0x7c}, {0x40, 0x7c}},
        {"RR2K1RR", "KQ", {7, 0}, {0xf0, 0x1f}, {0x70, 0x1c}},  // the outermost rooks
        {"RR2K1RR", "GB", {6, 1}, {0x70, 0x1e}, {0x70, 0x1c}},
        {"RKR5", "CA", {2, 0}, {0x7e, 0x0f}, {0x7e, 0x06}},
    };
    for (Case one : cases) {
        for (const Colour colour : {White, Black}) {
            if (colour == Black)
                for (std::string* text : {&one.rank, &one.field})
                    for (char& letter : *text) letter = char(std::tolower(letter));
            const std::string fen = colour == White ? "4k3/8/8/8/8/8/8/" + one.rank + " w " + one.field + " -"
                                                    : one.rank + "/8/8/8/8/8/8/4K3 b " + one.field + " -";
            SCOPED_TRACE(fen);
            const Position pos = positionOf(fen);
            const int home = colour == White ? A1 : A8;
            int lost = 15;
            for (int side = 0; side < 2; ++side) {
                if (one.rooks[side] < 0) continue;
                const int right = 2 * colour + side;
                const int rook = home + one.rooks[side];
                lost -= 1 << right;
                EXPECT_EQ(castling.rook[right], std::uint32_t(rook));
                EXPECT_EQ(castling.path[right], one.path[side] << home);
                EXPECT_EQ(castling.kingPath[right], one.kingPath[side] << home);
                EXPECT_EQ(castling.keep[right], ~(pos.pieces[colour][King] | bit(rook)));
            }
            EXPECT_EQ(pos.castleLost, lost);
        }
    }
    EXPECT_EQ(positionOf(StartFen).castleLost, 0);
    EXPECT_EQ(positionOf("r3k2r/8/8/8/8/8/8/R3K2R w").castleLost, 15) << "no field";
    EXPECT_EQ(positionOf("r6r/4k3/8/8/8/8/4K3/R6R w KQkq -").castleLost, 15) << "kings off their ranks";
}

TEST(Fen, EnPassantIsKeptOnlyForARealCapture) {
    struct Case {
        const char* fen;
        int target;  // NoSquare: no capture on offer
        Move lastMove;
    };
    const Case cases[] = {
        {"4k3/8/8/8/3pP3/8/8/4K3 b - e3", E3, makeWord(E2, E4)},
        {"4k3/8/8/3pP3/8/8/8/4K3 w - d6", D6, makeWord(D7, D5)},
        {"4k3/8/8/8/4P3/8/8/4K3 b - e3", NoSquare, makeWord(E2, E4)},     // nobody stands beside it
        {"8/8/8/8/k2pP2R/8/8/4K3 b - e3", E3, makeWord(E2, E4)},          // a pinned capturer counts
        {"4k3/8/8/7p/P7/8/8/4K3 b - a3", NoSquare, makeWord(A2, A4)},     // no wrap round the edge
        {"4k3/8/8/p7/7P/8/8/4K3 b - h3", NoSquare, makeWord(H2, H4)},     //
        {"4k3/8/8/8/3p4/8/8/4K3 b - e3", NoSquare, makeWord(E2, E4)},     // no pawn was pushed
        {"4k3/8/8/8/3PP3/8/8/4K3 w - e3", NoSquare, makeWord(E2, E4)},    // the wrong side's push
        {"4k3/8/8/8/3pP3/8/4R3/4K3 b - e3", NoSquare, makeWord(E2, E4)},  // from where a rook stands
        {"4k3/8/8/8/3pP3/8/8/4K3 b - e4", NoSquare, NoMove},
        {"4k3/8/8/8/3pP3/8/8/4K3 b - zz", NoSquare, NoMove},
        {"4k3/8/8/8/3pP3/8/8/4K3 b - -", NoSquare, NoMove},
        {"4k3/8/8/8/3pP3/8/8/4K3 b", NoSquare, NoMove},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.fen);
        const Position pos = positionOf(one.fen);
        EXPECT_EQ(pos.epMask, one.target == NoSquare ? 0 : bit(one.target));
        EXPECT_EQ(pos.lastMove, one.lastMove);
        EXPECT_TRUE(isConsistent(pos, true));
    }
}

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
    EXPECT_EQ(positionOf("").key, positionOf(StartFen).key) << "an empty text is the start position";
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
