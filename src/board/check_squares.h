// The moves of one position that give check, found once for all of them: each is then told by two looks at
// sets, where a test of the single move has to look along the lines of the enemy king.
#pragma once

#include "board/legality.h"
#include "board/position.h"

class CheckSquares {
   public:
    CheckSquares() {}  // stays unwritten

    // Before any question. The side that isn't to move must not be in check.
    void find(const Position& pos);

    // `givesCheckQuick` of the same position.
    bool givesCheck(const Position& pos, Move move) const {
        constexpr Move SpecialFlags = 0x6000;  // all but plain moves and double pushes
        if ((move & SpecialFlags) || (shields & bit(fromOf(move)))) return givesCheckQuick(pos, move);
        return squares[typeOfCode(pos.board[fromOf(move)])] & bit(toOf(move));
    }

   private:
    Bitboard squares[7];  // by type: from where a piece of the side to move gives check
    Bitboard shields;     // own pieces that stand alone between an own slider and the enemy king
};
