// The time of a move, allotted from the clocks of a `go`: pure arithmetic, without a clock.
#pragma once

struct BudgetInput {
    double time = 0;       // seconds on the mover's clock
    double increment = 0;  // seconds
    int movesToGo = 0;     // 0: the whole game
    int timeUsage = 0;     // the option, -9 to 10
    bool treeSearch = false;
    double carry = 0;    // seconds left over from the last search; counts in tree search only
    int overheadMs = 0;  // milliseconds lost with each move
    int threads = 1;
    int gamePly = 0;
    bool ponderCredit = false;  // the opponent's time is being used too
};

struct TimeBudget {
    double soft;        // seconds, the target
    double hard;        // seconds, never to be passed
    int extendPercent;  // how far the search may go beyond the target, in per cent of it
};

// What tree searches carry over counts only while the clock has it.
TimeBudget computeTimeBudget(const BudgetInput& input);
