#include "tree/playout.h"

#include "board/attacks.h"
#include "board/draws.h"
#include "board/exchange.h"
#include "board/legality.h"
#include "board/make_move.h"
#include "board/move_picker.h"
#include "search/thread_pool.h"
#include "search/time_manager.h"
#include "tree/leaf_search.h"
#include "tree/tree_settings.h"
#include "tree/tree_values.h"

#include <cmath>
#include <sched.h>

namespace {

constexpr std::uint64_t LeafVisits = 3;  // visits after which a node is expanded
constexpr PlayoutResult NothingCredited{};

// The value of a node without a legal move.
double terminalValue(const Position& pos, int ply) {
    return pos.inCheck ? scoreToValue(MateScore - ply) : DrawValue;
}

// A node that this thread may expand; the others see it busy.
bool beginExpansion(MctsNode& node) {
    std::uint8_t idle = 0;
    return node.busy.compare_exchange_strong(idle, 1);
}
void endExpansion(MctsNode& node) { node.busy.store(0, std::memory_order_release); }

// ---- Visits in flight ----

// A line that a thread is walking looks worse to the others until its value is known.
void beginDescent(MctsNode& child) { child.visitWeight.add(treeSettings.mctsVirtualVisit); }
void cancelDescent(MctsNode& child) { child.visitWeight.add(-double(treeSettings.mctsVirtualVisit)); }
// Backpropagation, one node of the line at a time.
void creditDescent(MctsNode& child, double value) {
    child.valueSum.add(value);
    child.visitWeight.add(-(double(treeSettings.mctsVirtualVisit) - 1.0));
    child.visits.fetch_add(1);
}

// ---- Expansion ----

struct Expansion {
    int children = 0;
    bool stopped = false;
};

// The first value of a new child, for the side that moves into it.
float firstValue(const Position& pos, Position& child, Move move, int ply) {
    return float(scoreToValue(mctsShallowValue(child, ply, seeLosing(pos, move))));
}

// Makes a node for every legal move, each with the value of a shallow search. The node is held busy. A stop,
// or a full store, leaves the children made so far, their priors as they are: the search is about to end.
// The thread's own flag is looked at too, because thread 0 stops the others without one of its own when the
// store is full.
Expansion expand(MctsNode& node, Position& pos, int ply) {
    constexpr int PickerDepth = 100;
    MovePicker picker;
    picker.start(pos, pos.inCheck ? KindEvasions : KindFull, PickerDepth, NoMove);
    Expansion result;
    std::atomic<MctsNode*>* link = &node.firstChild;
    double total = 0.0;
    Position child;
    while (const Move move = nextMove(&picker)) {
        if (!makeMove(&pos, &child, move)) continue;
        const bool drawn = isTreeDraw(pos, child, ply);
        const int index = mctsTable.nodeCount.fetch_add(1) + 1;
        if (index >= mctsTable.capacity) {
            result.stopped = true;
            return result;
        }
        MctsNode& made = mctsTable.nodes[index];
        made.beginChild(move);
        link->store(&made, std::memory_order_release);
        link = &made.nextSibling;
        float value = float(DrawValue);
        if (!drawn) {
            value = firstValue(pos, child, move, ply);
            if (isMainStopped() || isStopped(child)) {
                result.stopped = true;
                return result;
            }
        }
        ++result.children;
        made.valueSum = double(value);
        made.prior = value * value;
        total += double(made.prior.load());
    }
    node.normalisePriors(total);
    return result;
}

// ---- Selection ----

struct Selection {
    MctsNode* child = nullptr;
    int number = 1;  // running, from 1; shrinks the budgets of later siblings
};

bool isPruned(int number) { return number <= MaxListMoves && treeState.mctsPruned[number]; }

// Whether a move is tried sooner than its visits say: a capture among the first children, or any check.
bool hasBonus(const Position& pos, Move move, int number) {
    constexpr int LastFavoured = 5;
    if (number <= LastFavoured && !pos.inCheck && pos.board[toOf(move)] != NoPiece) return true;
    return givesCheckQuick(pos, move);
}

// PUCT-like selection, an upper confidence bound (UCT) that is weighted by priors: the greatest sum of a
// child's mean and a bonus that grows with its prior and the parent's visits and falls with its own.
Selection selectChild(const MctsNode& node, const Position& pos, int ply) {
    constexpr double UnderPromotionPenalty = -0.1;
    const double spread = std::sqrt(double(node.visitCount() + 1));
    Selection selection;
    double best = -1.0;
    int number = 0;
    for (MctsNode* child = node.child(); child; child = child->sibling()) {
        const Move move = child->move;
        double mean = 0.0, divisor = 1.0;
        const auto measure = [&] {
            const double weight = child->visitWeight;
            mean = child->valueSum / weight;
            divisor = weight + 1.0;
            if (ply > 0 && child->visitCount() == 1) divisor += 1.0;
            if (hasBonus(pos, move, number)) divisor -= 1.0;
            if (child->isBusy()) mean -= double(treeSettings.mctsBusyPenalty);
        };
        measure();
        // Intended: the flag makes the running number move on and measures the same child again. It shifts
        // the budget of later children and removes none from the comparison.
        while (ply == 0 && isPruned(number)) {
            ++number;
            measure();
        }
        ++number;
        double score =
            mean + (double(treeSettings.mctsExplore) * spread * double(child->prior.load())) / divisor;
        if (isUnderPromotion(move)) score += UnderPromotionPenalty;
        if (score > best) {
            best = score;
            selection = {child, number};
        }
    }
    return selection;
}

// ---- Leaf and descent ----

// Gives a child its second or third value. False if the child is past that, and must be descended into. A
// search that was stopped has no value: the visit is taken back and nothing is credited.
bool visitLeaf(const Position& pos, const Selection& selection, int ply, PlayoutResult& result) {
    MctsNode& child = *selection.child;
    if (child.move == NoMove) return false;
    Position made;
    if (!makeMove(&pos, &made, child.move)) return false;
    if (isTreeDraw(pos, made, ply)) {
        // Intended: the visits stay, so that the node is met again in the same state.
        child.valueSum = double(child.visitCount()) * DrawValue;
        result = {DrawValue, true};
        return true;
    }
    const std::uint64_t visitsBefore = child.visits.fetch_add(1);
    float value;
    if (visitsBefore == 1 || visitsBefore == 2) {
        child.visitWeight.add(1.0);
        const int budget = visitsBefore == 1 ? treeSettings.mctsFirstBudget : treeSettings.mctsSecondBudget;
        value = float(scoreToValue(leafBudgetSearch(made, ply, selection.number, budget)));
        if (isStopped(made)) {
            child.visitWeight.add(-1.0);
            child.visits.fetch_sub(1);
            result = NothingCredited;
            return true;
        }
    } else if (visitsBefore == LeafVisits && !child.child() && !child.isBusy()) {
        // Another thread has been here in between. Intended: it is the parent whose check is looked at.
        child.visitWeight.add(1.0);
        value = float(terminalValue(pos, ply));
    } else {
        child.visits.fetch_sub(1);
        return false;
    }
    // The deeper result replaces all that was known of the node.
    child.valueSum = double(float(child.visitCount()) * value);
    result = {1.0 - double(value), true};
    return true;
}

PlayoutResult descend(const Position& pos, MctsNode& child, int ply) {
    Position made;
    if (!makeMove(&pos, &made, child.move)) return NothingCredited;
    beginDescent(child);
    const PlayoutResult below =
        isTreeDraw(pos, made, ply) ? PlayoutResult{DrawValue, true} : mctsPlayout(&child, made, ply + 1);
    if (isMainStopped() || !below.credited) {
        cancelDescent(child);
        return NothingCredited;
    }
    creditDescent(child, below.value);
    return {1.0 - below.value, true};
}

// Another thread is giving this child its children. It may have no processor, so a worker offers its own;
// thread 0 polls all the time.
void waitWhileBusy(const MctsNode& child, const Position& pos) {
    while (child.isBusy() && !isMainStopped()) {
        if (pos.threadIndex == 0) {
            periodicCheck();
            __builtin_ia32_pause();
        } else {
            workerCheck(pos);
            sched_yield();
        }
    }
}

}  // namespace

// Threefold repetition near the root, the first repetition elsewhere, and the clock.
bool isTreeDraw(const Position& pos, Position& child, int ply) {
    child.inCheck = isInCheck(child);
    const int clock = child.halfmoveClock;
    if (clock > LastFreeClock) return drawnByClock(child);
    return ply > 1 ? repeatedOnce(&pos, child.key, clock) : repeatedTwice(&pos, child.key, clock);
}

PlayoutResult mctsPlayout(MctsNode* node, Position& pos, int ply) {
    if (ply > treeState.mctsSelDepth) treeState.mctsSelDepth = ply;
    if (!beginExpansion(*node)) return NothingCredited;
    bool justExpanded = false;
    if (!node->child() && node->visitCount() >= LeafVisits) {
        const Expansion expansion = expand(*node, pos, ply);
        if (expansion.stopped || expansion.children == 0) {
            endExpansion(*node);
            if (expansion.stopped) return NothingCredited;
            return {terminalValue(pos, ply), true};
        }
        justExpanded = true;
    }
    endExpansion(*node);

    const Selection selection = selectChild(*node, pos, ply);
    if (!selection.child) return {node->mean(), true};
    waitWhileBusy(*selection.child, pos);
    const std::uint64_t visits = selection.child->visitCount();
    if (visits == 1 || visits == 2 || justExpanded) {
        PlayoutResult result;
        if (visitLeaf(pos, selection, ply, result)) return result;
    }
    return descend(pos, *selection.child, ply);
}
