// The root search: walks the thread's root list once at a given depth and window. It keeps the list sorted,
// reports, and sets the counters that the time rules read.
#include "base/clock.h"
#include "board/draws.h"
#include "board/exchange.h"
#include "board/history_tables.h"
#include "board/insertion_sort.h"
#include "board/legality.h"
#include "board/make_move.h"
#include "search/history.h"
#include "search/node.h"
#include "search/reductions.h"
#include "search/search_host.h"

#include <algorithm>
#include <cstdlib>

namespace {

// The lines of one pass with several lines wanted, best first. The ranks that the root list is sorted by
// overwrite its scores, so the lines keep theirs here. Only thread 0 has lines.
struct RootLine {
    int score;
    Move pv[PvLength];
};
RootLine rootLines[MaxListMoves];
int rootLineOrder[MaxListMoves];  // indices into `rootLines`
int rootLineCount;

struct RootNode {
    Position& pos;
    SearchThread& thread;
    const int depth;  // half plies
    const int firstAlpha;
    int alpha;
    const int beta;
    Move* const pv;
    const int multiPv;
    const bool isMain;  // thread 0, which alone reports
    bool reportMoves = false;
    bool finished = false;  // stopped, or a fail high that ends the pass
    int number = 0;         // of the move that is being tried, from 1
    int best = -NoScore;
    int bestNumber = 0;  // 0: no move yet
    Position child;      // written by makeMove alone
    Move childPv[PvLength];

    RootNode(Position& position, int halfPlies, int lower, int upper, Move* line)
        : pos(position),
          thread(threadOf(position)),
          depth(halfPlies),
          firstAlpha(lower),
          alpha(lower),
          beta(upper),
          pv(line),
          multiPv(settings.multiPv),
          isMain(position.threadIndex == 0) {}

    bool wantsLines() const { return multiPv > 1; }
    int iteration() const { return depth / OnePly; }
    bool prints() const {
        return isMain && !searchControl.benchMode && iteration() > settings.minimalReporting;
    }
};

inline void enterRoot(RootNode& node) {
    constexpr int ReportMovesDepth = 12;      // half plies
    constexpr double ReportMovesAfter = 3.0;  // seconds
    Position& pos = node.pos;
    pos.staticEval = pos.inCheck ? NoScore : evaluate(pos, -OpenEvalBound, OpenEvalBound);
    pos.plyMark = 0;
    clearMarks(pos);
    pos.rootFlag = 0;
    pos.nullFloor = RootExtensionCredit;  // the sum of extensions that lines go on from
    node.pv[0] = NoMove;
    if (!node.isMain) return;
    rootLineCount = 0;
    // Intended: any depth in the option turns the lines for single moves off, not just a larger one than
    // this.
    node.reportMoves = node.depth >= ReportMovesDepth && settings.minimalReporting == 0 &&
                       !searchControl.benchMode && currentTime() - searchState.searchStart > ReportMovesAfter;
    periodicCheck();
    searchState.rootMoveIndex = 0;
}

// ---- One move ----

// Late move reductions: that of a quiet move, an even number of half plies; below LeastReduction there is
// none. Notes the move's stat for the child.
inline int reductionFor(RootNode& node, Move move) {
    constexpr int FarPawnRelief = 2, PoorExtra = 1;  // half plies
    constexpr int StatShare = 3;                     // of the stat, which the floors are compared with
    constexpr int GoodStat = 47999, ExcellentStat = 83999, GoodRelief = 1, ExcellentRelief = 2;
    constexpr int PawnPhase = 48;  // up to it an advanced pawn's stat takes nothing off
    Position& pos = node.pos;
    int reduction = reductionOf(searchTables.reduceLow, true, node.depth, node.number);
    if (isFarPawnMove(pos, move)) reduction -= FarPawnRelief;
    const int stat = quietStat(pos, move);
    if (stat / StatShare < searchTables.rootStatFloor[node.number] || seeLosing(pos, move))
        reduction += PoorExtra;
    const int phase = pos.cappedPhase();
    if (!(phase <= PawnPhase && isAdvancedPawnMove(pos, move))) {
        if (stat > ExcellentStat)
            reduction -= ExcellentRelief;
        else if (stat > GoodStat)
            reduction -= GoodRelief;
    }
    if (reduction > 0 && node.depth <= EscapeDepth && escapesDanger(pos, phase, move))
        reduction -= EscapeRelief;
    pos.moveStat = stat - searchTables.historyBase;
    return reduction + (reduction & 1);
}

constexpr int ChildPly = 1;

// `reduction` is the reduction in force, which the child reads.
inline int zeroWindowScore(RootNode& node, int depth, int reduction) {
    return nullWindowScore(node.pos, node.child,
                           {.beta = -node.alpha, .depth = depth, .ply = ChildPly, .cutNode = true}, reduction,
                           node.childPv);
}

// PVS: the move's score from the root's view, from the whole window for the first move and for those that
// beat a null window. Means nothing after a stop.
inline int scoreMove(RootNode& node, Move move) {
    Position& child = node.child;
    if (isDrawnByRule(node.pos, child, needsTwoRepetitions(ChildPly))) {
        node.childPv[0] = NoMove;
        return DrawScore;
    }
    // Check extension. Intended: the root extends every check that loses nothing, whatever the line's credit.
    const int ext = child.inCheck && !seeLosing(node.pos, move) ? OnePly : 0;
    child.nullFloor = std::int16_t(child.nullFloor + ext);  // the sum of the line's extensions
    const int newDepth = node.depth + ext - OnePly;
    if (node.number > 1) {
        const bool amongFirst = node.number <= node.multiPv;
        if (!isTactical(node.pos, move) && !child.inCheck && searchState.useLmr && !amongFirst) {
            const int reduction = reductionFor(node, move);
            if (reduction >= LeastReduction) {
                const int score =
                    zeroWindowScore(node, std::max(newDepth - reduction, FirstFullDepth), reduction);
                if (score <= node.alpha || isStopped(node.pos)) return score;
            }
        }
        const int score = zeroWindowScore(node, newDepth, 0);
        if (score <= node.alpha || isStopped(node.pos)) return score;
    }
    return -searchFullWindow(child, -node.beta, -node.alpha, newDepth, ChildPly, node.childPv,
                             Deepening::Allowed);
}

// ---- Lines and reports ----

void printLines(const RootNode& node) {
    if (!node.prints()) return;
    const int count = std::min(node.multiPv, rootLineCount);
    for (int i = 0; i < count; ++i) {
        const RootLine& line = rootLines[rootLineOrder[i]];
        searchHost.reportMultiPvLine(i + 1, node.iteration(), line.score, line.pv);
    }
}

// Adds a line behind all that are as good.
void addLine(const RootNode& node, Move move, int score) {
    const int index = rootLineCount++;
    rootLines[index].score = score;
    writeLine(rootLines[index].pv, move, node.childPv);
    rootLineOrder[index] = index;
    insertLast(rootLineOrder, rootLineCount,
               [](int a, int b) { return rootLines[a].score > rootLines[b].score; });
}

// Quiescence keeps one move of its lines, so that a mate's line may end early. The table still knows the
// rest: it is followed until the mate, or until it has nothing legal to offer.
void completeMateLine(RootNode& node, int score) {
    const int mateLength = MateScore - std::abs(score);  // plies
    if (std::abs(score) < MateBound || mateLength >= PvLength) return;
    const std::uint64_t nodes = node.thread.nodes;  // these makes are no part of the search
    Position line[2];
    const Position* pos = &node.pos;
    bool known = true;  // the move comes from the search's own line
    for (int length = 0; length < mateLength; ++length) {
        known = known && node.pv[length] != NoMove;
        const Move move = known ? node.pv[length] : readTable(pos->key, length).move;
        Position* child = &line[length & 1];
        const bool legal = isValidMove(*pos, move) && makeMove(pos, child, move);
        node.pv[length] = legal ? move : NoMove;
        if (!legal) break;
        node.pv[length + 1] = known ? node.pv[length + 1] : NoMove;
        markCheck(*child);
        pos = child;
    }
    node.thread.nodes = nodes;
}

inline void noteBest(RootNode& node, Move move, int score) {
    node.best = score;
    node.bestNumber = node.number;
    if (node.isMain && node.number > 1) searchState.bestMoveChanges += 1;
    searchState.rootPublishedScore = score;
    writeLine(node.pv, move, node.childPv);
    if (node.isMain) completeMateLine(node, score);
}

// With several lines wanted the window stays open, so that every line gets its exact score. True if the pass
// is over.
inline bool noteLine(RootNode& node, Move move, int score) {
    if (node.isMain) {
        addLine(node, move, score);
        printLines(node);
    }
    if (score >= node.beta) {
        node.best = score;
        node.finished = true;
        return true;
    }
    if (score > node.best) noteBest(node, move, score);
    return false;
}

// Intended: a move below the window is no new best, even if it beats the first one: the next window lies
// around the score of the move that was best so far. True on a fail high.
inline bool noteScore(RootNode& node, Move move, int score) {
    if (node.number == 1 || score > node.alpha) noteBest(node, move, score);
    if (score <= node.alpha) return false;
    node.alpha = score;
    const bool failedHigh = score >= node.beta;
    if (node.isMain) searchState.rootScoreKind = failedHigh ? FailedHigh : ExactScore;
    if (node.prints())
        searchHost.reportDepth(node.iteration(), score, node.pv, failedHigh ? ReportLower : ReportExact);
    return failedHigh;
}

// Searches one move of the list. True if the pass is over.
inline bool tryMove(RootNode& node, RootMove& rootMove) {
    const Move move = cleanMove(rootMove.move);
    const std::uint64_t nodesBefore = node.thread.nodes;
    ++node.number;
    if (!makeMove(&node.pos, &node.child, move)) return false;
    markCheck(node.child);
    if (node.isMain) searchState.rootMoveIndex = node.number;
    if (node.reportMoves) searchHost.reportCurrentMove(move, node.number);
    const int score = scoreMove(node, move);
    if (isStopped(node.pos)) {
        node.best = 0;
        node.finished = true;
        return true;
    }
    rootMove.nodes = node.thread.nodes - nodesBefore;
    rootMove.score = score;
    return node.wantsLines() ? noteLine(node, move, score) : noteScore(node, move, score);
}

// ---- The list ----

inline void moveBestToFront(RootNode& node) {
    if (node.bestNumber > 0)
        std::rotate(node.thread.rootMoves, node.thread.rootMoves + node.bestNumber - 1,
                    node.thread.rootMoves + node.bestNumber);
}

// Ranks the list. The first two moves and the captures that follow keep their places; from the first quiet
// move on the quiet ones are sorted among the places that they hold.
inline void sortRootMoves(RootNode& node) {
    constexpr int FixedRank = 65000;
    constexpr int FixedMoves = 2;
    const Position& pos = node.pos;
    RootMove* moves = node.thread.rootMoves;
    int places[MaxListMoves];  // of quiet moves
    RootMove quiets[MaxListMoves];
    int quietCount = 0;
    for (int i = 0; moves[i].move != NoMove; ++i) {
        const Move move = cleanMove(moves[i].move);
        const bool quiet = !isTactical(pos, move);
        if (i >= FixedMoves && quiet) places[quietCount++] = i;
        moves[i].score = quietCount > 0 ? historyEntry(pos, quietMoveOf(pos, move)) : FixedRank;
    }
    for (int i = 0; i < quietCount; ++i) quiets[i] = moves[places[i]];
    insertionSort(quiets, quietCount, [](const RootMove& a, const RootMove& b) { return a.score > b.score; });
    for (int i = 0; i < quietCount; ++i) moves[places[i]] = quiets[i];
}

inline int finishRoot(RootNode& node) {
    // Half plies; a failed-low score or a complete set of lines is printed from here on.
    constexpr int ReportDepth = 10;
    moveBestToFront(node);
    if (node.pv[0]) sortRootMoves(node);
    if (node.bestNumber == 0) node.best = node.pos.inCheck ? -MateScore : 0;
    searchState.rootPublishedScore = node.best;
    if (!node.isMain) return node.best;
    const bool failedLow = !node.wantsLines() && node.bestNumber > 0 && node.best <= node.firstAlpha;
    if (node.wantsLines()) searchState.rootScoreKind = ExactScore;
    if (failedLow) searchState.rootScoreKind = FailedLow;
    if (node.depth < ReportDepth) return node.best;
    if (node.wantsLines())
        printLines(node);
    else if (failedLow && node.prints())
        searchHost.reportDepth(node.iteration(), node.best, node.pv, ReportUpper);
    return node.best;
}

}  // namespace

int searchRoot(Position& pos, int depth, int alpha, int beta, Move* pv) {
    if (isStopped(pos)) return 0;
    RootNode node(pos, depth, alpha, beta, pv);
    enterRoot(node);
    for (RootMove* rootMove = node.thread.rootMoves; rootMove->move != NoMove; ++rootMove)
        if (tryMove(node, *rootMove)) break;
    return node.finished ? node.best : finishRoot(node);
}
