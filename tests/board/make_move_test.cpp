// Make against the rules on a plain board, and every running value against its value from scratch.
#include "board/make_move.h"

#include "board/fen.h"
#include "board/move_text.h"
#include "board/piece_square.h"
#include "board/zobrist.h"
#include "support/board_environment.h"
#include "support/slow_chess.h"

#include <algorithm>
#include <array>
#include <map>
#include <random>

// The piece-square table gets random pairs, so that a wrong square or sign shows in the sum.
class MakeMove : public ::testing::Test {
   protected:
    MakeMove() {
        std::copy_n(&PieceSquare[0][0], before.size(), before.begin());
        std::mt19937 random(11);
        for (const Colour colour : {White, Black})
            for (int type = Pawn; type <= King; ++type)
                for (Score& value : PieceSquare[boardCode(colour, type)])
                    value = pair(int(random() % 4001) - 2000, int(random() % 4001) - 2000);
    }
    ~MakeMove() override { std::copy(before.begin(), before.end(), &PieceSquare[0][0]); }

   private:
    std::array<Score, 16 * 64> before;
};

static std::uint16_t* sliceOf(int code, int to) {
    return boardArrays.continuationHistory + (code * 64 + to) * 1024;
}

static void checkChild(const Position& parent, const Position& child, const SlowMove& move) {
    const SlowBoard expected = slowMake(slowBoardOf(parent), move);
    const SlowBoard found = slowBoardOf(child);
    ASSERT_TRUE(std::equal(expected.at, expected.at + 64, found.at));
    ASSERT_TRUE(std::equal(expected.castleRook, expected.castleRook + 4, found.castleRook));
    // A target stands exactly after a double push beside an enemy pawn.
    const Bitboard enemyPawns = parent.pieces[opponent(parent.sideToMove())][Pawn];
    ASSERT_EQ(found.enPassant, besides(bit(move.to)) & enemyPawns ? expected.enPassant : -1);
    ASSERT_TRUE(isConsistent(child, true));
    const int mover = parent.board[move.from];
    const bool capture = move.kind == SlowKind::Plain && parent.board[move.to] != 0;
    const bool irreversible = capture || typeOfCode(mover) == Pawn;
    ASSERT_EQ(child.prev, &parent);
    ASSERT_EQ(child.lastMove, slowWord(move));
    ASSERT_EQ(child.movedCode, mover);
    ASSERT_EQ(child.movedType, typeOfCode(mover));
    ASSERT_EQ(child.capturedType, capture ? typeOfCode(parent.board[move.to]) : 0);
    ASSERT_EQ(child.halfmoveClock, irreversible ? 0 : parent.halfmoveClock + 1);
    ASSERT_EQ(child.gamePly, parent.gamePly + 1);
    ASSERT_EQ(child.staticEval, NotEvaluated);
    ASSERT_EQ(child.contHist, sliceOf(mover, move.to));
    ASSERT_EQ(child.contHist2, parent.lastMove ? sliceOf(parent.movedCode, toOf(parent.lastMove))
                                               : boardArrays.continuationHistory);
}

TEST_F(MakeMove, AgreesWithThePlainRules) {
    int made = 0;
    int refused = 0;
    const auto judge = [&](const Position& pos) {
        std::map<Move, SlowMove> legal;
        for (const SlowMove& move : slowMoves(slowBoardOf(pos))) legal[slowWord(move)] = move;
        Position child;
        for (const Move move : pseudoLegalMoves(pos)) {
            SCOPED_TRACE(writeFen(pos) + ' ' + moveText(move));
            const std::uint64_t nodes = boardArrays.nodes;
            const bool accepted = makeMove(&pos, &child, move);
            ASSERT_EQ(boardArrays.nodes, nodes + 1) << "refused moves count too";
            // A rook that castles may leave its king open to a line. Make only looks in Chess960.
            ASSERT_EQ(accepted, legal.count(move) || (isCastling(move) && !settings.chess960));
            if (legal.count(move)) checkChild(pos, child, legal[move]);
            ++(accepted ? made : refused);
        }
    };
    walkRandomGames(6, 80, judge);
    EXPECT_GT(made, 50000);
    EXPECT_GT(refused, 1000);
    // King and rook change places, only one of them moves, or the rook leaves a line open.
    const SettingsGuard guard;
    for (const bool chess960 : {true, false}) {
        settings.chess960 = chess960;
        for (const char* fen :
             {"4k3/8/8/8/8/8/8/5KR1 w G -", "4k3/8/8/8/8/8/8/6KR w H -", "4k3/8/8/8/8/8/8/2RK4 w C -",
              "4k3/8/8/8/8/8/8/3RK3 w D -", "4k3/8/8/8/8/8/8/1K1R4 w D -", "4k3/8/8/8/8/8/8/qR1K4 w B -"})
            judge(positionOf(fen));
    }
}

// One that has castled into an open line is attacked while the other side is to move.
TEST_F(MakeMove, TakesNoKing) {
    const Position parent = positionOf("4k3/8/8/8/8/8/1p6/q1K5 b - -");
    Position child;
    for (const Move move : pseudoLegalMoves(parent))
        EXPECT_EQ(makeMove(&parent, &child, move), toOf(move) != C1) << moveText(move);
}

TEST_F(MakeMove, AStoppedThreadCountsNoNodes) {
    const Position pos = positionOf("");
    Position child;
    const std::uint64_t nodes = boardArrays.nodes;
    boardArrays.stopFlag = 1;
    makeMove(&pos, &child, makeWord(E2, E4, DoublePush));
    makeMove(&pos, &child, NoMove);
    boardArrays.stopFlag = 0;
    EXPECT_EQ(boardArrays.nodes, nodes);
    makeMove(&pos, &child, NoMove);
    EXPECT_EQ(boardArrays.nodes, nodes + 1);
}
