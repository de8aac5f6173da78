#include "eval/evaluate.h"

#include "eval/tapered_evaluation.h"

int evaluate(Position& pos, int alpha, int beta) { return evaluateBefore(NoObserver{}, pos, alpha, beta); }
