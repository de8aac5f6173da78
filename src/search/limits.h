// What a `go` asks for, and the values that are published for one search.
#pragma once

#include "base/relaxed.h"
#include "board/move.h"

#include <cstdint>
#include <string>

inline constexpr double NoTimeLimit = 31622400.0;  // seconds
inline constexpr int NoDepthLimit = 99;            // plies; deeper than any search gets by itself
inline constexpr std::uint64_t NoNodeLimit = ~std::uint64_t{0};
inline constexpr int UsualExtendPercent = 500;

struct SearchLimits {
    double time[2] = {0, 0};  // seconds, by colour
    double inc[2] = {0, 0};   // seconds
    int movesToGo = 0;
    int depth = 0;
    double moveTime = 0;  // seconds
    std::uint64_t nodes = NoNodeLimit;
    bool infinite = false;
    bool ponder = false;
    std::string searchMoves;  // each token followed by a blank
};

// Shared between the interpreter and the search. Workers only read them.
struct SearchControl {
    Relaxed<bool> quitRequested = false;  // also set by the input thread
    Relaxed<bool> searching = false;
    Relaxed<int> linesWaiting = 0;  // in the input queue, which alone writes it
    Relaxed<bool> ponder = false;
    double moveTime = 0;  // seconds; not 0: a fixed time for the move
    std::uint64_t nodes = NoNodeLimit;
    int extendPercent = UsualExtendPercent;  // hard limit as per cent of the target
    bool benchMode = false;
};
inline SearchControl searchControl;

// Kinds of an iteration's last score, as the driver logs them.
enum RootScoreKind : int { ExactScore = 0, FailedLow = 1, FailedHigh = 2 };

// Set by the driver before workers wake, or by thread 0 during the search; what is Relaxed, by any thread.
struct SearchState {
    double searchStart = 0;      // seconds since the epoch
    double iterationTarget = 0;  // seconds
    int depthLimit = 0;          // plies
    bool infinite = false;
    bool treeSearchActive = false;  // the mode of the search in progress, or of the last one
    bool analysisSearch = false;
    int rootMoveCount = 0;
    int rootMoveIndex = 0;  // 1-based, of the root move in progress
    double bestMoveChanges = 0;
    bool failLowSeen = false;  // the running iteration's root failed low on thread 0
    bool failHighAccepted = false;
    Relaxed<bool> iterationFailLow = false;
    Relaxed<int> rootPublishedScore = 0;  // centipawns, side to move's view; workers aspirate around it
    RootScoreKind rootScoreKind = ExactScore;
    Relaxed<bool> useLmr = true, nullMovePruning = true;
    bool stopAfterIteration = false;
    int skillDepth = 999;
    Move recaptureMove = 0;  // the obvious move, 0 if there is none
};
inline SearchState searchState;
