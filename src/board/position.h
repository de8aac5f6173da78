// The record of one ply: a chess position with everything that a search needs there. A move is made by
// copying the record and changing the copy; nothing is ever undone, and a chain of pointers leads back
// through the game.
#pragma once

#include "board/bitboard.h"
#include "board/move.h"
#include "board/score.h"
#include "board/types.h"

#include <cstdint>
#include <type_traits>

struct EvalCacheEntry;
struct PawnEntry;
struct MatCacheEntry;

// The order of the fields is part of the design: hot ones are grouped, and the record is copied whole.
struct Position {
    Bitboard pieces[2][7];  // by colour and type; type 0 is all pieces of the colour
    Bitboard occupied;
    std::uint8_t board[64];  // board code by square
    Bitboard epMask;         // en-passant target, only while an enemy pawn stands beside the pushed one

    Key key;          // the whole position: transposition table, evaluation cache, repetition
    Key pawnKey;      // pawns, kings and castling state, without the side to move
    Key matKey;       // material, bishops counted by square colour; an additive key
    Key matKeyPlain;  // material, bishops counted alike
    Score psqPair;    // running piece-square sum, White minus Black, in lane units

    const Position* prev;  // the ply before; null in a record made by the FEN reader
    EvalCacheEntry* evalCache;
    PawnEntry* pawnHash;
    MatCacheEntry* matHash;
    std::int32_t* history;     // this thread's QuietHistory, as history_tables.h has it
    std::uint16_t* contHist;   // slice of its ContinuationHistory, selected by the move that led here
    std::uint16_t* contHist2;  // the same for the move before that

    Move lastMove;             // 0 after a null move or at a root; a double push after a FEN with en passant
    std::int32_t staticEval;   // side to move's view; NotEvaluated, or NoScore in check
    std::int32_t moveStat;     // history sum of the move that is being tried from here
    std::int32_t psqBlend;     // positional score of the line's last full evaluation, in blended units
    std::uint32_t pieceCount;  // kings included
    std::uint16_t movedType;   // of `lastMove`, 0 if none
    std::uint16_t movedCode;
    std::uint16_t capturedType;  // Intended: en passant leaves it 0
    std::uint16_t gamePly;       // from 0 or 1; its low bit is the side to move
    std::uint16_t inCheck;       // 1 if the side to move is in check; make leaves it to its callers
    std::uint16_t phase;         // sum of PhaseWeight over both sides; readers cap it at MaxPhase
    std::uint16_t halfmoveClock;
    std::int16_t threadIndex;
    std::int16_t nullFloor;     // running sum of the line's extensions, in half plies; -8 at the root
    std::uint8_t rootFlag;      // cleared at the root of a search
    std::uint8_t singularMark;  // the reduction in force on the move being tried, in half plies
    std::uint8_t plyMark;       // the ply, in full-window nodes
    std::uint8_t castleLost;    // a bit set for each right that is gone: 1 K, 2 Q, 4 k, 8 q

    Colour sideToMove() const { return Colour(gamePly & 1); }
    // Only of a position with a king of that colour on the board.
    int kingSquare(Colour colour) const {
        const Bitboard king = pieces[colour][King];
        if (king == 0) __builtin_unreachable();
        return lowestSquare(king);
    }
    int cappedPhase() const { return phase < MaxPhase ? phase : MaxPhase; }
};
static_assert(sizeof(Position) == 336);
static_assert(std::is_trivially_copyable_v<Position>);

// Keys and sums of the pieces on the board, from scratch.
Key computeKey(const Position& pos);
Key computePawnKey(const Position& pos);
Key computeMatKey(const Position& pos);
Key computeMatKeyPlain(const Position& pos);
Score computePsqPair(const Position& pos);
int computePhase(const Position& pos);

// Whether every incremental field equals its value from scratch; the first that differs is named on standard
// error. `psqPair` and `phase` are compared only if `withSums` is set, since game records hold none.
bool isConsistent(const Position& pos, bool withSums);
