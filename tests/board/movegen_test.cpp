// Every generator against the rules of chess on a plain board, and the order and the keys of what it writes.
#include "board/movegen.h"

#include "board/fen.h"
#include "board/make_move.h"
#include "board/move_text.h"
#include "support/board_environment.h"
#include "support/slow_chess.h"

#include <algorithm>
#include <cctype>
#include <random>

static bool isAnyMove(const SlowBoard&, const SlowMove&) { return true; }

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
static bool comesWithQuiets(const SlowBoard& board, const SlowMove& move) {
    return !comesWithCaptures(board, move);
}

// Pawns that come in between on the last rank become queens and knights only.
static bool isEvasion(const SlowBoard& board, const SlowMove& move) {
    return !(move.promotion == 'r' || move.promotion == 'b') || slowIsCapture(board, move);
}

static bool isQuiet(const SlowBoard& board, const SlowMove& move) {
    return !slowIsCapture(board, move) && !move.promotion && move.kind != SlowKind::Castling;
}
static bool isQuietCheck(const SlowBoard& board, const SlowMove& move) {
    return isQuiet(board, move) && slowInCheck(slowMake(board, move), !board.whiteToMove);
}
// A check by the queen on a square that no enemy pawn attacks.
static bool isQueenCheck(const SlowBoard& board, const SlowMove& move) {
    if (std::tolower(board.at[move.from]) != 'q' || !isQuietCheck(board, move)) return false;
    SlowBoard enemyPawns = board;
    for (char& piece : enemyPawns.at)
        if (piece != (board.whiteToMove ? 'p' : 'P')) piece = '.';
    return !slowIsAttacked(enemyPawns, move.to, !board.whiteToMove);
}

// A pawn's step onto one of the two ranks before the last, where it may go on.
static bool isAdvance(const SlowBoard& board, const SlowMove& move) {
    if (std::tolower(board.at[move.from]) != 'p' || !isQuiet(board, move)) return false;
    const int rank = board.whiteToMove ? move.to / 8 : 7 - move.to / 8;
    return (rank == 5 || rank == 6) && board.at[move.to + (board.whiteToMove ? 8 : -8)] == '.';
}

static bool isPawn(const SlowBoard& board, const SlowMove& move) {
    return std::tolower(board.at[move.from]) == 'p';
}
static bool isKing(const SlowBoard& board, const SlowMove& move) {
    return std::tolower(board.at[move.from]) == 'k';
}
static bool isPushPromotion(const SlowBoard& board, const SlowMove& move) {
    return move.promotion && !slowIsCapture(board, move);
}
static bool isPawnCapture(const SlowBoard& board, const SlowMove& move) {
    return isPawn(board, move) && slowIsCapture(board, move);
}
static bool isEnPassantCapture(const SlowBoard&, const SlowMove& move) {
    return move.kind == SlowKind::EnPassant;
}
static bool isCastle(const SlowBoard&, const SlowMove& move) { return move.kind == SlowKind::Castling; }

// Captures on every enemy man's square, one square after the other.
static int genCapturesOnEach(const Position& pos, Move* list) {
    int count = 0;
    forEachSquare(pos.pieces[opponent(pos.sideToMove())][AllPieces],
                  [&](int square) { count += genCapturesOn(pos, list + count, square); });
    return count;
}
static bool isCaptureOnSquare(const SlowBoard& board, const SlowMove& move) {
    return slowIsCapture(board, move) && move.kind != SlowKind::EnPassant && !isKing(board, move);
}

// Moves onto some of the empty squares.
static constexpr Bitboard BlockedSquares = 0x80aa55aa55aa5501;
static int genSomeBlocks(const Position& pos, Move* list) {
    return genBlocks(pos, list, BlockedSquares & ~pos.occupied);
}
static bool isBlock(const SlowBoard& board, const SlowMove& move) {
    return !slowIsCapture(board, move) && !isCastle(board, move) && !isKing(board, move) &&
           isEvasion(board, move) && (BlockedSquares >> move.to & 1);
}

using Generator = int (*)(const Position&, Move*);

// The legal moves of a generator's list are those that its rule picks from all.
TEST(Generators, AgreeWithThePlainRules) {
    struct Row {
        const char* name;
        Generator generate;
        bool (*picks)(const SlowBoard&, const SlowMove&);
        std::size_t least;  // moves to be seen
        std::size_t seen = 0;
    };
    Row rows[] = {
        {"all", genAllMoves, isAnyMove, 100000},
        {"captures", genCaptures, comesWithCaptures, 10000},
        {"quiets", genQuiets, comesWithQuiets, 100000},
        {"evasions", genEvasions, isEvasion, 5000},
        {"checks", genQuietChecks, isQuietCheck, 2000},
        {"staged checks", genStagedQuiets, isQuietCheck, 2000},
        {"queen checks", genQueenChecks, isQueenCheck, 200},
        {"advances", genPawnPushesToSeventh, isAdvance, 200},
        {"promotions", genPromotions, isPushPromotion, 200},
        {"pawn captures", genPawnCaptures, isPawnCapture, 1000},
        {"en passant", genEnPassant, isEnPassantCapture, 20},
        {"castling", genCastling, isCastle, 200},
        {"captures on a square", genCapturesOnEach, isCaptureOnSquare, 5000},
        {"blocks", genSomeBlocks, isBlock, 20000},
    };
    const auto judge = [&](const Position& pos) {
        const SlowBoard board = slowBoardOf(pos);
        const std::vector<SlowMove> all = slowMoves(board);
        for (Row& row : rows) {
            if (row.generate == genEvasions && !pos.inCheck) continue;
            std::vector<Move> expected, found;
            for (const SlowMove& move : all)
                if (row.picks(board, move)) expected.push_back(slowWord(move));
            for (const Move word : listOf(pos, row.generate)) {
                const Move move = cleanMove(word);
                Position child;
                const bool legal = makeMove(&pos, &child, move);
                if (legal) found.push_back(move);
                const bool kingStep = pos.board[fromOf(move)] == boardCode(pos.sideToMove(), King);
                ASSERT_TRUE(legal || row.generate != genEvasions || !kingStep)
                    << "a king step that make refuses: " << writeFen(pos) << ' ' << moveText(move);
            }
            std::sort(expected.begin(), expected.end());
            std::sort(found.begin(), found.end());
            ASSERT_EQ(found, expected) << row.name << " of " << writeFen(pos);
            row.seen += expected.size();
        }
    };
    // Games, checks one ply aside, and interposing promotions, which games hardly reach.
    walkRandomGames(8, 120, [&](const Position& pos) {
        judge(pos);
        if (pos.gamePly % 4 != 0) return;
        Position child;
        for (const Move move : pseudoLegalMoves(pos))
            if (makeChild(pos, child, move) && child.inCheck) judge(child);
    });
    for (const char* fen : {"r6K/1P6/8/8/8/8/6k1/8 w - -", "8/6K1/8/8/8/8/1p1p4/R6k b - -"})
        judge(positionOf(fen));
    for (const Row& row : rows) EXPECT_GT(row.seen, row.least) << row.name;
}

// The order of generation breaks ties between equal keys.
TEST(Generators, WriteInTheirOrder) {
    struct Case {
        Generator generate;
        const char* fen;
        const char* moves;
    };
    const char* const everyGroup = "1n2k3/P7/8/3pP3/8/8/B6P/N3K2R w K d6";
    const Case cases[] = {
        {genAllMoves, everyGroup,
         "a7a8q a7a8n a7a8r a7a8b e1g1 a7b8q a7b8n a7b8r a7b8b e5d6 h2h3 e5e6 a1c2 a1b3 a2b1 a2b3 a2c4 a2d5 "
         "h1f1 h1g1 e1d1 e1f1 e1d2 e1e2 e1f2 h2h4"},
        {genCaptures, everyGroup, "a7b8q e5d6 a7a8q a2d5"},
        {genQuiets, everyGroup,
         "e1g1 h2h3 e5e6 a1c2 a1b3 a2b1 a2b3 a2c4 h1f1 h1g1 e1d1 e1f1 e1d2 e1e2 e1f2 h2h4 a7a8n a7a8r a7a8b "
         "a7b8n a7b8r a7b8b"},
        {genCastling, "r3k2r/8/8/8/8/8/8/R3K2R w KQkq -", "e1g1 e1c1"},
        // Discovered checks come before direct ones.
        {genQuietChecks, "4k3/8/2P5/8/B7/8/8/R5K1 w - -", "c6c7 a1e1"},
        // A knight's check is never blocked.
        {genEvasions, "7k/8/8/8/8/3n4/7R/R3K3 w - -", "e1d1 e1f1 e1d2 e1e2"},
        {genEvasions, "r6K/1P6/8/8/8/8/6k1/8 w - -", "b7a8q b7a8n b7a8r b7a8b b7b8q b7b8n h8g7 h8h7"},
        {genEvasions, "7k/8/8/2PpP3/4K3/8/8/8 w - d6", "c5d6 e5d6 e4d3 e4e3 e4f3 e4d4 e4f4 e4d5 e4f5"},
        // No game gets here: the double step can't have opened the line that the capture closes.
        {genEvasions, "1b5k/8/8/2Pp4/8/8/7K/8 w - d6", "c5d6 h2g1 h2h1 h2g2 h2h3"},
        // No step back along the line.
        {genEvasions, "7k/8/8/8/8/8/4q3/rK6 w - -", "b1a1"},
    };
    for (const Case& one : cases) {
        std::vector<Move> list = listOf(positionOf(one.fen), one.generate);
        for (Move& move : list) move = cleanMove(move);
        list.push_back(NoMove);
        EXPECT_EQ(pvToText(list.data()), one.moves) << one.fen;
    }
}

TEST(MoveKeys, GoByVictimAndLearning) {
    // Random counters in every table, as high and as low as learning takes them.
    std::mt19937 random(3);
    for (auto& mover : boardArrays.captureHistory)
        for (auto& target : mover)
            for (std::int32_t& counter : target) counter = 4000 + int(random() % 8001);
    for (std::int32_t& counter : boardArrays.history) counter = int(random() % 32001);
    for (std::uint16_t& counter : boardArrays.continuationHistory) counter = std::uint16_t(random() % 32001);
    constexpr int Values[] = {0, 600, 2210, 2340, 3900, 7439, 9939};
    walkRandomGames(2, 120, [&](const Position& pos) {
        for (const Move move : listOf(pos, genCaptures)) {
            // En passant is learnt by the empty square that it enters.
            const int victim = pos.board[toOf(move)];
            int key = boardArrays.captureHistory[pos.board[fromOf(move)]][toOf(move)][victim];
            key += Values[typeOfCode(victim)];
            if (flagOf(move) == EnPassant) key += Values[Pawn];
            if (flagOf(move) == QueenPromotion) key += Values[Queen];
            if (flagOf(move) == KnightPromotion) key += Values[Knight];
            ASSERT_EQ(sortKeyOf(move) >> 16, key) << writeFen(pos) << ' ' << moveText(move);
        }
        // A quarter of the history sum.
        for (const Move move : listOf(pos, genQuiets)) {
            const int code = pos.board[fromOf(move)];
            const int to = toOf(move);
            const int sum = pos.history[code * 4096 + fromOf(move) * 64 + to] + pos.contHist[code * 64 + to] +
                            pos.contHist2[code * 64 + to];
            const bool promotes = isPromotion(cleanMove(move));
            const int key = promotes ? 0 : sum / 4;
            ASSERT_EQ(sortKeyOf(move) >> 16, key) << writeFen(pos) << ' ' << moveText(move);
            ASSERT_EQ(quietStat(pos, move), sum);
        }
    });
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
