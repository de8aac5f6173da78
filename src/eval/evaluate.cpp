#include "eval/evaluate.h"

#include "eval/evaluation_frame.h"

int evaluate(Position& pos, int alpha, int beta) { return evaluateBefore(NoObserver{}, pos, alpha, beta); }
