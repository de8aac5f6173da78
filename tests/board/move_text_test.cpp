#include "board/move_text.h"

#include "support/board_environment.h"

TEST(MoveText, WritesSquaresAndPromotions) {
    const Move promotions[] = {makeWord(E2, E4, DoublePush),
                               makeWord(A7, B8, QueenPromotion),
                               makeWord(A7, A8, KnightPromotion),
                               makeWord(H2, G1, RookPromotion),
                               makeWord(H2, H1, BishopPromotion),
                               withKey(makeWord(E2, E3), -5),
                               NoMove};
    EXPECT_EQ(pvToText(promotions), "e2e4 a7b8q a7a8n h2g1r h2h1b e2e3");
    EXPECT_EQ(moveText(withKey(NoMove, 7)), "0000") << "a sort key is no part of the move";
}

TEST(MoveText, CastlingFollowsTheInterfacesOption) {
    const SettingsGuard guard;
    const Move words[] = {makeWord(E1, H1, Castling), makeWord(E8, A8, Castling), makeWord(B1, C1, Castling),
                          NoMove};
    settings.chess960 = false;
    EXPECT_EQ(pvToText(words), "e1g1 e8c8 b1g1");
    settings.chess960 = true;
    EXPECT_EQ(pvToText(words), "e1h1 e8a8 b1c1");
}

TEST(MoveText, SquaresReadBack) {
    for (int square = 0; square < 64; ++square) EXPECT_EQ(squareFromText(squareText(square).c_str()), square);
    EXPECT_LT(squareFromText("\xff\x80"), 64);
}
