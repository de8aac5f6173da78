// What the stages of one evaluation share: attack maps, attack units and the two sides' sums.
#pragma once

#include "board/bitboard.h"
#include "board/geometry.h"
#include "eval/caches.h"
#include "eval/lanes.h"

// The constructor leaves the maps unwritten; each is written by the stage that its comment names. Indices are
// colours; c is the colour that a map belongs to.
struct EvalInfo {
    const PawnEntry* pawns;  // facts of the pawn structure
    int phase;               // 0 to 96
    int king[2];             // squares
    Lanes score[2];          // lane units, each side's own sum
    int units[2];            // c's attack on the enemy king

    // Preparations.
    Bitboard pawnAttacks[2];
    Bitboard neverAttacked[2];  // squares that c's pawns neither attack nor can attack by advancing
    Bitboard knightAttacks[2];
    Bitboard kingAttacks[2];
    Bitboard kingZone[2];    // around c's king
    Bitboard pinned[2];      // men of either colour that alone shield c's king from a slider
    Bitboard avoid[2];       // squares that don't count for c's mobility
    Bitboard knightFear[2];  // squares attacked by enemy knights on which no enemy stands
    // The pieces' own stages.
    Bitboard bishopAttacks[2];  // own queens seen through
    Bitboard rookAttacks[2];    // own queens and rooks seen through
    Bitboard queenAttacks[2];
    // Attack maps, when all pieces are done.
    Bitboard minorAttacks[2];
    Bitboard noQueenAttacks[2];  // pawns, minors and rooks
    Bitboard attacks[2];         // the same and queens
    Bitboard allAttacks[2];      // the same and the king

    EvalInfo() {}
};
