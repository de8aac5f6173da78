// What tests of the search stand on: every table filled once in start-up's order, one search thread, and a
// root record as the driver prepares it.
#pragma once

#include "base/clock.h"
#include "base/settings.h"
#include "board/fen.h"
#include "board/make_move.h"
#include "board/move_text.h"
#include "endgame/tb_probe.h"
#include "eval/contempt.h"
#include "eval/king_pawn_bitbase.h"
#include "eval/material.h"
#include "eval/parameters.h"
#include "eval/style.h"
#include "search/limits.h"
#include "search/search.h"
#include "search/search_host.h"
#include "search/search_tables.h"
#include "search/thread_pool.h"
#include "search/time_manager.h"
#include "search/trans_table.h"
#include "support/board_environment.h"

#include <gtest/gtest.h>
#include <set>
#include <string>
#include <vector>

inline const std::string Middlegame = "r1bq1rk1/pp2bppp/2n1pn2/3p4/2PP4/2N2N2/PP2BPPP/R1BQ1RK1 w - -";
inline const std::string Mated = "R5k1/5ppp/8/8/8/8/5PPP/6K1 b - -";
inline const std::string Stalemated = "7k/5Q2/6K1/8/8/8/8/8 b - -";

// Brings the engine's process-wide tables up once, whichever test comes first.
inline void startSearchTables() {
    static const bool started = [] {
        initKingPawnBitbase();
        initMaterialTable();
        initEvalParameters();
        buildSearchTables();
        threadPool.threadCount = 1;
        threadPool.tableMemoryInUse = 4;  // the caches are wiped before each test
        threadPool.resize(true);
        transTable.resize(16);
        return true;
    }();
    (void)started;
}

// A test that searches on thread 0: everything that a search leaves behind is wiped before each test.
class SearchTest : public ::testing::Test {
   protected:
    SearchTest() : hostBefore(searchHost) {
        startSearchTables();
        searchState = SearchState{};
        searchControl = SearchControl{};
        searchState.searchStart = currentTime();
        tbSearch.begin(0);
        timeLimits.hardLimit = timeLimits.softLimit = searchState.searchStart + 3600;
        timeLimits.nextReport = timeLimits.hardLimit;
        setContempt(0, White, false);
        buildSearchTables();
        forgetEverything();
    }
    ~SearchTest() override {
        searchHost = hostBefore;
        searchState.treeSearchActive = false;
        buildSearchTables();
    }

    static void makePool(int threads) {
        threadPool.stopWorkers();
        threadPool.threadCount = threads;
        threadPool.resize(true);
    }

    static SearchThread& thread() { return threadPool.threadRecords[0]; }
    static std::uint64_t nodes() { return thread().nodes; }
    static void forgetEverything() {
        transTable.clear();
        thread().resetHistory();
        thread().clearKillers();
        thread().clearEvalCache();
        thread().nodes = 0;
        thread().stopFlag = 0;
    }

    static Position rootOf(const std::string& fen) {
        Position pos = positionOf(fen);
        threadPool.attachRoot(pos, 0);
        pos.nullFloor = RootExtensionCredit;
        return pos;
    }

    // Lists the legal moves, or those named, and returns how many there are.
    static int listMoves(const Position& pos, RootMove* list, const std::set<std::string>& only = {}) {
        const std::uint64_t nodesBefore = nodes();
        int count = 0;
        for (const Move move : legalMoves(pos))
            if (only.empty() || only.contains(moveText(move))) list[count++] = {move, 0, 1};
        list[count] = RootMove{};
        thread().nodes = nodesBefore;
        return count;
    }
    // A chain of records: the root and the child of each move.
    static std::vector<Position> play(const std::string& fen, const std::vector<std::string>& moves) {
        return playLine(rootOf(fen), moves);
    }

   private:
    SettingsGuard settingsBefore;
    SearchHost hostBefore;
};
