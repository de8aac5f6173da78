// The stages that fill a picker's list, shared by the pickers of both searches.
#pragma once

#include "board/exchange.h"
#include "board/move_picker.h"

// Stage numbers by kind, each row ended by StageEnd.
extern const std::uint8_t pickerRows[14][9];

inline bool isLosing(const MovePicker& picker, Move move) {
    if (!(picker.contested & (bit(fromOf(move)) | bit(toOf(move))))) return false;
    return seeLosing(*picker.position, move);
}

// The next clean move of the list that the caller doesn't want skipped, or 0 when the list is spent. Losing
// moves are put off on the way while the picker says so and has room; en passant is handed out unasked.
template <class Skip>
inline Move nextOfList(MovePicker& picker, Skip skip) {
    while (picker.cursor < picker.count) {
        const Move move = cleanMove(picker.list[picker.cursor++]);
        if (skip(move)) continue;
        if (isEnPassant(move) || !picker.deferBad || !isLosing(picker, move)) return move;
        if (picker.badCount == MaxListMoves) return move;  // only on boards with dozens of queens
        picker.badMoves[picker.badCount++] = move;
    }
    return NoMove;
}

// Generates, keys and sorts the list of the picker's stage and sets whether losing moves are put off.
void fillList(MovePicker& picker);

// The next clean move of the picker's row of stages, or 0 at its end. `runStage` gives the move of a stage
// that has one, and otherwise leaves a list to be read.
template <class Skip, class RunStage>
inline Move nextOfStages(MovePicker& picker, Skip skip, RunStage runStage) {
    while (true) {
        if (const Move move = nextOfList(picker, skip)) return move;
        picker.stage = pickerRows[picker.kind][picker.stageIndex++];
        if (picker.stage == StageEnd) {
            --picker.stageIndex;  // whoever asks again gets the same answer
            return NoMove;
        }
        if (const Move move = runStage(picker)) return move;
    }
}
