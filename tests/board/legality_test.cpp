// Tests on single moves against the generators and make.
#include "board/legality.h"

#include "board/attacks.h"
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

static std::vector<Move> sortedMoves(const Position& pos) {
    std::vector<Move> moves = pseudoLegalMoves(pos);
    std::sort(moves.begin(), moves.end());
    return moves;
}

TEST(IsValidMove, AgreesWithTheGeneratorsForEveryWord) {
    int positions = 0;
    walkRandomGames(1, 48, [&](const Position& pos) {
        if (pos.gamePly % 8 != 3) return;
        ++positions;
        const std::vector<Move> moves = sortedMoves(pos);
        for (Move word = 0; word < 0x10000; ++word)
            ASSERT_EQ(isValidMove(pos, word), mayPass(pos, word, moves)) << std::hex << word;
    });
    EXPECT_GT(positions, 50);
}

// Words of one position asked of another, as hash tables and killer slots do.
TEST(IsValidMove, AgreesWithTheGeneratorsForOtherPositionsMoves) {
    std::vector<Move> earlier;
    std::mt19937 random(5);
    walkRandomGames(3, 60, [&](const Position& pos) {
        const std::vector<Move> moves = sortedMoves(pos);
        for (const Move word : earlier) ASSERT_EQ(isValidMove(pos, word), mayPass(pos, word, moves));
        earlier.insert(earlier.end(), moves.begin(), moves.end());
        std::shuffle(earlier.begin(), earlier.end(), random);
        if (earlier.size() > 400) earlier.resize(400);
    });
}

TEST(GivesCheckQuick, AgreesWithMakeAndAttackTest) {
    int checks = 0;
    int castlings = 0;
    int enPassants = 0;
    int promotions = 0;
    Position child;
    const auto judge = [&](const Position& pos) {
        for (const Move move : pseudoLegalMoves(pos)) {
            if (!makeChild(pos, child, move)) continue;
            ASSERT_EQ(givesCheckQuick(pos, move), child.inCheck != 0) << std::hex << move;
            if (!child.inCheck) continue;
            ++checks;
            castlings += isCastling(move);
            enPassants += isEnPassant(move);
            promotions += isPromotion(move);
        }
    };
    walkRandomGames(8, 100, judge);
    // Discovered along the rank and the diagonal by an en-passant capture; castling; a promotion through its
    // own square.
    for (const char* fen :
         {"8/8/8/8/k2pP2R/8/8/4K3 b - e3", "8/8/8/R2pP2k/8/8/8/4K3 w - d6", "k7/8/8/3pP3/8/8/8/4K2B w - d6",
          "5k2/8/8/8/8/8/8/4K2R w K -", "3k4/8/8/8/8/8/8/R3K3 w Q -", "8/3P4/8/8/8/3k4/8/4K3 w - -"})
        judge(positionOf(fen));
    EXPECT_GT(checks, 1000);
    EXPECT_GT(castlings, 1);
    EXPECT_GT(enPassants, 1);
    EXPECT_GT(promotions, 10);
}

TEST(HasLegalMove, AgreesWithTryingEveryMove) {
    int mates = 0;
    int escapes = 0;
    const auto judge = [&](const Position& pos) {
        if (!pos.inCheck) return;
        const bool expected = !legalMoves(pos).empty();
        ASSERT_EQ(hasLegalMove(pos), expected);
        ++(expected ? escapes : mates);
    };
    Position child;
    walkRandomGames(4, 120, [&](const Position& pos) {
        judge(pos);
        for (const Move move : pseudoLegalMoves(pos))
            if (makeChild(pos, child, move)) judge(child);
    });
    EXPECT_GT(escapes, 1000);
    EXPECT_GT(mates, 5);
}
