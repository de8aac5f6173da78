// King and pawn against king, which the evaluation knows whole.
#include "endgame/table_files.h"
#include "eval/eval_environment.h"

// Every placing, for one colour or the other, against a table that another program made.
TEST_F(EvalTest, PawnEndingsAreJudgedAsTheTableSays) {
    initTables(smallTables());
    std::mt19937 random(6);
    int wins = 0, draws = 0;
    for (int placing = 0; placing < 64 * 64 * 64 * 2; ++placing) {
        const int pawn = placing / 128 % 64, flip = random() % 2 ? 56 : 0;
        if (pawn < 8 || pawn > 55) continue;
        std::string board(64, '1');
        board[std::size_t(placing / 8192 ^ flip)] = flip ? 'k' : 'K';
        board[std::size_t(placing / 2 % 64 ^ flip)] = flip ? 'K' : 'k';
        board[std::size_t(pawn ^ flip)] = flip ? 'p' : 'P';
        const std::string fen = boardText(board) + (placing % 2 ? " w - -" : " b - -");
        const Position pos = rootOf(fen);
        if (pos.pieceCount != 3 || !isPlayable(pos)) continue;
        const bool won = wdlOf(pos) != 0;
        float scale = 1;
        const int worth = 96 * (won ? 6500 + 160 * (pawn / 8) : 30);
        ASSERT_EQ(evaluateMaterial(pos, scale), flip ? -worth : worth) << fen;
        ASSERT_EQ(scale, 0) << fen;
        ++(won ? wins : draws);
    }
    tbInit("");
    EXPECT_GT(wins, 160000);
    EXPECT_GT(draws, 60000);
}
