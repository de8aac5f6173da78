// How generators fill a list: bounded, since a FEN may set up more moves than any game can reach.
#pragma once

#include "board/history_tables.h"
#include "board/move.h"
#include "board/movegen.h"
#include "board/position.h"

class ListWriter {
   public:
    explicit ListWriter(Move* list) : start(list), next(list), end(list + MaxListMoves) {}
    void add(Move move) {
        if (next != end) *next++ = move;
    }
    int count() const { return int(next - start); }

   private:
    Move* const start;
    Move* next;
    Move* const end;
};

// A quiet move with the key that orders it: a quarter of its history sum.
inline Move quietWord(const Position& pos, int code, int from, int to, MoveFlag flag = NormalMove) {
    const Move clean = makeWord(from, to, flag);
    return withKey(clean, quietStat(pos, code, clean) >> 2);
}
