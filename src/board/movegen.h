// Pseudo-legal move generators. Each writes words behind `list`, with sort keys where its comment says so,
// and returns how many it wrote; none writes more than MaxListMoves.
#pragma once

#include "board/position.h"

// Every pseudo-legal move: promotions, castling, pawn captures, single pushes, pieces, double pushes.
int genAllMoves(const Position& pos, Move* list);

// Pushes to the last rank, four words each (queen, knight, rook, bishop), no keys.
int genPromotions(const Position& pos, Move* list);
// Short before long, with keys; none in check. Paths attacked or blocked are left out.
int genCastling(const Position& pos, Move* list);
// Pawn captures, with four words for each that promotes, and en passant; no keys.
int genPawnCaptures(const Position& pos, Move* list);
// En-passant captures alone, no keys.
int genEnPassant(const Position& pos, Move* list);

// Captures and the promotions worth trying with them (to a queen, and to a knight that checks), keyed by
// victim and capture history.
int genCaptures(const Position& pos, Move* list);

// Every quiet move and each promotion that `genCaptures` left out, keyed by history; those promotions have
// key 0.
int genQuiets(const Position& pos, Move* list);

// Pseudo-legal answers to a check, no keys. Interposing pawns promote to a queen or a knight only.
int genEvasions(const Position& pos, Move* list);
// Every capture onto one square, except by the king.
int genCapturesOn(const Position& pos, Move* list, int square);
// Every non-king move onto a set of empty squares.
int genBlocks(const Position& pos, Move* list, Bitboard squares);

// Quiet moves that give check, discovered checks first, no keys; castling and promotions are not among them.
// The picker takes the first near the leaves and the second farther from them. Intended: both write the same
// list; the second name keeps the two depths apart for whoever lets one of them write more.
int genQuietChecks(const Position& pos, Move* list);
int genStagedQuiets(const Position& pos, Move* list);
// Checks of the queen from the lines of the enemy king, off the squares that enemy pawns attack; no keys.
int genQueenChecks(const Position& pos, Move* list);

// Non-capturing pawn moves onto the two ranks before promotion with the square ahead free; no keys.
int genPawnPushesToSeventh(const Position& pos, Move* list);
