// The quiescence search: captures, promotions and, for one ply, checks, until the static score can be
// trusted. It serves zero and full windows and tells them apart by their width.
#include "board/draws.h"
#include "board/exchange.h"
#include "board/legality.h"
#include "board/make_move.h"
#include "board/move_picker.h"
#include "eval/parameters.h"
#include "search/node.h"

#include <algorithm>

namespace {

// One node. The constructor leaves the arrays unwritten.
struct QuiescenceNode : NodeFrame {
    const int firstAlpha;  // as it was passed in
    int alpha;
    const int qDepth;  // 0, then falling by two a ply
    Move hashMove = NoMove;
    bool withChecks = false;
    int stand = 0;      // score without a move, 0 in check
    int count = 0;      // moves made; standing pat counts as one
    int margin = 0;     // of captures, centipawns
    int gainFloor = 0;  // what captures that gain nothing are worth at most
    Position child;     // written by makeMove alone
    MovePicker picker;
    Move childPv[2];

    QuiescenceNode(Position& position, int lower, int upper, int halfPlies, int rootDistance, Move* line)
        : NodeFrame(position, upper, rootDistance, line),
          firstAlpha(lower),
          alpha(lower),
          qDepth(halfPlies) {}

    bool hasZeroWindow() const { return alpha == beta - 1; }
};

inline bool enterNode(QuiescenceNode& node) {
    node.pv[0] = NoMove;
    if (isStopped(node.pos) || stopsNow(node.pos)) return node.endWith(0);
    if (mateDistancePruning(node.alpha, node.beta, node.ply)) return node.endWith(node.alpha);
    return node.ply >= MaxPly && node.endWith(scoreAtLastPly(node.pos));
}

// Depths under which results are kept: with checks, and those of all later plies.
constexpr int FirstTableDepth = 0, LaterTableDepth = -2;

// A shallow entry still gives its move, and its score for standing pat.
inline bool tableCutoff(QuiescenceNode& node, const TableView& table) {
    node.hashMove = table.move;
    const int neededDepth = node.qDepth > -OnePly ? FirstTableDepth : LaterTableDepth;
    if (!table.hit || table.depth < neededDepth) return false;
    if (table.bound == ExactBound || table.provesAtLeast(node.beta) || table.provesAtMost(node.alpha))
        return node.endWith(table.score);
    return false;
}

inline bool standPat(QuiescenceNode& node, const TableView& table) {
    constexpr int LazyMargin = 164, HopelessMargin = 1200;  // centipawns
    constexpr int LastQDepth = -60;
    constexpr int TrustedPly = 5;  // from here on the table is believed in the principal variation too
    const bool zeroWindow = node.hasZeroWindow();
    const int eval = zeroWindow ? evaluate(node.pos, node.alpha - LazyMargin, node.beta + LazyMargin)
                                : evaluate(node.pos, -OpenEvalBound, OpenEvalBound);
    node.pos.staticEval = eval;
    const bool trustsTable = table.hit && (node.ply >= TrustedPly || zeroWindow);
    node.stand = trustsTable ? estimateFrom(table, eval) : eval;
    // Intended: a hopeless node answers with the bound and not with its score.
    if (node.stand < node.alpha - HopelessMargin) return node.endWith(node.alpha);
    if (node.qDepth <= LastQDepth || node.stand >= node.beta) return node.endWith(node.stand);
    node.alpha = std::max(node.alpha, node.stand);
    node.best = node.stand;
    node.count = 1;
    return false;
}

inline void setUpMoves(QuiescenceNode& node) {
    // In centipawns.
    constexpr int QuietChecksMargin = 75;   // farther below the window only the queen's checks are tried
    constexpr int OpenWindowMargin = 50;    // of captures in the principal variation
    constexpr int EqualCaptureMargin = 60;  // what a capture that gains nothing may still bring
    PickerKind kind = KindEvasions;
    if (!node.pos.inCheck) {
        node.withChecks = node.qDepth == 0;
        kind = KindQuiescence;
        if (node.withChecks)
            kind = node.stand > node.alpha - QuietChecksMargin ? KindQuiescenceChecks
                                                               : KindQuiescenceQueenChecks;
    }
    node.picker.start(node.pos, kind, node.qDepth, node.hashMove);
    node.margin = node.hasZeroWindow() ? 0 : OpenWindowMargin;
    node.gainFloor = node.stand + node.margin + EqualCaptureMargin;
}

// The opponent's last pawn, or one about to promote, is worth more than its price.
inline bool takesPreciousPawn(const QuiescenceNode& node, Move move, int victim) {
    constexpr int SecondRank = 1;  // the seventh of the opponent
    if (victim != Pawn) return false;
    return !severalBits(node.pos.pieces[opponent(node.us)][Pawn]) ||
           relativeRank(node.us, toOf(move)) <= SecondRank;
}

enum class DeltaVerdict { Pruned, Kept, Unsettled };

// Delta pruning: what a move captures, with a margin, can't lift the score to the window; or the window can't
// be reached without gaining material, and the exchange gains none. What is passed over still gives the node
// a bound.
inline DeltaVerdict deltaPruning(QuiescenceNode& node, Move move) {
    constexpr int LeastGain = 1;  // half pawns
    const Position& pos = node.pos;
    const int victim = isEnPassant(move)      ? int(Pawn)
                       : isCapture(pos, move) ? typeOfCode(pos.board[toOf(move)])
                                              : 0;
    const bool precious = takesPreciousPawn(node, move, victim);
    const int reach = PhasePieceValue[node.phase][victim] + node.margin + node.stand;
    if (reach < node.alpha && !precious) {
        node.best = std::max(node.best, reach);
        return DeltaVerdict::Pruned;
    }
    if (node.alpha <= node.gainFloor || isEnPassant(move) || victim == NoPiece)
        return DeltaVerdict::Unsettled;
    if (precious || !seeThreatBelow(pos, move, LeastGain)) return DeltaVerdict::Kept;
    node.best = std::max(node.best, node.gainFloor);
    return DeltaVerdict::Pruned;
}

// Out of check: whether a move that isn't the hash move can't lift the score to the window, or loses
// material.
inline bool pruneMove(QuiescenceNode& node, Move move) {
    const Position& pos = node.pos;
    const bool forcing = (node.withChecks && givesCheckQuick(pos, move)) || flagOf(move) == QueenPromotion;
    const DeltaVerdict verdict = forcing ? DeltaVerdict::Unsettled : deltaPruning(node, move);
    if (verdict != DeltaVerdict::Unsettled) return verdict == DeltaVerdict::Pruned;
    return node.picker.stage != StageHash && node.picker.stage != StageDeferred && seeLosing(pos, move);
}

// In check: quiet evasions that were put off, and a losing one from the table.
inline bool skipEvasion(const QuiescenceNode& node, Move move) {
    if ((move & QuietFlagMask) || node.best < DeepestMate || isCapture(node.pos, move)) return false;
    return node.picker.stage == StageDeferred || (move == node.hashMove && seeLosing(node.pos, move));
}

inline bool skipMove(QuiescenceNode& node, Move move) {
    constexpr int RecapturesOnly = -16;  // below this depth
    if (isUnderPromotion(move)) return true;
    if (node.pos.inCheck) return skipEvasion(node, move);
    if (move != node.hashMove && pruneMove(node, move)) return true;
    return node.qDepth < RecapturesOnly && toOf(move) != toOf(node.pos.lastMove);
}

// Whether a quiet move that was made leads nowhere after all.
inline bool isIdle(const QuiescenceNode& node, Move move) {
    if (node.pos.inCheck || node.child.inCheck) return false;
    if (move == node.hashMove && node.withChecks) return false;
    return !(isPawnMove(node.pos, move) && landingRank(node.pos, move) == SeventhRank);
}

// True on a fail high.
inline bool noteScore(QuiescenceNode& node, Move move, int score, bool drawn) {
    if (score <= node.best) return false;
    node.best = score;
    node.drawn = drawn;
    if (score <= node.alpha) return false;
    node.pv[0] = move;
    node.pv[1] = NoMove;
    node.alpha = score;
    return score >= node.beta;
}

inline int finishNode(QuiescenceNode& node) {
    const Position& pos = node.pos;
    const int depth = node.qDepth < 0 ? LaterTableDepth : FirstTableDepth;
    const int score = node.count > 0 ? node.best : node.scoreWithoutMoves();
    if (node.drawn) return score;
    if (node.count == 0)
        writeTable(pos.key, depth, score, ExactBound, NoMove, RankAll, node.ply);
    else
        writeResult(pos.key, depth, score, node.firstAlpha, node.beta, node.pv[0], node.ply);
    return score;
}

}  // namespace

int searchQuiescence(Position& pos, int alpha, int beta, int qDepth, int ply, Move* pv) {
    QuiescenceNode node(pos, alpha, beta, qDepth, ply, pv);
    if (enterNode(node)) return node.result;
    const TableView table = readTable(pos.key, ply);
    if (tableCutoff(node, table)) return node.result;
    if (!pos.inCheck && standPat(node, table)) return node.result;
    setUpMoves(node);
    while (const Move move = nextQuiescenceMove(&node.picker)) {
        if (skipMove(node, move)) continue;
        if (!makeMove(&pos, &node.child, move)) continue;
        markCheck(node.child);
        ++node.count;
        const bool tactical = isTactical(pos, move);
        // Intended: one repetition is enough at every ply.
        const bool drawn = !tactical && isDrawnByRule(pos, node.child, false);
        int score = DrawScore;
        if (!drawn) {
            if (!tactical && isIdle(node, move)) continue;
            score = -searchQuiescence(node.child, -node.beta, -node.alpha, qDepth - OnePly, ply + 1,
                                      node.childPv);
            if (isStopped(pos)) return 0;
        }
        if (noteScore(node, move, score, drawn)) break;
    }
    if (isStopped(pos)) return 0;
    return finishNode(node);
}
