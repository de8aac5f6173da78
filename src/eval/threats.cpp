// Threats against pieces.
#include "eval/terms.h"

void evaluateThreats(const Position&, EvalInfo&) {}
