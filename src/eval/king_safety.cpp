// The piece half of king safety.
#include "eval/terms.h"

void evaluateKingSafety(const Position&, EvalInfo&) {}
