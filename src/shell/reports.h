// All that an interface is told about an alpha-beta search.
#pragma once

#include "board/move.h"

#include <string>

// Depths in plies, scores in centipawns from the side to move's view; `bound` is a ReportBound.

inline constexpr int LargestShown = 25000;  // where scores are cut that announce no mate

// The score as the protocol writes it, with its bound word; `shown` is the score behind the text. Tablebases
// that decided the root replace every score that is no mate, and drop the bound.
std::string scoreToText(int score, int bound, int* shown = nullptr);

void reportDepth(int depth, int score, const Move* pv, int bound);
void reportMultiPvLine(int index, int depth, int score, const Move* pv);
void reportDepthEnd(int depth);
void reportSearchEnd();
void reportNodes();
void reportCurrentMove(Move move, int number);
void reportBookMove(Move move);
void reportBestMove(Move best, Move ponder);  // and logs it

// The answer's line alone; `ponder` is 0 if there is none.
void sendBestMove(Move best, Move ponder);
