// The iterative driver: one `go` from its preparation to its answer, on thread 0.
#include "base/clock.h"
#include "base/settings.h"
#include "board/fen.h"
#include "board/move_text.h"
#include "endgame/book.h"
#include "eval/contempt.h"
#include "eval/evaluate.h"
#include "eval/parameters.h"
#include "eval/style.h"
#include "search/limits.h"
#include "search/root_list.h"
#include "search/search.h"
#include "search/search_host.h"
#include "search/search_tables.h"
#include "search/strength.h"
#include "search/thread_pool.h"
#include "search/time_manager.h"
#include "search/trans_table.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

// What one search answers.
struct Answer {
    Move best = NoMove;
    Move ponder = NoMove;
    int depth = 0;  // plies, of the last iteration begun
    bool quit = false;
};

// ---- Preparation ----

// The tree search is the mode only if there is one.
bool wantsTree() { return settings.useMcts && searchHost.runTree; }

// The tables that depend on the mode follow it.
void setMode(bool treeMode) {
    if (treeSearchActive == treeMode) return;
    treeSearchActive = treeMode;
    applyStyle();
    buildSearchTables();
}

void copyOptions(double target, int depthLimit) {
    searchState.useLmr = settings.useLmr.load();
    searchState.nullMovePruning = settings.nullMovePruning.load();
    const bool unlimited = target >= NoTimeLimit && depthLimit > 98;
    searchState.analysisSearch = settings.analyseMode || unlimited;
}

void prepareMainThread(Position& root) {
    static bool first = true;
    SearchThread& thread = ThreadPool::threadRecords[0];
    ThreadPool::attachRoot(root, 0);
    thread.stopFlag.exchange(0);
    thread.nodes = 0;
    thread.clearKillers();
    if (first) {
        thread.resetHistory();
        buildSearchTables();
        first = false;
    }
    // Game records hold neither sum.
    root.phase = std::uint16_t(computePhase(root));
    root.psqPair = computePsqPair(root);
    root.nullFloor = RootExtensionCredit;
}

void logStart(Position& root) {
    if (!searchHost.isLogging()) return;
    searchHost.log("fen: %s\n", writeFen(root).c_str());
    searchHost.log("lastmove: %s\n", moveText(root.lastMove).c_str());
    searchHost.log("eval: %d\n", evaluate(root, -OpenEvalBound, OpenEvalBound));
    if (searchControl.ponder)
        searchHost.log("ponder ply: %d\n", int(root.gamePly));
    else
        searchHost.log("search ply: %d\n", int(root.gamePly));
    searchHost.log("target: %0.3f\n", searchState.iterationTarget);
    searchHost.log("depth: %d\n", searchState.depthLimit);
}

void prepareSearch(Position& root, int depthLimit, double target, bool infinite) {
    searchState.depthLimit = depthLimit;
    searchState.iterationTarget = target;
    searchState.infinite = infinite;
    applyStrength(root, wantsTree());
    setMode(wantsTree());
    setContempt(settings.contempt, root.sideToMove(), treeSearchActive);
    copyOptions(target, depthLimit);
    searchControl.searching = true;
    if (settings.threads != threadCount) ThreadPool::restartForOption();
    searchState.searchStart = currentTime();
    searchState.stopAfterIteration = false;
    // What no `isready` has made ready, such as the caches of a pool that was rebuilt just now, stays on
    // small pages: the first touch of a huge one takes too long between two looks at the clock.
    transTable.pages().settle();
    ThreadPool::settleCaches();
    prepareMainThread(root);
    logStart(root);
}

// Makes the root list and publishes it with the root.
void publishRoot(Position& root, const char* searchMoves, double target) {
    SearchThread& thread = ThreadPool::threadRecords[0];
    searchState.rootMoveCount = buildRootList(root, searchMoves, target, thread.rootMoves);
    transTable.newSearch(root.key);
    ThreadPool::searchRootPosition = root;
    std::memcpy(ThreadPool::searchRootMoves, thread.rootMoves, sizeof thread.rootMoves);
    ThreadPool::clearNodes();
    searchState.bestMoveChanges = 0;
}

// ---- Iterations ----

void beginIteration(SearchThread& thread, int depth) {
    searchState.bestMoveChanges *= 0.5;
    searchState.iterationFailLow = false;
    searchState.failHighAccepted = false;
    for (RootMove* move = thread.rootMoves; move->move != NoMove; ++move) move->nodes = 1;
    ThreadPool::searchDepthNow = depth;
    thread.iterationScore[depth] = -NoScore;
}

bool isRootMove(Move move) {
    const RootMove* list = ThreadPool::threadRecords[0].rootMoves;
    while (list->move != NoMove && cleanMove(list->move) != move) ++list;
    return list->move != NoMove;
}

// The book may answer at once, unless the user wants a search without end. A move that the root list lacks is
// not asked for, or tables know better.
Move askBook(Position& root) {
    if (searchState.infinite || searchControl.benchMode) return NoMove;
    const Move move = bookProbe(root);
    if (move == NoMove || !isRootMove(move)) return NoMove;
    searchHost.reportBookMove(move);
    return move;
}

IterationFacts factsOf(const SearchThread& thread, int depth, Move best) {
    const int score = thread.iterationScore[depth];
    return {.score = score,
            .previousScore = depth > 1 ? thread.iterationScore[depth - 1] : score,
            .failedLow = searchState.iterationFailLow,
            .moveChanges = searchState.bestMoveChanges,
            .obviousRecapture = best != NoMove && best == searchState.recaptureMove};
}

// Whether the iteration that has just ended is the last one.
bool isLastIteration(int depth, int score) {
    constexpr int MateEndsBelow = 98;  // plies; a search with no real limit goes on after a mate
    testIterationEnd(depth, score);
    if (searchState.stopAfterIteration && !searchControl.ponder) return true;
    if (searchState.depthLimit < MateEndsBelow && std::abs(score) >= MateBound) return true;
    return depth >= searchState.depthLimit || depth >= searchState.skillDepth || depth >= MaxIteration - 2;
}

// Deepens until something ends the search.
Answer deepen(Position& root) {
    SearchThread& thread = ThreadPool::threadRecords[0];
    Answer answer;
    // A stop before any result leaves the first move of the list.
    answer.best = cleanMove(thread.rootMoves[0].move);
    for (int depth = 1;; ++depth) {
        answer.depth = depth;
        answer.quit = searchControl.quitRequested;
        if (answer.quit) return answer;
        if (depth == 1) {
            if (const Move bookMove = askBook(root)) {
                thread.iterationPv[depth][0] = bookMove;
                thread.iterationPv[depth][1] = NoMove;
                answer.best = bookMove;
                return answer;
            }
        }
        beginIteration(thread, depth);
        searchIteration(root, depth);
        const int score = thread.iterationScore[depth];
        const Move* pv = thread.iterationPv[depth];
        setContempt(contemptFromScore(score, settings.contempt), root.sideToMove(), treeSearchActive);
        answer.quit = searchControl.quitRequested;
        if (answer.quit) return answer;
        if (score >= -MateScore && pv[0] != NoMove) {
            answer.best = pv[0];
            answer.ponder = pv[1];
        }
        if (searchControl.moveTime == 0) updateEasyStop(factsOf(thread, depth, answer.best));
        if (isMainStopped()) {
            searchHost.log("iteration: aborted\n");
            return answer;
        }
        if (isLastIteration(depth, score)) return answer;
    }
}

// ---- The end ----

void logEnd() {
    constexpr const char* Kinds[3] = {"exact", "low", "high"};  // by RootScoreKind
    if (!isMainStopped()) searchHost.log("iteration: completed\n");
    searchHost.log("itcomp: %d out of %d  %s\n", searchState.rootMoveIndex, searchState.rootMoveCount,
                   Kinds[searchState.rootScoreKind]);
}

void endSearch() {
    searchControl.searching = false;
    searchHost.searchOver();
}

void finishSearch(const Answer& answer) {
    logEnd();
    searchControl.timeUsed += std::max(currentTime() - searchState.searchStart, 0.0);
    waitForUser();
    if (!searchControl.benchMode) {
        searchHost.reportDepthEnd(answer.depth);
        searchHost.reportSearchEnd();
        searchHost.reportBestMove(answer.best, answer.ponder);
    }
    endSearch();
}

// ---- The tree mode ----

// Alpha-beta comes first and leaves what it learns in the tables; the tree gets the rest of the time and
// answers.
void thinkWithTree(Position& root, double target) {
    constexpr int FirstSearchDepth = 22;  // half plies
    if (const Move bookMove = askBook(root)) {
        waitForUser();
        searchHost.reportBestMove(bookMove, NoMove);
        endSearch();
        return;
    }
    searchHost.dropTree();
    timeLimits.hardLimit = searchState.searchStart + target;
    Move pv[PvLength];
    searchFullWindow(root, -MateScore, MateScore, FirstSearchDepth, 0, pv, Deepening::Forbidden);
    searchHost.runTree(root, searchState.infinite, target);
    endSearch();
}

}  // namespace

void waitForUser() {
    while (!isMainStopped() && (searchControl.ponder || searchState.infinite)) {
        if (searchHost.inputWaiting()) searchHost.processCommand();
        if (searchControl.quitRequested) return;
        if (!searchHost.inputWaiting()) searchHost.waitForInput();
    }
}

void think(Position& root, int depthLimit, double targetSeconds, double maxSeconds, const char* searchMoves,
           int infinite) {
    prepareSearch(root, depthLimit, targetSeconds, infinite != 0);
    publishRoot(root, searchMoves, targetSeconds);
    timeLimits = makeTimeLimits(searchState.searchStart, targetSeconds, maxSeconds,
                                searchControl.extendPercent, searchControl.moveTime, depthLimit);
    timeLimits.nextReport = searchState.searchStart + 2.0;
    if (treeSearchActive) {
        thinkWithTree(root, targetSeconds);
        return;
    }
    ThreadPool::searchDepthNow = 1;
    ThreadPool::wakeWorkers();
    const Answer answer = deepen(root);
    ThreadPool::finishSearch();
    if (answer.quit) {
        searchControl.searching = false;
        searchHost.shutDown();
        return;
    }
    finishSearch(answer);
}
