// Small relations between pieces and pawns.
#include "eval/terms.h"

void evaluateRelations(const Position&, EvalInfo&) {}
