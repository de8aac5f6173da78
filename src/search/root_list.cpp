#include "search/root_list.h"

#include "base/settings.h"
#include "board/attacks.h"
#include "board/castling.h"
#include "board/exchange.h"
#include "board/make_move.h"
#include "board/move_picker.h"
#include "board/move_text.h"
#include "endgame/tb_files.h"
#include "endgame/tb_probe.h"
#include "endgame/tb_root.h"
#include "search/limits.h"
#include "search/trans_table.h"

#include <algorithm>
#include <cstring>

namespace {

// Whether a move stands in a list of texts, each followed by a blank. An empty list holds every move.
bool isListed(const char* searchMoves, Move move) {
    if (searchMoves[0] == '\0') return true;
    char text[MoveTextSize];
    moveToText(move, text);
    const std::size_t length = std::strlen(text);
    for (const char* token = searchMoves; *token;) {
        const std::size_t tokenLength = std::strcspn(token, " ");
        if (tokenLength == length && std::strncmp(token, text, length) == 0) return true;
        token += tokenLength;
        token += std::strspn(token, " ");
    }
    return false;
}

// Drops the moves that are not listed and returns how many stand.
int cutToListed(RootMove* list, const char* searchMoves) {
    int count = 0;
    for (const RootMove* rootMove = list; rootMove->move != NoMove; ++rootMove)
        if (isListed(searchMoves, cleanMove(rootMove->move))) list[count++] = *rootMove;
    list[count] = RootMove{};
    return count;
}

// Without the fifty-move rule every win counts as one.
int decidedScore(int score) {
    constexpr int TableWin = 31799;  // centipawns
    if (settings.syzygy50MoveRule) return score;
    return score > 0 ? TableWin : score < 0 ? -TableWin : 0;
}

// The list by endgame tables; 0 if they don't know the root, or keep none of the listed moves.
int listFromTables(Position& root, const char* searchMoves, RootMove* list) {
    int score = 0;
    int count = tbRootProbeDtz(root, list, &score);
    if (count == 0) count = tbRootProbeWdl(root, list, &score);
    if (count == 0) return 0;
    count = cutToListed(list, searchMoves);
    if (count == 0) return 0;
    tbSearch.decideRoot(decidedScore(score));
    return count;
}

// Looks for an easy move: the one that wins something at first sight, which needs less time.
class ObviousMove {
   public:
    void note(int exchangeValue, bool givesCheck, Move move) {
        const bool gains = exchangeValue > 0;
        if (gains) {
            ++gainers;
            gainer = move;
        }
        if (givesCheck && exchangeValue >= 0) {
            ++checkers;
            checker = move;
        }
    }
    // 0 unless exactly one move gains and no other gives a check that costs nothing.
    Move result() const {
        return gainers == 1 && (checkers == 0 || (checkers == 1 && checker == gainer)) ? gainer : 0;
    }

   private:
    int gainers = 0, checkers = 0;
    Move gainer = NoMove, checker = NoMove;
};

int listAllMoves(Position& root, const char* searchMoves, RootMove* list) {
    constexpr int PickerDepth = 100;  // half plies
    TransData table;
    if (!transTable.probe(root.key, table)) table = {};
    MovePicker picker;
    picker.start(root, root.inCheck ? KindEvasions : KindFull, PickerDepth, table.move());
    ObviousMove obvious;
    int count = 0;
    Position child;
    while (const Move move = nextMove(&picker)) {
        if (!makeMove(&root, &child, move)) continue;
        obvious.note(seeThreat(root, move), isInCheck(child), move);
        if (count < MaxListMoves - 1 && isListed(searchMoves, move)) list[count++] = {move, 0, 0};
    }
    list[count] = RootMove{};
    searchState.recaptureMove = obvious.result();
    return count;
}

}  // namespace

int buildRootList(Position& root, const char* searchMoves, double seconds, RootMove* list) {
    // Seconds; with no more than that, opening tables would cost too much of it.
    constexpr double LeastProbeTime = 0.1;
    searchState.recaptureMove = NoMove;
    const bool probes = settings.useSyzygy && seconds > LeastProbeTime;
    tbSearch.begin(probes ? std::min(settings.syzygyProbeLimit.load(), tbLargestTable()) : 0);
    const bool inTables =
        int(root.pieceCount) <= tbSearch.pieceLimit() && root.castleLost == NoCastlingRights;
    if (inTables)
        if (const int count = listFromTables(root, searchMoves, list)) return count;
    return listAllMoves(root, searchMoves, list);
}
