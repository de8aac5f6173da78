#include "board/picker_stages.h"

#include "board/attacks.h"
#include "board/history_tables.h"
#include "board/move_sort.h"
#include "board/movegen.h"

namespace {

constexpr int DeferQuietsDepth = 11;  // half plies; losing quiet moves are put off above it
constexpr int StagedChecksDepth = 7;  // half plies

void beginList(MovePicker& picker, int count, bool deferBad) {
    picker.list = picker.moves;
    picker.count = count;
    picker.cursor = 0;
    picker.deferBad = deferBad;
    picker.contested = ~Bitboard{0};
}

// Nothing takes a piece that moves between squares which the enemy doesn't attack; from one that he does, a
// line may open behind it.
void fillQuiets(MovePicker& picker) {
    const Position& pos = *picker.position;
    beginList(picker, genQuiets(pos, picker.moves), picker.depth > DeferQuietsDepth);
    sortMoves(picker.moves, picker.count);
    if (picker.deferBad) picker.contested = attackedBy(pos, opponent(pos.sideToMove()));
}

void keyQuiets(MovePicker& picker, int count) {
    for (int i = 0; i < count; ++i)
        picker.moves[i] = withKey(picker.moves[i], quietStat(*picker.position, picker.moves[i]) >> 2);
}

// Captures go by MVV/LVA: the most valuable victim first, and of two attackers the less valuable.
int evasionKey(const MovePicker& picker, Move move) {
    const Position& pos = *picker.position;
    if (isEnPassant(move)) return 30000;
    if (isPromotion(move)) return 31000;
    if (const int victim = pos.board[toOf(move)]) {
        const int attacker = pos.board[fromOf(move)];
        return 30000 + 16 * typeOfCode(victim) - (attacker * 2 & 14);
    }
    if (move == picker.killer1) return 29000;
    if (move == picker.killer2) return 28000;
    return quietStat(pos, move) >> 3;
}

void fillEvasions(MovePicker& picker) {
    const int count = genEvasions(*picker.position, picker.moves);
    for (int i = 0; i < count; ++i)
        picker.moves[i] = withKey(picker.moves[i], evasionKey(picker, picker.moves[i]));
    sortMoves(picker.moves, count);
    beginList(picker, count, false);
}

void fillChecks(MovePicker& picker) {
    const Position& pos = *picker.position;
    const int count = picker.depth < StagedChecksDepth ? genQuietChecks(pos, picker.moves)
                                                       : genStagedQuiets(pos, picker.moves);
    keyQuiets(picker, count);
    sortMoves(picker.moves, count);
    beginList(picker, count, true);
}

}  // namespace

void fillList(MovePicker& picker) {
    const Position& pos = *picker.position;
    switch (picker.stage) {
        case StageCaptures:
            beginList(picker, genCaptures(pos, picker.moves), true);
            sortMoves(picker.moves, picker.count);
            break;
        case StageQuiescenceCaptures:
            beginList(picker, genCaptures(pos, picker.moves), picker.deferBad);
            sortMoves(picker.moves, picker.count);
            break;
        case StageQuiets: fillQuiets(picker); break;
        case StageEvasions: fillEvasions(picker); break;
        case StageQuietChecks:
        case StageQuiescenceChecks: fillChecks(picker); break;
        case StagePawnAdvances:
        case StageQuiescenceAdvances:
            beginList(picker, genPawnPushesToSeventh(pos, picker.moves), true);
            break;
        case StageQueenChecks: beginList(picker, genQueenChecks(pos, picker.moves), picker.deferBad); break;
        case StageDeferred:
            picker.list = picker.badMoves;
            picker.count = picker.badCount;
            picker.cursor = 0;
            picker.deferBad = false;
            break;
        default: break;
    }
}
