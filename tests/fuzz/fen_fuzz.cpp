// A FEN of any bytes, and a walk from it. The first byte of an input chooses Chess960 ('c') or not; the FEN
// goes to the line's end; each byte behind it chooses a move of the walk.
#include "board/exchange.h"
#include "board/fen.h"
#include "board/legality.h"
#include "board/make_move.h"
#include "board/movegen.h"
#include "endgame/polyglot_keys.h"
#include "eval/evaluate.h"
#include "eval/king_pawn_bitbase.h"
#include "eval/material.h"
#include "eval/parameters.h"
#include "fuzz/fuzz_support.h"
#include "search/search_tables.h"
#include "support/slow_chess.h"

namespace {

constexpr std::size_t LongestWalk = 24;  // plies

using Moves = std::vector<Move>;

Moves sorted(Moves moves) {
    std::sort(moves.begin(), moves.end());
    return moves;
}

// The text that comes back must name the same position, its castling rights apart, and the same text again.
void checkRoundTrip(const Position& pos) {
    const auto withoutCastling = [](const std::string& fen) {
        const std::size_t castling = fen.find(' ', fen.find(' ') + 1);
        return fen.substr(0, castling) + fen.substr(fen.rfind(' '));
    };
    const std::string text = writeFen(pos);
    Position again;
    setFen(&again, text.c_str());
    require(std::equal(pos.board, pos.board + 64, again.board), "the text has the same men");
    require(again.sideToMove() == pos.sideToMove(), "the text has the same side to move");
    require(again.epMask == pos.epMask, "the text has the same en-passant square");
    require(withoutCastling(writeFen(again)) == withoutCastling(text), "the text repeats itself");
    require(isConsistent(again, false), "the keys of the text are right");
}

// Intended: outside Chess960 make refuses no castling, not even one that leaves the king open to a line. Such
// a position is no chess, but searches come by it, and nothing in it takes the king.
void checkOpenKing(Position& pos) {
    evaluate(pos, -OpenEvalBound, OpenEvalBound);
    Position child;
    for (const Move move : pseudoLegalMoves(pos)) {
        if (!makeChild(pos, child, move)) continue;
        require(child.pieces[White][King] && child.pieces[Black][King], "no king is taken");
        evaluate(child, -OpenEvalBound, OpenEvalBound);
    }
}

// Every legal move, made and judged. Nothing for a position with more moves than a list holds: there is no
// such game, and lists are then cut.
Moves checkMoves(const Position& pos) {
    Move list[MaxListMoves];
    const int count = genAllMoves(pos, list);
    require(count <= MaxListMoves, "lists are bounded");
    Moves legal;
    Position child;
    for (int i = 0; i < count; ++i) {
        const Move move = cleanMove(list[i]);
        if (!makeChild(pos, child, move)) continue;
        require(isConsistent(child, true), "the keys and sums of a child are right");
        require(isValidMove(pos, move), "a generated move is valid");
        if (isCastling(move) && !settings.chess960 && !isPlayable(child)) {
            checkOpenKing(child);
            continue;
        }
        require(isPlayable(child), "a child is playable");
        require(givesCheckQuick(pos, move) == (child.inCheck != 0),
                "checks are seen before the move is made");
        seeLosing(pos, move);
        seeBelowMargin(pos, move, 100);
        seeScore(pos, move, 10);
        seeThreat(pos, move);
        seeFromSquareSafe(pos, move);
        legal.push_back(move);
    }
    if (count == MaxListMoves) return {};
    legal = sorted(legal);
    Moves plain;
    for (const SlowMove& move : slowMoves(slowBoardOf(pos))) plain.push_back(slowWord(move));
    require(sorted(plain) == legal, "the moves are those of the rules");
    if (pos.inCheck) require(hasLegalMove(pos) == !legal.empty(), "a mate is seen");
    return legal;
}

// A walk of legal moves, each position judged on its way.
void walk(Position root, const std::uint8_t* choices, std::size_t plies) {
    std::vector<Position> line(plies + 1);
    line[0] = root;
    for (std::size_t ply = 0; ply <= plies; ++ply) {
        const int score = evaluate(line[ply], -OpenEvalBound, OpenEvalBound);
        require(score > -OpenEvalBound && score < OpenEvalBound, "scores are in range");
        require(evaluate(line[ply], -OpenEvalBound, OpenEvalBound) == score, "a cached score is the same");
        bookKey(line[ply]);
        const Moves legal = checkMoves(line[ply]);
        if (legal.empty() || ply == plies) return;
        makeChild(line[ply], line[ply + 1], legal[choices[ply] % legal.size()]);
    }
}

}  // namespace

int LLVMFuzzerInitialize(int*, char***) {
    startSmallEngine();
    initKingPawnBitbase();
    initMaterialTable();
    initEvalParameters();
    buildSearchTables();
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    settings.chess960 = data[0] == 'c';
    const std::uint8_t* const end = data + size;
    const std::uint8_t* const lineEnd = std::find(data + 1, end, '\n');
    const std::string fen(data + 1, lineEnd);
    Position pos;
    try {
        setFen(&pos, fen.c_str());
    } catch (const ProcessEnded&) {
        return 0;
    }
    threadPool.attachRoot(pos, 0);
    threadPool.threadRecords[0].clearEvalCache();
    require(isConsistent(pos, false), "the keys of any text are right");
    checkRoundTrip(pos);
    setFen(&pos, fen.c_str());  // for the castling tables, which the round trip has changed
    if (!isPlayable(pos)) return 0;
    pos.psqPair = computePsqPair(pos);
    pos.phase = std::uint16_t(computePhase(pos));
    const std::uint8_t* const choices = lineEnd == end ? end : lineEnd + 1;
    walk(pos, choices, std::min(LongestWalk, std::size_t(end - choices)));
    return 0;
}
