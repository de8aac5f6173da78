// The zero-window search: all nodes off the principal variation, and nearly all of the program's selectivity.
// Its move loop is here; what comes before the moves stands in zero_window_steps.h.
#include "board/legality.h"
#include "board/movegen.h"
#include "search/trial.h"
#include "search/zero_window_steps.h"

#include <algorithm>
#include <cstdlib>

// The move that is being tried.
struct ZeroTrial : Trial {
    int ext = 0;  // half plies

    ZeroTrial(const ZeroWindowNode& node, Move tried) : Trial(node.pos, tried, node.table.move) {}
};

// Moves that this node never tries.
static inline bool skipMove(const ZeroWindowNode& node, const Trial& trial) {
    constexpr int UnderPromotionDepth = 31;
    if (trial.move == node.excluded) return true;
    if (isUnderPromotion(trial.move) && node.depth < UnderPromotionDepth) return true;
    return trial.move == node.undoMove;
}

// Prunes a move that forces nothing by its number and history, by the static score, and by its exchanges.
static inline bool pruneQuietMove(ZeroWindowNode& node, const Trial& trial) {
    constexpr int GoodStat = 60000;
    const Position& pos = node.pos;
    const int stat = quietStat(pos, trial.move);
    if (node.movesSeen > node.moveLimit && node.depth < 21 && !pos.inCheck && stat < GoodStat) {
        const int seenBefore = node.movesSeen++;
        if (seenBefore >= 2 * node.moveLimit && node.picker.stage == StageQuiets) node.picker.endList();
        return true;
    }
    const int reduction = reductionOf(reduceLow, node.improving, node.depth, node.movesSeen + 1);
    const int reducedDepth = std::max(node.depth - OnePly - reduction, 0);
    if (reducedDepth <= 6) {
        const int index = continuationIndex(quietMoveOf(pos, trial.move));
        if (pos.contHist[index] < HistoryCentre && pos.contHist2[index] < HistoryCentre) {
            ++node.movesSeen;
            return true;
        }
    }
    // From here on a pruned move isn't counted.
    if (reducedDepth <= 12 && !pos.inCheck && node.eval + 32 * reducedDepth + 120 < node.beta) return true;
    return reducedDepth <= 16 && stat < GoodStat && seeBelowMargin(pos, trial.move, seeMargin[reducedDepth]);
}

// Moves of the hash and capture stages are spared, and so is everything until some move avoids being mated.
static inline bool pruneMove(ZeroWindowNode& node, const Trial& trial) {
    constexpr int LoopPruningDepth = 23, ForcedPruningDepth = 15;
    const std::uint32_t stage = node.picker.stage;
    if (node.best <= DeepestMate || node.depth > LoopPruningDepth) return false;
    if (stage == StageHash || stage == StageCaptures) return false;
    const Position& pos = node.pos;
    const bool forced = stage == StageQuietChecks || trial.isTactical ||
                        (node.phase < 32 && isAdvancedPawnMove(pos, trial.move)) ||
                        givesCheckQuick(pos, trial.move);
    if (!forced) return pruneQuietMove(node, trial);
    return node.depth < ForcedPruningDepth && seeBelowMargin(pos, trial.move, -42 * node.depth);
}

// Counts and lists a move that was made.
static inline void noteMove(ZeroWindowNode& node, Trial& trial) {
    noteKind(trial, node.pos, node.child, node.tried);
    if (trial.isTactical && trial.isHashMove) node.hashMoveTactical = true;
    ++node.played;
    ++node.movesSeen;
}

// ---- Extensions ----

static inline int checkExtension(const ZeroWindowNode& node, const Trial& trial) {
    constexpr int ExcellentStat = 72002;
    return 1 + (quietStat(node.pos, trial.move) > ExcellentStat) + (trial.isHashMove && node.depth <= 12) +
           (previousInCheck(node.pos) && node.beta < 1);
}

// A passed pawn that goes on safely in an ending.
static inline bool extendsPassedPawn(const ZeroWindowNode& node, const Trial& trial) {
    const Position& pos = node.pos;
    const Move move = trial.move;
    if (node.phase > 24 || node.depth < 7 || node.depth > 12) return false;
    if (!isFarPawnMove(pos, move) || flagOf(move) != NormalMove) return false;
    if (enemyPawnSpans(pos) & bit(toOf(move))) return false;
    const std::uint32_t stage = node.picker.stage;
    const bool trusted = stage == StageCaptures || stage == StageEvasions || trial.isHashMove ||
                         (stage != StageDeferred && !seeLosing(pos, move));
    return trusted && !(pos.pieces[opponent(node.us)][AllPieces] & bit(toOf(move) + pawnStep(node.us)));
}

// The hash move is extended a little if its entry is deep, and more if it beats every other move by a margin.
// Ends the node after a stop, or if another move fails high as well where a fail high was expected.
static inline bool extendHashMove(ZeroWindowNode& node, ZeroTrial& trial) {
    Position& pos = node.pos;
    const TableView& table = node.table;
    const int depth = node.depth, estimate = node.estimate;
    const bool quietEstimate = estimate > 399 || estimate < -399 || estimate >= node.beta + 65;
    if (depth > 3 && !pos.inCheck && trial.ext == 0 && !quietEstimate &&
        (depth <= 12 || !(table.bound & LowerBound)))
        trial.ext +=
            table.depth >= depth - 8 || (table.depth >= depth - 11 && (table.bound & LowerBound)) ? 1 : 0;

    const bool hashFar = std::abs(table.score) >= DecidedScore || table.score >= node.beta + 50;
    if (trial.ext > 1 || !node.singularCandidate || hashFar || (node.ply > 49 && pos.inCheck) || depth <= 12)
        return false;
    const int singularBeta = table.score - std::max(depth / 2, 8);
    const int lowered = depth - depth / 4 - 7;
    const int singularDepth = lowered + (lowered & 1);
    const int score = searchZeroWindow(pos, singularBeta + 1, singularDepth, node.ply, node.childPv,
                                       table.move, true, node.cutNode);
    if (isStopped(pos)) return node.endWith(0);
    if (score <= singularBeta)
        trial.ext += OnePly;
    else if (score > node.beta && node.cutNode)
        return node.endWith(node.beta);
    return false;
}

// Sets the child's depth. Ends the node as `extendHashMove` does.
static inline bool extendMove(ZeroWindowNode& node, ZeroTrial& trial) {
    if (node.child.inCheck) trial.ext = checkExtension(node, trial);
    if (trial.ext <= 1 && extendsPassedPawn(node, trial)) trial.ext += OnePly;
    if (trial.isHashMove && extendHashMove(node, trial)) return true;
    trial.ext = std::min(trial.ext, OnePly);
    // A pawn ending that has just come about is worth knowing exactly.
    if (node.child.phase == 0 && node.child.capturedType >= Knight) trial.ext = 2 * OnePly;
    trial.newDepth = node.depth + trial.ext - OnePly;
    return false;
}

// ---- The child's search ----

// The child's score for the node; `reduction` is what the child reads as the reduction in force.
static inline int childScore(ZeroWindowNode& node, const Trial& trial, int depth, int reduction, bool noNull,
                             bool cutNode) {
    node.pos.singularMark = std::uint8_t(reduction);
    const int score = -searchZeroWindow(node.child, 1 - node.beta, depthOfMove(trial.move, depth),
                                        node.ply + 1, node.childPv, NoMove, noNull, cutNode);
    node.pos.singularMark = 0;
    return score;
}

// Whether the static score promised a fail high, so that quiet moves which miss it are to blame.
static inline bool promisesCutoff(const ZeroWindowNode& node) { return node.eval > node.beta - 55; }

static inline bool isNeverReduced(const ZeroWindowNode& node, const ZeroTrial& trial) {
    const std::uint32_t stage = node.picker.stage;
    return node.played == 1 || node.depth + trial.ext < 7 || stage == StageCaptures ||
           trial.kind == (MoveTactical | MoveCheck) || !searchState.useLmr ||
           (trial.kind == (MoveTactical | MoveEvasion) && stage == StageEvasions);
}

static inline bool searchUnreduced(ZeroWindowNode& node, Trial& trial) {
    trial.score = childScore(node, trial, trial.newDepth, 0, false, !node.cutNode);
    if (isStopped(node.pos)) return node.endWith(0);
    if (node.played == 1 && trial.score < node.beta && trial.isQuietOutOfCheck() && !node.excluded &&
        node.depth < 32 && promisesCutoff(node) && node.tried.hasQuiet())
        penaliseContinuations(node.pos, node.tried.firstQuiet(), contBonus(node.depth));
    return false;
}

// What a quiet move's own record takes off the reduction or adds to it.
static inline int quietReduction(ZeroWindowNode& node, const Trial& trial, int reduction) {
    Position& pos = node.pos;
    const Move move = trial.move;
    if (node.depth < 23) {
        if (isFarPawnMove(pos, move))
            reduction -= 2;
        else if (move == node.killers.first || move == node.killers.second || move == node.counter)
            reduction -= 1;
    }
    const int stat = quietStat(pos, move) - historyBase;
    pos.moveStat = stat;
    reduction -= stat / StatPerHalfPly;
    reduction += reductionByTurn(pos, stat);
    const bool threatTest = node.phase > 48 && !node.cutNode;
    if (reduction > 1 && threatTest && trial.isQuietOutOfCheck() && movesOfficer(pos, move) &&
        !seeFromSquareSafe(pos, move))
        reduction -= 2;
    return reduction;
}

static inline int reductionFor(ZeroWindowNode& node, const Trial& trial) {
    int reduction = reductionOf(reduceHigh, node.improving, node.depth, node.movesSeen);
    if (trial.isTactical) reduction -= 5;
    reduction += node.hashMoveTactical;
    if (node.cutNode)
        reduction += !node.pos.inCheck && node.depth > 10 ? 2 + (node.depth > 14) + (node.depth > 21) : 1;
    if (!trial.isTactical) reduction = quietReduction(node, trial, reduction);
    return reduction < 2 ? 0 : reduction;
}

// Tries a move at a reduced depth, and a move that then fails high again at more of its depth.
static inline bool searchReduced(ZeroWindowNode& node, ZeroTrial& trial) {
    constexpr int StrongReduction = 7, MilderReduction = 4;
    const int beta = node.beta;
    const int reduction = reductionFor(node, trial);
    trial.score = childScore(node, trial, trial.newDepth - reduction, reduction, false, true);
    if (isStopped(node.pos)) return node.endWith(0);
    if (reduction > StrongReduction && trial.score >= beta && node.depth + trial.ext > 9) {
        trial.score = childScore(node, trial, trial.newDepth - MilderReduction, MilderReduction, false, true);
        if (isStopped(node.pos)) return node.endWith(0);
    }
    // Intended: the search at the whole depth goes without the null move.
    if (reduction >= 1 && trial.score >= beta)
        trial.score = childScore(node, trial, trial.newDepth, 0, true, !node.cutNode);
    return isStopped(node.pos) && node.endWith(0);
}

// Scores the child; ends the node after a stop, or on what the hash move's test shows.
static inline bool searchChild(ZeroWindowNode& node, ZeroTrial& trial) {
    if (extendMove(node, trial)) return true;
    return isNeverReduced(node, trial) ? searchUnreduced(node, trial) : searchReduced(node, trial);
}

// ---- After a child, and after all of them ----

// True on a fail high.
static inline bool noteScore(ZeroWindowNode& node, const Trial& trial) {
    if (trial.score <= node.best) return false;
    node.best = trial.score;
    node.drawn = trial.drawn;
    if (trial.score < node.beta) return false;
    node.pv[0] = trial.move;
    node.pv[1] = NoMove;
    if (node.pos.inCheck) {
        node.thread.killers[node.ply].evasion = trial.move;
    } else if (trial.isQuietOutOfCheck() && !node.excluded) {
        node.hasCutoffQuiet = true;
        node.cutoffQuiet = quietMoveOf(node.pos, trial.move);
        noteRefutation(node.thread, node.pos, node.ply, trial.move);
    }
    return true;
}

static inline void learnFromMoves(ZeroWindowNode& node) {
    const Position& pos = node.pos;
    if (node.pv[0]) node.tried.learnCaptures(pos, node.pv[0], node.depth);
    if (node.depth <= LastBonusDepth && node.hasCutoffQuiet)
        node.tried.learnCutoff(pos, node.cutoffQuiet, promisesCutoff(node), historyBonus(node.depth - 1),
                               contBonus(node.depth));
}

static inline int finishNode(ZeroWindowNode& node) {
    const Position& pos = node.pos;
    const NodeRank rank = node.cutNode ? RankCut : RankAll;
    if (!node.floorSet && node.played == 0 && !node.excluded) {
        const int score = pos.inCheck ? node.ply - MateScore : 0;
        if (!node.drawn) writeTable(node.key, node.depth, score, TerminalFlags, NoMove, rank, node.ply);
        return score;
    }
    const int score = node.excluded && node.best < node.beta ? node.beta - 1 : node.best;
    learnFromMoves(node);
    if (node.drawn) return score;
    const bool failedHigh = score >= node.beta;
    writeTable(node.key, node.depth, score, failedHigh ? LowerBound : UpperBound,
               failedHigh ? node.pv[0] : NoMove, rank, node.ply);
    return score;
}

int searchZeroWindow(Position& pos, int beta, int depth, int ply, Move* pv, Move excluded, bool noNull,
                     bool cutNode) {
    ZeroWindowNode node(pos, beta, depth, ply, pv, excluded, noNull, cutNode);
    if (enterNode(node) || hashCutoff(node) || tablebaseCutoff(node)) return node.result;
    staticScore(node);
    if (!pos.inCheck && pruneBeforeMoves(node)) return node.result;
    if (internalDeepening(node)) return node.result;
    setUpMoves(node);
    while (const Move move = nextMove(&node.picker)) {
        ZeroTrial trial(node, move);
        if (skipMove(node, trial) || pruneMove(node, trial)) continue;
        if (!makeMove(&pos, &node.child, move)) continue;
        noteMove(node, trial);
        if (!noteDraw(trial, pos, node.child, ply) && searchChild(node, trial)) return node.result;
        if (noteScore(node, trial)) break;
    }
    if (isStopped(pos)) return 0;
    return finishNode(node);
}
