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

TbSearch tbSearch;

void TbSearch::begin(int pieceLimit) {
    tbPieceLimit = pieceLimit;
    tbRootScore = NoTbScore;
    tbHits = std::uint64_t{0};
}

void TbSearch::decideRoot(int score) {
    tbRootScore = score;
    tbPieceLimit = 0;
}

namespace {

constexpr Wdl NoWdl = Wdl(WdlLoss - 1);  // below every result
constexpr int NoDistance = 0x7fffffff;

// What a DTZ table says of a position. It stores one side to move alone.
enum class DtzState { Failed, Found, OtherSideOnly };
struct DtzLookup {
    DtzState state;
    int plies = 0;  // to the zeroing move, from 0; only if found
};

// The child's check flag is left unset: only castling and evasions ask for it, and positions with castling
// rights aren't probed.
bool makeChild(const Position& pos, Position& child, Move move) {
    return makeMove(&pos, &child, cleanMove(move));
}

// The moves that zero the counter are captures, en passant among them, and pawn moves that capture nothing.
bool isCaptureOrEnPassant(const Position& pos, Move move) {
    return isEnPassant(move) || (pos.board[toOf(move)] && !isCastling(move));
}
bool isQuietPawnMove(const Position& pos, Move move) {
    return typeOfCode(pos.board[fromOf(move)]) == Pawn && !isCaptureOrEnPassant(pos, move);
}
bool isZeroing(const Position& pos, Move move) {
    return isCaptureOrEnPassant(pos, move) || isQuietPawnMove(pos, move);
}

// All captures, promoting ones with each piece, in the order of the full generator. Most positions of so few
// men have none, which the attack map tells at once.
int listCaptures(const Position& pos, Move* list) {
    const Colour us = pos.sideToMove();
    if (!pos.epMask && !(attackedBy(pos, us) & pos.pieces[opponent(us)][AllPieces])) return 0;
    const int count = genAllMoves(pos, list);
    const Move* const end =
        std::remove_if(list, list + count, [&pos](Move move) { return !isCaptureOrEnPassant(pos, move); });
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
    tbSearch.countHit();
    return tbRawValue(slice, tbPositionNumber(slice.list, view.entry.shape(), squares));
}

// The table numbers only squares on which pawns can stand.
bool hasBackRankPawns(const Position& pos) {
    return (pos.pieces[White][Pawn] | pos.pieces[Black][Pawn]) & (Rank1 | Rank8);
}

// The stored result; nothing if there is none.
std::optional<Wdl> tbWdlTable(const Position& pos) {
    if (pos.matKeyPlain == 0) return WdlDraw;  // bare kings
    TbEntry* const entry = tbTableFor(pos, TbWdl);
    if (!entry || hasBackRankPawns(pos)) return std::nullopt;
    const TbView view(pos, *entry);
    int squares[MaxTableMen] = {};
    const int file = leadingFile(pos, view, tbSlicesOf(*entry, 0).wdl[0].list.men[0], squares);
    const int raw = rawValue(pos, view, tbSlicesOf(*entry, file).wdl[view.side], squares);
    if (raw < 0) return std::nullopt;
    return Wdl(raw + WdlLoss);
}

// The value that a raw distance stands for in the map of the position's result, or -1.
int mappedDistance(const TbEntry& entry, const TbFileSlices& slices, Wdl wdl, int raw) {
    constexpr int ListOfWdl[5] = {1, 3, 0, 2, 0};  // clean win, clean loss, cursed win, blessed loss
    const std::uint8_t* at = entry.mappedData[TbDtz] + slices.dtzMap;
    const bool wide = slices.dtz.flags & TbWideMap;
    const auto read = [wide](const std::uint8_t* from) { return int(wide ? readWord16(from) : *from); };
    const int width = wide ? 2 : 1;
    for (int list = ListOfWdl[indexOfWdl(wdl)]; list > 0; --list) at += width * (1 + read(at));
    return raw < read(at) ? read(at + width * (1 + raw)) : -1;
}

// The stored distance of a position whose result is known and no draw.
DtzLookup tbDtzTable(const Position& pos, Wdl wdl) {
    TbEntry* const entry = tbTableFor(pos, TbDtz);
    if (!entry || hasBackRankPawns(pos)) return {DtzState::Failed};
    const TbView view(pos, *entry);
    int squares[MaxTableMen] = {};
    const int file = leadingFile(pos, view, tbSlicesOf(*entry, 0).dtz.list.men[0], squares);
    const TbFileSlices& slices = tbSlicesOf(*entry, file);
    const int flags = slices.dtz.flags;
    const bool eitherSide = entry->symmetric && !entry->hasPawns;
    if (!eitherSide && ((flags & TbSideToMove) != 0) != (view.side == 1)) {
        // In a symmetric table both sides are one, so that the other is not stored either.
        return {entry->symmetric ? DtzState::Failed : DtzState::OtherSideOnly};
    }
    int distance = rawValue(pos, view, slices.dtz, squares);
    if (distance >= 0 && flags & TbMapped) distance = mappedDistance(*entry, slices, wdl, distance);
    if (distance < 0) return {DtzState::Failed};
    const bool inMoves = wdl == WdlWin    ? !(flags & TbWinPlies)
                         : wdl == WdlLoss ? !(flags & TbLossPlies)
                                          : true;
    return {DtzState::Found, inMoves ? 2 * distance : distance};
}

// The best of the table's value and of all captures, as far down as they go; nothing on failure. Only after a
// capture, so that there is no en passant.
std::optional<Wdl> tbAlphaBetaCaptures(const Position& pos, Wdl alpha, Wdl beta) {
    Move list[MaxListMoves];
    Position child;
    const int count = listCaptures(pos, list);
    for (int i = 0; i < count; ++i) {
        if (!makeChild(pos, child, list[i])) continue;
        const std::optional<Wdl> reply = tbAlphaBetaCaptures(child, -beta, -alpha);
        if (!reply) return std::nullopt;
        const Wdl value = -*reply;
        if (value <= alpha) continue;
        if (value >= beta) return value;
        alpha = value;
    }
    const std::optional<Wdl> stored = tbWdlTable(pos);
    return stored ? std::max(alpha, *stored) : stored;
}

// Whether any move but an en-passant capture is legal.
bool hasOrdinaryMove(const Position& pos) {
    Move list[MaxListMoves];
    Position child;
    const int count = genAllMoves(pos, list);
    return std::any_of(list, list + count,
                       [&](Move move) { return !isEnPassant(move) && makeChild(pos, child, move); });
}

// Whether a pawn move that captures nothing keeps a win; nothing on failure.
std::optional<bool> winsByPawnMove(const Position& pos, const Move* list, int count, Wdl wdl) {
    Position child;
    for (int i = 0; i < count; ++i) {
        if (!isQuietPawnMove(pos, list[i]) || !makeChild(pos, child, list[i])) continue;
        const WdlProbe reply = tbProbeWdl(child);
        if (reply.state == ProbeState::Failed) return std::nullopt;
        if (reply.value == -wdl) return true;
    }
    return false;
}

// The distance by the moves that zero nothing, for a table that holds the other side to move; nothing on
// failure. Zeroing moves need no look: none wins, or the distance would be known, and for a loser they are
// the starting value.
std::optional<int> distanceByMoves(const Position& pos, const Move* list, int count, Wdl wdl) {
    Position child;
    int best = wdl > WdlDraw ? NoDistance : wdlToDtz[indexOfWdl(wdl)];
    for (int i = 0; i < count; ++i) {
        if (isZeroing(pos, list[i]) || !makeChild(pos, child, list[i])) continue;
        const std::optional<int> reply = tbProbeDtz(child);
        if (!reply) return std::nullopt;
        if (wdl < WdlDraw) {
            best = std::min(best, -*reply - 1);
        } else if (*reply < 0) {
            const bool mates = *reply == -1 && isInCheck(child) && !hasOrdinaryMove(child);
            best = std::min(best, mates ? 1 : 1 - *reply);
        }
    }
    if (best == NoDistance) return std::nullopt;  // no move keeps the win: the tables contradict each other
    return best;
}

}  // namespace

WdlProbe tbProbeWdl(const Position& pos) {
    const std::optional<Wdl> lookup = tbWdlTable(pos);
    if (!lookup) return {ProbeState::Failed};
    const Wdl stored = *lookup;
    Move list[MaxListMoves];
    Position child;
    Wdl best = NoWdl, bestEnPassant = NoWdl;
    const int count = listCaptures(pos, list);
    for (int i = 0; i < count; ++i) {
        if (!makeChild(pos, child, list[i])) continue;
        const std::optional<Wdl> reply = tbAlphaBetaCaptures(child, -WdlWin, -best);
        if (!reply) return {ProbeState::Failed};
        const Wdl value = -*reply;
        if (value <= best) continue;
        if (value == WdlWin) return {ProbeState::FoundByCapture, WdlWin};
        if (!isEnPassant(list[i]))
            best = value;
        else
            bestEnPassant = std::max(bestEnPassant, value);
    }
    if (bestEnPassant > best && bestEnPassant > stored) return {ProbeState::FoundByCapture, bestEnPassant};
    best = std::max(best, bestEnPassant);
    if (best >= stored) return {best > WdlDraw ? ProbeState::FoundByCapture : ProbeState::Found, best};
    if (stored != WdlDraw || bestEnPassant == NoWdl) return {ProbeState::Found, stored};
    // The table calls this a draw, and may do so because it sees a stalemate where en passant is the only
    // move.
    if (hasOrdinaryMove(pos)) return {ProbeState::Found, stored};
    return {ProbeState::FoundByCapture, bestEnPassant};
}

std::optional<int> tbProbeDtz(const Position& pos) {
    const WdlProbe result = tbProbeWdl(pos);
    if (result.state == ProbeState::Failed) return std::nullopt;
    const Wdl wdl = result.value;
    if (wdl == WdlDraw) return 0;
    const int zeroing = wdlToDtz[indexOfWdl(wdl)];
    if (result.state == ProbeState::FoundByCapture) return zeroing;
    Move list[MaxListMoves];
    const int count = genAllMoves(pos, list);
    if (wdl > WdlDraw) {
        const std::optional<bool> wins = winsByPawnMove(pos, list, count, wdl);
        if (!wins) return std::nullopt;
        if (*wins) return zeroing;
    }
    const DtzLookup stored = tbDtzTable(pos, wdl);
    if (stored.state == DtzState::Failed) return std::nullopt;
    if (stored.state == DtzState::OtherSideOnly) return distanceByMoves(pos, list, count, wdl);
    return wdl > WdlDraw ? zeroing + stored.plies : zeroing - stored.plies;
}

std::optional<int> probeSearchTablebase(const Position& pos, int ply) {
    if (pos.castleLost != NoCastlingRights) return std::nullopt;  // tables know no castling
    const WdlProbe probe = tbProbeWdl(pos);
    if (probe.state == ProbeState::Failed) return std::nullopt;
    // Results that the fifty-move rule turns into draws count for a trifle while the rule holds, in full
    // otherwise.
    const Wdl leastWin = settings.syzygy50MoveRule ? WdlWin : WdlCursedWin;
    if (probe.value >= leastWin) return MateBound - ply;
    if (probe.value <= -leastWin) return ply - MateBound;
    return 2 * probe.value;
}
