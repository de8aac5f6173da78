// What a zero-window node tries before its first move: to shorten a won node, to end by reverse futility
// pruning or by a null move, and to find a move to begin with by internal iterative deepening.
#include "board/exchange.h"
#include "board/geometry.h"
#include "board/make_move.h"
#include "board/sliders.h"
#include "search/limits.h"
#include "search/zero_window_node.h"

#include <algorithm>
#include <cstdlib>

namespace {

// ---- Threats by the opponent's last move ----

// Whether the piece on one square really wins something on another, by exchange.
bool winsSomethingOf(const Position& pos, int from, Bitboard targets) {
    for (; targets; targets &= targets - 1)
        if (seeScore(pos, makeWord(from, lowestSquare(targets)), 1) > 0) return true;
    return false;
}

// A pawn that attacks a piece, or that may promote unharmed.
bool pawnThreatens(const Position& pos, Colour us, int from) {
    const Bitboard targets = pos.pieces[us][AllPieces] & ~pos.pieces[us][Pawn] & ~pos.pieces[us][King];
    if (pawnAttacks(opponent(us), bit(from)) & targets) return true;
    if (relativeRank(opponent(us), from) != SeventhRank) return false;
    const int ahead = from + pawnStep(opponent(us));
    return pos.board[ahead] == NoPiece && seeScore(pos, makeWord(from, ahead), 0) >= 0;
}

// Whether the piece that the opponent has just moved threatens something of ours.
bool lastMoveThreatens(const Position& pos) {
    if (pos.lastMove == NoMove || pos.gamePly == 0) return false;
    const Colour us = pos.sideToMove();
    const int from = toOf(pos.lastMove);
    const std::size_t index = std::size_t(from);
    const Bitboard* ours = pos.pieces[us];
    switch (typeOfCode(pos.board[from])) {
        case Pawn: return pawnThreatens(pos, us, from);
        case Knight: {
            const Bitboard reach = knightAttacks[index];
            return (reach & (ours[Queen] | ours[Rook])) ||
                   winsSomethingOf(pos, from, reach & (ours[Bishop] | ours[Pawn]));
        }
        case Bishop: {
            const Bitboard reach = bishopAttacksOf(from, pos.occupied);
            return (reach & (ours[Queen] | ours[Rook])) ||
                   winsSomethingOf(pos, from, reach & (ours[Pawn] | ours[Knight]));
        }
        case Rook: {
            const Bitboard reach = rookAttacksOf(from, pos.occupied);
            return (reach & ours[Queen]) ||
                   winsSomethingOf(pos, from, reach & (ours[Pawn] | ours[Knight] | ours[Bishop]));
        }
        case Queen:
            return winsSomethingOf(
                pos, from, queenAttacksOf(from, pos.occupied) & ours[AllPieces] & ~ours[Queen] & ~ours[King]);
        case King: return winsSomethingOf(pos, from, kingAttacks[index] & ours[AllPieces] & ~ours[King]);
        default: return false;  // the rook's square of a castling move
    }
}

// ---- Pruning, never in check ----

// A side that is winning clearly, with no enemy queen or far pawn about, needs less depth to show it. The
// table too learns the smaller depth.
inline void shortenWonNode(ZeroWindowNode& node) {
    constexpr int LeastDepth = 5;
    constexpr int ClearlyWinning = 350;  // centipawns
    const Position& pos = node.pos;
    if (node.eval <= node.beta || node.depth < LeastDepth) return;
    if (node.estimate <= ClearlyWinning || node.eval <= ClearlyWinning) return;
    const Colour them = opponent(node.us);
    const Bitboard farRanks = relativeRankMask(them, SixthRank) | relativeRankMask(them, SeventhRank);
    if (pos.pieces[them][Pawn] & farRanks) return;
    if (!searchState.treeSearchActive && !pos.pieces[them][Queen]) node.depth -= OnePly;
}

enum class StaticVerdict { Ended, TryNullMove, Threatened };

// Reverse futility pruning: whether the static score alone, so far above the window that the remaining depth
// will hardly lose the lead, settles the node.
inline StaticVerdict reverseFutilityPruning(ZeroWindowNode& node) {
    constexpr int ImprovingDiscount = 10;  // centipawns a half ply, off the step of the margin
    constexpr int ThreatDepth = 5;         // up to it a smaller lead will do if nothing is threatened
    constexpr int ThreatStep = 15;         // centipawns a half ply of that lead
    const Position& pos = node.pos;
    // Intended: the term is never positive and is subtracted, so that late in a game a pawn that has just
    // come to its seventh rank makes pruning easier.
    const bool pawnArrived =
        pos.movedType == Pawn && relativeRank(opponent(node.us), toOf(pos.lastMove)) == SeventhRank;
    const int passerBonus = pawnArrived ? node.phase - MaxPhase : 0;
    const int step = searchTables.futilityStep - (node.improving ? ImprovingDiscount : 0);
    if (node.beta <= node.estimate - passerBonus - step * node.depth) {
        node.result = node.estimate;
        return StaticVerdict::Ended;
    }
    if (node.depth > ThreatDepth) return StaticVerdict::TryNullMove;
    const int lowered = node.estimate - ThreatStep * node.depth - passerBonus;
    if (node.beta > lowered) return StaticVerdict::TryNullMove;
    if (lastMoveThreatens(pos)) return StaticVerdict::Threatened;
    node.result = lowered;
    return StaticVerdict::Ended;
}

// In half plies, from points for the depth, for the lead, and for pieces enough to make zugzwang unlikely.
// Both divisions truncate.
inline int nullMoveReduction(const ZeroWindowNode& node) {
    constexpr int MaxLead = 400, LeadPerPoint = 20;  // centipawns
    constexpr int PiecesPhase = 23;                  // above it
    constexpr int PiecesPoints = 4, BasePoints = 19;
    constexpr int PointsPerHalfPly = 4;
    const int lead = std::min(node.estimate - node.beta, MaxLead);
    return (node.depth + lead / LeadPerPoint + (node.phase > PiecesPhase ? PiecesPoints : 0) + BasePoints) /
           PointsPerHalfPly;
}

// The node's score if the opponent may move twice, `reduction` half plies shallower; 0 after a stop.
inline int nullMoveScore(ZeroWindowNode& node, int reduction) {
    makeMove(&node.pos, &node.child, NoMove);
    const int depth = node.depth - reduction;
    // Intended: the ply stays in quiescence and rises in the search.
    if (depth < FirstFullDepth)
        return -searchQuiescence(node.child, -node.beta, 1 - node.beta, 0, node.ply, node.childPv);
    return -searchZeroWindow(node.child,
                             {.beta = 1 - node.beta,
                              .depth = depth,
                              .ply = node.ply + 1,
                              .noNull = true,
                              .cutNode = !node.cutNode},
                             node.childPv);
}

// Verification of the null move, deep down and earlier in endings: in zugzwang a pass is the best move, so
// its score is confirmed by a search without it. Ends the node with the pass's score, or after a stop.
inline bool verification(ZeroWindowNode& node, int score, int reduction) {
    constexpr int FirstDepth = 15, FirstDepthWithPieces = 25;
    constexpr int EndingPhase = 8;  // up to it
    const bool trusted =
        node.depth < FirstDepth || (node.phase > EndingPhase && node.depth < FirstDepthWithPieces);
    if (trusted) return node.endWith(score);
    const int verified = searchZeroWindow(
        node.pos,
        {.beta = node.beta, .depth = node.depth - reduction - OnePly, .ply = node.ply, .noNull = true},
        node.childPv);
    if (isStopped(node.pos)) return node.endWith(0);
    return verified >= node.beta && node.endWith(score);
}

// Null move pruning: a side that is above the window even after a pass need not look for its best move.
inline bool nullMovePruning(ZeroWindowNode& node) {
    constexpr int UncheckedDepth = 23;             // from here on the static score may be any
    constexpr int ScoreSlope = 7, ScoreBase = 84;  // how far it may lie below the window else, in centipawns
    constexpr int UnprovenMate = 29001;            // a mate that needs the pass is no mate
    constexpr int ThreatMargin = 125;              // centipawns below the window
    constexpr int SmallReduction = 4;              // half plies; below it the parent looks again
    Position& pos = node.pos;
    const int beta = node.beta;
    if (hasOnlyPawns(pos, node.us) || previousLastMove(pos) == NoMove) return false;
    if (node.depth < UncheckedDepth && node.eval < beta - ScoreSlope * node.depth + ScoreBase) return false;

    const int reduction = nullMoveReduction(node);
    int score = nullMoveScore(node, reduction);
    if (isStopped(pos)) return node.endWith(0);
    if (score >= UnprovenMate) score = beta;

    // The reduced move that led here has left a threat behind: the parent must look again, or this node
    // deeper.
    const int parentReduction = previousReduction(pos);
    if (parentReduction != 0 && score < beta - ThreatMargin) {
        if (parentReduction < SmallReduction) return node.endWith(score);
        node.depth += OnePly;
    }
    return score >= beta && verification(node, score, reduction);
}

}  // namespace

bool pruneBeforeMoves(ZeroWindowNode& node) {
    constexpr int StaticPruneDepth = 12, LeastNullDepth = 6;
    constexpr int LostScore = -9999;  // centipawns; static scores say nothing about windows below it
    shortenWonNode(node);
    if (node.noNull || node.estimate < node.beta || std::abs(node.beta) >= MateBound) return false;
    // Intended: the option turns reverse futility pruning off too.
    if (!searchState.nullMovePruning) return false;
    if (node.depth <= StaticPruneDepth) {
        if (node.beta >= LostScore && node.eval >= node.beta) {
            const StaticVerdict verdict = reverseFutilityPruning(node);
            if (verdict != StaticVerdict::TryNullMove) return verdict == StaticVerdict::Ended;
        } else if (node.depth < LeastNullDepth) {
            return false;
        }
    }
    return nullMovePruning(node);
}

bool internalIterativeDeepening(ZeroWindowNode& node) {
    constexpr int DeepeningDepth = 12;   // above it
    constexpr int EntryDepthSlack = 4;   // half plies that an entry may be below half the depth
    constexpr int HopelessMargin = 100;  // centipawns; a window farther above the static score isn't met
    constexpr int DepthOff = 4;          // half plies, off three quarters of the depth
    if (node.depth <= DeepeningDepth || node.noNull) return false;
    if (!node.noHashMove && node.table.depth >= node.depth / 2 - EntryDepthSlack) return false;
    if (node.beta > node.eval + HopelessMargin) return false;
    const int shallower = node.depth * 3 / 4 - DepthOff;
    const int evenDepth = shallower - (shallower & 1);
    searchZeroWindow(
        node.pos,
        {.beta = node.beta, .depth = evenDepth, .ply = node.ply, .noNull = true, .cutNode = node.cutNode},
        node.childPv);
    if (isStopped(node.pos)) return node.endWith(0);
    rereadTable(node.table, node.key, node.ply);
    node.noteSingularCandidate();
    return false;
}
