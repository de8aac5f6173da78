// Every generator against the rules of chess on a plain board.
#include "board/movegen.h"

#include "board/make_move.h"
#include "support/board_environment.h"
#include "support/slow_chess.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <random>

using MoveSet = std::vector<Move>;  // clean words, sorted

static MoveSet sortedClean(std::vector<Move> moves) {
    for (Move& move : moves) move = cleanMove(move);
    std::sort(moves.begin(), moves.end());
    return moves;
}

static MoveSet legalPart(const Position& pos, const std::vector<Move>& moves) {
    MoveSet legal = sortedClean(moves);
    Position child;
    std::erase_if(legal, [&](Move move) { return !makeMove(&pos, &child, move); });
    return legal;
}

// The legal moves that a rule on the plain board picks out.
template <class Rule>
static MoveSet plainMoves(const SlowBoard& board, Rule rule) {
    MoveSet moves;
    for (const SlowMove& move : slowMoves(board))
        if (rule(move)) moves.push_back(slowWord(move));
    std::sort(moves.begin(), moves.end());
    return moves;
}
static MoveSet allPlainMoves(const SlowBoard& board) {
    return plainMoves(board, [](const SlowMove&) { return true; });
}

static bool givesCheck(const SlowBoard& board, const SlowMove& move) {
    return slowInCheck(slowMake(board, move), !board.whiteToMove);
}
// A queen promotion, or a knight promotion with which the knight itself gives check.
static bool comesWithCaptures(const SlowBoard& board, const SlowMove& move) {
    if (move.promotion == 'q') return true;
    if (!move.promotion) return slowIsCapture(board, move);
    if (move.promotion != 'n') return false;
    SlowBoard knightAlone = slowMake(board, move);
    for (char& piece : knightAlone.at)
        if (std::tolower(piece) != 'k' && &piece != &knightAlone.at[move.to]) piece = '.';
    return slowInCheck(knightAlone, !board.whiteToMove);
}
static bool isQuiet(const SlowBoard& board, const SlowMove& move) {
    return !slowIsCapture(board, move) && !move.promotion;
}
static bool isPawnMove(const SlowBoard& board, const SlowMove& move) {
    return std::tolower(board.at[move.from]) == 'p';
}

// Walks games and also looks at checks one ply aside, and at interposing promotions, which games hardly
// reach.
template <class Visit>
static void walkWithSideLines(int games, int plies, Visit visit) {
    Position child;
    walkRandomGames(games, plies, [&](const Position& pos) {
        visit(pos);
        if (pos.gamePly % 4 != 0) return;
        for (const Move move : pseudoLegalMoves(pos))
            if (makeChild(pos, child, move) && child.inCheck) visit(child);
    });
    for (const char* fen : {"r6K/1P6/8/8/8/8/6k1/8 w - -", "8/6K1/8/8/8/8/1p1p4/R6k b - -"}) {
        Position pos = positionOf(fen);
        visit(pos);
    }
}

TEST(Generators, AllMovesAreTheLegalOnesOfThePlainRules) {
    int positions = 0;
    walkWithSideLines(8, 120, [&](const Position& pos) {
        ++positions;
        const auto moves = listOf([&](Move* list) { return genAllMoves(pos, list); });
        ASSERT_EQ(legalPart(pos, moves), allPlainMoves(slowBoardOf(pos)));
    });
    EXPECT_GT(positions, 10000);
}

TEST(Generators, CapturesAndQuietMovesShareAllMoves) {
    walkWithSideLines(2, 120, [&](const Position& pos) {
        const SlowBoard board = slowBoardOf(pos);
        const auto captures = listOf([&](Move* list) { return genCaptures(pos, list); });
        const auto quiets = listOf([&](Move* list) { return genQuiets(pos, list); });
        ASSERT_EQ(legalPart(pos, captures),
                  plainMoves(board, [&](const SlowMove& move) { return comesWithCaptures(board, move); }));
        ASSERT_EQ(legalPart(pos, quiets),
                  plainMoves(board, [&](const SlowMove& move) { return !comesWithCaptures(board, move); }));
        std::vector<Move> both = captures;
        both.insert(both.end(), quiets.begin(), quiets.end());
        ASSERT_EQ(sortedClean(both), sortedClean(pseudoLegalMoves(pos)));
    });
}

TEST(Generators, EvasionsAreTheLegalAnswersToACheck) {
    int positions = 0;
    int interposedPromotions = 0;
    walkWithSideLines(8, 120, [&](const Position& pos) {
        if (!pos.inCheck) return;
        ++positions;
        const SlowBoard board = slowBoardOf(pos);
        const auto evasions = listOf([&](Move* list) { return genEvasions(pos, list); });
        const auto isOffered = [&](const SlowMove& move) {
            const bool interposes =
                (move.promotion == 'r' || move.promotion == 'b') && !slowIsCapture(board, move);
            interposedPromotions += interposes;
            return !interposes;
        };
        ASSERT_EQ(legalPart(pos, evasions), plainMoves(board, isOffered));
        for (const Move move : evasions) {
            if (fromOf(move) != pos.kingSquare(pos.sideToMove())) continue;
            Position child;
            ASSERT_TRUE(makeMove(&pos, &child, move)) << "a king step that make refuses";
        }
    });
    EXPECT_GT(positions, 1500);
    EXPECT_GT(interposedPromotions, 0);
}

// A piece that moves off a line between an own slider and the enemy king.
static bool discoversCheck(const SlowBoard& board, Move move) {
    SlowBoard without = board;
    without.at[fromOf(move)] = '.';
    return slowInCheck(without, !board.whiteToMove);
}

TEST(Generators, QuietChecksAreTheQuietMovesThatCheck) {
    int checks = 0;
    int discovered = 0;
    int discoveredDoubleSteps = 0;
    walkWithSideLines(8, 120, [&](const Position& pos) {
        const SlowBoard board = slowBoardOf(pos);
        const auto moves = listOf([&](Move* list) { return genQuietChecks(pos, list); });
        const MoveSet expected = plainMoves(board, [&](const SlowMove& move) {
            return isQuiet(board, move) && move.kind != SlowKind::Castling && givesCheck(board, move);
        });
        ASSERT_EQ(legalPart(pos, moves), expected);
        ASSERT_EQ(listOf([&](Move* list) { return genStagedQuiets(pos, list); }), moves);
        // No direct check stands before a discovered one.
        const auto discovers = [&](Move move) { return discoversCheck(board, move); };
        ASSERT_TRUE(std::is_partitioned(moves.begin(), moves.end(), discovers));
        checks += int(expected.size());
        for (const Move move : expected) {
            discovered += discovers(move);
            discoveredDoubleSteps += discovers(move) && flagOf(move) == DoublePush;
        }
    });
    EXPECT_GT(checks, 2000);
    EXPECT_GT(discovered, 100);
    EXPECT_GT(discoveredDoubleSteps, 0);
}

TEST(Generators, QueenChecksAvoidTheSquaresOfEnemyPawns) {
    int checks = 0;
    int avoided = 0;
    walkWithSideLines(8, 120, [&](const Position& pos) {
        const SlowBoard board = slowBoardOf(pos);
        SlowBoard enemyPawns = board;
        for (char& piece : enemyPawns.at)
            if (piece != (board.whiteToMove ? 'p' : 'P')) piece = '.';
        const auto moves = listOf([&](Move* list) { return genQueenChecks(pos, list); });
        ASSERT_EQ(legalPart(pos, moves), plainMoves(board, [&](const SlowMove& move) {
                      if (std::tolower(board.at[move.from]) != 'q' || !isQuiet(board, move)) return false;
                      if (!givesCheck(board, move)) return false;
                      ++checks;
                      if (!slowIsAttacked(enemyPawns, move.to, !board.whiteToMove)) return true;
                      ++avoided;
                      return false;
                  }));
    });
    EXPECT_GT(checks, 200);
    EXPECT_GT(avoided, 10);
}

TEST(Generators, PawnAdvancesNearPromotion) {
    int advances = 0;
    walkRandomGames(4, 150, [&](const Position& pos) {
        const SlowBoard board = slowBoardOf(pos);
        const auto moves = listOf([&](Move* list) { return genPawnPushesToSeventh(pos, list); });
        const int ahead = board.whiteToMove ? 8 : -8;
        const MoveSet expected = plainMoves(board, [&](const SlowMove& move) {
            const int rank = board.whiteToMove ? move.to / 8 : 7 - move.to / 8;
            return isPawnMove(board, move) && isQuiet(board, move) && (rank == 5 || rank == 6) &&
                   board.at[move.to + ahead] == '.';
        });
        ASSERT_EQ(legalPart(pos, moves), expected);
        advances += int(expected.size());
    });
    EXPECT_GT(advances, 200);
}

// Where the own generators don't say it by themselves: the order in which groups of moves come, which breaks
// ties between equal keys.
TEST(GenerationOrder, OfAllMoves) {
    const Position pos = positionOf("1n2k3/P7/8/3pP3/8/8/4B2P/R3K2R w KQ d6");
    const auto moves = listOf([&](Move* list) { return genAllMoves(pos, list); });
    const auto groupOf = [&](Move move) {
        const int type = typeOfCode(pos.board[fromOf(move)]);
        const bool capture = pos.board[toOf(move)] != 0 || isEnPassant(move);
        if (type == Pawn && isPromotion(cleanMove(move)) && !capture) return 0;
        if (isCastling(move)) return 1;
        if (type == Pawn && capture) return 2;
        if (type == Pawn) return flagOf(move) == DoublePush ? 9 : 3;
        return 2 + type;
    };
    EXPECT_TRUE(
        std::is_sorted(moves.begin(), moves.end(), [&](Move a, Move b) { return groupOf(a) < groupOf(b); }));
    std::array<int, 10> sizes{};
    for (const Move move : moves) ++sizes[std::size_t(groupOf(move))];
    EXPECT_EQ(sizes, (std::array<int, 10>{4, 2, 5, 2, 0, 9, 10, 0, 4, 1}));
    const std::vector<MoveFlag> flags = {QueenPromotion, KnightPromotion, RookPromotion, BishopPromotion};
    for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(flagOf(moves[i]), flags[i]);
    EXPECT_EQ(cleanMove(moves[4]), makeWord(E1, H1, Castling));
    EXPECT_EQ(cleanMove(moves[5]), makeWord(E1, A1, Castling));
}

struct EvasionRow {
    const char* name;
    const char* fen;
    std::vector<Move> moves;  // in order
};
static void PrintTo(const EvasionRow& row, std::ostream* out) { *out << row.fen; }

class Evasions : public ::testing::TestWithParam<EvasionRow> {};

TEST_P(Evasions, ComeInOrder) {
    const Position pos = positionOf(GetParam().fen);
    EXPECT_EQ(listOf([&](Move* list) { return genEvasions(pos, list); }), GetParam().moves);
}

static const EvasionRow EvasionRows[] = {
    {"KnightCheckIsNeverBlocked",
     "7k/8/8/8/8/3n4/7R/R3K3 w - -",
     {makeWord(E1, D1), makeWord(E1, F1), makeWord(E1, D2), makeWord(E1, E2)}},
    {"InterposingPawnBecomesQueenOrKnight",
     "r6K/1P6/8/8/8/8/6k1/8 w - -",
     {makeWord(B7, A8, QueenPromotion), makeWord(B7, A8, KnightPromotion), makeWord(B7, A8, RookPromotion),
      makeWord(B7, A8, BishopPromotion), makeWord(B7, B8, QueenPromotion), makeWord(B7, B8, KnightPromotion),
      makeWord(H8, G7), makeWord(H8, H7)}},
    {"PawnTakenInPassing",
     "7k/8/8/2PpP3/4K3/8/8/8 w - d6",
     {makeWord(C5, D6, EnPassant), makeWord(E5, D6, EnPassant), makeWord(E4, D3), makeWord(E4, E3),
      makeWord(E4, F3), makeWord(E4, D4), makeWord(E4, F4), makeWord(E4, D5), makeWord(E4, F5)}},
    // No game gets here: the double step can't have opened the line that the capture closes.
    {"TakingInPassingComesBetween",
     "1b5k/8/8/2Pp4/8/8/7K/8 w - d6",
     {makeWord(C5, D6, EnPassant), makeWord(H2, G1), makeWord(H2, H1), makeWord(H2, G2), makeWord(H2, H3)}},
    {"NoStepBackAlongTheLine", "7k/8/8/8/8/8/4q3/rK6 w - -", {makeWord(B1, A1)}},
};
INSTANTIATE_TEST_SUITE_P(Generators, Evasions, ::testing::ValuesIn(EvasionRows),
                         [](const auto& row) { return row.param.name; });

// Random counters in every table, as high and as low as learning takes them.
static void fillCounters() {
    std::mt19937 random(3);
    for (auto& mover : boardArrays.captureHistory)
        for (auto& target : mover)
            for (std::int32_t& counter : target) counter = 4000 + int(random() % 8001);
    for (std::int32_t& counter : boardArrays.history) counter = int(random() % 32001);
    for (std::uint16_t& counter : boardArrays.continuationHistory) counter = std::uint16_t(random() % 32001);
}

TEST(MoveKeys, OfCapturesGoByVictimAndLearning) {
    fillCounters();
    const Position pos = positionOf("1n1qk3/P7/8/3pP3/3Q4/8/8/4K3 w - d6");
    const auto& learnt = boardArrays.captureHistory;
    const auto moves = listOf([&](Move* list) { return genCaptures(pos, list); });
    const std::vector<Move> expected = {
        withKey(makeWord(A7, B8, QueenPromotion), learnt[1][B8][10] + 2210 + 7439),
        withKey(makeWord(E5, D6, EnPassant), learnt[1][D6][0] + 600),
        withKey(makeWord(A7, A8, QueenPromotion), learnt[1][A8][0] + 7439),
        withKey(makeWord(D4, D5), learnt[5][D5][9] + 600),
    };
    EXPECT_EQ(moves, expected);
    const Position black = positionOf("4k3/8/8/8/8/2r5/1p6/2B1Q2K b - -");
    const auto taken = listOf([&](Move* list) { return genCaptures(black, list); });
    ASSERT_EQ(taken.size(), 3u);
    EXPECT_EQ(taken[0], withKey(makeWord(B2, C1, QueenPromotion), learnt[9][C1][3] + 2340 + 7439));
    EXPECT_EQ(taken.back(), withKey(makeWord(C3, C1), learnt[12][C1][3] + 2340));
}

TEST(MoveKeys, OfCapturesInGames) {
    fillCounters();
    constexpr int Values[] = {0, 600, 2210, 2340, 3900, 7439, 9939};
    int victims[7] = {};
    int knightPromotions = 0;
    walkRandomGames(2, 120, [&](const Position& pos) {
        for (const Move move : listOf([&](Move* list) { return genCaptures(pos, list); })) {
            const int victim = pos.board[toOf(move)];
            int key = boardArrays.captureHistory[pos.board[fromOf(move)]][toOf(move)][victim];
            key += Values[victim & 7];
            if (flagOf(move) == EnPassant) key += Values[Pawn];
            if (flagOf(move) == QueenPromotion) key += Values[Queen];
            if (flagOf(move) == KnightPromotion) key += Values[Knight];
            knightPromotions += flagOf(move) == KnightPromotion;
            ++victims[victim & 7];
            ASSERT_EQ(sortKeyOf(move) >> 16, key) << std::hex << move;
        }
    });
    for (const PieceType type : {Pawn, Knight, Bishop, Rook, Queen}) EXPECT_GT(victims[type], 100);
    EXPECT_GT(knightPromotions, 0);
}

TEST(MoveKeys, OfQuietMovesAreAQuarterOfTheirHistory) {
    fillCounters();
    int promotions = 0;
    walkRandomGames(1, 80, [&](const Position& pos) {
        for (const Move move : listOf([&](Move* list) { return genQuiets(pos, list); })) {
            const int code = pos.board[fromOf(move)];
            const int from = fromOf(move);
            const int to = toOf(move);
            const int sum = pos.history[code * 4096 + from * 64 + to] + pos.contHist[code * 64 + to] +
                            pos.contHist2[code * 64 + to];
            const bool promotes = isPromotion(cleanMove(move));
            promotions += promotes;
            ASSERT_EQ(sortKeyOf(move) >> 16, promotes ? 0 : sum / 4);
            ASSERT_EQ(quietStat(pos, move), sum);
        }
    });
    EXPECT_GT(promotions, 10);
}

// Boards that only a FEN can set up may have more moves than a list takes.
TEST(Generators, StopAtTheEndOfTheList) {
    const Position pos = positionOf("Q1QQQQQ1/Q6Q/5Q2/1Q5Q/Q4Q2/Q1Q4Q/Q5Q1/kQKQQ1Q1 w - -");
    std::vector<Move> list(MaxListMoves + 1, 0xabcd1234);
    EXPECT_EQ(genAllMoves(pos, list.data()), MaxListMoves);
    EXPECT_EQ(list.back(), 0xabcd1234);
    EXPECT_EQ(genQuiets(pos, list.data()), MaxListMoves);
    EXPECT_EQ(list.back(), 0xabcd1234);
}
