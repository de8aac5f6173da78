// The rules of chess on a plain board of letters, slow and obvious, to judge the engine's generators by. It
// shares no table and no rule with the engine.
#pragma once

#include <cstdint>
#include <vector>

struct Position;

enum class SlowKind { Plain, DoubleStep, EnPassant, Castling };

struct SlowMove {
    int from, to;  // castling: the king's square and the rook's
    SlowKind kind = SlowKind::Plain;
    char promotion = 0;  // 'q', 'n', 'r', 'b' or none
};

struct SlowBoard {
    char at[64];  // letters as in a FEN, '.' for empty; a1 is 0, b1 is 1
    bool whiteToMove;
    int castleRook[4];  // rook squares of the rights K, Q, k, q; -1 where a right is gone
    int enPassant;      // the square behind a pawn that has just stepped twice, or -1
};

// The engine's record read as a plain board.
SlowBoard slowBoardOf(const Position& pos);

// The squares of the pieces of one colour that attack a square, in no order.
std::vector<int> slowAttackers(const SlowBoard& board, int square, bool byWhite);
bool slowIsAttacked(const SlowBoard& board, int square, bool byWhite);
// Whether the king of that colour is attacked.
bool slowInCheck(const SlowBoard& board, bool white);
// The board after a move.
SlowBoard slowMake(const SlowBoard& board, const SlowMove& move);
// Every legal move.
std::vector<SlowMove> slowMoves(const SlowBoard& board);
std::uint64_t slowPerft(const SlowBoard& board, int depth);

// The clean word that stands for a move in the engine.
std::uint32_t slowWord(const SlowMove& move);

// Whether a piece stands on the target square of a move that isn't castling, or a pawn is taken in passing.
bool slowIsCapture(const SlowBoard& board, const SlowMove& move);
