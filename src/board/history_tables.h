// The shape of the tables in which a thread counts how well moves have done. The searches own them and learn;
// make selects the continuation slices; generators, pickers and searches read.
#pragma once

#include "board/move.h"
#include "board/position.h"

#include <cstddef>
#include <cstdint>

inline constexpr std::size_t CodeCount = 16;      // board codes, those that no piece has included
inline constexpr std::size_t FromToCount = 4096;  // words of start and target square
static_assert(FromToCount == FromToMask + 1);

// Quiet moves, by moved code and the move's low 12 bits.
using QuietHistory = std::int32_t[CodeCount][FromToCount];
constexpr int historyIndex(int code, int fromTo) { return code * int(FromToCount) + fromTo; }

// Captures, by moved code, target and captured code.
using CaptureRow = std::int32_t[64][CodeCount];
using CaptureHistory = CaptureRow[CodeCount];

// Continuation history: for each code and target of an earlier move a slice of counters by code and target of
// the next. Codes reach 14, so there are 960 slices.
inline constexpr std::size_t ContinuationSlices = 15 * 64;
inline constexpr std::size_t ContinuationSlice = CodeCount * 64;  // counters
using ContinuationHistory = std::uint16_t[ContinuationSlices][CodeCount][64];

// The number of a slice, and of a counter in it.
constexpr int continuationIndex(int code, int to) { return code * 64 + to; }
inline std::uint16_t* continuationSlice(std::uint16_t* table, int code, int to) {
    return table + std::size_t(continuationIndex(code, to)) * ContinuationSlice;
}

// The history sum of a quiet move from this record: both continuations and the thread's history. `code` is
// the board code of the moved piece.
inline int quietStat(const Position& pos, int code, Move move) {
    const int continuation = continuationIndex(code, toOf(move));
    return pos.contHist[continuation] + pos.contHist2[continuation] +
           pos.history[historyIndex(code, int(move & FromToMask))];
}
inline int quietStat(const Position& pos, Move move) { return quietStat(pos, pos.board[fromOf(move)], move); }
