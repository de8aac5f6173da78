#include "shell/tree_reports.h"

#include "base/output.h"
#include "base/settings.h"
#include "board/move_text.h"
#include "endgame/tb_probe.h"
#include "search/limits.h"
#include "search/search_host.h"
#include "search/thread_pool.h"
#include "search/time_manager.h"
#include "search/trans_table.h"
#include "shell/reports.h"
#include "tree/playout.h"
#include "tree/tree_driver.h"
#include "tree/tree_settings.h"
#include "tree/tree_values.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace {

constexpr double LogOfDepthBase = 0.47000362924573563;  // a ply for each factor of 1.6

int nodesInTree() { return mctsTable.nodeCount.load(); }

int shownScore(int score) { return std::clamp(score, -LargestShown, LargestShown); }

// Intended: the product wraps in 32 bits.
int nodesPerSecond(int nodes, int milliseconds) { return int(std::uint32_t(nodes) * 1000u) / milliseconds; }

// The most visited line below a node, each move behind a blank.
std::string treeLine(const MctsNode& node) {
    constexpr int LongestLine = 63;
    std::string line;
    const MctsNode* child = node.child();
    for (int length = 0; child && length < LongestLine; ++length) {
        const MctsNode* best = child;
        float most = -2000000.0f;
        for (const MctsNode* other = child; other; other = other->sibling()) {
            if (float(other->visitCount()) <= most) continue;
            most = float(other->visitCount());
            best = other;
        }
        line += ' ' + moveText(best->move);
        child = best->child();
    }
    return line;
}

std::vector<const MctsNode*> rootChildren() {
    std::vector<const MctsNode*> children;
    for (const MctsNode* child = mctsTable.nodes[0].child(); child; child = child->sibling())
        children.push_back(child);
    return children;
}

void reportTreeMultiPv(int depth, int timeMs, int nodes) {
    std::vector<const MctsNode*> children = rootChildren();
    const int nps = timeMs < 1 ? 0 : int(nodes / (timeMs / 1000.0));
    for (int index = 1; index <= settings.multiPv && !children.empty(); ++index) {
        const auto best =
            std::max_element(children.begin(), children.end(),
                             [](const auto* a, const auto* b) { return a->visitCount() < b->visitCount(); });
        sendLine(
            "info multipv %i depth %i seldepth %i time %i nodes %i nps %i score cp %i tbhits %lu pv %s%s\n",
            index, depth, treeState.mctsSelDepth.load(), timeMs, nodes, nps,
            shownScore(valueToScore((*best)->mean())), static_cast<unsigned long>(tbSearch.hits()),
            moveText((*best)->move).c_str(), treeLine(**best).c_str());
        children.erase(best);
    }
}

// Whether the tree has stopped growing although playouts go on, as it does where everything is drawn: then it
// gets no deeper. Compares with the last report of the same search.
bool isExhausted(int nodes) {
    constexpr std::uint64_t ManyVisits = 10000;
    static double search = 0;
    static int lastNodes = 0;
    static std::uint64_t lastVisits = 0;
    const std::uint64_t visits = mctsTable.nodes[0].visitCount();
    const bool exhausted =
        search == searchState.searchStart && nodes == lastNodes && visits > lastVisits + ManyVisits;
    search = searchState.searchStart;
    lastNodes = nodes;
    lastVisits = visits;
    return exhausted;
}

// Every two seconds. Ends the search when its depth has reached the limit of the `go`, or can't reach it, but
// not while the user's word is waited for.
void reportTree() {
    constexpr double ReportPi = 3.1415926;  // Intended: a longer literal than everywhere else in the tree
    const MctsNode* best = nullptr;
    double greatest = -1.0;
    for (const MctsNode* child : rootChildren()) {
        if (child->mean() <= greatest) continue;
        greatest = child->mean();
        best = child;
    }
    if (!best) return;
    const int score = shownScore(int(std::tan((greatest - 0.5) * ReportPi) * TreeScoreScale));
    const int nodes = nodesInTree();
    const int depth = int(double(std::log(float(nodes))) / LogOfDepthBase);
    const bool hasDepthLimit = searchState.depthLimit != NoDepthLimit;
    const bool isHeld = searchControl.ponder || searchState.infinite;
    if (!isHeld && (depth >= searchState.depthLimit || (hasDepthLimit && isExhausted(nodes))))
        stopMainThread();
    const double seconds = elapsedSeconds();
    const int milliseconds = int(seconds * 1000.0);
    if (settings.multiPv >= 2) {
        reportTreeMultiPv(depth, milliseconds, nodes);
        return;
    }
    sendLine("info depth %i seldepth %i time %i score cp %i nodes %i nps %i pv%s\n", depth,
             treeState.mctsSelDepth.load(), milliseconds, score, nodes, nodesPerSecond(nodes, milliseconds),
             treeLine(mctsTable.nodes[0]).c_str());
}

void reportTreeEnd(const MctsNode& best, double seconds) {
    const int nodes = nodesInTree();
    const int milliseconds = int(seconds * 1000.0);
    sendLine("info nodes %i\n", nodes);
    sendLine("info depth %i seldepth %i time %i nodes %i nps %i score cp %i tbhits %lu hashfull %i pv %s%s\n",
             int(std::log(double(nodes)) / LogOfDepthBase), treeState.mctsSelDepth.load(), milliseconds,
             nodes, nodesPerSecond(nodes, milliseconds), shownScore(valueToScore(best.mean())),
             static_cast<unsigned long>(tbSearch.hits()), transTable.occupancy(), moveText(best.move).c_str(),
             treeLine(best).c_str());
}

}  // namespace

void installTreeReports() {
    searchHost.reportTree = reportTree;
    treeReports.searchEnd = reportTreeEnd;
    treeReports.bestMove = sendBestMove;  // unlike the alpha-beta search's answer this one is not logged
}
