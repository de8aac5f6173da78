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

// Boards that only a FEN can set up may have more moves than a list takes.
TEST(Generators, StopAtTheEndOfTheList) {
    const Position pos = positionOf("Q1QQQQQ1/Q6Q/5Q2/1Q5Q/Q4Q2/Q1Q4Q/Q5Q1/kQKQQ1Q1 w - -");
    std::vector<Move> list(MaxListMoves + 1, 0xabcd1234);
    EXPECT_EQ(genAllMoves(pos, list.data()), MaxListMoves);
    EXPECT_EQ(list.back(), 0xabcd1234);
    EXPECT_EQ(genQuiets(pos, list.data()), MaxListMoves);
    EXPECT_EQ(list.back(), 0xabcd1234);
}
