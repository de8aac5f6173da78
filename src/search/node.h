// What the searches' nodes have in common: reading the table, draws by rule, the ends of a line, and the
// questions about moves that several of them ask. Scores from the side to move's view, depths in half plies.
#pragma once

#include "board/attacks.h"
#include "board/bitboard.h"
#include "board/position.h"
#include "board/settings.h"
#include "endgame/tb_probe.h"
#include "eval/evaluate.h"
#include "eval/parameters.h"
#include "search/limits.h"
#include "search/search.h"
#include "search/search_thread.h"
#include "search/thread_pool.h"
#include "search/time_manager.h"
#include "search/trans_table.h"

#include <algorithm>

inline constexpr int OnePly = 2;                // half plies
inline constexpr int FirstFullDepth = 2;        // below it a node belongs to the quiescence search
inline constexpr Move QuietFlagMask = 0x6000;   // set in castling, en passant and promotions
inline constexpr int DeepestMate = -MateBound;  // best above it: some move avoids being mated
inline constexpr int DecidedScore = 3900;       // beyond it a hash score is no yardstick for singularity

// What a move is, as sets of tried moves and rules tell moves apart.
enum MoveKind : int {
    MoveTactical = 1,  // capture, en passant or promotion
    MoveCheck = 2,     // gives check
    MoveEvasion = 4,   // answers a check
};

// ---- Entry ----

// Narrows the window to what mates at this ply allow. True if nothing is left of it; `alpha` is then the
// score.
inline bool clipToMates(int& alpha, int& beta, int ply) {
    alpha = std::max(alpha, ply - MateScore);
    beta = std::min(beta, MateScore - 1 - ply);
    return beta <= alpha;
}

// Only thread 0 polls; the others learn of a stop through their flag, but for the limit of nodes.
inline bool stopsNow(const Position& pos) {
    return pos.threadIndex == 0 ? periodicCheck() : workerCheck(pos);
}

// The score where lines may grow no longer.
inline int scoreAtLastPly(Position& pos) {
    return pos.inCheck ? 0 : evaluate(pos, -OpenEvalBound, OpenEvalBound);
}

// An entry of the transposition table as seen from a ply; all zero if there is none.
struct TableView {
    bool hit = false;
    bool terminal = false;
    int score = 0;
    int depth = 0;
    int bound = 0;
    Move move = NoMove;

    // Whether the score settles a comparison with `beta`.
    bool provesAtLeast(int beta) const { return score >= beta && (bound & LowerBound); }
    bool provesAtMost(int alpha) const { return score <= alpha && (bound & UpperBound); }
};

inline TableView readTable(Key key, int ply) {
    TransData data;
    if (!transTable.probe(key, data)) return {};
    return {true,         data.terminal(), scoreFromTable(data.score(), ply),
            data.depth(), data.bound(),    data.move()};
}

// After a search of the same node: what it has stored. Without an entry the old view keeps all but its move.
inline void rereadTable(TableView& view, Key key, int ply) {
    const TableView now = readTable(key, ply);
    if (now.hit)
        view = now;
    else
        view.move = NoMove;
}

inline void writeTable(Key key, int depth, int score, int flags, Move move, int nodeRank, int ply) {
    transTable.store(key, depth, scoreToTable(score, ply), flags, move, nodeRank);
}

// Stores the result of a node whose window reached from `firstAlpha` to `beta`; a score at its lower end or
// below proves no move.
inline void writeResult(Key key, int depth, int score, int firstAlpha, int beta, Move move, int ply) {
    if (score >= beta)
        writeTable(key, depth, score, LowerBound, move, RankCut, ply);
    else if (score > firstAlpha)
        writeTable(key, depth, score, ExactBound, move, RankPv, ply);
    else
        writeTable(key, depth, score, UpperBound, NoMove, RankAll, ply);
}

// A static score, drawn towards what the table knows of the position.
inline int estimateFrom(const TableView& table, int eval) {
    if (table.bound == ExactBound) return table.score;
    if ((table.bound & LowerBound) && table.score > eval) return table.score;
    if ((table.bound & UpperBound) && table.score < eval) return table.score;
    return eval;
}

// True if endgame tables know the position and are worth asking at this depth. The score becomes the static
// one.
inline bool tablebaseScore(Position& pos, int depth, int ply, int& score) {
    const int men = int(pos.pieceCount);
    if (men > tbPieceLimit || ply < 2) return false;
    const bool smart = depth >= 3 && settings.smartSyzygy && men < tbPieceLimit;
    if (!smart && depth < settings.syzygyProbeDepth) return false;
    if (!probeSearchTablebase(pos, ply, &score)) return false;
    pos.staticEval = score;
    return true;
}

// Whether the static score has risen since the same side's last turn, or nothing is known of that.
inline bool isImproving(const Position& pos, int ply, int eval) {
    if (ply < 2 || !pos.prev || !pos.prev->prev) return true;
    const int before = pos.prev->prev->staticEval;
    return before == NoScore || before - 10 <= eval;
}

// ---- The ply before; a record from a FEN has none ----

inline Move previousLastMove(const Position& pos) { return pos.prev ? pos.prev->lastMove : NoMove; }
inline int previousMoveStat(const Position& pos) { return pos.prev ? pos.prev->moveStat : 0; }
inline int previousReduction(const Position& pos) { return pos.prev ? pos.prev->singularMark : 0; }
inline bool previousInCheck(const Position& pos) { return pos.prev && pos.prev->inCheck; }

inline constexpr int StatPerHalfPly = 9600;  // of a quiet move's stat, for one off its reduction

// What a quiet move's stat adds to its reduction beside the last stat that the node before has noted: a line
// that turns for the worse is reduced more, one that turns for the better less. Not in the tree search.
inline int reductionByTurn(const Position& pos, int stat) {
    if (treeSearchActive) return 0;
    const int before = previousMoveStat(pos);
    if (stat < 0 && before >= 0) return OnePly;
    if (stat >= 0 && before < 0) return -OnePly;
    return 0;
}

// ---- Moves, before they are made ----

inline bool hasOnlyPawns(const Position& pos, Colour us) {
    return pos.pieces[us][AllPieces] == (pos.pieces[us][Pawn] | pos.pieces[us][King]);
}

inline bool isCapture(const Position& pos, Move move) {  // en passant apart
    return pos.pieces[opponent(pos.sideToMove())][AllPieces] & bit(toOf(move));
}
inline bool isTactical(const Position& pos, Move move) {
    return isPromotion(move) || isEnPassant(move) || isCapture(pos, move);
}
inline int movedTypeOf(const Position& pos, Move move) { return typeOfCode(pos.board[fromOf(move)]); }
inline bool isPawnMove(const Position& pos, Move move) { return movedTypeOf(pos, move) == Pawn; }

// A piece that could have been chased away: neither pawn nor king.
inline bool movesOfficer(const Position& pos, Move move) {
    const int type = movedTypeOf(pos, move);
    return type != Pawn && type != King;
}

inline int landingRank(const Position& pos, Move move) { return relativeRank(pos.sideToMove(), toOf(move)); }

// A pawn move to the mover's sixth rank or beyond.
inline bool isFarPawnMove(const Position& pos, Move move) {
    return isPawnMove(pos, move) && landingRank(pos, move) >= 5;
}
// The same short of promotion.
inline bool isAdvancedPawnMove(const Position& pos, Move move) {
    return isPawnMove(pos, move) && (landingRank(pos, move) == 5 || landingRank(pos, move) == 6);
}

// The squares ahead of enemy pawns, as those see it, and beside these: no pawn of ours is passed there.
inline Bitboard enemyPawnSpans(const Position& pos) {
    const Colour us = pos.sideToMove();
    const Bitboard pawns = pos.pieces[opponent(us)][Pawn];
    const Bitboard spans =
        us == White ? fillAhead<Black>(pawnPushes<Black>(pawns)) : fillAhead<White>(pawnPushes<White>(pawns));
    return spans | besides(spans);
}

// Under-promotions are worth half the depth.
inline int depthOfMove(Move move, int depth) { return isUnderPromotion(move) ? depth / 4 * 2 : depth; }

// ---- Children ----

inline bool markCheck(Position& child) {
    child.inCheck = isInCheck(child);
    return child.inCheck;
}

// Draw by rule of a child that was just made by a move that doesn't capture or promote.
inline bool isDrawnByRule(const Position& pos, const Position& child, bool needsTwoRepetitions) {
    const int clock = child.halfmoveClock;
    if (clock < 4) return false;
    if (clock > 99 && drawnByClock(child)) return true;
    return needsTwoRepetitions ? repeatedTwice(&pos, child.key, clock) : repeatedOnce(&pos, child.key, clock);
}

// Intended: a first repetition counts as a draw everywhere in the tree but for the moves tried at ply 1.
inline bool needsTwoRepetitions(int ply) { return ply == 1; }

// A move and the line behind it, in rows of PvLength words.
inline void writeLine(Move* pv, Move move, const Move* rest) {
    pv[0] = move;
    int length = 1;
    while (length < PvLength - 1 && (pv[length] = rest[length - 1]) != NoMove) ++length;
    pv[length] = NoMove;
}
