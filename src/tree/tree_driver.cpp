#include "tree/tree_driver.h"

#include "base/clock.h"
#include "base/settings.h"
#include "board/exchange.h"
#include "board/make_move.h"
#include "search/limits.h"
#include "search/search.h"
#include "search/search_host.h"
#include "search/thread_pool.h"
#include "search/time_manager.h"
#include "tree/leaf_search.h"
#include "tree/playout.h"
#include "tree/tree_settings.h"
#include "tree/tree_values.h"

#include <algorithm>
#include <cmath>

namespace {

// Node budgets grow with the square root of the time, up to a ceiling.
void setUpSearch(double seconds) {
    constexpr double LargestScale = 8.0;
    const double scale =
        std::min(LargestScale, std::sqrt(seconds * 0.4 / std::min(threadPool.threadCount, 4)));
    constexpr TreeSettings Usual;
    treeSettings = Usual;
    treeSettings.mctsExplore = float(double(settings.mctsExplore) / 100.0);
    treeSettings.mctsFirstBudget = int(scale * Usual.mctsFirstBudget);
    treeSettings.mctsSecondBudget = int(scale * Usual.mctsSecondBudget);
}

// The root counts as visited three times, so that it is never taken for a new leaf.
void resetRoot() {
    MctsNode& root = mctsTable.nodes[0];
    root.beginChild(NoMove);
    root.visitWeight = 0.0;
    root.visits.store(3);
    mctsTable.nodeCount.store(1);
    treeState = TreeState{};
}

double firstRootValue(const Position& root, Position& child, Move move) {
    if (isTreeDraw(root, child, 0)) return DrawValue;
    return scoreToValue(mctsShallowValue(child, 0, seeLosing(root, move)));
}

// ---- The playouts of thread 0 ----

MctsNode& rootChild(int index) { return mctsTable.nodes[index + 1]; }

// The visits that the rest of the allotted time can still buy, at three quarters of the rate so far.
// Intended: past the allotment there is no end to them, and nothing is stopped early any more.
std::uint64_t reachableVisits(double now, double start, double allotted) {
    constexpr double Huge = 9.0e18;
    const std::uint64_t rate = std::uint64_t(double(mctsTable.nodes[0].visitCount()) / (now - start));
    const double reachable = (start + allotted - now) * double(3 * rate) * 0.25;
    return reachable < 0 || reachable > Huge ? ~std::uint64_t{0} : std::uint64_t(reachable);
}

// Stops the search when the leader can't be caught any more, and marks the moves that can't catch it.
void testLeader(double now, double start, double allotted) {
    const int count = searchState.rootMoveCount;
    // Read once: workers go on counting, and a follower that overtakes must not make a difference wrap.
    std::uint64_t visits[MaxListMoves];
    for (int i = 0; i < count; ++i) visits[i] = rootChild(i).visitCount();
    int leader = -1, second = -1;
    for (int i = 0; i < count; ++i)
        if (visits[i] > (leader < 0 ? 0 : visits[leader])) leader = i;
    if (leader < 0) return;
    for (int i = 0; i < count; ++i)
        if (i != leader && visits[i] > (second < 0 ? 0 : visits[second])) second = i;
    const std::uint64_t reachable = reachableVisits(now, start, allotted);
    if (second >= 0 && !searchControl.ponder && visits[leader] - visits[second] > reachable) {
        stopMainThread();
        return;
    }
    for (int i = 0; i < count; ++i)
        if (visits[leader] - visits[i] > reachable) treeState.mctsPruned[i] = true;
}

void creditRoot(double value) {
    mctsTable.nodes[0].valueSum.add(value);
    mctsTable.nodes[0].visitWeight.add(1.0);
    mctsTable.nodes[0].visits.fetch_add(1);
}

void runPlayouts(Position& root, double allotted) {
    const double start = searchState.searchStart;
    const double earliestStop = start + 0.25 * allotted;
    while (true) {
        const PlayoutResult result = mctsPlayout(&mctsTable.nodes[0], root, 0);
        periodicCheck();
        if (isMainStopped()) return;
        if (result.credited) creditRoot(result.value);
        if (mctsTable.isNearlyFull()) return;
        if (searchControl.moveTime != 0) continue;
        const double now = currentTime();
        if (now <= earliestStop) continue;
        testLeader(now, start, allotted);
        if (isMainStopped()) return;
    }
}

// ---- The answer ----

// Intended: the greatest sum, neither the greatest mean nor the most visits.
const MctsNode& bestChild() {
    const MctsNode* best = &rootChild(0);
    double greatest = -1.0;
    for (int i = 0; i < searchState.rootMoveCount; ++i) {
        if (rootChild(i).valueSum <= greatest) continue;
        greatest = rootChild(i).valueSum;
        best = &rootChild(i);
    }
    return *best;
}

Move ponderMoveOf(const MctsNode& best) {
    Move move = NoMove;
    double greatest = -1.0;
    for (const MctsNode* child = best.child(); child; child = child->sibling()) {
        if (child->visitCount() == 0 || child->mean() <= greatest) continue;
        greatest = child->mean();
        move = child->move;
    }
    return move;
}

void answer() {
    if (searchState.rootMoveCount == 0) {
        waitForUser();
        treeReports.bestMove(NoMove, NoMove);
        return;
    }
    const MctsNode& best = bestChild();
    treeReports.searchEnd(best, elapsedSeconds());
    waitForUser();
    treeReports.bestMove(best.move, ponderMoveOf(best));
}

}  // namespace

void prepareTree(Position& root, double seconds) {
    setUpSearch(seconds);
    resetRoot();
    const RootMove* list = threadPool.threadRecords[0].rootMoves;
    double total = 0.0;
    Position child;
    for (int i = 0; list[i].move != NoMove; ++i) {
        const Move move = cleanMove(list[i].move);
        if (!makeMove(&root, &child, move)) continue;
        const int index = mctsTable.nodeCount.load();
        MctsNode& made = mctsTable.nodes[index];
        made.beginChild(move);
        const double value = firstRootValue(root, child, move);
        made.valueSum = value;
        made.prior = float(value) * float(value);
        total += double(made.prior.load());
        if (index == 1)
            mctsTable.nodes[0].firstChild.store(&made);
        else
            mctsTable.nodes[index - 1].nextSibling.store(&made);
        mctsTable.nodes[0].visitWeight.add(1.0);
        mctsTable.nodes[0].valueSum = mctsTable.nodes[0].valueSum + 1.0 - value;
        mctsTable.nodeCount.store(index + 1);
    }
    mctsTable.nodes[0].normalisePriors(total);
}

// The two-second report may come before this search's tree is begun.
static void dropTree() {
    mctsTable.nodes.pages().settle();
    mctsTable.nodes[0].beginChild(NoMove);
    mctsTable.nodeCount.store(0);
}

void mctsDriver(Position& root, bool infinite, double seconds) {
    prepareTree(root, seconds);
    // A single move is answered with the value that it has.
    if (searchState.rootMoveCount >= 2 || (infinite && searchState.rootMoveCount == 1)) {
        threadPool.wakeWorkers(1);
        runPlayouts(root, seconds);
        threadPool.finishSearch();
    }
    if (searchControl.quitRequested)
        endForQuit();
    else
        answer();
}

void mctsWorkerLoop(Position& rootCopy) {
    SearchThread& thread = threadOf(rootCopy);
    MctsNode& root = mctsTable.nodes[0];
    while (true) {
        const PlayoutResult result = mctsPlayout(&root, rootCopy, 0);
        workerCheck(rootCopy);
        if (thread.stopFlag & 1) return;
        if (result.credited) {
            // Intended: a lost update of the root's numbers is accepted.
            root.visitWeight.add(1.0);
            root.visits.store(root.visitCount() + 1);
            root.valueSum.add(result.value);
        }
        if (mctsTable.isNearlyFull()) return;
    }
}

void installTreeSearch() {
    mctsTable.allocate(settings.mctsHash);
    searchHost.dropTree = dropTree;
    searchHost.runTree = mctsDriver;
    searchHost.treeWorker = mctsWorkerLoop;
}
