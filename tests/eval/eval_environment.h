// What tests of the evaluation stand on: every table filled once in start-up's order, and small caches of
// their own.
#pragma once

#include "board/fen.h"
#include "board/thread_hooks.h"
#include "eval/caches.h"
#include "eval/contempt.h"
#include "eval/evaluate.h"
#include "eval/king_danger.h"
#include "eval/king_pawn_bitbase.h"
#include "eval/material.h"
#include "eval/parameters.h"
#include "eval/style.h"
#include "support/board_environment.h"

#include <cstring>
#include <map>
#include <random>
#include <set>
#include <string>

// Exchanges the colours of all letters.
inline std::string colourSwapped(std::string men) {
    for (char& man : men)
        if (man & 64) man = char(man ^ 32);
    return men;
}

class EvalTest : public ::testing::Test {
   protected:
    EvalTest() {
        [[maybe_unused]] static const bool started = [] {
            initKingPawnBitbase();
            initMaterialTable();
            return true;
        }();
        settings.threads = 1;
        setContempt(0, White, false);
        setNoise(0);
        setKingSafetyJitter(0);
        treeSearchActive = false;
        initEvalParameters();
        prefetchBases.evalMask = prefetchBases.pawnMask = Entries - 1;
        std::memset(static_cast<void*>(&caches), 0, sizeof caches);
    }

    // A root with the test's caches.
    static Position rootOf(const std::string& fen) { return withCaches(positionOf(fen)); }
    static Position withCaches(Position pos) {
        pos.evalCache = caches.eval;
        pos.pawnHash = caches.pawn;
        pos.matHash = caches.mat;
        pos.psqPair = computePsqPair(pos);
        pos.phase = std::uint16_t(computePhase(pos));
        pos.psqBlend = 0;
        return pos;
    }
    static EvalCacheEntry& cacheEntryOf(const Position& pos) { return caches.eval[pos.key & (Entries - 1)]; }
    // As if the position were met for the first time: another one's score is in its place. Its pawns and its
    // material may be known.
    static int freshScore(Position& pos, int alpha = -OpenEvalBound, int beta = OpenEvalBound) {
        cacheEntryOf(pos) = {pos.key + Entries, 7};
        return evaluate(pos, alpha, beta);
    }

   private:
    static constexpr std::size_t Entries = 1024;
    struct Caches {
        EvalCacheEntry eval[Entries];
        PawnEntry pawn[Entries];
        MatCacheEntry mat[MatCacheEntries];
    };
    static inline Caches caches;
    SettingsGuard settingsGuard;
};
