// The zero-window search: all nodes off the principal variation, searched with a null window, and nearly all
// of the program's selectivity. What it prunes before the first move stands in pruning_before_moves.cpp.
#include "board/exchange.h"
#include "board/history_tables.h"
#include "board/legality.h"
#include "board/make_move.h"
#include "board/zobrist.h"
#include "search/reductions.h"
#include "search/zero_window_node.h"

#include <algorithm>
#include <cstdlib>

namespace {

// The move that is being tried.
struct ZeroTrial : Trial {
    int ext = 0;  // half plies

    ZeroTrial(const ZeroWindowNode& node, Move tried) : Trial(node.pos, tried, node.table.move) {}
};

// ---- Entry ----

// Stop, the ends of a line, and the handing over to quiescence.
inline bool enterNode(ZeroWindowNode& node) {
    Position& pos = node.pos;
    node.pv[0] = NoMove;
    if (isStopped(pos)) return node.endWith(0);
    clearMarks(pos);
    if (stopsNow(pos)) return node.endWith(0);
    pos.staticEval = NoScore;
    int alpha = node.beta - 1;
    if (mateDistancePruning(alpha, node.beta, node.ply)) return node.endWith(alpha);
    if (node.ply >= MaxPly) return node.endWith(scoreAtLastPly(pos));
    node.key = pos.key;
    if (node.excluded)
        node.key ^= excludedToKey[toOf(node.excluded)] ^ excludedFromKey[fromOf(node.excluded)];
    if (node.depth >= FirstFullDepth) return false;
    return node.endWith(searchQuiescence(pos, node.beta - 1, node.beta, 0, node.ply, node.pv));
}

// A quiet hash move that cuts off teaches as much as one that was searched here.
inline bool tableCutoff(ZeroWindowNode& node) {
    constexpr Move FirstSpecialMove = Move(EnPassant) << 12;  // below it: plain moves and double pushes
    const Position& pos = node.pos;
    node.table = readTable(node.key, node.ply);
    const TableView& table = node.table;
    node.noHashMove = table.move == NoMove;
    const bool fitting = table.score >= node.beta ? table.bound & LowerBound : table.bound & UpperBound;
    if (node.depth > table.depth || !fitting) {
        node.noteSingularCandidate();
        return false;
    }
    if (table.move && table.score >= node.beta && table.move < FirstSpecialMove &&
        pos.board[toOf(table.move)] == NoPiece) {
        noteRefutation(node.thread, pos, node.ply, table.move);
        if (!pos.inCheck && node.depth <= LastBonusDepth)
            rewardQuiet(pos, quietMoveOf(pos, table.move), historyBonus(node.depth), contBonus(node.depth));
    }
    return node.endWith(table.score);
}

// The deeper the node, the wider the window in which the static score must be exact.
inline void staticScore(ZeroWindowNode& node) {
    constexpr int FullWindowDepth = 18, WideWindowDepth = 5;
    constexpr int WideSlope = 10, WideBase = 253, NarrowMargin = 200;  // centipawns
    Position& pos = node.pos;
    if (!pos.inCheck) {
        const int margin = node.depth >= WideWindowDepth ? WideSlope * node.depth + WideBase : NarrowMargin;
        pos.staticEval = node.depth >= FullWindowDepth
                             ? evaluate(pos, -OpenEvalBound, OpenEvalBound)
                             : evaluate(pos, node.beta - margin, node.beta + margin);
    }
    node.noteStaticScore();
    node.estimate = estimateFrom(node.table, node.eval);
}

// ---- Set-up of the move loop ----

// A quiet move that takes the own last one back leads nowhere, unless what the opponent did in between stands
// in the way or has changed something.
inline Move moveThatUndoes(const ZeroWindowNode& node) {
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
// the end. Such a node begins with a made-up bound, what half of the reach would gain.
inline PickerKind selectKind(ZeroWindowNode& node) {
    constexpr int SelectiveDepth = 14, DeferringDepth = 6;
    constexpr int ReachSlope = 32, ReachBase = -23;  // centipawns that the remaining depth may gain
    constexpr int FarBelowBase = 27;  // in place of it: out of that reach killers are hopeless too
    const Position& pos = node.pos;
    if (pos.inCheck || node.depth >= SelectiveDepth) return KindFull;
    const int reach = ReachSlope * node.depth + ReachBase;
    if (node.beta <= node.eval + reach || hasOnlyPawns(pos, node.us)) return KindFull;
    node.best = node.eval + reach / 2;
    node.floorSet = true;
    const bool farBelow = node.eval + ReachSlope * node.depth + FarBelowBase < node.beta;
    if (node.depth < DeferringDepth) return farBelow ? KindForcing : KindSelective;
    return farBelow ? KindForcingWithDeferred : KindSelectiveWithDeferred;
}

inline void setUpMoves(ZeroWindowNode& node) {
    node.startMoves(selectKind(node));
    const int countDepth = node.depth - (node.cutNode ? 1 : 0) - 1;
    node.moveLimit = searchTables.moveCountTable[node.improving][std::min(countDepth, MoveCountDepths - 1)];
    node.undoMove = moveThatUndoes(node);
}

// ---- Pruning of moves ----

constexpr int GoodStat = 60000;  // a quiet move's stat from which on it is spared

// Moves that this node never tries.
inline bool skipMove(const ZeroWindowNode& node, const Trial& trial) {
    constexpr int UnderPromotionDepth = 31;
    if (trial.move == node.excluded) return true;
    if (isUnderPromotion(trial.move) && node.depth < UnderPromotionDepth) return true;
    return trial.move == node.undoMove;
}

// Late move pruning: by the number of the move. Far behind the limit the other quiet moves go too.
inline bool lateMovePruning(ZeroWindowNode& node, int stat) {
    constexpr int PruneDepth = 21;  // below it
    if (node.movesSeen <= node.moveLimit || node.depth >= PruneDepth || node.pos.inCheck || stat >= GoodStat)
        return false;
    const int seenBefore = node.movesSeen++;
    if (seenBefore >= 2 * node.moveLimit && node.picker.stage == StageQuiets) node.picker.endList();
    return true;
}

// History pruning: neither of the last two moves has ever been answered well in this way.
inline bool historyPruning(ZeroWindowNode& node, Move move, int reducedDepth) {
    constexpr int PruneDepth = 6;
    if (reducedDepth > PruneDepth) return false;
    const Position& pos = node.pos;
    const int index = continuationIndex(quietMoveOf(pos, move));
    if (pos.contHist[index] >= HistoryCentre || pos.contHist2[index] >= HistoryCentre) return false;
    ++node.movesSeen;
    return true;
}

// Futility pruning: the static score is so far below the window that a quiet move will hardly lift it there.
inline bool futilityPruning(const ZeroWindowNode& node, int reducedDepth) {
    constexpr int PruneDepth = 12;
    constexpr int MarginSlope = 32, MarginBase = 120;  // centipawns
    return reducedDepth <= PruneDepth && !node.pos.inCheck &&
           node.eval + MarginSlope * reducedDepth + MarginBase < node.beta;
}

// Exchange pruning: the move loses material by static exchange.
inline bool exchangePruning(const Position& pos, Move move, int stat, int reducedDepth) {
    constexpr int PruneDepth = 16;
    return reducedDepth <= PruneDepth && stat < GoodStat &&
           seeBelowMargin(pos, move, seeMargin[reducedDepth]);
}

// A move that forces nothing.
inline bool pruneQuietMove(ZeroWindowNode& node, Move move) {
    const Position& pos = node.pos;
    const int stat = quietStat(pos, move);
    if (lateMovePruning(node, stat)) return true;
    const int reduction = reductionOf(searchTables.reduceLow, node.improving, node.depth, node.movesSeen + 1);
    const int reducedDepth = std::max(node.depth - OnePly - reduction, 0);
    if (historyPruning(node, move, reducedDepth)) return true;
    // From here on a pruned move isn't counted.
    return futilityPruning(node, reducedDepth) || exchangePruning(pos, move, stat, reducedDepth);
}

// Moves of the hash and capture stages are spared, and so is everything until some move avoids being mated.
inline bool pruneMove(ZeroWindowNode& node, const Trial& trial) {
    constexpr int LoopPruningDepth = 23, ForcedPruningDepth = 15;
    constexpr int ForcedMarginSlope = -42;  // hundredths of a pawn a half ply
    const std::uint32_t stage = node.picker.stage;
    if (node.best <= DeepestMate || node.depth > LoopPruningDepth) return false;
    if (stage == StageHash || stage == StageCaptures) return false;
    const Position& pos = node.pos;
    const bool forced = stage == StageQuietChecks || trial.isTactical ||
                        (node.phase < AdvancedPawnPhase && isAdvancedPawnMove(pos, trial.move)) ||
                        node.checks.givesCheck(pos, trial.move);
    if (!forced) return pruneQuietMove(node, trial.move);
    return node.depth < ForcedPruningDepth && seeBelowMargin(pos, trial.move, ForcedMarginSlope * node.depth);
}

// Counts and lists a move that was made.
inline void noteMove(ZeroWindowNode& node, Trial& trial) {
    node.noteMade(trial);
    if (trial.isTactical && trial.isHashMove) node.hashMoveTactical = true;
    ++node.movesSeen;
}

// ---- Extensions, in half plies ----

// Up to this depth passed pawns are extended, checks by the hash move more than others, and the hash move for
// the depth of its entry; above it a hash move whose score is a lower bound has to be singular.
constexpr int ShallowDepth = 12;

inline int checkExtension(const ZeroWindowNode& node, const Trial& trial) {
    constexpr int ExcellentStat = 72002;
    return 1 + (quietStat(node.pos, trial.move) > ExcellentStat) +
           (trial.isHashMove && node.depth <= ShallowDepth) + (previousInCheck(node.pos) && node.beta < 1);
}

// Passed pawn extension: one that goes on safely in an ending.
inline bool extendsPassedPawn(const ZeroWindowNode& node, const Trial& trial) {
    constexpr int EndingPhase = 24, LeastDepth = 7;
    const Position& pos = node.pos;
    const Move move = trial.move;
    if (node.phase > EndingPhase || node.depth < LeastDepth || node.depth > ShallowDepth) return false;
    if (!isFarPawnMove(pos, move) || flagOf(move) != NormalMove) return false;
    if (enemyPawnSpans(pos) & bit(toOf(move))) return false;
    const std::uint32_t stage = node.picker.stage;
    const bool trusted = stage == StageCaptures || stage == StageEvasions || trial.isHashMove ||
                         (stage != StageDeferred && !seeLosing(pos, move));
    return trusted && !(pos.pieces[opponent(node.us)][AllPieces] & bit(toOf(move) + pawnStep(node.us)));
}

// Hash move extension: a little for a move from a deep entry, where the score isn't clear one way or the
// other.
inline int hashMoveExtension(const ZeroWindowNode& node) {
    constexpr int LeastDepth = 4;
    constexpr int ClearScore = 399, ClearLead = 65;       // centipawns
    constexpr int DepthGap = 8, LowerBoundDepthGap = 11;  // half plies that the entry may be shallower
    const TableView& table = node.table;
    const int depth = node.depth, estimate = node.estimate;
    if (depth < LeastDepth || node.pos.inCheck) return 0;
    if (estimate > ClearScore || estimate < -ClearScore || estimate >= node.beta + ClearLead) return 0;
    const bool lowerBound = table.bound & LowerBound;
    if (depth > ShallowDepth && lowerBound) return 0;
    return table.depth >= depth - DepthGap || (table.depth >= depth - LowerBoundDepthGap && lowerBound) ? 1
                                                                                                        : 0;
}

// Singular extension: the hash move beats every other move by a margin. Ends the node after a stop, or if
// another move fails high as well where a fail high was expected (multi-cut).
inline bool singularExtension(ZeroWindowNode& node, ZeroTrial& trial) {
    constexpr int HighScore = 50;   // centipawns above the window
    constexpr int LeastMargin = 8;  // centipawns
    constexpr int DepthOff = 7;     // half plies, beside a quarter of the depth
    Position& pos = node.pos;
    const TableView& table = node.table;
    const int depth = node.depth;
    const bool hashFar = std::abs(table.score) >= DecidedScore || table.score >= node.beta + HighScore;
    if (trial.ext > 1 || !node.singularCandidate || hashFar) return false;
    if ((node.ply >= SingularEvasionPlies && pos.inCheck) || depth <= ShallowDepth) return false;
    const int singularBeta = table.score - std::max(depth / 2, LeastMargin);
    const int lowered = depth - depth / 4 - DepthOff;
    const int evenDepth = lowered + (lowered & 1);
    const int score = searchZeroWindow(pos,
                                       {.beta = singularBeta + 1,
                                        .depth = evenDepth,
                                        .ply = node.ply,
                                        .excluded = table.move,
                                        .noNull = true,
                                        .cutNode = node.cutNode},
                                       node.childPv);
    if (isStopped(pos)) return node.endWith(0);
    if (score <= singularBeta)
        trial.ext += OnePly;
    else if (score > node.beta && node.cutNode)
        return node.endWith(node.beta);
    return false;
}

// Sets the child's depth. Ends the node as `singularExtension` does.
inline bool extendMove(ZeroWindowNode& node, ZeroTrial& trial) {
    if (node.child.inCheck) trial.ext = checkExtension(node, trial);
    if (trial.ext <= 1 && extendsPassedPawn(node, trial)) trial.ext += OnePly;
    if (trial.isHashMove) {
        if (trial.ext == 0) trial.ext = hashMoveExtension(node);
        if (singularExtension(node, trial)) return true;
    }
    trial.ext = std::min(trial.ext, OnePly);
    if (beginsPawnEnding(node.child)) trial.ext = PawnEndingExtension;
    trial.newDepth = node.depth + trial.ext - OnePly;
    return false;
}

// ---- Late move reductions and the child's search ----

// What the child's search is asked beside its depth. `reduction` is the reduction in force, which the child
// reads; `noNull` and `cutNode` are the child's.
struct ChildCall {
    int depth;  // half plies; an under-promotion gets half of it
    int reduction = 0;
    bool noNull = false;
    bool cutNode;
};

// The child's score for the node.
inline int childScore(ZeroWindowNode& node, const Trial& trial, const ChildCall& call) {
    return nullWindowScore(node.pos, node.child,
                           {.beta = 1 - node.beta,
                            .depth = depthOfMove(trial.move, call.depth),
                            .ply = node.ply + 1,
                            .noNull = call.noNull,
                            .cutNode = call.cutNode},
                           call.reduction, node.childPv);
}

// Whether the static score promised a fail high, so that quiet moves which miss it are to blame.
inline bool promisesCutoff(const ZeroWindowNode& node) {
    constexpr int PromiseMargin = 55;  // centipawns below the window
    return node.eval > node.beta - PromiseMargin;
}

inline bool isNeverReduced(const ZeroWindowNode& node, const ZeroTrial& trial) {
    constexpr int LeastReach = 7;  // half plies, extension included
    const std::uint32_t stage = node.picker.stage;
    return node.played == 1 || node.depth + trial.ext < LeastReach || stage == StageCaptures ||
           trial.kind == (MoveTactical | MoveCheck) || !searchState.useLmr ||
           (trial.kind == (MoveTactical | MoveEvasion) && stage == StageEvasions);
}

inline bool searchUnreduced(ZeroWindowNode& node, Trial& trial) {
    trial.score = childScore(node, trial, {.depth = trial.newDepth, .cutNode = !node.cutNode});
    if (isStopped(node.pos)) return node.endWith(0);
    if (trial.score < node.beta && !node.excluded && promisesCutoff(node)) node.blameFirstMove(trial);
    return false;
}

// What a quiet move's own record takes off the reduction or adds to it.
inline int quietReduction(ZeroWindowNode& node, const Trial& trial, int reduction) {
    constexpr int ReliefDepth = 23;                     // below it
    constexpr int FarPawnRelief = 2, KillerRelief = 1;  // half plies
    Position& pos = node.pos;
    const Move move = trial.move;
    if (node.depth < ReliefDepth) {
        if (isFarPawnMove(pos, move))
            reduction -= FarPawnRelief;
        else if (node.isKillerOrCounter(move))
            reduction -= KillerRelief;
    }
    reduction += reductionByHistory(pos, move);
    if (reduction >= LeastReduction && !node.cutNode && trial.isQuietOutOfCheck() &&
        escapesDanger(pos, node.phase, move))
        reduction -= EscapeRelief;
    return reduction;
}

// Where a fail high is expected, later moves are reduced more.
inline int cutNodeReduction(const ZeroWindowNode& node) {
    constexpr int FirstDepth = 10, SecondDepth = 14, ThirdDepth = 21;  // above each a half ply more
    if (node.pos.inCheck || node.depth <= FirstDepth) return 1;
    return 2 + (node.depth > SecondDepth) + (node.depth > ThirdDepth);
}

// In half plies; 0 or LeastReduction and more.
inline int reductionFor(ZeroWindowNode& node, const Trial& trial) {
    constexpr int TacticalRelief = 5;
    int reduction = reductionOf(searchTables.reduceHigh, node.improving, node.depth, node.movesSeen);
    if (trial.isTactical) reduction -= TacticalRelief;
    reduction += node.hashMoveTactical;
    if (node.cutNode) reduction += cutNodeReduction(node);
    if (!trial.isTactical) reduction = quietReduction(node, trial, reduction);
    return reduction < LeastReduction ? 0 : reduction;
}

// Late move reductions: tries a move at a reduced depth, and a move that then fails high again at more of its
// depth.
inline bool searchReduced(ZeroWindowNode& node, ZeroTrial& trial) {
    constexpr int StrongReduction = 7, MilderReduction = 4;
    constexpr int MilderReach = 9;  // half plies, extension included; above it
    const int beta = node.beta, newDepth = trial.newDepth;
    const int reduction = reductionFor(node, trial);
    trial.score =
        childScore(node, trial, {.depth = newDepth - reduction, .reduction = reduction, .cutNode = true});
    if (isStopped(node.pos)) return node.endWith(0);
    if (reduction > StrongReduction && trial.score >= beta && node.depth + trial.ext > MilderReach) {
        trial.score =
            childScore(node, trial,
                       {.depth = newDepth - MilderReduction, .reduction = MilderReduction, .cutNode = true});
        if (isStopped(node.pos)) return node.endWith(0);
    }
    // Intended: the search at the whole depth goes without the null move.
    if (reduction >= 1 && trial.score >= beta)
        trial.score = childScore(node, trial, {.depth = newDepth, .noNull = true, .cutNode = !node.cutNode});
    return isStopped(node.pos) && node.endWith(0);
}

// Scores the child; ends the node after a stop, or on what the hash move's test shows.
inline bool searchChild(ZeroWindowNode& node, ZeroTrial& trial) {
    if (extendMove(node, trial)) return true;
    return isNeverReduced(node, trial) ? searchUnreduced(node, trial) : searchReduced(node, trial);
}

// ---- After a child, and after all of them ----

// True on a fail high.
inline bool noteScore(ZeroWindowNode& node, const Trial& trial) {
    if (trial.score <= node.best) return false;
    node.best = trial.score;
    node.drawn = trial.drawn;
    if (trial.score < node.beta) return false;
    node.pv[0] = trial.move;
    node.pv[1] = NoMove;
    // Of a node from which a move was excluded nothing is learnt but how to answer a check.
    if (node.excluded && !node.pos.inCheck) return true;
    node.noteBestQuiet(trial);
    node.noteKillers(trial);
    return true;
}

inline void learnFromMoves(ZeroWindowNode& node) {
    node.learnCaptures();
    if (node.depth <= LastBonusDepth && node.hasBestQuiet)
        node.tried.learnCutoff(node.pos, node.bestQuiet, promisesCutoff(node), historyBonus(node.depth - 1),
                               contBonus(node.depth));
}

inline int finishNode(ZeroWindowNode& node) {
    const NodeRank rank = node.cutNode ? RankCut : RankAll;
    if (!node.floorSet && node.played == 0 && !node.excluded) {
        const int score = node.scoreWithoutMoves();
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

}  // namespace

int searchZeroWindow(Position& pos, const ZeroWindowCall& call, Move* pv) {
    ZeroWindowNode node(pos, call, pv);
    if (enterNode(node) || tableCutoff(node) || node.tablebaseCutoff()) return node.result;
    staticScore(node);
    if (!pos.inCheck && pruneBeforeMoves(node)) return node.result;
    if (internalIterativeDeepening(node)) return node.result;
    setUpMoves(node);
    while (const Move move = nextMove(&node.picker)) {
        ZeroTrial trial(node, move);
        if (skipMove(node, trial) || pruneMove(node, trial)) continue;
        if (!makeMove(&pos, &node.child, move)) continue;
        noteMove(node, trial);
        if (!node.noteDraw(trial) && searchChild(node, trial)) return node.result;
        if (noteScore(node, trial)) break;
    }
    if (isStopped(pos)) return 0;
    return finishNode(node);
}
