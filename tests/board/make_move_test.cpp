// Make against plain moving of pieces on a list of squares, and every running value against its value from
// scratch.
#include "board/make_move.h"

#include "board/attacks.h"
#include "board/fen.h"
#include "board/piece_square.h"
#include "board/zobrist.h"
#include "support/board_environment.h"

#include <algorithm>
#include <array>
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

// Where the pieces stand after a move, by the rules of the game alone.
static std::array<std::uint8_t, 64> boardAfter(const Position& pos, Move move) {
    std::array<std::uint8_t, 64> board;
    std::copy(std::begin(pos.board), std::end(pos.board), board.begin());
    const auto from = std::size_t(fromOf(move));
    const auto to = std::size_t(toOf(move));
    const std::uint8_t mover = board[from];
    board[from] = 0;
    if (isCastling(move)) {
        const std::uint8_t rook = board[to];
        board[to] = 0;
        const std::size_t rank = from - from % 8;
        board[rank + (to > from ? 6 : 2)] = mover;
        board[rank + (to > from ? 5 : 3)] = rook;
        return board;
    }
    if (isEnPassant(move)) board[from - from % 8 + to % 8] = 0;
    board[to] = mover;
    if (isPromotion(move)) board[to] = std::uint8_t((mover & 8) + promotionType(flagOf(move)));
    return board;
}

static std::uint16_t* sliceOf(int code, int to) {
    return boardArrays.continuationHistory + (code * 64 + to) * 1024;
}

static void checkChild(const Position& parent, const Position& child, Move move) {
    const auto expected = boardAfter(parent, move);
    ASSERT_TRUE(std::equal(expected.begin(), expected.end(), child.board));
    ASSERT_TRUE(isConsistent(child, true));
    const int mover = parent.board[fromOf(move)];
    const bool capture = !isCastling(move) && parent.board[toOf(move)] != 0;
    const bool pawnMove = typeOfCode(mover) == Pawn;
    ASSERT_EQ(child.prev, &parent);
    ASSERT_EQ(child.lastMove, move);
    ASSERT_EQ(child.movedCode, mover);
    ASSERT_EQ(child.movedType, typeOfCode(mover));
    ASSERT_EQ(child.capturedType, capture ? typeOfCode(parent.board[toOf(move)]) : 0);
    ASSERT_EQ(child.halfmoveClock, capture || pawnMove ? 0 : parent.halfmoveClock + 1);
    ASSERT_EQ(child.gamePly, parent.gamePly + 1);
    ASSERT_EQ(child.staticEval, NotEvaluated);
    ASSERT_EQ(child.contHist, sliceOf(mover, toOf(move)));
    ASSERT_EQ(child.contHist2, parent.lastMove ? sliceOf(parent.movedCode, toOf(parent.lastMove))
                                               : boardArrays.continuationHistory);
    // A target stands exactly after a double push beside an enemy pawn.
    const bool doublePush = pawnMove && std::abs(fromOf(move) - toOf(move)) == 16;
    const bool beside = (besides(bit(toOf(move))) & parent.pieces[opponent(parent.sideToMove())][Pawn]) != 0;
    ASSERT_EQ(child.epMask, doublePush && beside ? bit((fromOf(move) + toOf(move)) / 2) : 0);
}

TEST_F(MakeMove, KeepsEveryValueOnRandomGames) {
    int made = 0;
    int refused = 0;
    walkRandomGames(6, 80, [&](const Position& pos) {
        Position child;
        for (const Move move : pseudoLegalMoves(pos)) {
            const std::uint64_t nodes = boardArrays.nodes;
            const bool accepted = makeMove(&pos, &child, move);
            ASSERT_EQ(boardArrays.nodes, nodes + 1) << "refused moves count too";
            // Whether the king may stand there is judged on the plain board's own pieces.
            if (accepted) checkChild(pos, child, move);
            const Colour us = pos.sideToMove();
            const bool safe = !(attackedBy(child, opponent(us)) & child.pieces[us][King]);
            ASSERT_EQ(accepted, safe || (isCastling(move) && !settings.chess960));
            ++(accepted ? made : refused);
        }
    });
    EXPECT_GT(made, 50000);
    EXPECT_GT(refused, 1000);
}

// Positions that are equal by their four fields have equal keys, whichever way they came about.
TEST_F(MakeMove, KeysDependOnThePositionAlone) {
    const std::vector<Position> one = playLine("", {"g1f3", "g8f6", "e2e4", "d7d6"});
    const std::vector<Position> other = playLine("", {"e2e4", "d7d6", "g1f3", "g8f6"});
    EXPECT_EQ(one.back().key, other.back().key);
    EXPECT_EQ(one.back().pawnKey, other.back().pawnKey);
    EXPECT_EQ(one.back().key, positionOf("rnbqkb1r/ppp1pppp/3p1n2/8/4P3/5N2/PPPP1PPP/RNBQKB1R w KQkq -").key);
}

TEST_F(MakeMove, RightsEndWithTheKingOrTheirRook) {
    const std::string fen = "r3k2r/8/8/8/8/8/8/R3K2R w KQkq -";
    struct Row {
        std::vector<std::string> moves;
        int lost;
    };
    for (const Row& row : {Row{{"a1a8"}, 2 + 8}, Row{{"h1h8"}, 1 + 4}, Row{{"h1g1"}, 1}, Row{{"e1e2"}, 3},
                           Row{{"e1g1"}, 3}, Row{{"e1c1", "e8g8"}, 15}, Row{{"a1b1", "h8h1"}, 1 + 2 + 4}}) {
        const std::vector<Position> line = playLine(fen, row.moves);
        EXPECT_EQ(line.back().castleLost, row.lost) << row.moves[0];
        EXPECT_TRUE(isConsistent(line.back(), true));
    }
}

// King and rook change places, or only one of them moves.
TEST_F(MakeMove, Chess960CastlingOnOverlappingSquares) {
    const SettingsGuard guard;
    settings.chess960 = true;
    struct Row {
        const char* fen;
        const char* move;
        int king, rook;
    };
    for (const Row& row :
         {Row{"4k3/8/8/8/8/8/8/5KR1 w G -", "f1g1", G1, F1}, Row{"4k3/8/8/8/8/8/8/6KR w H -", "g1h1", G1, F1},
          Row{"4k3/8/8/8/8/8/8/2RK4 w C -", "d1c1", C1, D1},
          Row{"4k3/8/8/8/8/8/8/3RK3 w D -", "e1d1", C1, D1},
          Row{"4k3/8/8/8/8/8/8/1K1R4 w D -", "b1d1", G1, F1}}) {
        const Position pos = positionOf(row.fen);
        const Move move = moveOf(pos, row.move);
        ASSERT_TRUE(isCastling(move)) << row.fen;
        Position child;
        ASSERT_TRUE(makeChild(pos, child, move)) << row.fen;
        EXPECT_EQ(child.pieces[White][King], bit(row.king)) << row.fen;
        EXPECT_EQ(child.pieces[White][Rook], bit(row.rook)) << row.fen;
        EXPECT_EQ(child.castleLost, NoCastlingRights);
        EXPECT_EQ(child.halfmoveClock, 1) << "castling is no irreversible move for the clock";
        EXPECT_TRUE(isConsistent(child, true)) << row.fen;
    }
}

// The rook that leaves may have shielded its king. Only with the Chess960 option on does make look.
TEST_F(MakeMove, CastlingThatOpensALineIsRefusedInChess960Alone) {
    const SettingsGuard guard;
    const Position pos = positionOf("4k3/8/8/8/8/8/8/qR1K4 w B -");
    Position child;
    const Move move = makeWord(D1, B1, Castling);
    settings.chess960 = true;
    EXPECT_FALSE(makeMove(&pos, &child, move));
    settings.chess960 = false;
    EXPECT_TRUE(makeMove(&pos, &child, move));
}

TEST_F(MakeMove, NullMove) {
    Position pos = positionOf("4k3/8/8/8/3pP3/8/8/R3K2R b KQ e3");
    pos.halfmoveClock = 7;
    pos.inCheck = 1;
    pos.movedCode = boardCode(White, Pawn);
    Position child;
    ASSERT_TRUE(makeMove(&pos, &child, NoMove));
    EXPECT_TRUE(isConsistent(child, true));
    EXPECT_EQ(child.epMask, 0u);
    EXPECT_EQ(child.halfmoveClock, 8);
    EXPECT_EQ(child.gamePly, pos.gamePly + 1);
    EXPECT_EQ(child.castleLost, pos.castleLost);
    EXPECT_EQ(child.inCheck, 0);
    EXPECT_EQ(child.lastMove, NoMove);
    EXPECT_EQ(child.movedCode, 0);
    EXPECT_EQ(child.contHist, sliceOf(0, 0));
    EXPECT_EQ(child.contHist2, sliceOf(boardCode(White, Pawn), E4));
    // Both halves of a pass return to the first key, but for the target that is gone.
    Position back;
    ASSERT_TRUE(makeMove(&child, &back, NoMove));
    EXPECT_EQ(back.key, pos.key ^ zobrist[1][NoPiece][E3]);
    EXPECT_EQ(back.contHist2, sliceOf(0, 0));
}

TEST_F(MakeMove, EnPassantLeavesNoCapturedType) {
    const Position pos = positionOf("4k3/8/8/8/3pP3/8/8/4K3 b - e3");
    Position child;
    ASSERT_TRUE(makeChild(pos, child, makeWord(D4, E3, EnPassant)));
    EXPECT_EQ(child.capturedType, NoPiece);
    EXPECT_EQ(child.pieceCount, pos.pieceCount - 1);
    EXPECT_EQ(child.board[E4], 0);
    EXPECT_EQ(child.halfmoveClock, 0);
    EXPECT_TRUE(isConsistent(child, true));
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
