// The full-window search: the nodes of the principal variation. It keeps a whole line, prunes little, and
// carries the rule by which threads avoid each other: a move that another thread is searching now is put off
// to a second pass.
#include "board/exchange.h"
#include "board/legality.h"
#include "board/make_move.h"
#include "board/move_picker.h"
#include "board/movegen.h"
#include "eval/parameters.h"
#include "search/history.h"
#include "search/node.h"
#include "search/search.h"
#include "search/trial.h"

#include <algorithm>
#include <cstdlib>

// One node. The constructor leaves the arrays unwritten.
struct FullWindowNode {
    Position& pos;
    SearchThread& thread;
    const Colour us;
    const int firstAlpha;  // as it was passed in
    int alpha, beta;
    const int depth;  // half plies
    const int ply;
    Move* const pv;
    const int phase;
    const KillerRow killers;  // as they stood at entry
    TableView table;
    bool improving = true;
    bool extensionsAllowed = false;
    bool firstPass = true;
    bool drawn = false;  // the best score is a draw by rule, which the table must not learn
    bool cutoff = false;
    bool hasBestQuiet = false;
    int eval = NoScore;  // static score, NoScore in check
    int best = -NoScore;
    int result = 0;
    // Intended: where extensions are used up, a move keeps what the move before it got.
    int ext = 0;
    int played = 0;
    Move counter = NoMove;
    QuietMove bestQuiet{};
    int deferredCount = 0, deferredNext = 0;
    Move deferred[MaxListMoves];  // moves that other threads were searching
    Position child;               // written by makeMove alone
    MovePicker picker;
    TriedMoves tried;
    Move childPv[PvLength];

    FullWindowNode(Position& position, int lower, int upper, int halfPlies, int rootDistance, Move* line)
        : pos(position),
          thread(threadOf(position)),
          us(position.sideToMove()),
          firstAlpha(lower),
          alpha(lower),
          beta(upper),
          depth(halfPlies),
          ply(rootDistance),
          pv(line),
          phase(position.cappedPhase()),
          killers(thread.killers[rootDistance]) {}

    bool endWith(int score) {
        result = score;
        return true;
    }
    bool isKillerOrCounter(Move move) const {
        return move == killers.first || move == killers.second || move == counter;
    }
};

// ---- Before the moves ----

static inline int handToQuiescence(FullWindowNode& node) {
    return searchQuiescence(node.pos, node.alpha, node.beta, 0, node.ply, node.pv);
}

// Stop, the ends of a line, and the handing over to quiescence.
static inline bool enterNode(FullWindowNode& node) {
    Position& pos = node.pos;
    node.pv[0] = NoMove;
    if (isStopped(pos)) return node.endWith(0);
    if (clipToMates(node.alpha, node.beta, node.ply)) return node.endWith(node.alpha);
    pos.plyMark = std::uint8_t(node.ply);
    pos.singularMark = 0;
    pos.moveStat = 0;
    if (stopsNow(pos)) return node.endWith(0);
    pos.staticEval = NoScore;
    if (node.ply >= MaxPly) return node.endWith(scoreAtLastPly(pos));
    return node.depth < FirstFullDepth && node.endWith(handToQuiescence(node));
}

static inline bool tablebaseCutoff(FullWindowNode& node) {
    return tablebaseScore(node.pos, node.depth, node.ply, node.result);
}

static inline void staticScore(FullWindowNode& node) {
    Position& pos = node.pos;
    if (!pos.inCheck) pos.staticEval = evaluate(pos, -OpenEvalBound, OpenEvalBound);
    node.eval = pos.staticEval;
    node.improving = isImproving(pos, node.ply, node.eval);
}

// Of table scores only that of a position without a legal move ends the node; it is final at any depth.
static inline bool terminalCutoff(FullWindowNode& node) {
    node.table = readTable(node.pos.key, node.ply);
    return node.table.terminal && node.endWith(node.table.score);
}

static inline bool razor(FullWindowNode& node) {
    constexpr int RazorDepth = 4, RazorMargin = 125;
    if (node.depth >= RazorDepth || node.pos.inCheck || node.eval + RazorMargin >= node.alpha) return false;
    return node.endWith(handToQuiescence(node));
}

// Finds a move to try first where the table has none worth trusting. True after a stop.
static inline bool internalDeepening(FullWindowNode& node) {
    constexpr int DeepeningDepth = 12;
    if (node.depth < DeepeningDepth) return false;
    if (node.table.move && node.table.depth >= node.depth / 2) return false;
    searchFullWindow(node.pos, node.alpha - 5, node.beta, node.depth - 2 * OnePly, node.ply, node.childPv,
                     true);
    if (isStopped(node.pos)) return node.endWith(0);
    rereadTable(node.table, node.pos.key, node.ply);
    return false;
}

static inline void setUpMoves(FullWindowNode& node) {
    const Position& pos = node.pos;
    const KillerRow& killers = node.killers;
    node.counter = counterMoveOf(node.thread, pos);
    clearGrandchildKillers(node.thread, node.ply);
    // One and a half plies of extension a ply, with the root's credit before that.
    node.extensionsAllowed = pos.nullFloor < node.ply * 2 - node.ply / 2;
    if (pos.inCheck)
        node.picker.start(pos, KindEvasions, node.depth, node.table.move, killers.evasion, killers.first,
                          node.counter);
    else
        node.picker.start(pos, KindFull, node.depth, node.table.move, killers.first, killers.second,
                          node.counter);
}

// ---- The move loop ----

static inline Move takeMove(FullWindowNode& node) {
    if (node.firstPass) return nextMove(&node.picker);
    return node.deferredNext < node.deferredCount ? node.deferred[node.deferredNext++] : NoMove;
}

// A pawn move that may soon matter in an ending: to the sixth or seventh rank, or to the fifth past all enemy
// pawns.
static inline bool isPromisingPawnMove(const FullWindowNode& node, Move move) {
    const Position& pos = node.pos;
    if (node.phase >= 32 || !isPawnMove(pos, move)) return false;
    const int rank = landingRank(pos, move);
    return rank == 5 || rank == 6 || (rank == 4 && !(enemyPawnSpans(pos) & bit(toOf(move))));
}

// Shallow nodes pass over quiet moves with a poor record that come late or lose material.
static inline bool pruneMove(const FullWindowNode& node, const Trial& trial) {
    constexpr int PruneDepth = 6, AverageStat = 48000;
    const Position& pos = node.pos;
    const Move move = trial.move;
    if (node.best <= DeepestMate || node.depth >= PruneDepth || pos.inCheck) return false;
    if (isCapture(pos, move) || (move & QuietFlagMask)) return false;
    if (quietStat(pos, move) >= AverageStat) return false;
    const bool late = node.picker.stage != StageQuietChecks && node.played >= node.depth + 5 &&
                      !node.isKillerOrCounter(move) && !isPromisingPawnMove(node, move);
    return (late || seeLosing(pos, move)) && !givesCheckQuick(pos, move);
}

// The threads share out moves only if there are three of them or more, and never in a tree search.
static inline bool sharesMoves() { return threadCount > 2 && !treeSearchActive; }

// Whether a child is put off because another thread is searching it. Thread 0 puts nothing off.
static inline bool deferMove(FullWindowNode& node, const Trial& trial) {
    if (!node.firstPass || node.played == 0 || node.pos.threadIndex == 0) return false;
    if (!sharesMoves() || node.picker.stage == StageCaptures) return false;
    TransData data;
    if (node.deferredCount == MaxListMoves || !transTable.probe(node.child.key, data) || !data.busy())
        return false;
    node.deferred[node.deferredCount++] = trial.move;
    return true;
}

// Whether the hash move beats every other move by a margin. The answer means nothing after a stop.
static inline bool isSingular(FullWindowNode& node) {
    const TableView& table = node.table;
    if (node.depth < 18 || !(table.bound & LowerBound) || table.depth < node.depth - 7) return false;
    if (std::abs(table.score) >= DecidedScore || (node.ply >= 50 && node.pos.inCheck)) return false;
    const int singularBeta = table.score - node.depth / 2;
    return searchZeroWindow(node.pos, singularBeta + 1, node.depth - 10, node.ply, node.childPv, table.move,
                            true, false) <= singularBeta;
}

// Sets the child's depth. The top node of a tree search's leaf has no test for a singular move.
template <bool treeLeaf>
static inline void extendMove(FullWindowNode& node, Trial& trial) {
    if (node.extensionsAllowed) {
        if (node.child.inCheck && (trial.isHashMove || !seeLosing(node.pos, trial.move)))
            node.ext = OnePly;
        else
            node.ext = !treeLeaf && trial.isHashMove && isSingular(node) ? OnePly : 0;
    } else {
        node.ext = std::min(node.ext, OnePly);
    }
    // A pawn ending that has just come about is worth knowing exactly.
    if (node.child.phase == 0 && node.child.capturedType >= Knight) node.ext = 2 * OnePly;
    node.child.nullFloor = std::int16_t(node.child.nullFloor + node.ext);
    trial.newDepth = node.depth + node.ext - OnePly;
}

static inline int zeroWindowScore(FullWindowNode& node, int depth, int reduction) {
    node.pos.singularMark = std::uint8_t(reduction);
    const int score =
        -searchZeroWindow(node.child, -node.alpha, depth, node.ply + 1, node.childPv, NoMove, false, true);
    node.pos.singularMark = 0;
    return score;
}

static inline int fullWindowScore(FullWindowNode& node, int depth) {
    return -searchFullWindow(node.child, -node.beta, -node.alpha, depth, node.ply + 1, node.childPv, false);
}

static inline int reductionFor(FullWindowNode& node, const Trial& trial) {
    Position& pos = node.pos;
    const Move move = trial.move;
    int reduction = reductionOf(reduceLow, node.improving, node.depth, node.played);
    if (node.isKillerOrCounter(move) || isFarPawnMove(pos, move)) reduction -= 2;
    const int stat = quietStat(pos, move) - historyBase;
    pos.moveStat = stat;
    reduction += reductionByTurn(pos, stat);
    reduction = std::max(reduction - stat / StatPerHalfPly, 0);
    if (reduction >= 2 && node.phase > 48 && node.depth <= 15 && movesOfficer(pos, move) &&
        !seeFromSquareSafe(pos, move))
        reduction -= 2;
    return reduction;
}

// The first move gets the whole window at once; a later one has to beat the window's lower end first. Scores
// after a stop mean nothing.
static inline void searchChild(FullWindowNode& node, Trial& trial) {
    const int reach = node.depth + node.ext;
    if (node.played == 1 || reach < 4) {
        trial.score = fullWindowScore(node, trial.newDepth);
        return;
    }
    if (searchState.useLmr && reach >= 6 && !trial.isTactical) {
        const int reduction = reductionFor(node, trial);
        if (reduction >= 2) {
            trial.score = zeroWindowScore(node, std::max(trial.newDepth - reduction, 2), reduction);
            if (trial.score <= node.alpha || isStopped(node.pos)) return;
        }
    }
    // Intended: even an under-promotion gets the full depth here, and half of it only in the whole window.
    trial.score = zeroWindowScore(node, trial.newDepth, 0);
    if (trial.score <= node.alpha || isStopped(node.pos)) return;
    trial.score = fullWindowScore(node, depthOfMove(trial.move, trial.newDepth));
}

// True on a fail high.
static inline bool noteScore(FullWindowNode& node, const Trial& trial) {
    const Position& pos = node.pos;
    const int score = trial.score;
    if (node.played == 1 && score <= node.alpha && node.depth <= LastBonusDepth &&
        trial.isQuietOutOfCheck() && node.tried.hasQuiet())
        penaliseContinuations(pos, node.tried.firstQuiet(), contBonus(node.depth));
    if (score > node.best) {
        node.best = score;
        node.drawn = trial.drawn;
        // Intended: at ply 1 the line is kept even below the window, so that the root always has one to show.
        if (node.ply == 1) writeLine(node.pv, trial.move, node.childPv);
    }
    if (score <= node.alpha) return false;
    if (trial.isQuietOutOfCheck()) {
        node.hasBestQuiet = true;
        node.bestQuiet = quietMoveOf(pos, trial.move);
    }
    writeLine(node.pv, trial.move, node.childPv);
    if (score < node.beta && !trial.drawn)
        writeTable(pos.key, node.depth, score, LowerBound, trial.move, RankPv, node.ply);
    node.alpha = score;
    if (score < node.beta) return false;
    node.cutoff = true;
    if (pos.inCheck)
        node.thread.killers[node.ply].evasion = trial.move;
    else if (trial.isQuietOutOfCheck())
        noteRefutation(node.thread, pos, node.ply, trial.move);
    return true;
}

// Searches one move. Ends the node after a stop; `done` is set on a fail high.
template <bool treeLeaf>
static inline bool tryMove(FullWindowNode& node, Move move, bool& done) {
    constexpr int UnderPromotionDepth = 20;
    if (isUnderPromotion(move) && node.depth < UnderPromotionDepth) return false;
    Trial trial(node.pos, move, node.table.move);
    if (node.firstPass && pruneMove(node, trial)) return false;
    if (!makeMove(&node.pos, &node.child, move)) return false;
    if (deferMove(node, trial)) return false;
    noteKind(trial, node.pos, node.child, node.tried);
    ++node.played;
    if (noteDraw(trial, node.pos, node.child, node.ply)) {
        node.childPv[0] = NoMove;
    } else {
        const bool marks = sharesMoves();
        if (marks) transTable.markBusy(node.child.key, true);
        extendMove<treeLeaf>(node, trial);
        if (!isStopped(node.pos)) searchChild(node, trial);
        if (marks) transTable.markBusy(node.child.key, false);
        if (isStopped(node.pos)) return node.endWith(0);
    }
    done = noteScore(node, trial);
    return false;
}

// One run over the picker's moves, or over those that were put off. Ends the node after a stop.
template <bool treeLeaf>
static inline bool searchMoves(FullWindowNode& node) {
    bool done = false;
    while (!done) {
        const Move move = takeMove(node);
        if (move == NoMove) break;
        if (tryMove<treeLeaf>(node, move, done)) return true;
    }
    return false;
}

// ---- After the moves ----

static inline int finishNode(FullWindowNode& node) {
    const Position& pos = node.pos;
    if (node.pv[0]) node.tried.learnCaptures(pos, node.pv[0], node.depth);
    if (node.depth <= LastBonusDepth && node.hasBestQuiet && node.tried.hasQuiet())
        node.tried.learnBest(pos, node.bestQuiet, historyBonus(node.depth), contBonus(node.depth));
    if (node.played == 0) {
        const int score = pos.inCheck ? node.ply - MateScore : 0;
        writeTable(pos.key, node.depth, score, TerminalFlags, NoMove, RankAll, node.ply);
        return score;
    }
    if (node.drawn) return node.best;
    writeResult(pos.key, node.depth, node.best, node.firstAlpha, node.beta, node.pv[0], node.ply);
    return node.best;
}

template <bool treeLeaf>
static int searchNode(Position& pos, int alpha, int beta, int depth, int ply, Move* pv, bool mayDeepen) {
    FullWindowNode node(pos, alpha, beta, depth, ply, pv);
    if (enterNode(node) || tablebaseCutoff(node)) return node.result;
    staticScore(node);
    if (terminalCutoff(node) || razor(node)) return node.result;
    if (mayDeepen && internalDeepening(node)) return node.result;
    setUpMoves(node);
    if (searchMoves<treeLeaf>(node)) return node.result;
    if (node.deferredCount > 0 && threadCount > 1 && !node.cutoff && !treeSearchActive) {
        node.firstPass = false;
        if (searchMoves<treeLeaf>(node)) return node.result;
    }
    return finishNode(node);
}

int searchFullWindow(Position& pos, int alpha, int beta, int depth, int ply, Move* pv,
                     bool internalDeepening) {
    return searchNode<false>(pos, alpha, beta, depth, ply, pv, !internalDeepening);
}

int treeAlphaBeta(Position& pos, int alpha, int beta, int depth, int ply, Move* pv) {
    return searchNode<true>(pos, alpha, beta, depth, ply, pv, false);
}
