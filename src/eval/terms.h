// The stages of the evaluation, in the order in which `evaluate` runs them. Each adds to the scores of
// `info`.
#pragma once

#include "eval/eval_info.h"

// Maps that all later stages read, and the rook shut in by its king. Opens scores and attack units.
void prepareMaps(const Position& pos, EvalInfo& info);

// Knights, bishops and rooks of White and then of Black, then both sides' queens. Bishop, rook and queen
// maps.
void evaluatePieces(const Position& pos, EvalInfo& info);

// Unites the attack maps; pawns that only a queen defends; the wing on which both kings stand.
void uniteAttacks(EvalInfo& info);
void evaluateQueenDefence(const Position& pos, EvalInfo& info);
void evaluateWing(const Position& pos, EvalInfo& info);

// Checks, contact squares and defenders of both kings, with the centre and undefended pawns.
void evaluateKingSafety(const Position& pos, EvalInfo& info);

// Men attacked by lesser men or left hanging, and pawn pushes that would attack some.
void evaluateThreats(const Position& pos, EvalInfo& info);

// What pieces make of the passed pawns, and the kings' race in pure pawn endings.
void evaluatePassedPawns(const Position& pos, EvalInfo& info);

// Outposts, minor pieces and pawns, blocked pawns, quirks of bishop and king.
void evaluateRelations(const Position& pos, EvalInfo& info);
