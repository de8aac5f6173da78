// Draws by rule: repetition, the fifty-move rule, and what a draw counts. Stalemate is found by those who run
// out of moves; the score is the same.
#pragma once

#include "board/position.h"

// The draw score, of a draw by rule and of stalemate, from either side's view. Contempt leaves it alone.
inline constexpr int DrawScore = 0;

// The longest clock, in half-moves, at which the fifty-move rule doesn't apply, and the shortest at which a
// position can have come back.
inline constexpr int LastFreeClock = 99, FirstRepetitionClock = 4;

// Repetition tests, asked of a freshly made child with its predecessor: whether the child's key has been
// there before, once for a first repetition or twice for the threefold one. The walk steps back from the
// child by four plies, then by two, while no more than `clock` plies lie behind it and records exist. Null
// moves are no barriers.
bool repeatedOnce(const Position* parent, Key key, int clock);
bool repeatedTwice(const Position* parent, Key key, int clock);

// Fifty-move rule for a child whose `inCheck` is set: a clock above 99 draws, except a mate on exactly 100.
bool drawnByClock(const Position& child);

// Intended: a first repetition counts as a draw everywhere in the tree but for the moves tried at ply 1,
// which need threefold repetition.
inline bool needsTwoRepetitions(int ply) { return ply == 1; }

// Draw by rule of a child that was just made by a move that doesn't capture or promote, its `inCheck` set.
inline bool isDrawnByRule(const Position& pos, const Position& child, bool needsTwo) {
    const int clock = child.halfmoveClock;
    if (clock < FirstRepetitionClock) return false;
    if (clock > LastFreeClock && drawnByClock(child)) return true;
    return needsTwo ? repeatedTwice(&pos, child.key, clock) : repeatedOnce(&pos, child.key, clock);
}
