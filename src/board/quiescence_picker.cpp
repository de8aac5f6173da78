// The picker of the quiescence search: the same rows, without killers, and only the hash move is kept from
// coming twice.
#include "board/legality.h"
#include "board/move_picker.h"
#include "board/picker_stages.h"

Move nextQuiescenceMove(MovePicker* picker) {
    const auto skip = [&](Move move) { return move == picker->hashMove; };
    while (true) {
        if (const Move move = nextOfList(*picker, skip)) return move;
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
