// The `go` command: what it asks for, and the times that follow from it.
#include "base/clock.h"
#include "base/settings.h"
#include "board/legality.h"
#include "search/limits.h"
#include "search/search.h"
#include "search/search_host.h"
#include "search/thread_pool.h"
#include "search/time_budget.h"
#include "shell/commands.h"

#include <algorithm>
#include <cstdlib>

namespace {

constexpr int DeepestLimit = 150;  // plies

int ponderCredit = 0;  // positive: the opponent's time is counted on in the budget
double timeCarry = 0;  // seconds that the last search left over; used by tree searches alone

// A clock in milliseconds, as seconds. Signed clocks, which interfaces send when a flag has fallen, read as
// 0.
double clockToken(const Tokens& tokens, std::size_t index) {
    if (index >= tokens.size() || tokens[index][0] == '-') return 0;
    return double(std::strtoull(tokens[index].c_str(), nullptr, 10)) / 1000.0;
}

std::uint64_t countToken(const Tokens& tokens, std::size_t index) {
    return index < tokens.size() ? std::strtoull(tokens[index].c_str(), nullptr, 10) : 0;
}

int clampedInteger(const Tokens& tokens, std::size_t index) {
    constexpr long Most = 1000000;
    return int(std::clamp(integerToken(tokens, index), -Most, Most));
}

// Reads a keyword at `index`, and its value behind it. Returns how many tokens were used; 0 for no keyword.
std::size_t readKeyword(const Tokens& tokens, std::size_t index, SearchLimits& limits) {
    const std::string& word = tokens[index];
    const std::size_t value = index + 1;
    if (word == "wtime")
        limits.time[White] = clockToken(tokens, value);
    else if (word == "btime")
        limits.time[Black] = clockToken(tokens, value);
    else if (word == "winc")
        limits.inc[White] = clockToken(tokens, value);
    else if (word == "binc")
        limits.inc[Black] = clockToken(tokens, value);
    else if (word == "movestogo")
        limits.movesToGo = clampedInteger(tokens, value);
    else if (word == "depth")
        limits.depth = std::min(clampedInteger(tokens, value), DeepestLimit);
    else if (word == "movetime")
        limits.moveTime = std::max(double(integerToken(tokens, value)) / 1000.0, 0.0);
    else if (word == "nodes")
        limits.nodes = countToken(tokens, value);
    else if (word == "infinite")
        return limits.infinite = true, 1;
    else if (word == "ponder")
        return limits.ponder = true, 1;
    else
        return 0;
    return 2;
}

// An unknown word ends the reading, unless it stands in the list of moves; every keyword ends that list.
SearchLimits parseLimits(const Tokens& tokens) {
    SearchLimits limits;
    bool collecting = false;
    for (std::size_t i = 1; i < tokens.size();) {
        if (tokens[i] == "searchmoves") {
            collecting = true;
            ++i;
            continue;
        }
        const std::size_t used = readKeyword(tokens, i, limits);
        if (used == 0 && !collecting) break;
        if (used == 0) {
            limits.searchMoves += tokens[i] + ' ';
            ++i;
            continue;
        }
        collecting = false;
        i += used;
    }
    return limits;
}

BudgetInput budgetInputOf(const Position& pos, const SearchLimits& limits) {
    const Colour us = pos.sideToMove();
    return {.time = limits.time[us],
            .increment = limits.inc[us],
            .movesToGo = limits.movesToGo,
            .timeUsage = settings.timeUsage,
            .treeSearch = settings.useMcts,
            .carry = timeCarry,
            .overheadMs = settings.overheadMs,
            .threads = threadPool.threadCount,
            .gamePly = pos.gamePly,
            .ponderCredit = ponderCredit > 0};
}

void thinkByClock(Position& pos, const SearchLimits& limits) {
    if (pos.gamePly == 0) timeCarry = 0;
    const TimeBudget budget = computeTimeBudget(budgetInputOf(pos, limits));
    searchControl.extendPercent = budget.extendPercent;
    const double start = currentTime();
    think(pos, NoDepthLimit, budget.soft, budget.hard, limits.searchMoves.c_str(), false);
    timeCarry = std::max(0.0, budget.soft - (currentTime() - start));
    // The share outlives its search. That of an empty clock would end searches without a clock at once.
    if (searchControl.extendPercent == 0) searchControl.extendPercent = UsualExtendPercent;
}

// Analysis takes no side, unless contempt is for White's good anyway.
void thinkWithoutLimits(Position& pos, const SearchLimits& limits) {
    const int depth = limits.depth > 0 ? limits.depth : NoDepthLimit;
    const int contempt = settings.contempt;
    const bool neutral = limits.infinite && !settings.whiteContempt;
    if (neutral) settings.contempt = 0;
    think(pos, depth, NoTimeLimit, NoTimeLimit, limits.searchMoves.c_str(), limits.infinite);
    // A value that was set during the search stays; only a 0 can't be told from the one above.
    if (neutral && settings.contempt == 0) settings.contempt = contempt;
}

// Intended: of several limits only the first counts, in this order.
void thinkWithin(Position& pos, const SearchLimits& limits) {
    const char* searchMoves = limits.searchMoves.c_str();
    searchControl.nodes = NoNodeLimit;
    if (limits.depth > 0 || limits.infinite) {
        thinkWithoutLimits(pos, limits);
    } else if (limits.moveTime != 0) {
        think(pos, NoDepthLimit, limits.moveTime, NoTimeLimit, searchMoves, false);
    } else if (limits.nodes != NoNodeLimit) {
        searchControl.nodes = limits.nodes;
        think(pos, NoDepthLimit, NoTimeLimit, NoTimeLimit, searchMoves, false);
    } else {
        thinkByClock(pos, limits);
    }
}

}  // namespace

void goCommand(const Tokens& tokens) {
    if (searchControl.searching) return;
    const SearchLimits limits = parseLimits(tokens);
    --ponderCredit;
    if (limits.ponder) ponderCredit = 2;
    searchControl.moveTime = limits.moveTime;
    searchControl.ponder = limits.ponder;
    Position& pos = currentPosition();
    if (!isPlayable(pos)) {
        searchHost.reportBestMove(NoMove, NoMove);
        return;
    }
    thinkWithin(pos, limits);
}
