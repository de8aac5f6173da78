// The staged picker of full-width nodes, and the stages that both pickers share.
#include "board/move_picker.h"

#include "board/legality.h"
#include "board/picker_stages.h"

// Rows by kind. Intended: some rows have no deferred stage, so what they put off never comes back.
// clang-format off
const std::uint8_t pickerRows[14][9] = {
    {1, 2, 3, 4, 5, 6, 10, 11},
    {1, 2, 8, 10, 11},
    {1, 2, 8, 11},
    {1, 2, 11},
    {1, 7, 10, 11},
    {1, 2, 8, 9, 11},
    {1, 2, 8, 9, 10, 11},
    {1, 13, 11},
    {1, 13, 12, 14, 11},
    {1, 13, 12, 14, 11},
    {1, 13, 12, 14, 11},
    {1, 13, 15, 11},
    {1, 2, 3, 5, 8, 9, 11},
    {1, 2, 3, 5, 8, 9, 10, 11},
};
// clang-format on

void MovePicker::start(const Position& pos, std::uint32_t pickerKind, int searchDepth, Move hash,
                       Move firstKiller, Move secondKiller, Move counter) {
    position = &pos;
    kind = pickerKind;
    stageIndex = 0;
    stage = StageStart;
    count = 0;
    cursor = 0;
    hashMove = hash;
    killer1 = firstKiller;
    killer2 = secondKiller;
    counterMove = counter;
    list = moves;
    badCount = 0;
    triedCount = 0;
    depth = searchDepth;
    deferBad = false;
}

static bool wasTried(const MovePicker& picker, Move move) {
    for (int i = 0; i < picker.triedCount; ++i)
        if (picker.tried[i] == move) return true;
    return false;
}

// Notes a move that a single-move stage hands out.
static Move handOut(MovePicker& picker, Move move) {
    picker.tried[picker.triedCount++] = move;
    return move;
}

static Move pickKiller(MovePicker& picker, Move killer) {
    const Position& pos = *picker.position;
    if (killer == NoMove || wasTried(picker, killer) || !isValidMove(pos, killer)) return NoMove;
    // A killer that has become a capture waits for nothing: it came with the captures.
    if (pos.board[toOf(killer)] != NoPiece && !isCastling(killer)) return NoMove;
    return handOut(picker, killer);
}

// Intended: a capture is given too, though the capture stage may have given it before.
static Move pickCounter(MovePicker& picker) {
    const Move counter = picker.counterMove;
    if (counter == NoMove || wasTried(picker, counter) || !isValidMove(*picker.position, counter))
        return NoMove;
    return handOut(picker, counter);
}

// Runs a stage of one move; list stages give none and leave their list to be read.
static Move runStage(MovePicker& picker) {
    switch (picker.stage) {
        case StageHash:
            if (picker.hashMove && isValidMove(*picker.position, picker.hashMove))
                return handOut(picker, picker.hashMove);
            return NoMove;
        case StageKiller1: return pickKiller(picker, picker.killer1);
        case StageKiller2: return pickKiller(picker, picker.killer2);
        case StageCounter: return pickCounter(picker);
        default: fillList(picker); return NoMove;
    }
}

Move nextMove(MovePicker* picker) {
    return nextOfStages(
        *picker, [&](Move move) { return wasTried(*picker, move); }, runStage);
}
