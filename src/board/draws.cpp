#include "board/draws.h"

#include "board/legality.h"

namespace {

// Counts earlier records with this key, up to `wanted`, which are the same side's turn since the last
// irreversible move. A game's first record may lie nearer than the clock says.
int countRepetitions(const Position* parent, Key key, int clock, int wanted) {
    if (clock < FirstRepetitionClock) return 0;
    int found = 0;
    const Position* record = parent;
    for (int plies = 1; plies < 3 && record; ++plies) record = record->prev;
    for (int plies = FirstRepetitionClock; plies <= clock && record && record->prev; plies += 2) {
        const Position* candidate = record->prev;
        if (candidate->key == key && ++found == wanted) break;
        record = candidate->prev;
    }
    return found;
}

}  // namespace

bool repeatedOnce(const Position* parent, Key key, int clock) {
    return countRepetitions(parent, key, clock, 1) == 1;
}

bool repeatedTwice(const Position* parent, Key key, int clock) {
    return countRepetitions(parent, key, clock, 2) == 2;
}

bool drawnByClock(const Position& child) {
    if (child.halfmoveClock <= LastFreeClock) return false;
    // Intended: a mate counts on exactly the hundredth half-move and no later.
    if (child.halfmoveClock == LastFreeClock + 1 && child.inCheck) return hasLegalMove(child);
    return true;
}
