// The node of the zero-window search and the steps that come before its moves: the table, endgame tables, the
// static score, pruning without a move, internal deepening, and the set-up of the move loop.
#pragma once

#include "board/exchange.h"
#include "board/geometry.h"
#include "board/make_move.h"
#include "board/move_picker.h"
#include "board/sliders.h"
#include "board/zobrist.h"
#include "eval/parameters.h"
#include "search/history.h"
#include "search/node.h"
#include "search/search.h"

#include <algorithm>
#include <cstdlib>

// One node with the window (beta - 1, beta). The constructor leaves the arrays unwritten.
struct ZeroWindowNode {
    Position& pos;
    SearchThread& thread;
    const Colour us;
    int beta;
    int depth;  // half plies; pruning and the null move may change it for all that follows
    const int ply;
    Move* const pv;
    const Move excluded;  // not to be tried, 0 for none
    const bool noNull, cutNode;
    const int phase;
    const KillerRow killers;  // as they stood at entry
    Key key = 0;              // differs from the position's if a move is excluded
    TableView table;
    bool noHashMove = true;
    bool singularCandidate = false;  // the hash move may be better than all others together
    bool improving = true;
    bool floorSet = false;  // `best` began as a made-up bound and not as no score
    bool drawn = false;     // the best score is a draw by rule, which the table must not learn
    bool hasCutoffQuiet = false;
    bool hashMoveTactical = false;
    int eval = NoScore;  // static score, NoScore in check
    int estimate = 0;    // the same, drawn towards the table's score
    int best = -NoScore;
    int result = 0;
    Move counter = NoMove;
    Move undoMove = NoMove;  // would only take the own last move back
    int moveLimit = 0;       // quiet moves before pruning by count
    int movesSeen = 0;       // with some of the pruned ones
    int played = 0;
    QuietMove cutoffQuiet{};
    Position child;  // written by makeMove alone
    MovePicker picker;
    TriedMoves tried;
    Move childPv[2];

    ZeroWindowNode(Position& position, int upper, int halfPlies, int rootDistance, Move* line,
                   Move excludedMove, bool withoutNull, bool expectsCutoff)
        : pos(position),
          thread(threadOf(position)),
          us(position.sideToMove()),
          beta(upper),
          depth(halfPlies),
          ply(rootDistance),
          pv(line),
          excluded(excludedMove),
          noNull(withoutNull),
          cutNode(expectsCutoff),
          phase(position.cappedPhase()),
          killers(thread.killers[rootDistance]) {}

    // Ends the node with a score.
    bool endWith(int score) {
        result = score;
        return true;
    }
};

// Stop, the ends of a line, and the handing over to quiescence.
static inline bool enterNode(ZeroWindowNode& node) {
    Position& pos = node.pos;
    node.pv[0] = NoMove;
    if (isStopped(pos)) return node.endWith(0);
    pos.singularMark = 0;
    pos.moveStat = 0;
    if (stopsNow(pos)) return node.endWith(0);
    pos.staticEval = NoScore;
    int alpha = node.beta - 1;
    if (clipToMates(alpha, node.beta, node.ply)) return node.endWith(alpha);
    if (node.ply >= MaxPly) return node.endWith(scoreAtLastPly(pos));
    node.key = pos.key;
    if (node.excluded)
        node.key ^= excludedToKey[toOf(node.excluded)] ^ excludedFromKey[fromOf(node.excluded)];
    if (node.depth >= FirstFullDepth) return false;
    return node.endWith(searchQuiescence(pos, node.beta - 1, node.beta, 0, node.ply, node.pv));
}

static inline bool isSingularCandidate(const ZeroWindowNode& node) {
    return !node.excluded && node.table.move && node.table.depth >= node.depth - 7 &&
           (node.table.bound & LowerBound);
}

// A quiet hash move that cuts off teaches as much as one that was searched here.
static inline bool hashCutoff(ZeroWindowNode& node) {
    const Position& pos = node.pos;
    node.table = readTable(node.key, node.ply);
    const TableView& table = node.table;
    node.noHashMove = table.move == NoMove;
    const bool fitting = table.score >= node.beta ? table.bound & LowerBound : table.bound & UpperBound;
    if (node.depth > table.depth || !fitting) {
        node.singularCandidate = isSingularCandidate(node);
        return false;
    }
    constexpr Move FirstSpecialMove = Move(EnPassant) << 12;  // below it: plain moves and double pushes
    if (table.move && table.score >= node.beta && table.move < FirstSpecialMove &&
        pos.board[toOf(table.move)] == NoPiece) {
        noteRefutation(node.thread, pos, node.ply, table.move);
        if (!pos.inCheck && node.depth <= LastBonusDepth)
            rewardQuiet(pos, quietMoveOf(pos, table.move), historyBonus(node.depth), contBonus(node.depth));
    }
    return node.endWith(table.score);
}

static inline bool tablebaseCutoff(ZeroWindowNode& node) {
    return tablebaseScore(node.pos, node.depth, node.ply, node.result);
}

// The deeper the node, the wider the window in which the static score must be exact.
static inline void staticScore(ZeroWindowNode& node) {
    Position& pos = node.pos;
    if (!pos.inCheck) {
        constexpr int FullWindowDepth = 18, WideWindowDepth = 5;
        const int margin = node.depth >= WideWindowDepth ? 10 * node.depth + 253 : 200;
        pos.staticEval = node.depth >= FullWindowDepth
                             ? evaluate(pos, -OpenEvalBound, OpenEvalBound)
                             : evaluate(pos, node.beta - margin, node.beta + margin);
    }
    node.eval = pos.staticEval;
    node.improving = isImproving(pos, node.ply, node.eval);
    node.estimate = estimateFrom(node.table, node.eval);
}

// ---- Pruning before moves, never in check ----

// Whether the piece on one square really wins something on another, by exchange.
static inline bool winsSomethingOf(const Position& pos, int from, Bitboard targets) {
    for (; targets; targets &= targets - 1)
        if (seeScore(pos, makeWord(from, lowestSquare(targets)), 1) > 0) return true;
    return false;
}

// A pawn that attacks a piece, or that may promote unharmed.
static inline bool pawnThreatens(const Position& pos, Colour us, int from) {
    const Bitboard targets = pos.pieces[us][AllPieces] & ~pos.pieces[us][Pawn] & ~pos.pieces[us][King];
    if (pawnAttacks(opponent(us), bit(from)) & targets) return true;
    if (relativeRank(opponent(us), from) != 6) return false;
    const int ahead = from + pawnStep(opponent(us));
    return pos.board[ahead] == NoPiece && seeScore(pos, makeWord(from, ahead), 0) >= 0;
}

// Whether the piece that the opponent has just moved threatens something of ours.
static inline bool lastMoveThreatens(const Position& pos) {
    if (pos.lastMove == NoMove || pos.gamePly == 0) return false;
    const Colour us = pos.sideToMove();
    const int from = toOf(pos.lastMove);
    const std::size_t index = std::size_t(from);
    const Bitboard* ours = pos.pieces[us];
    switch (typeOfCode(pos.board[from])) {
        case Pawn: return pawnThreatens(pos, us, from);
        case Knight: {
            const Bitboard reach = knightAttacks[index];
            return (reach & (ours[Queen] | ours[Rook])) ||
                   winsSomethingOf(pos, from, reach & (ours[Bishop] | ours[Pawn]));
        }
        case Bishop: {
            const Bitboard reach = bishopAttacksOf(from, pos.occupied);
            return (reach & (ours[Queen] | ours[Rook])) ||
                   winsSomethingOf(pos, from, reach & (ours[Pawn] | ours[Knight]));
        }
        case Rook: {
            const Bitboard reach = rookAttacksOf(from, pos.occupied);
            return (reach & ours[Queen]) ||
                   winsSomethingOf(pos, from, reach & (ours[Pawn] | ours[Knight] | ours[Bishop]));
        }
        case Queen:
            return winsSomethingOf(
                pos, from, queenAttacksOf(from, pos.occupied) & ours[AllPieces] & ~ours[Queen] & ~ours[King]);
        case King: return winsSomethingOf(pos, from, kingAttacks[index] & ours[AllPieces] & ~ours[King]);
        default: return false;  // the rook's square of a castling move
    }
}

// A side that is winning clearly, with no enemy queen or far pawn about, needs less depth to show it. The
// table too learns the smaller depth.
static inline void shortenWonNode(ZeroWindowNode& node) {
    const Position& pos = node.pos;
    constexpr int ClearlyWinning = 350;  // centipawns
    if (node.eval <= node.beta || node.depth < 5) return;
    if (node.estimate <= ClearlyWinning || node.eval <= ClearlyWinning) return;
    const Colour them = opponent(node.us);
    if (pos.pieces[them][Pawn] & (relativeRankMask(them, 5) | relativeRankMask(them, 6))) return;
    if (!treeSearchActive && !pos.pieces[them][Queen]) node.depth -= OnePly;
}

enum class StaticVerdict { Ended, TryNullMove, Threatened };

// Whether the static score alone settles the node.
static inline StaticVerdict staticPruning(ZeroWindowNode& node) {
    constexpr int ThreatDepth = 5, ThreatStep = 15;
    const Position& pos = node.pos;
    // Intended: the term is never positive and is subtracted, so that late in a game a pawn that has just
    // come to its seventh rank makes pruning easier.
    const bool pawnArrived =
        pos.movedType == Pawn && relativeRank(opponent(node.us), toOf(pos.lastMove)) == 6;
    const int passerBonus = pawnArrived ? node.phase - MaxPhase : 0;
    const int step = futilityStep - (node.improving ? 10 : 0);
    if (node.beta <= node.estimate - passerBonus - step * node.depth) {
        node.result = node.estimate;
        return StaticVerdict::Ended;
    }
    if (node.depth > ThreatDepth) return StaticVerdict::TryNullMove;
    const int lowered = node.estimate - ThreatStep * node.depth - passerBonus;
    if (node.beta > lowered) return StaticVerdict::TryNullMove;
    if (lastMoveThreatens(pos)) return StaticVerdict::Threatened;
    node.result = lowered;
    return StaticVerdict::Ended;
}

// The node's score if the opponent may move twice, `reduction` half plies shallower; 0 after a stop.
static inline int nullMoveScore(ZeroWindowNode& node, int reduction) {
    makeMove(&node.pos, &node.child, NoMove);
    const int depth = node.depth - reduction;
    // Intended: the ply stays in quiescence and rises in the search.
    if (depth < FirstFullDepth)
        return -searchQuiescence(node.child, -node.beta, 1 - node.beta, 0, node.ply, node.childPv);
    return -searchZeroWindow(node.child, 1 - node.beta, depth, node.ply + 1, node.childPv, NoMove, true,
                             !node.cutNode);
}

static inline bool nullMoveCutoff(ZeroWindowNode& node) {
    Position& pos = node.pos;
    const int beta = node.beta;
    if (hasOnlyPawns(pos, node.us) || previousLastMove(pos) == NoMove) return false;
    if (node.depth < 23 && node.eval < beta - 7 * node.depth + 84) return false;

    const int reduction =
        (node.depth + std::min(node.estimate - beta, 400) / 20 + (node.phase > 23 ? 4 : 0) + 19) / 4;
    int score = nullMoveScore(node, reduction);
    if (isStopped(pos)) return node.endWith(0);
    constexpr int UnprovenMate = 29001;  // a mate that needs the pass is no mate
    if (score >= UnprovenMate) score = beta;

    // The reduced move that led here has left a threat behind: the parent must look again, or this node
    // deeper.
    const int parentReduction = previousReduction(pos);
    if (parentReduction != 0 && score < beta - 125) {
        if (parentReduction < 4) return node.endWith(score);
        node.depth += OnePly;
    }
    if (score < beta) return false;
    if (node.depth < 15 || (node.phase > 8 && node.depth < 25)) return node.endWith(score);
    // Deep down, and in endings, zugzwang is looked for by a search without the null move.
    const int verified = searchZeroWindow(pos, beta, node.depth - reduction - OnePly, node.ply, node.childPv,
                                          NoMove, true, false);
    if (isStopped(pos)) return node.endWith(0);
    return verified >= beta && node.endWith(score);
}

static inline bool pruneBeforeMoves(ZeroWindowNode& node) {
    constexpr int StaticPruneDepth = 12, LeastNullDepth = 6;
    shortenWonNode(node);
    if (node.noNull || node.estimate < node.beta || std::abs(node.beta) >= MateBound) return false;
    // Intended: the option turns static pruning off too.
    if (!searchState.nullMovePruning) return false;
    if (node.depth <= StaticPruneDepth) {
        if (node.beta >= -9999 && node.eval >= node.beta) {
            const StaticVerdict verdict = staticPruning(node);
            if (verdict != StaticVerdict::TryNullMove) return verdict == StaticVerdict::Ended;
        } else if (node.depth < LeastNullDepth) {
            return false;
        }
    }
    return nullMoveCutoff(node);
}

// ---- Before the move loop ----

// Finds a move to try first where the table has none worth trusting, also in check. True after a stop.
static inline bool internalDeepening(ZeroWindowNode& node) {
    constexpr int DeepeningDepth = 12;
    if (node.depth <= DeepeningDepth || node.noNull) return false;
    if (!node.noHashMove && node.table.depth >= node.depth / 2 - 4) return false;
    if (node.beta > node.eval + 100) return false;
    const int shallower = node.depth * 3 / 4 - 4;
    const int depth = shallower - (shallower & 1);
    searchZeroWindow(node.pos, node.beta, depth, node.ply, node.childPv, NoMove, true, node.cutNode);
    if (isStopped(node.pos)) return node.endWith(0);
    rereadTable(node.table, node.key, node.ply);
    node.singularCandidate = isSingularCandidate(node);
    return false;
}

// A quiet move that takes the own last one back leads nowhere, unless what the opponent did in between stands
// in the way or has changed something.
static inline Move moveThatUndoes(const ZeroWindowNode& node) {
    const Position& pos = node.pos;
    if (pos.halfmoveClock <= 1 || node.beta <= 0 || node.ply <= 1 || pos.inCheck) return NoMove;
    const Move own = previousLastMove(pos);
    if (own == NoMove || pos.castleLost != pos.prev->castleLost) return NoMove;
    const Bitboard start = bit(fromOf(own));
    if (start & pos.pieces[opponent(node.us)][AllPieces]) return NoMove;
    const std::size_t lastFrom = std::size_t(fromOf(pos.lastMove)), lastTo = std::size_t(toOf(pos.lastMove));
    if (start & between[lastFrom][lastTo]) return NoMove;
    return makeWord(toOf(own), fromOf(own));
}

// Shallow nodes far below the window look only at captures, quiet checks and pawns close to promotion; those
// not so far below at a killer and the counter move too; from three plies on what was put off comes back at
// the end.
static inline PickerKind selectiveKind(const ZeroWindowNode& node) {
    constexpr std::uint32_t Forcing = 5, ForcingWithDeferred = 6, Selective = 12, SelectiveWithDeferred = 13;
    const bool farBelow = node.eval + 32 * node.depth + 27 < node.beta;
    if (node.depth < 6) return PickerKind(farBelow ? Forcing : Selective);
    return PickerKind(farBelow ? ForcingWithDeferred : SelectiveWithDeferred);
}

static inline void setUpMoves(ZeroWindowNode& node) {
    const Position& pos = node.pos;
    node.counter = counterMoveOf(node.thread, pos);
    const KillerRow& killers = node.killers;
    if (pos.inCheck) {
        node.picker.start(pos, KindEvasions, node.depth, node.table.move, killers.evasion, killers.first,
                          node.counter);
    } else {
        PickerKind kind = KindFull;
        const int reach = 32 * node.depth - 23;  // centipawns that the remaining depth may gain
        if (node.depth < 14 && node.beta > node.eval + reach && !hasOnlyPawns(pos, node.us)) {
            kind = selectiveKind(node);
            node.best = node.eval + reach / 2;
            node.floorSet = true;
        }
        node.picker.start(pos, kind, node.depth, node.table.move, killers.first, killers.second,
                          node.counter);
    }
    clearGrandchildKillers(node.thread, node.ply);
    const int countDepth = node.depth - (node.cutNode ? 1 : 0) - 1;
    node.moveLimit = moveCountTable[node.improving][std::min(countDepth, MoveCountDepths - 1)];
    node.undoMove = moveThatUndoes(node);
}
