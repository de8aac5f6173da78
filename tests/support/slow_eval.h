// A second, slow evaluation with sets of squares and loops, against which the engine's is compared and whose
// terms can be listed by name. It shares no code with the engine's stages. Long in time, short in text.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>

namespace slow {

inline constexpr int White = 0, Black = 1;

// A middlegame and an endgame value in lane units.
struct Pair {
    int mg = 0;
    int eg = 0;
    Pair& operator+=(Pair other) { return mg += other.mg, eg += other.eg, *this; }
    friend Pair operator+(Pair a, Pair b) { return a += b; }
    friend Pair operator-(Pair a, Pair b) { return {a.mg - b.mg, a.eg - b.eg}; }
    friend Pair operator*(int count, Pair a) { return {count * a.mg, count * a.eg}; }
    friend bool operator==(Pair a, Pair b) = default;
};

// Squares count from a1 = 0 to h8 = 63, so a file is square % 8 and a rank square / 8.
struct Squares : std::set<int> {
    using std::set<int>::set;
    Squares where(const std::function<bool(int)>& wanted) const;
    bool holdsFile(int file) const;
    Squares& operator|=(const Squares& other) { return insert(other.begin(), other.end()), *this; }
    friend Squares operator|(Squares a, const Squares& b) { return a |= b, a; }
    friend Squares operator&(const Squares& a, const Squares& b) {
        return a.where([&](int square) { return b.contains(square); });
    }
    friend Squares operator-(const Squares& a, const Squares& b) {
        return a.where([&](int square) { return !b.contains(square); });
    }
};
inline int countOf(const Squares& squares) { return int(squares.size()); }
inline bool meet(const Squares& a, const Squares& b) { return !(a & b).empty(); }

inline int fileOf(int square) { return square % 8; }
// b1 is light, a1 dark.
inline bool isLight(int square) { return (square % 8 + square / 8) % 2 == 1; }
// The larger of file and rank difference.
int distance(int a, int b);
// Squares strictly between two squares of one rank, file or diagonal; none for others.
Squares between(int a, int b);
// Squares that men of the type (capital letter, 'P' for a pawn's captures) attack; the first blocker on each
// line is included. The colour matters to pawns alone.
Squares attacksFrom(char type, int from, const Squares& blockers, int colour = White);
Squares attacksOf(char type, const Squares& men, const Squares& blockers, int colour = White);

struct EvalBoard {
    char man[64];  // letters as in a FEN, '.' where empty
    bool whiteToMove = true;
    bool castlesShort[2] = {};  // by colour, whether that right is left
    int halfmoveClock = 0;
    int phase = 0;  // by the men on the board, not capped

    // The type of the man there as a capital, whatever its colour.
    char typeOn(int square) const { return char(man[square] & ~32); }
};

// Each side's contributions by the name of the term.
struct Sheet {
    std::map<std::string, std::array<Pair, 2>> terms;
    Pair sum(int colour) const;
};

// One side's men, what they reach, and what the stages find out about them.
struct Army {
    const EvalBoard& board;
    Sheet* sheet = nullptr;  // of the stage that runs
    int colour, king;
    Squares pawns, knights, bishops, rooks, queens, men;
    Squares everyone;  // the men of both colours
    Squares pinned;    // men of either colour that alone shield the king
    Squares byPawns, byKnights, byKing;
    // Filled by the piece stages. Sliders look through the friends they work with, so the sets of bishops and
    // rooks can reach beyond own queens (and rooks).
    Squares byBishops, byRooks, byQueens, byMinors;
    Squares withoutQueen, attacks, allAttacks;  // by all but queens and king, by all but the king, by all
    Squares passed;                             // pawns, found by the pawn stage
    int shelterUnits = 0;                       // what the king's shelter takes off the enemy's units
    int units = 0;                              // attack on the other king

    Army(const EvalBoard& evalBoard, int side);
    // The square's rank as this side sees it, 0 to 7, and the square ahead of it.
    int rank(int square) const { return colour == White ? square / 8 : 7 - square / 8; }
    int ahead(int square) const { return colour == White ? square + 8 : square - 8; }
    Squares fileAhead(int square) const;
    // Whether a pawn attacks the square now or would from further up its file.
    bool mayEverAttack(int square) const;
    // The last file with a pawn minus the first, plus 1; 0 without pawns.
    int pawnSpan() const;
    // Credits this side.
    void add(const std::string& term, Pair value) const { sheet->terms[term][std::size_t(colour)] += value; }
};

// The stages, each for one side; they run for both sides before the next one starts.
void judgePawns(Army& us, Army& them);
// Piece activity.
void judgeLesserPieces(Army& us, Army& them);
void judgeQueens(Army& us, Army& them);
void judgeQueenOnlyDefence(Army& us, Army& them);
void judgeWing(Army& us, Army& them);
// The attack on the enemy king in units, and what it is worth, with the centre and undefended pawns.
void countUnits(Army& us, Army& them);
void judgeKingSafety(Army& us, Army& them);
void judgeThreats(Army& us, Army& them);
void judgeOutposts(Army& us, Army& them);
void judgeRelations(Army& us, Army& them);
// Passed pawns with pieces around them, and the races of pawn endings.
void judgePassers(Army& us, Army& them);

// What grows with i, a passed pawn's rank less 1.
Pair passerValue(int i, int mg = 42, int eg = 34);
// An endgame value that grows with a row, which follows from a pawn's rank, and with a king's distance from
// the square ahead of the pawn.
int distanceValue(int factor, int row, int steps);

// What is the engine's own and tested elsewhere: material, and values set for a search.
struct Given {
    int material = 0;  // blended units, White's view
    float scale = 0;
    Pair contempt;          // White's pair
    int contemptValue = 0;  // White's, in centipawns
    int contemptOption = 0;
    int progressThreshold = 30;
    int dynamismMg = 160;
    int dynamismEg = 185;
    int noise = 0;                // width in centipawns, 0 for none
    std::uint64_t noiseWord = 0;  // the random word of the noise, combined with the key
};

struct Judgement {
    Sheet pawns;       // not scaled by dynamism
    Sheet pieces;      // scaled
    int psqBlend = 0;  // blended positional score, White's view
    int score = 0;     // centipawns, side to move's view
};
Judgement judge(const EvalBoard& board, const Given& given);
// What material and the positional score of an earlier position promise, as `score`.
int estimate(const EvalBoard& board, const Given& given, int psqBlend);

}  // namespace slow
