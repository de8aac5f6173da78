// Staged move generation, the picker: it hands moves to a search one at a time and generates as late as it
// can. A kind selects a row of stages; both searches' pickers share the record and the rows.
#pragma once

#include "board/position.h"

// The numbers are fixed: search rules test them.
enum PickerStage : std::uint32_t {
    StageStart = 0,
    StageHash = 1,
    StageCaptures = 2,
    StageKiller1 = 3,
    StageKiller2 = 4,
    StageCounter = 5,
    StageQuiets = 6,
    StageEvasions = 7,
    StageQuietChecks = 8,
    StagePawnAdvances = 9,
    StageDeferred = 10,
    StageEnd = 11,
    StageQuiescenceChecks = 12,
    StageQuiescenceCaptures = 13,
    StageQuiescenceAdvances = 14,
    StageQueenChecks = 15,
};

// Rows of the stage table that have a reader of their own; the others are chosen by number.
enum PickerKind : std::uint32_t {
    KindFull = 0,
    KindEvasions = 4,
    KindForcing = 5,  // captures, quiet checks, pawns close to promotion
    KindForcingWithDeferred = 6,
    KindQuiescence = 7,
    KindQuiescenceChecks = 10,
    KindQuiescenceQueenChecks = 11,
    KindSelective = 12,  // the same with a killer and the counter move
    KindSelectiveWithDeferred = 13,
};

struct MovePicker {
    const Position* position;
    std::uint32_t kind;
    std::uint32_t stageIndex;  // next column of the row
    std::uint32_t stage;       // where the last move came from
    std::int32_t count;        // moves in the list being read
    std::int32_t cursor;       // next one to hand out
    Move hashMove;
    Move killer1, killer2;
    Move counterMove;
    const Move* list;  // `moves` or `badMoves`
    Move moves[MaxListMoves];
    Move badMoves[MaxListMoves];  // losing moves put off, in the order in which they came
    std::int32_t badCount;
    Move tried[6];  // clean moves that single-move stages handed out
    std::int32_t triedCount;
    std::int32_t depth;  // half plies; chooses generators and whether quiet moves may be put off
    bool deferBad;       // losing moves go to `badMoves` instead of being returned
    Bitboard contested;  // a move of the list that neither leaves nor enters these squares doesn't lose

    // The lists stay unwritten.
    MovePicker() {}
    // `depth` in half plies; the moves are clean words, 0 where there is none.
    void start(const Position& pos, std::uint32_t pickerKind, int searchDepth, Move hash,
               Move firstKiller = NoMove, Move secondKiller = NoMove, Move counter = NoMove);
    // Drops the rest of the list being read; the next stages still come.
    void endList() { cursor = count; }
};

// The next clean move, or 0 at the end. `stage` then says where it came from.
Move nextMove(MovePicker* picker);
Move nextQuiescenceMove(MovePicker* picker);
