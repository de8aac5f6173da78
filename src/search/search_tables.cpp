// Builds the tables that the searches read from a few options.
#include "search/search_tables.h"

#include "base/settings.h"
#include "eval/parameters.h"

#include <algorithm>
#include <cmath>

int reduceHigh[2][ReductionDepths][ReductionCounts];
int reduceLow[2][ReductionDepths][ReductionCounts];
int moveCountTable[2][MoveCountDepths];
int historyBase = 44000;
int futilityStep = 40;
int contBonusStep = 200;
int rootStatFloor[RootStatFloors];

// With more threads each of them may prune a little more: their trees differ anyway.
static int threadTerm() { return int(std::log(double(settings.threads)) / std::log(2.0) * 5); }

// What the divisor of the reductions falls by, in hundredths. Intended: more threads reduce more.
static int threadReduction() {
    const int threads = settings.threads;
    if (treeSearchActive) return threads < 2 ? 0 : threads < 4 ? 20 : 30;
    return threads < 2 ? 0 : threads < 4 ? 10 : threads < 6 ? 20 : threads < 10 ? 30 : 40;
}

// Intended: a larger selectivity divides by more and lets fewer quiet moves pass.
static void buildMoveCounts() {
    constexpr int TreeSelectivity = 130;
    const double selectivity = treeSearchActive ? TreeSelectivity : settings.selectivity + threadTerm();
    const int extra = treeSearchActive ? 1 : 0;
    for (int depth = 0; depth < MoveCountDepths; ++depth) {
        const double worsening = 11 / selectivity * depth * depth;
        const double improving = 0.8 + 0.03 * depth + 18 / selectivity * depth * depth;
        moveCountTable[0][depth] = std::max(int(std::round(worsening)), 1) + extra;
        moveCountTable[1][depth] = std::max(int(std::round(improving)), 3) + extra;
    }
}

static void buildReductions() {
    constexpr int TreeReduction = -90;
    constexpr double LowerBy = 1.92;  // half plies before rounding
    const int reduction = (treeSearchActive ? TreeReduction : settings.reduction.load()) + threadReduction();
    const double divisors[2] = {(140 - reduction) / 100.0, (165 - reduction) / 100.0};
    for (int improving = 0; improving < 2; ++improving)
        for (int depth = 1; depth < ReductionDepths; ++depth)
            for (int count = 1; count < ReductionCounts; ++count) {
                const double plies = std::log(depth / 2.0) * std::log(double(count)) / divisors[improving];
                reduceHigh[improving][depth][count] = int(std::round(2 * plies));
                reduceLow[improving][depth][count] = int(std::round(2 * plies - LowerBy));
            }
}

static void buildRootStatFloors() {
    double floor = 18000;
    for (int number = 1; number < RootStatFloors; ++number) {
        rootStatFloor[number] = int(floor);
        floor = floor * 92 / 100;
    }
}

void buildSearchTables() {
    historyBase = treeSearchActive ? 45000 : 44000;
    futilityStep = treeSearchActive ? 45 : 40;
    contBonusStep = treeSearchActive ? 250 : 200;
    buildMoveCounts();
    buildReductions();
    buildRootStatFloors();
}
