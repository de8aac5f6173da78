// The move word, the root list and the list size. A move is 32 bits: a clean move below and a sort key above.
#pragma once

#include "board/types.h"

#include <cstdint>

// Bits 0-5 target square, 6-11 start square, 12-14 flag, 15 clear; bits 16-31 a signed key, larger is tried
// earlier. For castling the target is the rook's start square. 0 is no move and also the null move.
using Move = std::uint32_t;

// The values are packed into words and compared by size: promotions are the words from 0x4000 up.
enum MoveFlag : std::uint8_t {
    NormalMove = 0,
    DoublePush = 1,
    EnPassant = 2,
    Castling = 3,
    QueenPromotion = 4,
    KnightPromotion = 5,
    RookPromotion = 6,
    BishopPromotion = 7,
};

inline constexpr Move NoMove = 0;
inline constexpr Move CleanMoveMask = 0xffff;
inline constexpr Move FlagMask = 0x7000;
inline constexpr Move FirstPromotion = 0x4000;       // clean moves from here up promote
inline constexpr Move FirstUnderPromotion = 0x5000;  // and from here up to less than a queen
inline constexpr Move FromToMask = 0xfff;            // the low 12 bits, by which history tables are indexed
inline constexpr int MaxListMoves = 220;             // more than any position's pseudo-legal moves

constexpr Move makeWord(int from, int to, MoveFlag flag = NormalMove) {
    return Move(from) << 6 | Move(to) | Move(flag) << 12;
}
constexpr Move cleanMove(Move move) { return move & CleanMoveMask; }
constexpr int toOf(Move move) { return int(move & 63); }
constexpr int fromOf(Move move) { return int(move >> 6 & 63); }
constexpr MoveFlag flagOf(Move move) { return MoveFlag(move >> 12 & 7); }
constexpr bool isPromotion(Move clean) { return clean >= FirstPromotion; }
constexpr bool isUnderPromotion(Move clean) { return clean >= FirstUnderPromotion; }
constexpr bool isEnPassant(Move move) { return (move & FlagMask) == Move(EnPassant) << 12; }
constexpr bool isCastling(Move move) { return (move & FlagMask) == Move(Castling) << 12; }

// The square of the pawn that an en-passant capture takes.
constexpr int enPassantVictim(int from, int to) { return makeSquare(fileOf(to), rankOf(from)); }

// The piece that a promotion flag stands for; only for flags 4 to 7.
constexpr PieceType promotionType(MoveFlag flag) {
    constexpr PieceType types[4] = {Queen, Knight, Rook, Bishop};
    return types[flag & 3];
}

// A move with its sort key, which is signed: the upper half of the word.
constexpr Move withKey(Move clean, int key) { return clean | Move(key) << 16; }
constexpr std::int32_t sortKeyOf(Move move) { return std::int32_t(move & 0xffff0000u); }

// One line of a thread's root list, which a zero move ends.
struct RootMove {
    Move move;
    std::int32_t score;   // of the last search, later the rank by which quiet moves are sorted
    std::uint64_t nodes;  // spent under the move in this iteration
};
static_assert(sizeof(RootMove) == 16);
