// Tests on single moves against the generators and make.
#include "board/legality.h"

#include "board/check_squares.h"
#include "board/fen.h"
#include "board/move_text.h"
#include "support/board_environment.h"

#include <algorithm>
#include <random>

// What may pass: every pseudo-legal word, and a promotion flag on a plain pawn step or capture that doesn't
// promote.
static bool mayPass(const Position& pos, Move word, const std::vector<Move>& sorted) {
    const auto listed = [&](Move move) { return std::binary_search(sorted.begin(), sorted.end(), move); };
    if (listed(word)) return true;
    const Move plain = word & FromToMask;
    return word < 0x8000 && isPromotion(word) && typeOfCode(pos.board[fromOf(word)]) == Pawn && listed(plain);
}

TEST(IsValidMove, AgreesWithTheGenerators) {
    int positions = 0;
    std::vector<Move> earlier;  // of other positions, as hash tables and killer slots hold them
    std::mt19937 random(5);
    walkRandomGames(3, 60, [&](const Position& pos) {
        std::vector<Move> moves = pseudoLegalMoves(pos);
        std::sort(moves.begin(), moves.end());
        for (const Move word : earlier) ASSERT_EQ(isValidMove(pos, word), mayPass(pos, word, moves));
        earlier.insert(earlier.end(), moves.begin(), moves.end());
        std::shuffle(earlier.begin(), earlier.end(), random);
        if (earlier.size() > 400) earlier.resize(400);
        // Here and there every word.
        if (pos.gamePly % 20 != 3) return;
        ++positions;
        for (Move word = 0; word < 0x10000; ++word)
            ASSERT_EQ(isValidMove(pos, word), mayPass(pos, word, moves)) << std::hex << word;
    });
    EXPECT_GT(positions, 80);
}

TEST(CheckTests, AgreeWithMakingTheMove) {
    int checks = 0, mates = 0;
    const auto judge = [&](const Position& pos) {
        Position child;
        CheckSquares squares;
        squares.find(pos);
        for (const Move move : pseudoLegalMoves(pos)) {
            if (!makeChild(pos, child, move)) continue;
            ASSERT_EQ(squares.givesCheck(pos, move), child.inCheck != 0) << writeFen(pos) << moveText(move);
            ASSERT_EQ(givesCheckQuick(pos, move), child.inCheck != 0) << writeFen(pos) << moveText(move);
            if (!child.inCheck) continue;
            const bool escapes = !legalMoves(child).empty();
            ASSERT_EQ(hasLegalMove(child), escapes) << writeFen(child);
            ++checks;
            mates += !escapes;
        }
    };
    walkRandomGames(8, 120, judge);
    // Discovered along the rank and the diagonal by an en-passant capture; castling; a promotion through its
    // own square.
    for (const char* fen :
         {"8/8/8/8/k2pP2R/8/8/4K3 b - e3", "8/8/8/R2pP2k/8/8/8/4K3 w - d6", "k7/8/8/3pP3/8/8/8/4K2B w - d6",
          "5k2/8/8/8/8/8/8/4K2R w K -", "3k4/8/8/8/8/8/8/R3K3 w Q -", "8/3P4/8/8/8/3k4/8/4K3 w - -"})
        judge(positionOf(fen));
    EXPECT_GT(checks, 1000);
    EXPECT_GT(mates, 5);
}
