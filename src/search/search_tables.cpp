// Builds the tables that the searches read from a few options.
#include "search/search_tables.h"

#include "base/settings.h"
#include "eval/parameters.h"
#include "search/limits.h"

#include <algorithm>
#include <cmath>

SearchTables searchTables;

namespace {

// With more threads each of them may prune a little more: their trees differ anyway.
int threadTerm() { return int(std::log(double(settings.threads)) / std::log(2.0) * 5); }

// What the divisor of the reductions falls by, in hundredths. Intended: more threads reduce more.
int threadReduction() {
    const int threads = settings.threads;
    if (searchState.treeSearchActive) return threads < 2 ? 0 : threads < 4 ? 20 : 30;
    return threads < 2 ? 0 : threads < 4 ? 10 : threads < 6 ? 20 : threads < 10 ? 30 : 40;
}

// Intended: a larger selectivity divides by more and lets fewer quiet moves pass.
void buildMoveCounts() {
    constexpr int TreeSelectivity = 130;
    const double selectivity =
        searchState.treeSearchActive ? TreeSelectivity : settings.selectivity + threadTerm();
    const int extra = searchState.treeSearchActive ? 1 : 0;
    for (int depth = 0; depth < MoveCountDepths; ++depth) {
        const double worsening = 11 / selectivity * depth * depth;
        const double improving = 0.8 + 0.03 * depth + 18 / selectivity * depth * depth;
        searchTables.moveCountTable[0][depth] = std::max(int(std::round(worsening)), 1) + extra;
        searchTables.moveCountTable[1][depth] = std::max(int(std::round(improving)), 3) + extra;
    }
}

void buildReductions() {
    constexpr int TreeReduction = -90;
    constexpr double LowerBy = 1.92;  // half plies before rounding
    const int reduction =
        (searchState.treeSearchActive ? TreeReduction : settings.reduction.load()) + threadReduction();
    const double divisors[2] = {(140 - reduction) / 100.0, (165 - reduction) / 100.0};
    for (int improving = 0; improving < 2; ++improving)
        for (int depth = 1; depth < ReductionDepths; ++depth)
            for (int count = 1; count < ReductionCounts; ++count) {
                const double plies = std::log(depth / 2.0) * std::log(double(count)) / divisors[improving];
                searchTables.reduceHigh[improving][depth][count] = int(std::round(2 * plies));
                searchTables.reduceLow[improving][depth][count] = int(std::round(2 * plies - LowerBy));
            }
}

void buildRootStatFloors() {
    double floor = 18000;
    for (int number = 1; number < RootStatFloors; ++number) {
        searchTables.rootStatFloor[number] = int(floor);
        floor = floor * 92 / 100;
    }
}

}  // namespace

void buildSearchTables() {
    searchTables.historyBase = searchState.treeSearchActive ? 45000 : 44000;
    searchTables.futilityStep = searchState.treeSearchActive ? 45 : 40;
    searchTables.contBonusStep = searchState.treeSearchActive ? 250 : 200;
    buildMoveCounts();
    buildReductions();
    buildRootStatFloors();
}
