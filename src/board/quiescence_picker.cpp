// The picker of the quiescence search: the same rows, without killers, and only the hash move is kept from
// coming twice.
#include "board/exchange.h"
#include "board/legality.h"
#include "board/move_picker.h"
#include "board/picker_stages.h"

static Move nextOfList(MovePicker& picker) {
    while (picker.cursor < picker.count) {
        const Move move = cleanMove(picker.list[picker.cursor++]);
        if (move == picker.hashMove) continue;
        if (isEnPassant(move) || !picker.deferBad || !seeLosing(*picker.position, move)) return move;
        picker.badMoves[picker.badCount++] = move;
    }
    return NoMove;
}

Move nextQuiescenceMove(MovePicker* picker) {
    while (true) {
        if (const Move move = nextOfList(*picker)) return move;
        picker->stage = pickerRows[picker->kind][picker->stageIndex++];
        if (picker->stage == StageEnd) {
            --picker->stageIndex;
            return NoMove;
        }
        if (picker->stage == StageHash) {
            if (picker->hashMove && isValidMove(*picker->position, picker->hashMove)) return picker->hashMove;
        } else {
            fillList(*picker);
        }
    }
}
