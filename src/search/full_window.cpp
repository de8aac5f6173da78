// The full-window search: the nodes of the principal variation. It keeps a whole line, prunes little, and
// carries the rule by which threads avoid each other: a move that another thread is searching now is put off
// to a second pass (ABDADA in its simple form).
#include "board/exchange.h"
#include "board/history_tables.h"
#include "board/legality.h"
#include "board/make_move.h"
#include "search/limits.h"
#include "search/node.h"
#include "search/reductions.h"

#include <algorithm>
#include <cstdlib>

namespace {

// One node. The constructor leaves the arrays unwritten.
struct FullWindowNode : SearchNode {
    const int firstAlpha;  // as it was passed in
    int alpha;
    bool extensionsAllowed = false;
    bool firstPass = true;
    bool cutoff = false;
    // Intended: where extensions are used up, a move keeps what the move before it got.
    int ext = 0;
    int deferredCount = 0, deferredNext = 0;
    Move deferred[MaxListMoves];  // moves that other threads were searching
    Move childPv[PvLength];

    FullWindowNode(Position& position, int lower, int upper, int halfPlies, int rootDistance, Move* line)
        : SearchNode(position, upper, halfPlies, rootDistance, line), firstAlpha(lower), alpha(lower) {}
};

// ---- Before the moves ----

inline int handToQuiescence(FullWindowNode& node) {
    return searchQuiescence(node.pos, node.alpha, node.beta, 0, node.ply, node.pv);
}

// Stop, the ends of a line, and the handing over to quiescence.
inline bool enterNode(FullWindowNode& node) {
    Position& pos = node.pos;
    node.pv[0] = NoMove;
    if (isStopped(pos)) return node.endWith(0);
    if (mateDistancePruning(node.alpha, node.beta, node.ply)) return node.endWith(node.alpha);
    pos.plyMark = std::uint8_t(node.ply);
    clearMarks(pos);
    if (stopsNow(pos)) return node.endWith(0);
    pos.staticEval = NoScore;
    if (node.ply >= MaxPly) return node.endWith(scoreAtLastPly(pos));
    return node.depth < FirstFullDepth && node.endWith(handToQuiescence(node));
}

inline void staticScore(FullWindowNode& node) {
    Position& pos = node.pos;
    if (!pos.inCheck) pos.staticEval = evaluate(pos, -OpenEvalBound, OpenEvalBound);
    node.noteStaticScore();
}

// Of table scores only that of a position without a legal move ends the node; it is final at any depth.
inline bool terminalCutoff(FullWindowNode& node) {
    node.table = readTable(node.pos.key, node.ply);
    return node.table.terminal && node.endWith(node.table.score);
}

// Razoring: near the leaves a static score far below the window is left to quiescence.
inline bool razoring(FullWindowNode& node) {
    constexpr int RazorDepth = 4;     // below it
    constexpr int RazorMargin = 125;  // centipawns
    if (node.depth >= RazorDepth || node.pos.inCheck || node.eval + RazorMargin >= node.alpha) return false;
    return node.endWith(handToQuiescence(node));
}

// Internal iterative deepening: finds a move to try first where the table has none worth trusting. True after
// a stop.
inline bool internalIterativeDeepening(FullWindowNode& node) {
    constexpr int DeepeningDepth = 12;
    constexpr int WindowMargin = 5;  // centipawns by which the window is opened downward
    constexpr int Shallower = 2 * OnePly;
    if (node.depth < DeepeningDepth) return false;
    if (node.table.move && node.table.depth >= node.depth / 2) return false;
    searchFullWindow(node.pos, node.alpha - WindowMargin, node.beta, node.depth - Shallower, node.ply,
                     node.childPv, Deepening::Forbidden);
    if (isStopped(node.pos)) return node.endWith(0);
    rereadTable(node.table, node.pos.key, node.ply);
    return false;
}

inline void setUpMoves(FullWindowNode& node) {
    // One and a half half plies of extension a ply, with the root's credit before that. `nullFloor` is the
    // sum of the line's extensions.
    node.extensionsAllowed = node.pos.nullFloor < node.ply * 2 - node.ply / 2;
    node.startMoves(KindFull);
}

// ---- Pruning and deferral ----

inline Move takeMove(FullWindowNode& node) {
    if (node.firstPass) return nextMove(&node.picker);
    return node.deferredNext < node.deferredCount ? node.deferred[node.deferredNext++] : NoMove;
}

// A pawn move that may soon matter in an ending: to the sixth or seventh rank, or to the fifth past all enemy
// pawns.
inline bool isPromisingPawnMove(const FullWindowNode& node, Move move) {
    const Position& pos = node.pos;
    if (node.phase >= AdvancedPawnPhase || !isPawnMove(pos, move)) return false;
    const int rank = landingRank(pos, move);
    return rank == SixthRank || rank == SeventhRank ||
           (rank == FifthRank && !(enemyPawnSpans(pos) & bit(toOf(move))));
}

// Late move pruning: whether a quiet move comes so late that it may be passed over.
inline bool comesLate(const FullWindowNode& node, Move move) {
    constexpr int FreeMoves = 5;  // beside one for each half ply of depth
    return node.picker.stage != StageQuietChecks && node.played >= node.depth + FreeMoves &&
           !node.isKillerOrCounter(move) && !isPromisingPawnMove(node, move);
}

// Late move pruning and exchange pruning: shallow nodes pass over quiet moves with a poor record that come
// late or lose material.
inline bool pruneMove(const FullWindowNode& node, const Trial& trial) {
    constexpr int PruneDepth = 6, AverageStat = 48000;
    const Position& pos = node.pos;
    const Move move = trial.move;
    if (node.best <= DeepestMate || node.depth >= PruneDepth || pos.inCheck) return false;
    if (isCapture(pos, move) || (move & QuietFlagMask)) return false;
    if (quietStat(pos, move) >= AverageStat) return false;
    return (comesLate(node, move) || seeLosing(pos, move)) && !node.checks.givesCheck(pos, move);
}

// The threads share out moves only if there are three of them or more, and never in a tree search.
inline bool sharesMoves() { return threadPool.threadCount > 2 && !searchState.treeSearchActive; }

// Whether a child is put off because another thread is searching it. Thread 0 puts nothing off.
inline bool deferMove(FullWindowNode& node, const Trial& trial) {
    if (!node.firstPass || node.played == 0 || node.pos.threadIndex == 0) return false;
    if (!sharesMoves() || node.picker.stage == StageCaptures) return false;
    TransData data;
    if (node.deferredCount == MaxListMoves || !transTable.probe(node.child.key, data) || !data.busy())
        return false;
    node.deferred[node.deferredCount++] = trial.move;
    return true;
}

// ---- Extensions ----

// Singular extension: whether the hash move beats every other move by a margin. The answer means nothing
// after a stop.
inline bool isSingular(FullWindowNode& node) {
    constexpr int SingularDepth = 18, DepthGap = 7;  // half plies; the entry may be shallower by the gap
    constexpr int Shallower = 10;                    // half plies
    const TableView& table = node.table;
    if (node.depth < SingularDepth || !(table.bound & LowerBound) || table.depth < node.depth - DepthGap)
        return false;
    if (std::abs(table.score) >= DecidedScore || (node.ply >= SingularEvasionPlies && node.pos.inCheck))
        return false;
    const int singularBeta = table.score - node.depth / 2;
    return searchZeroWindow(node.pos,
                            {.beta = singularBeta + 1,
                             .depth = node.depth - Shallower,
                             .ply = node.ply,
                             .excluded = table.move,
                             .noNull = true},
                            node.childPv) <= singularBeta;
}

// Sets the child's depth. The top node of a tree search's leaf has no test for a singular move.
template <bool treeLeaf>
inline void extendMove(FullWindowNode& node, Trial& trial) {
    if (node.extensionsAllowed) {
        // Check extension, also for the hash move if it loses material.
        if (node.child.inCheck && (trial.isHashMove || !seeLosing(node.pos, trial.move)))
            node.ext = OnePly;
        else
            node.ext = !treeLeaf && trial.isHashMove && isSingular(node) ? OnePly : 0;
    } else {
        node.ext = std::min(node.ext, OnePly);
    }
    if (beginsPawnEnding(node.child)) node.ext = PawnEndingExtension;
    node.child.nullFloor = std::int16_t(node.child.nullFloor + node.ext);  // the sum of the line's extensions
    trial.newDepth = node.depth + node.ext - OnePly;
}

// ---- The child's search ----

// `reduction` is the reduction in force, which the child reads.
inline int zeroWindowScore(FullWindowNode& node, int depth, int reduction) {
    return nullWindowScore(node.pos, node.child,
                           {.beta = -node.alpha, .depth = depth, .ply = node.ply + 1, .cutNode = true},
                           reduction, node.childPv);
}

inline int fullWindowScore(FullWindowNode& node, int depth) {
    return -searchFullWindow(node.child, -node.beta, -node.alpha, depth, node.ply + 1, node.childPv,
                             Deepening::Allowed);
}

// Late move reductions: that of a quiet move, in half plies.
inline int reductionFor(FullWindowNode& node, Move move) {
    constexpr int SparedRelief = 2;  // half plies
    Position& pos = node.pos;
    int reduction = reductionOf(searchTables.reduceLow, node.improving, node.depth, node.played);
    if (node.isKillerOrCounter(move) || isFarPawnMove(pos, move)) reduction -= SparedRelief;
    reduction = std::max(reduction + reductionByHistory(pos, move), 0);
    if (reduction >= LeastReduction && node.depth <= EscapeDepth && escapesDanger(pos, node.phase, move))
        reduction -= EscapeRelief;
    return reduction;
}

// PVS: the first move gets the whole window at once; a later one has to beat the window's lower end in a null
// window first. Scores after a stop mean nothing.
inline void searchChild(FullWindowNode& node, Trial& trial) {
    constexpr int NullWindowReach = 4, ReductionReach = 6;  // half plies, extension included
    const int reach = node.depth + node.ext;
    if (node.played == 1 || reach < NullWindowReach) {
        trial.score = fullWindowScore(node, trial.newDepth);
        return;
    }
    if (searchState.useLmr && reach >= ReductionReach && !trial.isTactical) {
        const int reduction = reductionFor(node, trial.move);
        if (reduction >= LeastReduction) {
            trial.score =
                zeroWindowScore(node, std::max(trial.newDepth - reduction, FirstFullDepth), reduction);
            if (trial.score <= node.alpha || isStopped(node.pos)) return;
        }
    }
    // Intended: even an under-promotion gets the full depth here, and half of it only in the whole window.
    trial.score = zeroWindowScore(node, trial.newDepth, 0);
    if (trial.score <= node.alpha || isStopped(node.pos)) return;
    trial.score = fullWindowScore(node, depthOfMove(trial.move, trial.newDepth));
}

// ---- The move loop ----

// True on a fail high.
inline bool noteScore(FullWindowNode& node, const Trial& trial) {
    const Position& pos = node.pos;
    const int score = trial.score;
    if (score <= node.alpha) node.blameFirstMove(trial);
    if (score > node.best) {
        node.best = score;
        node.drawn = trial.drawn;
        // Intended: at ply 1 the line is kept even below the window, so that the root always has one to show.
        if (node.ply == 1) writeLine(node.pv, trial.move, node.childPv);
    }
    if (score <= node.alpha) return false;
    node.noteBestQuiet(trial);
    writeLine(node.pv, trial.move, node.childPv);
    if (score < node.beta && !trial.drawn)
        writeTable(pos.key, node.depth, score, LowerBound, trial.move, RankPv, node.ply);
    node.alpha = score;
    if (score < node.beta) return false;
    node.cutoff = true;
    node.noteKillers(trial);
    return true;
}

// Searches one move. Ends the node after a stop; `done` is set on a fail high.
template <bool treeLeaf>
inline bool tryMove(FullWindowNode& node, Move move, bool& done) {
    constexpr int UnderPromotionDepth = 20;
    if (isUnderPromotion(move) && node.depth < UnderPromotionDepth) return false;
    Trial trial(node.pos, move, node.table.move);
    if (node.firstPass && pruneMove(node, trial)) return false;
    if (!makeMove(&node.pos, &node.child, move)) return false;
    if (deferMove(node, trial)) return false;
    node.noteMade(trial);
    if (node.noteDraw(trial)) {
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
inline bool searchMoves(FullWindowNode& node) {
    bool done = false;
    while (!done) {
        const Move move = takeMove(node);
        if (move == NoMove) break;
        if (tryMove<treeLeaf>(node, move, done)) return true;
    }
    return false;
}

// ---- After the moves ----

inline int finishNode(FullWindowNode& node) {
    const Position& pos = node.pos;
    node.learnCaptures();
    if (node.depth <= LastBonusDepth && node.hasBestQuiet && node.tried.hasQuiet())
        node.tried.learnBest(pos, node.bestQuiet, historyBonus(node.depth), contBonus(node.depth));
    if (node.played == 0) {
        const int score = node.scoreWithoutMoves();
        writeTable(pos.key, node.depth, score, TerminalFlags, NoMove, RankAll, node.ply);
        return score;
    }
    if (node.drawn) return node.best;
    writeResult(pos.key, node.depth, node.best, node.firstAlpha, node.beta, node.pv[0], node.ply);
    return node.best;
}

template <bool treeLeaf>
int searchNode(Position& pos, int alpha, int beta, int depth, int ply, Move* pv, Deepening deepening) {
    FullWindowNode node(pos, alpha, beta, depth, ply, pv);
    if (enterNode(node) || node.tablebaseCutoff()) return node.result;
    staticScore(node);
    if (terminalCutoff(node) || razoring(node)) return node.result;
    if (deepening == Deepening::Allowed && internalIterativeDeepening(node)) return node.result;
    setUpMoves(node);
    if (searchMoves<treeLeaf>(node)) return node.result;
    if (node.deferredCount > 0 && threadPool.threadCount > 1 && !node.cutoff &&
        !searchState.treeSearchActive) {
        node.firstPass = false;
        if (searchMoves<treeLeaf>(node)) return node.result;
    }
    return finishNode(node);
}

}  // namespace

int searchFullWindow(Position& pos, int alpha, int beta, int depth, int ply, Move* pv, Deepening deepening) {
    return searchNode<false>(pos, alpha, beta, depth, ply, pv, deepening);
}

int treeAlphaBeta(Position& pos, int alpha, int beta, int depth, int ply, Move* pv) {
    return searchNode<true>(pos, alpha, beta, depth, ply, pv, Deepening::Forbidden);
}
