// The picker of the quiescence search: the same rows, without killers, and only the hash move is kept from
// coming twice.
#include "board/legality.h"
#include "board/move_picker.h"
#include "board/picker_stages.h"

// The hash stage gives one move; the others leave their list to be read.
static Move runStage(MovePicker& picker) {
    if (picker.stage != StageHash) {
        fillList(picker);
        return NoMove;
    }
    return picker.hashMove && isValidMove(*picker.position, picker.hashMove) ? picker.hashMove : NoMove;
}

Move nextQuiescenceMove(MovePicker* picker) {
    return nextOfStages(
        *picker, [&](Move move) { return move == picker->hashMove; }, runStage);
}
