#include "shell/time_budget.h"

#include "search/limits.h"

#include <algorithm>
#include <cmath>

namespace {

// A clock of zero leaves quotients that mean nothing; the budget is then its floor.
double orZero(double value) { return std::isfinite(value) ? value : 0; }

int whole(double percent) { return int(std::clamp(orZero(std::trunc(percent)), 0.0, 1e6)); }

// A number of moves in a given time: the fewer moves are left, the larger the part that one may take.
TimeBudget forMoves(const BudgetInput& in) {
    constexpr double Floor = 0.005;
    const double time = in.time;
    const double base = time / (in.movesToGo + 2);
    const double growth = in.movesToGo > 40 ? 2.0 : std::exp2(std::pow(in.movesToGo / 40.0, 3.75));
    const double usage = 2 * in.timeUsage + 3 + (in.treeSearch ? 18 : 0);
    double soft = growth * base * (1 + usage / 100);
    if (in.ponderCredit) soft *= 1.33;
    const double spend = in.treeSearch ? soft + in.carry : soft;
    const double cap = in.movesToGo == 1 ? 0.9 * time : std::min(0.5 * time, 5.0 * soft);
    const double overhead = (in.overheadMs + in.threads) / 1000.0;
    return {std::max(Floor, orZero(spend) - overhead), NoTimeLimit, whole(100.0 * cap / soft)};
}

// The rest of the game in a given time: a share that grows as the game goes on.
TimeBudget forGame(const BudgetInput& in) {
    constexpr double Floor = 0.004;
    double t = in.timeUsage - 1;
    if (!in.treeSearch) t += std::min(1.5 * std::log(double(in.threads)) / std::log(2.0), 8.0);
    const double rest = in.time - in.increment;
    const double moves = in.gamePly / 2 + 1;
    const double divisor = in.gamePly <= 61 ? (54 - 2 * t) - (27 - 2 * t) * moves / 32 : 27 - t;
    const double increments = divisor * in.increment / (divisor * in.increment + rest);
    double x = rest / divisor * (1 + (in.treeSearch ? 2 : 1) * increments);
    if (in.ponderCredit) x *= 1.3;
    if (in.treeSearch) x *= 1.5;
    x += in.increment;
    if (in.treeSearch) x += in.carry;
    x = std::trunc(orZero(std::min(x, 0.9 * in.time)) * 1000) / 1000;
    const double overhead = (in.overheadMs + in.threads) / 1000.0;
    return {std::max(Floor, x - overhead), 0.96 * (in.time - 2 * in.overheadMs / 1000.0), 600};
}

}  // namespace

TimeBudget computeTimeBudget(const BudgetInput& input) {
    return input.movesToGo > 0 ? forMoves(input) : forGame(input);
}
