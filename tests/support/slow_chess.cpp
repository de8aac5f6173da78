#include "support/slow_chess.h"

#include "board/castling.h"
#include "board/fen.h"

#include <algorithm>
#include <cctype>
#include <string>

namespace {

struct Step {
    int files, ranks;
};
const std::vector<Step> RookSteps = {{0, 1}, {1, 0}, {0, -1}, {-1, 0}};
const std::vector<Step> BishopSteps = {{1, 1}, {1, -1}, {-1, -1}, {-1, 1}};
const std::vector<Step> AllSteps = {{0, 1}, {1, 0}, {0, -1}, {-1, 0}, {1, 1}, {1, -1}, {-1, -1}, {-1, 1}};
const std::vector<Step> KnightSteps = {{1, 2},   {2, 1},   {2, -1}, {1, -2},
                                       {-1, -2}, {-2, -1}, {-2, 1}, {-1, 2}};

// The square a step away, or -1 beyond the edge.
int stepped(int square, Step step) {
    const int file = square % 8 + step.files;
    const int rank = square / 8 + step.ranks;
    return file < 0 || file > 7 || rank < 0 || rank > 7 ? -1 : rank * 8 + file;
}

bool isEmpty(char piece) { return piece == '.'; }
bool isOf(char piece, bool white) { return !isEmpty(piece) && (std::isupper(piece) != 0) == white; }
char letterOf(char kind, bool white) { return char(white ? std::toupper(kind) : kind); }

const std::vector<Step>& stepsOf(char kind) {
    switch (kind) {
        case 'n': return KnightSteps;
        case 'b': return BishopSteps;
        case 'r': return RookSteps;
        default: return AllSteps;
    }
}
bool slides(char kind) { return kind == 'b' || kind == 'r' || kind == 'q'; }

// Visits every square that a piece other than a pawn reaches, whatever stands there.
template <class Visit>
void forEachReached(const SlowBoard& board, int from, char kind, Visit visit) {
    for (const Step step : stepsOf(kind)) {
        for (int to = stepped(from, step); to >= 0; to = stepped(to, step)) {
            visit(to);
            if (!slides(kind) || !isEmpty(board.at[to])) break;
        }
    }
}

int kingOf(const SlowBoard& board, bool white) {
    for (int square = 0; square < 64; ++square)
        if (board.at[square] == letterOf('k', white)) return square;
    return -1;
}

void addPawnMove(std::vector<SlowMove>& moves, int from, int to) {
    if (to / 8 != 0 && to / 8 != 7) {
        moves.push_back({from, to});
        return;
    }
    for (const char piece : {'q', 'n', 'r', 'b'}) moves.push_back({from, to, SlowKind::Plain, piece});
}

void addPawnMoves(const SlowBoard& board, int from, std::vector<SlowMove>& moves) {
    const bool white = board.whiteToMove;
    const int ahead = white ? 1 : -1;
    const int once = stepped(from, {0, ahead});
    if (isEmpty(board.at[once])) {
        addPawnMove(moves, from, once);
        const int twice = stepped(once, {0, ahead});
        if (from / 8 == (white ? 1 : 6) && isEmpty(board.at[twice]))
            moves.push_back({from, twice, SlowKind::DoubleStep});
    }
    for (const int side : {-1, 1}) {
        const int to = stepped(from, {side, ahead});
        if (to < 0) continue;
        if (isOf(board.at[to], !white)) addPawnMove(moves, from, to);
        if (to == board.enPassant) moves.push_back({from, to, SlowKind::EnPassant});
    }
}

// Whether every square from `a` to `b` on a rank is empty but for two of them.
bool isFree(const SlowBoard& board, int a, int b, int king, int rook) {
    for (int square = std::min(a, b); square <= std::max(a, b); ++square)
        if (square != king && square != rook && !isEmpty(board.at[square])) return false;
    return true;
}

void addCastling(const SlowBoard& board, std::vector<SlowMove>& moves) {
    const bool white = board.whiteToMove;
    const int king = kingOf(board, white);
    for (int side = 0; side < 2; ++side) {
        const int rook = board.castleRook[(white ? 0 : 2) + side];
        if (rook < 0) continue;
        const int kingTo = king / 8 * 8 + (side == 0 ? 6 : 2);
        const int rookTo = king / 8 * 8 + (side == 0 ? 5 : 3);
        if (!isFree(board, king, kingTo, king, rook) || !isFree(board, rook, rookTo, king, rook)) continue;
        bool attacked = false;
        for (int square = std::min(king, kingTo); square <= std::max(king, kingTo); ++square)
            attacked = attacked || slowIsAttacked(board, square, !white);
        if (!attacked) moves.push_back({king, rook, SlowKind::Castling});
    }
}

}  // namespace

SlowBoard slowBoardOf(const Position& pos) {
    SlowBoard board;
    for (int square = 0; square < 64; ++square) board.at[square] = ".PNBRQK..pnbrqk."[pos.board[square]];
    board.whiteToMove = pos.gamePly % 2 == 0;
    for (int right = 0; right < 4; ++right)
        board.castleRook[right] = pos.castleLost & 1 << right ? -1 : int(castling.rook[right]);
    board.enPassant = -1;
    for (int square = 0; square < 64; ++square)
        if (pos.epMask >> square & 1) board.enPassant = square;
    return board;
}

std::vector<int> slowAttackers(const SlowBoard& board, int square, bool byWhite) {
    std::vector<int> attackers;
    for (const char kind : {'n', 'b', 'r', 'q', 'k'})
        forEachReached(board, square, kind, [&](int from) {
            if (board.at[from] == letterOf(kind, byWhite)) attackers.push_back(from);
        });
    for (const int side : {-1, 1}) {
        const int from = stepped(square, {side, byWhite ? -1 : 1});
        if (from >= 0 && board.at[from] == letterOf('p', byWhite)) attackers.push_back(from);
    }
    return attackers;
}

bool slowIsAttacked(const SlowBoard& board, int square, bool byWhite) {
    return !slowAttackers(board, square, byWhite).empty();
}

bool slowInCheck(const SlowBoard& board, bool white) {
    return slowIsAttacked(board, kingOf(board, white), !white);
}

SlowBoard slowMake(const SlowBoard& board, const SlowMove& move) {
    SlowBoard next = board;
    const bool white = board.whiteToMove;
    const char piece = board.at[move.from];
    next.whiteToMove = !white;
    next.enPassant = move.kind == SlowKind::DoubleStep ? (move.from + move.to) / 2 : -1;
    next.at[move.from] = '.';
    if (move.kind == SlowKind::Castling) {
        const int rank = move.from / 8 * 8;
        const bool isShort = move.to > move.from;
        next.at[move.to] = '.';
        next.at[rank + (isShort ? 6 : 2)] = piece;
        next.at[rank + (isShort ? 5 : 3)] = letterOf('r', white);
    } else {
        next.at[move.to] = move.promotion ? letterOf(move.promotion, white) : piece;
        if (move.kind == SlowKind::EnPassant) next.at[move.from / 8 * 8 + move.to % 8] = '.';
    }
    for (int right = 0; right < 4; ++right) {
        const bool kingMoved = piece == letterOf('k', right < 2) && (right < 2) == white;
        const bool rookTouched = board.castleRook[right] == move.from || board.castleRook[right] == move.to;
        if (kingMoved || rookTouched) next.castleRook[right] = -1;
    }
    return next;
}

std::vector<SlowMove> slowMoves(const SlowBoard& board) {
    const bool white = board.whiteToMove;
    std::vector<SlowMove> moves;
    for (int from = 0; from < 64; ++from) {
        if (!isOf(board.at[from], white)) continue;
        const char kind = char(std::tolower(board.at[from]));
        if (kind == 'p') {
            addPawnMoves(board, from, moves);
        } else {
            forEachReached(board, from, kind, [&](int to) {
                if (!isOf(board.at[to], white)) moves.push_back({from, to});
            });
        }
    }
    addCastling(board, moves);
    std::erase_if(moves, [&](const SlowMove& move) { return slowInCheck(slowMake(board, move), white); });
    return moves;
}

std::uint64_t slowPerft(const SlowBoard& board, int depth) {
    if (depth == 0) return 1;
    std::uint64_t leaves = 0;
    for (const SlowMove& move : slowMoves(board)) leaves += slowPerft(slowMake(board, move), depth - 1);
    return leaves;
}

bool slowIsCapture(const SlowBoard& board, const SlowMove& move) {
    if (move.kind == SlowKind::Castling) return false;
    return move.kind == SlowKind::EnPassant || !isEmpty(board.at[move.to]);
}

std::uint32_t slowWord(const SlowMove& move) {
    const std::size_t promoted = std::string("qnrb").find(move.promotion);
    const std::size_t flag = move.promotion ? 4 + promoted : std::size_t(move.kind);
    return std::uint32_t(std::size_t(move.from) * 64 + std::size_t(move.to) + flag * 4096);
}
