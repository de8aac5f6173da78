#include "board/move_text.h"

#include "support/board_environment.h"

TEST(MoveText, WritesSquaresAndPromotions) {
    EXPECT_EQ(moveText(NoMove), "0000");
    EXPECT_EQ(moveText(makeWord(E2, E4, DoublePush)), "e2e4");
    EXPECT_EQ(moveText(makeWord(A7, B8, QueenPromotion)), "a7b8q");
    EXPECT_EQ(moveText(makeWord(A7, A8, KnightPromotion)), "a7a8n");
    EXPECT_EQ(moveText(makeWord(H2, G1, RookPromotion)), "h2g1r");
    EXPECT_EQ(moveText(makeWord(H2, H1, BishopPromotion)), "h2h1b");
    // A sort key is no part of the move.
    EXPECT_EQ(moveText(withKey(makeWord(E2, E3), -5)), "e2e3");
    EXPECT_EQ(moveText(withKey(NoMove, 7)), "0000");
}

TEST(MoveText, CastlingFollowsTheInterfacesOption) {
    const SettingsGuard guard;
    const Move words[] = {makeWord(E1, H1, Castling), makeWord(E8, A8, Castling), makeWord(B1, C1, Castling),
                          0};
    settings.chess960 = false;
    EXPECT_EQ(pvToText(words), "e1g1 e8c8 b1g1");
    settings.chess960 = true;
    EXPECT_EQ(pvToText(words), "e1h1 e8a8 b1c1");
    EXPECT_EQ(pvToText(words + 3), "");
}

TEST(MoveText, SquaresReadBack) {
    for (int square = 0; square < 64; ++square) EXPECT_EQ(squareFromText(squareText(square).c_str()), square);
    EXPECT_LT(squareFromText("\xff\x80"), 64);
}
