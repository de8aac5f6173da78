// The move that a node is searching, with what its rules ask of it, and what is done with every move that was
// made.
#pragma once

#include "search/history.h"
#include "search/node.h"

// What is known of the move that is being tried.
struct Trial {
    const Move move;
    const bool isHashMove, isTactical;
    int kind = 0;      // set of MoveKind
    int newDepth = 0;  // half plies
    int score = 0;
    bool drawn = false;

    Trial(const Position& pos, Move tried, Move hashMove)
        : move(tried), isHashMove(tried == hashMove), isTactical(::isTactical(pos, tried)) {}

    bool isQuietOutOfCheck() const { return !(kind & (MoveTactical | MoveEvasion)); }
};

// Sets the kind of a move that was made, lists the move among those tried unless it answers a check, and
// notes the child's check.
static inline void noteKind(Trial& trial, const Position& pos, Position& child, TriedMoves& tried) {
    trial.kind = (pos.inCheck ? MoveEvasion : 0) | (trial.isTactical ? MoveTactical : 0);
    if (trial.kind == 0)
        tried.addQuiet(quietMoveOf(pos, trial.move));
    else if (trial.kind == MoveTactical)
        tried.addTactical(trial.move);
    if (markCheck(child)) trial.kind |= MoveCheck;
}

// Scores a move that draws by rule; false if it doesn't.
static inline bool noteDraw(Trial& trial, const Position& pos, const Position& child, int ply) {
    if (trial.isTactical || !isDrawnByRule(pos, child, needsTwoRepetitions(ply))) return false;
    trial.score = 0;
    trial.drawn = true;
    return true;
}
