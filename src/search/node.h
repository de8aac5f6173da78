// The node of the searches: what every kind of node has, what zero-window and full-window nodes share beyond
// that, the move that such a node is trying, and the steps that they take alike. Scores from the side to
// move's view, depths in half plies.
#pragma once

#include "base/settings.h"
#include "board/attacks.h"
#include "board/check_squares.h"
#include "board/draws.h"
#include "board/move_picker.h"
#include "endgame/tb_probe.h"
#include "eval/evaluate.h"
#include "search/history.h"
#include "search/limits.h"
#include "search/move_questions.h"
#include "search/search.h"
#include "search/table_view.h"
#include "search/time_manager.h"

#include <algorithm>
#include <optional>

inline constexpr int OnePly = 2;                 // half plies
inline constexpr int FirstFullDepth = 2;         // below it a node belongs to the quiescence search
inline constexpr int DeepestMate = -MateBound;   // best above it: some move avoids being mated
inline constexpr int DecidedScore = 3900;        // beyond it a hash score is no yardstick for singularity
inline constexpr int SingularEvasionPlies = 50;  // from this ply on a reply to a check isn't tested for it

// ---- The ply before; a record from a FEN has none ----

inline Move previousLastMove(const Position& pos) { return pos.prev ? pos.prev->lastMove : NoMove; }
inline bool previousInCheck(const Position& pos) { return pos.prev && pos.prev->inCheck; }
// By how much the move that led here is reduced, in half plies: what the node before keeps in `singularMark`,
// the reduction in force.
inline int previousReduction(const Position& pos) { return pos.prev ? pos.prev->singularMark : 0; }

// ---- Entry ----

// Mate-distance pruning: narrows the window to what mates at this ply allow. True if nothing is left of it;
// `alpha` is then the score.
inline bool mateDistancePruning(int& alpha, int& beta, int ply) {
    alpha = std::max(alpha, ply - MateScore);
    beta = std::min(beta, MateScore - 1 - ply);
    return beta <= alpha;
}

// Only thread 0 polls; the others learn of a stop through their flag, but for the limit of nodes.
inline bool stopsNow(const Position& pos) {
    return pos.threadIndex == 0 ? periodicCheck() : workerCheck(pos);
}

// The score where lines may grow no longer.
inline int scoreAtLastPly(Position& pos) {
    return pos.inCheck ? 0 : evaluate(pos, -OpenEvalBound, OpenEvalBound);
}

// What children read of the move being tried, before there is one: `singularMark`, the reduction in force on
// it, and its stat.
inline void clearMarks(Position& pos) {
    pos.singularMark = 0;
    pos.moveStat = 0;
}

// Whether the static score has risen since the same side's last turn, or nothing is known of that.
inline bool isImproving(const Position& pos, int ply, int eval) {
    constexpr int Tolerance = 10;  // centipawns; a fall of no more counts as none
    if (ply < 2 || !pos.prev || !pos.prev->prev) return true;
    const int before = pos.prev->prev->staticEval;
    return before == NoScore || before - Tolerance <= eval;
}

// ---- Children ----

inline bool markCheck(Position& child) {
    child.inCheck = isInCheck(child);
    return child.inCheck;
}

// A pawn ending that has just come about is worth knowing exactly, whatever the other extensions say.
inline constexpr int PawnEndingExtension = 2 * OnePly;
inline bool beginsPawnEnding(const Position& child) {
    return child.phase == 0 && child.capturedType >= Knight;
}

// A child's score in a null window, for its parent. While the child is searched, the parent's `singularMark`
// is the reduction in force on it. Means nothing after a stop.
inline int nullWindowScore(Position& parent, Position& child, const ZeroWindowCall& call, int reduction,
                           Move* childPv) {
    parent.singularMark = std::uint8_t(reduction);
    const int score = -searchZeroWindow(child, call, childPv);
    parent.singularMark = 0;
    return score;
}

// A move and the line behind it, in rows of PvLength words.
inline void writeLine(Move* pv, Move move, const Move* rest) {
    pv[0] = move;
    int length = 1;
    while (length < PvLength - 1 && (pv[length] = rest[length - 1]) != NoMove) ++length;
    pv[length] = NoMove;
}

// ---- The move that is being tried ----

// What a move is, as sets of tried moves and rules tell moves apart.
enum MoveKind : int {
    MoveTactical = 1,  // capture, en passant or promotion
    MoveCheck = 2,     // gives check
    MoveEvasion = 4,   // answers a check
};

struct Trial {
    const Move move;
    const bool isHashMove, isTactical;
    int kind = 0;      // set of MoveKind
    int newDepth = 0;  // of the child, half plies
    int score = 0;
    bool drawn = false;

    Trial(const Position& pos, Move tried, Move hashMove)
        : move(tried), isHashMove(tried == hashMove), isTactical(::isTactical(pos, tried)) {}

    bool isQuietOutOfCheck() const { return !(kind & (MoveTactical | MoveEvasion)); }
};

// ---- Nodes ----

// What every kind of node has.
struct NodeFrame {
    Position& pos;
    const Colour us;
    int beta;
    const int ply;
    Move* const pv;
    const int phase;
    bool drawn = false;  // the best score is a draw by rule, which the table must not learn
    int best = -NoScore;
    int result = 0;

    NodeFrame(Position& position, int upper, int rootDistance, Move* line)
        : pos(position),
          us(position.sideToMove()),
          beta(upper),
          ply(rootDistance),
          pv(line),
          phase(position.cappedPhase()) {}

    // Ends the node with a score.
    bool endWith(int score) {
        result = score;
        return true;
    }
    // Mate or stalemate.
    int scoreWithoutMoves() const { return pos.inCheck ? ply - MateScore : DrawScore; }
};

// What zero-window and full-window nodes share. The constructor leaves the arrays unwritten.
struct SearchNode : NodeFrame {
    SearchThread& thread;
    int depth;                // half plies
    const KillerRow killers;  // as they stood at entry
    TableView table;
    bool improving = true;
    bool hasBestQuiet = false;
    int eval = NoScore;  // static score, NoScore in check
    int played = 0;
    Move counter = NoMove;
    QuietMove bestQuiet{};  // the quiet move that raised alpha last
    Position child;         // written by makeMove alone
    MovePicker picker;
    CheckSquares checks;  // once the moves have started
    TriedMoves tried;

    SearchNode(Position& position, int upper, int halfPlies, int rootDistance, Move* line)
        : NodeFrame(position, upper, rootDistance, line),
          thread(threadOf(position)),
          depth(halfPlies),
          killers(thread.killers[rootDistance]) {}

    bool isKillerOrCounter(Move move) const {
        return move == killers.first || move == killers.second || move == counter;
    }

    // ---- Before the moves ----

    // True if endgame tables know the position and are worth asking at this depth. Their score becomes the
    // static one too.
    bool tablebaseCutoff() {
        constexpr int FirstPly = 2, SmartDepth = 3;
        const int men = int(pos.pieceCount);
        if (men > tbSearch.pieceLimit() || ply < FirstPly) return false;
        const bool smart = depth >= SmartDepth && settings.smartSyzygy && men < tbSearch.pieceLimit();
        if (!smart && depth < settings.syzygyProbeDepth) return false;
        const std::optional<int> score = probeSearchTablebase(pos, ply);
        if (!score) return false;
        pos.staticEval = result = *score;
        return true;
    }

    // After `pos.staticEval` has been set, or has been left at NoScore in check.
    void noteStaticScore() {
        eval = pos.staticEval;
        improving = isImproving(pos, ply, eval);
    }

    // Sets up the move loop; `kind` is the picker's out of check.
    void startMoves(PickerKind kind) {
        counter = counterMoveOf(thread, pos);
        clearGrandchildKillers(thread, ply);
        checks.find(pos);
        if (pos.inCheck)
            picker.start(pos, KindEvasions, depth, table.move, killers.evasion, killers.first, counter);
        else
            picker.start(pos, kind, depth, table.move, killers.first, killers.second, counter);
    }

    // ---- In the move loop ----

    // Counts a move that was made, sets its kind, and lists it among those tried unless it answers a check.
    // Notes the child's check.
    void noteMade(Trial& trial) {
        trial.kind = (pos.inCheck ? MoveEvasion : 0) | (trial.isTactical ? MoveTactical : 0);
        if (trial.kind == 0)
            tried.addQuiet(quietMoveOf(pos, trial.move));
        else if (trial.kind == MoveTactical)
            tried.addTactical(trial.move);
        child.inCheck = checks.givesCheck(pos, trial.move);
        if (child.inCheck) trial.kind |= MoveCheck;
        ++played;
    }

    // Scores a move that draws by rule; false if it doesn't.
    bool noteDraw(Trial& trial) const {
        if (trial.isTactical || !isDrawnByRule(pos, child, needsTwoRepetitions(ply))) return false;
        trial.score = DrawScore;
        trial.drawn = true;
        return true;
    }

    // The first move has missed the window: if it is quiet, moves like it become less likely to be tried
    // early.
    void blameFirstMove(const Trial& trial) const {
        if (played == 1 && depth <= LastBonusDepth && trial.isQuietOutOfCheck() && tried.hasQuiet())
            penaliseContinuations(pos, tried.firstQuiet(), contBonus(depth));
    }

    void noteBestQuiet(const Trial& trial) {
        if (!trial.isQuietOutOfCheck()) return;
        hasBestQuiet = true;
        bestQuiet = quietMoveOf(pos, trial.move);
    }

    // A move that failed high becomes a killer: in check whatever it is, else with its counter move if it is
    // quiet.
    void noteKillers(const Trial& trial) const {
        if (pos.inCheck)
            thread.killers[ply].evasion = trial.move;
        else if (trial.isQuietOutOfCheck())
            noteRefutation(thread, pos, ply, trial.move);
    }

    // ---- After the moves ----

    void learnCaptures() const {
        if (pv[0]) tried.learnCaptures(pos, pv[0], depth);
    }
};
