// Keys and sums from scratch, the debug check that compares them with the running ones, and the draw tests.
#include "board/position.h"

#include "board/attacks.h"
#include "board/legality.h"
#include "board/piece_square.h"
#include "board/zobrist.h"

#include <cstdio>

// Visits every piece by its bitboard, as (colour, type, square).
template <class Visit>
static void forEachPiece(const Position& pos, Visit visit) {
    for (const Colour colour : {White, Black})
        for (int type = Pawn; type <= King; ++type)
            forEachSquare(pos.pieces[colour][type], [&](int square) { visit(colour, type, square); });
}

Key computeKey(const Position& pos) {
    Key key = zobrist[0][NoPiece][pos.sideToMove()] ^ castleKey[pos.castleLost];
    forEachPiece(pos, [&](Colour colour, int type, int square) { key ^= zobrist[colour][type][square]; });
    if (pos.epMask) key ^= zobrist[1][NoPiece][lowestSquare(pos.epMask)];
    return key;
}

Key computePawnKey(const Position& pos) {
    Key key = castleKey[pos.castleLost];
    forEachPiece(pos, [&](Colour colour, int type, int square) { key ^= pawnZobrist[colour][type][square]; });
    return key;
}

Key computeMatKey(const Position& pos) {
    Key key = 0;
    forEachPiece(pos, [&](Colour colour, int type, int square) {
        key += matValue[colour][type][squareColour(square)];
    });
    return key;
}

Key computeMatKeyPlain(const Position& pos) {
    Key key = 0;
    forEachPiece(pos, [&](Colour colour, int type, int) { key += matValue[colour][type][0]; });
    return key;
}

Score computePsqPair(const Position& pos) {
    Score sum;
    forEachPiece(pos, [&](Colour colour, int type, int square) {
        sum += PieceSquare[boardCode(colour, type)][square];
    });
    return sum;
}

int computePhase(const Position& pos) {
    int phase = 0;
    forEachPiece(pos, [&](Colour, int type, int) { phase += PhaseWeight[type]; });
    return phase;
}

// Whether the bitboards, the unions over them and the board agree.
static bool boardsAgree(const Position& pos) {
    std::uint8_t board[64] = {};
    Bitboard unions[2] = {};
    int placed = 0;
    forEachPiece(pos, [&](Colour colour, int type, int square) {
        board[square] = std::uint8_t(boardCode(colour, type));
        unions[colour] |= bit(square);
        ++placed;
    });
    for (int square = 0; square < 64; ++square)
        if (board[square] != pos.board[square]) return false;
    // Two pieces on one square would make the count too large.
    return unions[White] == pos.pieces[White][AllPieces] && unions[Black] == pos.pieces[Black][AllPieces] &&
           pos.occupied == (unions[White] | unions[Black]) && popcount(pos.occupied) == placed;
}

bool isConsistent(const Position& pos, bool withSums) {
    const char* fault = nullptr;
    if (!boardsAgree(pos))
        fault = "board";
    else if (pos.pieceCount != std::uint32_t(popcount(pos.occupied)))
        fault = "pieceCount";
    else if (pos.key != computeKey(pos))
        fault = "key";
    else if (pos.pawnKey != computePawnKey(pos))
        fault = "pawnKey";
    else if (pos.matKey != computeMatKey(pos))
        fault = "matKey";
    else if (pos.matKeyPlain != computeMatKeyPlain(pos))
        fault = "matKeyPlain";
    else if (withSums && !(pos.psqPair == computePsqPair(pos)))
        fault = "psqPair";
    else if (withSums && pos.phase != computePhase(pos))
        fault = "phase";
    if (fault) std::fprintf(stderr, "inconsistent position: %s\n", fault);
    return fault == nullptr;
}

bool isPlayable(const Position& pos) {
    if (popcount(pos.pieces[White][King]) != 1 || popcount(pos.pieces[Black][King]) != 1) return false;
    if ((pos.pieces[White][Pawn] | pos.pieces[Black][Pawn]) & (Rank1 | Rank8)) return false;
    const Colour waiting = opponent(pos.sideToMove());
    return !isAttacked(pos, pos.kingSquare(waiting), opponent(waiting), pos.occupied);
}

// Counts earlier records with this key, up to `wanted`, which are the same side's turn since the last
// irreversible move. A game's first record may lie nearer than the clock says.
static int countRepetitions(const Position* parent, Key key, int clock, int wanted) {
    if (clock < 4) return 0;
    int found = 0;
    const Position* record = parent;
    for (int plies = 1; plies < 3 && record; ++plies) record = record->prev;
    for (int plies = 4; plies <= clock && record && record->prev; plies += 2) {
        const Position* candidate = record->prev;
        if (candidate->key == key && ++found == wanted) break;
        record = candidate->prev;
    }
    return found;
}

bool repeatedOnce(const Position* parent, Key key, int clock) {
    return countRepetitions(parent, key, clock, 1) == 1;
}

bool repeatedTwice(const Position* parent, Key key, int clock) {
    return countRepetitions(parent, key, clock, 2) == 2;
}

bool drawnByClock(const Position& child) {
    if (child.halfmoveClock <= 99) return false;
    // Intended: a mate counts on exactly the hundredth half-move and no later.
    if (child.halfmoveClock == 100 && child.inCheck) return hasLegalMove(child);
    return true;
}
