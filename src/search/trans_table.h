// The transposition table that all threads share without a lock. Every reader takes an entry as a hint: it copies the
// data word once, trusts a score only after the key check matched, and tests a move before it plays it.
#pragma once

#include <cstdint>

#include "board/move.h"
#include "board/types.h"

// Bound bits of an entry; flags as the store takes them.
enum BoundFlag : std::uint8_t {
    NoBound = 0,
    UpperBound = 1,
    LowerBound = 2,
    ExactBound = 3,
    TerminalFlags = 7,  // exact, and the position has no legal move
};

// A copy of an entry's data word, from bit 0 upward: score 16, move 16, depth 16, bound 2, terminal 1, spare 1,
// node rank 3, busy 1, generation 8.
struct TransData {
    std::uint64_t word = 0;
    int score() const { return std::int16_t(word); }
    Move move() const { return Move(word >> 16 & 0xffff); }
    int depth() const { return std::int16_t(word >> 32); }  // half plies
    int bound() const { return int(word >> 48 & 3); }
    bool terminal() const { return word >> 50 & 1; }
    int nodeRank() const { return int(word >> 52 & 7); }
    bool busy() const { return word >> 55 & 1; }
    int generation() const { return int(word >> 56); }
};

// Mate scores are stored as distances from the node and not from the root.
int scoreToTable(int score, int ply);
int scoreFromTable(int score, int ply);

class TransTable {
   public:
    // Copies the data of the first entry of the bucket that matches; false if there is none.
    bool probe(Key key, TransData& data) const;
    // Does nothing for a score beyond 32500 in magnitude. `flags` are bound flags; a higher `nodeRank` keeps the
    // entry longer. Within one search a shallower result of the same kind never replaces a deeper one.
    void store(Key key, int depth, int score, int flags, Move move, int nodeRank);
    // Marks a position as being searched, or no longer; makes a placeholder entry if there is none.
    void markBusy(Key key, bool busy);

    void resize(int megabytes);
    void clear();       // silent
    void free();
    void newSearch(Key rootKey);
    int occupancy() const;  // per mille of entries written by this search

    void saveToFile(const char* path) const;
    void loadFromFile(const char* path);

    std::uint64_t bucketCount() const;
    std::uint64_t byteSize() const;
};
extern TransTable transTable;
