// Passed pawns, as far as pieces matter.
#include "eval/terms.h"

void evaluatePassedPawns(const Position&, EvalInfo&) {}
