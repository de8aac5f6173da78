// Keys and sums from scratch, and the debug check that compares them with the running ones.
#include "board/position.h"

#include "board/geometry.h"
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
