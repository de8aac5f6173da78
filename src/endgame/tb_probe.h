// Probing Syzygy tables: win/draw/loss and distance to a zeroing move, and the probe that searches use.
#pragma once

#include "base/relaxed.h"
#include "board/position.h"

#include <cstdint>
#include <optional>

inline constexpr int NoTbScore = 0x7fffffff;

// What one search has from the tables. Its functions alone write it, on thread 0 while the workers are idle;
// only the hits move during a search, counted by all threads without a lock; lost counts are accepted.
class TbSearch {
   public:
    // No table has decided the root yet. Inner nodes of up to `pieceLimit` men probe; 0 turns them off.
    void begin(int pieceLimit);
    // Tables have cut the root list, so that the search needs no more probes.
    void decideRoot(int score);
    void countHit() { tbHits.add(1); }

    int pieceLimit() const { return tbPieceLimit; }
    // In centipawns from the view of the root's side to move; NoTbScore unless tables decided the root.
    int rootScore() const { return tbRootScore; }
    std::uint64_t hits() const { return tbHits; }  // look-ups in tables

   private:
    int tbPieceLimit = 0;
    int tbRootScore = NoTbScore;
    Relaxed<std::uint64_t> tbHits = 0;
};
extern TbSearch tbSearch;

// A result from the side to move's view, as tables and probes give it. The fifty-move rule spoils a cursed
// win and saves a blessed loss.
enum Wdl : int { WdlLoss = -2, WdlBlessedLoss = -1, WdlDraw = 0, WdlCursedWin = 1, WdlWin = 2 };
constexpr Wdl operator-(Wdl wdl) { return Wdl(-int(wdl)); }

// The place of a result in a table of five.
constexpr int indexOfWdl(Wdl wdl) { return wdl - WdlLoss; }

// The distance of a position whose best move zeroes the counter, by its result's index.
inline constexpr int wdlToDtz[5] = {-1, -101, 0, 101, 1};

enum class ProbeState {
    Failed,          // there is no table, or it can't be read
    Found,           // the table's own value, or that of a capture which is no better than a draw
    FoundByCapture,  // a capture's value, so that no distance need be looked up
};
struct WdlProbe {
    ProbeState state;
    Wdl value = WdlDraw;  // means nothing if the probe failed
};

WdlProbe tbProbeWdl(const Position& pos);

// Plies to a zeroing move with best play, signed as the result; 0 for a draw. Nothing if the probe failed.
std::optional<int> tbProbeDtz(const Position& pos);

// The exact score of an inner node, in centipawns from the side to move's view; nothing if the probe failed.
std::optional<int> probeSearchTablebase(const Position& pos, int ply);
