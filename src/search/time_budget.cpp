#include "search/time_budget.h"

#include "search/limits.h"

#include <algorithm>
#include <cmath>

namespace {

// A clock of zero leaves quotients that mean nothing; the budget is then its floor.
double orZero(double value) { return std::isfinite(value) ? value : 0; }

int whole(double percent) { return int(std::clamp(orZero(std::trunc(percent)), 0.0, 1e6)); }

double overheadSeconds(const BudgetInput& in) { return (in.overheadMs + in.threads) / 1000.0; }

// A number of moves in a given time: the fewer moves are left, the larger the part that one may take.
TimeBudget forMoves(const BudgetInput& in) {
    constexpr double Floor = 0.005;  // seconds
    constexpr int SpareMoves = 2;    // for which time is put by
    // With so many moves to go or more, one gets twice its equal part.
    constexpr int GrowthMoves = 40;
    constexpr double MostGrowth = 2, GrowthPower = 3.75;
    // Added to the part: for each step of the option, always, and in tree search.
    constexpr int UsagePercent = 2, BasePercent = 3, TreePercent = 18;
    constexpr double PonderFactor = 1.33;
    constexpr double LastMoveShare = 0.9, MoveShare = 0.5;  // of the clock, at most
    constexpr double LongestExtension = 5;                  // times the target
    const double time = in.time;
    const double base = time / (in.movesToGo + SpareMoves);
    const double growth = in.movesToGo > GrowthMoves
                              ? MostGrowth
                              : std::exp2(std::pow(in.movesToGo / double(GrowthMoves), GrowthPower));
    const double usage = UsagePercent * in.timeUsage + BasePercent + (in.treeSearch ? TreePercent : 0);
    double soft = growth * base * (1 + usage / 100);
    if (in.ponderCredit) soft *= PonderFactor;
    const double spend = in.treeSearch ? soft + in.carry : soft;
    const double cap =
        in.movesToGo == 1 ? LastMoveShare * time : std::min(MoveShare * time, LongestExtension * soft);
    return {std::max(Floor, orZero(spend) - overheadSeconds(in)), NoTimeLimit, whole(100.0 * cap / soft)};
}

// The rest of the game in a given time: a share that grows as the game goes on.
TimeBudget forGame(const BudgetInput& in) {
    constexpr double Floor = 0.004;  // seconds
    // Steps of the option that a doubling of the threads is worth, and all of them.
    constexpr double StepsPerDoubling = 1.5, MostThreadSteps = 8;
    // The rest of the clock is divided by the moves that are thought to be left: by so many at the start, and
    // from the last falling ply on by half of them; a step of the option takes off two and one.
    constexpr int FirstDivisor = 54, LastDivisor = 27, LastFallingPly = 61, FallingMoves = 32;
    constexpr double PonderFactor = 1.3, TreeFactor = 1.5, TreeIncrements = 2;
    constexpr double SoftShare = 0.9, HardShare = 0.96;  // of the clock, at most
    constexpr int ExtendPercent = 600;
    double t = in.timeUsage - 1;
    if (!in.treeSearch)
        t += std::min(StepsPerDoubling * std::log(double(in.threads)) / std::log(2.0), MostThreadSteps);
    const double rest = in.time - in.increment;
    const int moves = in.gamePly / 2 + 1;  // whole ones, the present one included
    const double divisor = in.gamePly <= LastFallingPly
                               ? (FirstDivisor - 2 * t) - (LastDivisor - 2 * t) * moves / FallingMoves
                               : LastDivisor - t;
    const double increments = divisor * in.increment / (divisor * in.increment + rest);
    double x = rest / divisor * (1 + (in.treeSearch ? TreeIncrements : 1) * increments);
    if (in.ponderCredit) x *= PonderFactor;
    if (in.treeSearch) x *= TreeFactor;
    x += in.increment;
    if (in.treeSearch) x += in.carry;
    x = std::trunc(orZero(std::min(x, SoftShare * in.time)) * 1000) / 1000;
    return {std::max(Floor, x - overheadSeconds(in)), HardShare * (in.time - 2 * in.overheadMs / 1000.0),
            ExtendPercent};
}

}  // namespace

TimeBudget computeTimeBudget(const BudgetInput& input) {
    const auto budget = input.movesToGo > 0 ? forMoves : forGame;
    const TimeBudget wanted = budget(input);
    if (wanted.soft <= input.time) return wanted;
    // Only a carry can ask for more than the whole clock. It is none of this clock's time then.
    BudgetInput withoutCarry = input;
    withoutCarry.carry = 0;
    return budget(withoutCarry);
}
