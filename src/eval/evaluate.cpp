#include "eval/evaluate.h"

#include "eval/frame.h"

int evaluate(Position& pos, int alpha, int beta) { return evaluateBefore(NoObserver{}, pos, alpha, beta); }
