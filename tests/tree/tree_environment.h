// What tests of the tree stand on: the node store, the tree's search tables, and trees that are prepared as
// the driver does or planted by hand.
#pragma once

#include "search/search_environment.h"
#include "tree/leaf_search.h"
#include "tree/playout.h"
#include "tree/tree_driver.h"
#include "tree/tree_settings.h"
#include "tree/tree_values.h"

#include <algorithm>
#include <cstring>

// What the program around the search has seen of it.
struct Seen {
    int waits = 0;
    Move answer = NoMove;
    double weightInFlight = 0;
};
inline Seen seen;

class TreeTest : public SearchTest {
   protected:
    TreeTest() : reportsBefore(treeReports) {
        seen = Seen{};
        if (!mctsTable.nodes.data()) installTreeSearch();
        capacityBefore = mctsTable.capacity;
        searchState.treeSearchActive = true;
        buildSearchTables();
    }
    ~TreeTest() override {
        mctsTable.capacity = capacityBefore;
        treeReports = reportsBefore;
    }

    static MctsNode& node(int index) { return mctsTable.nodes[index]; }
    static const MctsNode& child(int index) { return node(index + 1); }
    static const MctsNode& childBy(const std::string& text) {
        for (int i = 0; i < searchState.rootMoveCount; ++i)
            if (moveText(child(i).move) == text) return child(i);
        ADD_FAILURE() << text;
        return child(0);
    }

    // Prepares the tree of a position whose root list is every legal move. Budgets are those of a very short
    // search.
    static void prepare(Position& root) {
        searchState.rootMoveCount = listMoves(root, thread().rootMoves);
        prepareTree(root, 0.001);
    }

    // The first record as a node without children that was visited so often.
    static MctsNode& plantRoot(std::uint64_t visits) {
        mctsTable.nodeCount.store(0);
        treeState = TreeState{};
        return setNumbers(node(0), NoMove, visits, 0.5);
    }
    // One more child of a planted node, whose position is `pos`.
    static MctsNode& plantChild(MctsNode& parent, const Position& pos, const std::string& move,
                                std::uint64_t visits, double mean) {
        MctsNode& made = node(mctsTable.nodeCount.fetch_add(1) + 1);
        setNumbers(made, moveOf(pos, move), visits, mean);
        std::atomic<MctsNode*>* link = &parent.firstChild;
        while (MctsNode* earlier = link->load()) link = &earlier->nextSibling;
        link->store(&made);
        return made;
    }

    // The records from `first` on filled with a pattern, and whether it still stands.
    static void poison(int first) {
        std::memset(static_cast<void*>(&node(first)), Poison, PoisonedRecords * sizeof(MctsNode));
    }
    static bool isPoisoned(int first) {
        const auto* bytes = reinterpret_cast<const unsigned char*>(&node(first));
        return std::all_of(bytes, bytes + PoisonedRecords * sizeof(MctsNode),
                           [](unsigned char byte) { return byte == Poison; });
    }

   private:
    static constexpr int Poison = 0x5A, PoisonedRecords = 300;

    static MctsNode& setNumbers(MctsNode& node, Move move, std::uint64_t visits, double mean) {
        node.beginChild(move);
        node.visits.store(visits);
        node.visitWeight = double(visits);
        node.valueSum = mean * double(visits);
        node.prior = 0.1f;
        return node;
    }

    const TreeReports reportsBefore;
    int capacityBefore = 0;
};
