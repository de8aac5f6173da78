// What the two files of the slow piece stages share: the sets of one position and their stages.
#pragma once

#include "support/slow_eval.h"

#include <array>

namespace slow {

// The squares that each side's men reach, by colour. Sliders look through the friends they work with, so the
// bishop and rook sets can reach beyond own queens (and rooks).
struct PieceMaps {
    Squares occupied;
    std::array<int, 2> king{};
    std::array<Squares, 2> men, pawns;
    std::array<Squares, 2> byPawns, byKnights, byBishops, byRooks, byQueens, byKing;
    std::array<Squares, 2> byMinors, withoutQueen, attacks, allAttacks;
    std::array<Squares, 2> pinned;    // men of either colour that alone shield this colour's king
    std::array<Squares, 2> avoid;     // not counted for mobility
    std::array<Squares, 2> kingZone;  // around this colour's king
    std::array<int, 2> units{};       // this colour's attack on the other king
};

constexpr std::array<int, 2> BothColours = {White, Black};
inline std::size_t at(int index) { return std::size_t(index); }
inline int enemyOf(int colour) { return 1 - colour; }
inline int fileOf(int square) { return square % 8; }
inline int countOf(const Squares& squares) { return int(squares.size()); }
inline bool has(const Squares& squares, int square) { return squares.count(square) > 0; }
inline bool meet(const Squares& a, const Squares& b) { return !common(a, b).empty(); }
// b1 is light, a1 dark.
inline bool isLight(int square) { return (square % 8 + square / 8) % 2 == 1; }
inline Squares ofShade(const Squares& squares, bool light) {
    return filtered(squares, [light](int square) { return isLight(square) == light; });
}
// The man's type as a capital, whatever its colour; '.' for an empty square.
inline char typeOn(const EvalBoard& board, int square) {
    const char man = board.man[at(square)];
    return man >= 'a' ? char(man - 'a' + 'A') : man;
}
// Nothing beyond the end of a table counts.
template <std::size_t n>
Pair entry(const Pair (&table)[n], int index) {
    return index < int(n) ? table[index] : Pair{};
}

// Checks, contact, defence and the danger table, with the terms of the centre and of undefended pawns.
void judgeKingSafety(const EvalBoard& board, PieceMaps& maps, Sheet& sheet);
void judgeThreats(const EvalBoard& board, const PieceMaps& maps, Sheet& sheet);
void judgeOutposts(const EvalBoard& board, const PieceMaps& maps, Sheet& sheet);
void judgeRelations(const EvalBoard& board, const PieceMaps& maps, Sheet& sheet);

}  // namespace slow
