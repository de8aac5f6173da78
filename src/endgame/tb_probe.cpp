// A table knows a position only up to its captures: where a capture already gives the true result, the stored
// value may be anything that is no better, and en passant and the distances of zeroing moves are not stored
// at all. So each probe looks at the moves that zero the counter first, and takes from the table what is
// left.
#include "endgame/tb_probe.h"

#include "base/settings.h"
#include "board/attacks.h"
#include "board/castling.h"
#include "board/make_move.h"
#include "board/movegen.h"
#include "endgame/tb_entry.h"

#include <algorithm>

int tbPieceLimit = 0;
int tbRootScore = NoTbScore;
Relaxed<std::uint64_t> tbHits = 0;

namespace {

constexpr int NoWdl = -3;  // below every result
constexpr int NoDistance = 0x7fffffff;

// The child's check flag is left unset: only castling and evasions ask for it, and positions with castling
// rights aren't probed.
bool makeChild(const Position& pos, Position& child, Move move) {
    return makeMove(&pos, &child, cleanMove(move));
}

bool isCapture(const Position& pos, Move move) {
    return isEnPassant(move) || (pos.board[toOf(move)] && !isCastling(move));
}
bool isPawnMove(const Position& pos, Move move) { return typeOfCode(pos.board[fromOf(move)]) == Pawn; }

// All captures, promoting ones with each piece, in the order of the full generator. Most positions of so few
// men have none, which the attack map tells at once.
int listCaptures(const Position& pos, Move* list) {
    const Colour us = pos.sideToMove();
    if (!pos.epMask && !(attackedBy(pos, us) & pos.pieces[opponent(us)][AllPieces])) return 0;
    const int count = genAllMoves(pos, list);
    const Move* const end =
        std::remove_if(list, list + count, [&pos](Move move) { return !isCapture(pos, move); });
    return int(end - list);
}

// A position as a table sees it.
struct TbView {
    TbEntry& entry;
    int codeMask;    // exclusive-or of board codes: 8 if the table's white is Black
    int squareMask;  // of squares
    int side;        // 0 if the table's white is to move

    TbView(const Position& pos, TbEntry& tableEntry) : entry(tableEntry) {
        // A symmetric table is stored for its white to move, whatever the colour on the board.
        const bool blackToMove = pos.sideToMove() == Black;
        const bool turned = entry.symmetric ? blackToMove : entry.key != pos.matKeyPlain;
        codeMask = turned ? 8 : 0;
        squareMask = turned ? 56 : 0;
        side = blackToMove != turned;
    }
    Bitboard menOf(const Position& pos, int code) const {
        return pos.pieces[colourOfCode(code ^ codeMask)][typeOfCode(code)];
    }
};

// Writes the squares of `count` men of one code; false if the board has another number of them.
bool placeMen(const Position& pos, const TbView& view, int code, int* squares, int count) {
    Bitboard men = view.menOf(pos, code);
    if (popcount(men) != count) return false;
    forEachSquare(men, [&](int square) { *squares++ = square ^ view.squareMask; });
    return true;
}

// The leading file, 0 without pawns. The leading pawns, whose code is `code`, are written with their leader
// in front.
int leadingFile(const Position& pos, const TbView& view, int code, int* squares) {
    const TbEntry& entry = view.entry;
    if (!entry.hasPawns || !placeMen(pos, view, code, squares, entry.pawnsLeading)) return 0;
    return tbLeadingFile(squares, entry.pawnsLeading);
}

// The raw value of a position in one slice, or -1. `squares` holds the leading pawns already.
int rawValue(const Position& pos, const TbView& view, const TbSlice& slice, int* squares) {
    const int menCount = view.entry.menCount;
    for (int i = view.entry.pawnsLeading; i < menCount;) {
        const int code = slice.list.men[i];
        int end = i + 1;
        while (end < menCount && slice.list.men[end] == code) ++end;
        if (!placeMen(pos, view, code, squares + i, end - i)) return -1;
        i = end;
    }
    tbHits.add(1);
    return tbRawValue(slice, tbPositionNumber(slice.list, view.entry.shape(), squares));
}

// The table numbers only squares on which pawns can stand.
bool hasBackRankPawns(const Position& pos) {
    return (pos.pieces[White][Pawn] | pos.pieces[Black][Pawn]) & (Rank1 | Rank8);
}

int fail(int* success) {
    *success = 0;
    return 0;
}

// The stored result. `success` is cleared on failure, and otherwise left as it is.
int tbWdlTable(const Position& pos, int* success) {
    if (pos.matKeyPlain == 0) return 0;  // bare kings
    TbEntry* const entry = tbTableFor(pos, TbWdl);
    if (!entry || hasBackRankPawns(pos)) return fail(success);
    const TbView view(pos, *entry);
    int squares[MaxTableMen] = {};
    const int file = leadingFile(pos, view, tbSlicesOf(*entry, 0).wdl[0].list.men[0], squares);
    const int raw = rawValue(pos, view, tbSlicesOf(*entry, file).wdl[view.side], squares);
    return raw < 0 ? fail(success) : raw - 2;
}

// The value that a raw distance stands for in the map of the position's result, or -1.
int mappedDistance(const TbEntry& entry, const TbFileSlices& slices, int wdl, int raw) {
    constexpr int listOfWdl[5] = {1, 3, 0, 2, 0};  // clean win, clean loss, cursed win, blessed loss
    const std::uint8_t* at = entry.mappedData[TbDtz] + slices.dtzMap;
    const bool wide = slices.dtz.flags & TbWideMap;
    const auto read = [wide](const std::uint8_t* from) { return int(wide ? readWord16(from) : *from); };
    const int width = wide ? 2 : 1;
    for (int list = listOfWdl[wdl + 2]; list > 0; --list) at += width * (1 + read(at));
    return raw < read(at) ? read(at + width * (1 + raw)) : -1;
}

// Plies to the zeroing move, from 0, of a position whose result is known and no draw. `success` becomes -1 if
// the table holds only the other side to move, 0 on failure, and is otherwise left as it is.
int tbDtzTable(const Position& pos, int wdl, int* success) {
    TbEntry* const entry = tbTableFor(pos, TbDtz);
    if (!entry || hasBackRankPawns(pos)) return fail(success);
    const TbView view(pos, *entry);
    int squares[MaxTableMen] = {};
    const int file = leadingFile(pos, view, tbSlicesOf(*entry, 0).dtz.list.men[0], squares);
    const TbFileSlices& slices = tbSlicesOf(*entry, file);
    const int flags = slices.dtz.flags;
    const bool eitherSide = entry->symmetric && !entry->hasPawns;
    if (!eitherSide && ((flags & TbSideToMove) != 0) != (view.side == 1)) {
        if (entry->symmetric)
            return fail(success);  // both sides are one here, so the other is not stored either
        *success = -1;
        return 0;
    }
    int distance = rawValue(pos, view, slices.dtz, squares);
    if (distance >= 0 && flags & TbMapped) distance = mappedDistance(*entry, slices, wdl, distance);
    if (distance < 0) return fail(success);
    const bool inMoves = wdl == 2 ? !(flags & TbWinPlies) : wdl == -2 ? !(flags & TbLossPlies) : true;
    return inMoves ? 2 * distance : distance;
}

// The best of the table's value and of all captures, as far down as they go. Only after a capture, so that
// there is no en passant. 0 with `success` 0 on failure.
int tbAlphaBetaCaptures(const Position& pos, int alpha, int beta, int* success) {
    Move list[MaxListMoves];
    Position child;
    const int count = listCaptures(pos, list);
    for (int i = 0; i < count; ++i) {
        if (!makeChild(pos, child, list[i])) continue;
        const int value = -tbAlphaBetaCaptures(child, -beta, -alpha, success);
        if (*success == 0) return 0;
        if (value <= alpha) continue;
        if (value >= beta) return value;
        alpha = value;
    }
    const int value = tbWdlTable(pos, success);
    return *success == 0 ? 0 : std::max(alpha, value);
}

// Whether any move but an en-passant capture is legal.
bool hasOrdinaryMove(const Position& pos) {
    Move list[MaxListMoves];
    Position child;
    const int count = genAllMoves(pos, list);
    return std::any_of(list, list + count,
                       [&](Move move) { return !isEnPassant(move) && makeChild(pos, child, move); });
}

// Whether a pawn move that captures nothing keeps a win. `success` is 0 on failure.
bool winsByPawnMove(const Position& pos, const Move* list, int count, int wdl, int* success) {
    Position child;
    for (int i = 0; i < count; ++i) {
        if (!isPawnMove(pos, list[i]) || isCapture(pos, list[i])) continue;
        if (!makeChild(pos, child, list[i])) continue;
        const int value = tbProbeWdl(child, success);
        if (*success == 0) return false;
        if (value == -wdl) return true;
    }
    return false;
}

// The distance by the moves that zero nothing, for a table that holds the other side to move. Zeroing moves
// need no look: none wins, or the distance would be known, and for a loser they are the starting value.
int distanceByMoves(const Position& pos, const Move* list, int count, int wdl, int* success) {
    Position child;
    int best = wdl > 0 ? NoDistance : wdlToDtz[wdl + 2];
    for (int i = 0; i < count; ++i) {
        if (isPawnMove(pos, list[i]) || isCapture(pos, list[i])) continue;
        if (!makeChild(pos, child, list[i])) continue;
        const int value = tbProbeDtz(child, success);
        if (*success == 0) return 0;
        if (wdl < 0) {
            best = std::min(best, -value - 1);
        } else if (value < 0) {
            const bool mates = value == -1 && isInCheck(child) && !hasOrdinaryMove(child);
            best = std::min(best, mates ? 1 : 1 - value);
        }
    }
    if (best == NoDistance) return fail(success);  // no move keeps the win: the tables contradict each other
    *success = 1;
    return best;
}

}  // namespace

int tbProbeWdl(Position& pos, int* success) {
    *success = 1;
    const int stored = tbWdlTable(pos, success);
    if (*success == 0) return 0;
    Move list[MaxListMoves];
    Position child;
    int best = NoWdl, bestEnPassant = NoWdl;
    const int count = listCaptures(pos, list);
    for (int i = 0; i < count; ++i) {
        if (!makeChild(pos, child, list[i])) continue;
        const int value = -tbAlphaBetaCaptures(child, -2, -best, success);
        if (*success == 0) return 0;
        if (value <= best) continue;
        if (value == 2) {
            *success = 2;
            return 2;
        }
        if (!isEnPassant(list[i]))
            best = value;
        else
            bestEnPassant = std::max(bestEnPassant, value);
    }
    if (bestEnPassant > best && bestEnPassant > stored) {
        *success = 2;
        return bestEnPassant;
    }
    best = std::max(best, bestEnPassant);
    if (best >= stored) {
        *success = best > 0 ? 2 : 1;
        return best;
    }
    if (stored != 0 || bestEnPassant == NoWdl) return stored;
    // The table calls this a draw, and may do so because it sees a stalemate where en passant is the only
    // move.
    if (hasOrdinaryMove(pos)) return stored;
    *success = 2;
    return bestEnPassant;
}

int tbProbeDtz(Position& pos, int* success) {
    const int wdl = tbProbeWdl(pos, success);
    if (*success == 0 || wdl == 0) return 0;
    const int zeroing = wdlToDtz[wdl + 2];
    if (*success == 2) return zeroing;
    Move list[MaxListMoves];
    const int count = genAllMoves(pos, list);
    if (wdl > 0) {
        if (winsByPawnMove(pos, list, count, wdl, success)) {
            *success = 1;
            return zeroing;
        }
        if (*success == 0) return 0;
        *success = 1;
    }
    const int distance = tbDtzTable(pos, wdl, success);
    if (*success == 0) return 0;
    if (*success > 0) return wdl > 0 ? zeroing + distance : zeroing - distance;
    return distanceByMoves(pos, list, count, wdl, success);
}

bool probeSearchTablebase(Position& pos, int ply, int* score) {
    if (pos.castleLost != NoCastlingRights) return false;  // tables know no castling
    int success;
    const int wdl = tbProbeWdl(pos, &success);
    if (success == 0) return false;
    // Results that the fifty-move rule turns into draws count for a trifle while the rule holds, in full
    // otherwise.
    const int clean = settings.syzygy50MoveRule ? 2 : 1;
    *score = wdl >= clean ? MateBound - ply : wdl <= -clean ? ply - MateBound : 2 * wdl;
    return true;
}
