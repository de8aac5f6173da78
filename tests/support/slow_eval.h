// A second, slow evaluation with sets of squares and loops, against which the engine's is compared and whose
// terms can be listed by name. It shares no code with the engine's stages. Long in time, short in text.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

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
    friend bool operator==(Pair a, Pair b) { return a.mg == b.mg && a.eg == b.eg; }
};

// Squares count from a1 = 0 to h8 = 63, so a file is square % 8 and a rank square / 8.
using Squares = std::set<int>;

struct EvalBoard {
    std::array<char, 64> man;  // letters as in a FEN, '.' where empty
    bool whiteToMove = true;
    std::array<bool, 2> castlesShort{};  // by colour, whether that right is left
    int halfmoveClock = 0;
    int phase = 0;  // by the men on the board, not capped
};

// The square's rank as its owner sees it, 0 to 7.
inline int relativeRank(int square, int colour) { return colour == White ? square / 8 : 7 - square / 8; }
inline int forward(int colour) { return colour == White ? 8 : -8; }
// The letter of colour's man of a type, the type given as a capital.
inline char letter(char type, int colour) { return colour == White ? type : char(type - 'A' + 'a'); }
inline bool onBoard(int file, int rank) { return file >= 0 && file < 8 && rank >= 0 && rank < 8; }
// The larger of file and rank difference.
int distance(int a, int b);
// colour's men of the types in the text, "NB" for its knights and bishops; "PNBRQK" for all.
Squares menOf(const EvalBoard& board, int colour, const std::string& types);
int kingOf(const EvalBoard& board, int colour);
Squares joined(const Squares& a, const Squares& b);
Squares common(const Squares& a, const Squares& b);
Squares without(const Squares& a, const Squares& b);
Squares filtered(const Squares& squares, const std::function<bool(int)>& wanted);
// Squares that a man of the type (capital letter, 'P' for a pawn's captures) on `from` attacks; the first
// blocker on each line is included.
Squares attacksFrom(char type, int from, int colour, const Squares& blockers);
// Squares strictly between two squares of one rank, file or diagonal; none for others.
Squares between(int a, int b);
// Union of the attacks of colour's men of a type with the given blockers.
Squares attacksOf(const EvalBoard& board, int colour, char type, const Squares& blockers);

// Each side's contributions by the name of the term.
struct Sheet {
    std::map<std::string, std::array<Pair, 2>> terms;
    void add(const std::string& term, int colour, Pair value) { terms[term][std::size_t(colour)] += value; }
    Pair sum(int colour) const;
};

// What the pawn stage finds out for the later ones; by colour where there are two.
struct PawnFacts {
    std::array<std::vector<int>, 2> passed;  // ascending squares
    std::array<int, 2> shelterUnits{};
    std::array<int, 2> span{};
    int kingWing = 0;
    int openFiles = 0;
    bool fewOpenFiles = false;
    int rams = 0;
};
PawnFacts judgePawns(const EvalBoard& board, Sheet& sheet);
// Endgame value by a row that follows from the pawn's rank and a king's distance to the square ahead of it.
enum class KingDistance { PasserOwn, PasserEnemy, CandidateOwn, CandidateEnemy, PawnEndOwn, PawnEndEnemy };
int kingDistanceValue(KingDistance table, int row, int steps);

// What the piece stages leave for passed pawns.
struct AttackSets {
    std::array<Squares, 2> attacks;      // by all men but the king
    std::array<Squares, 2> kingAttacks;  // squares next to the king
};
// Piece activity, king safety, threats, outposts and relations.
AttackSets judgePieces(const EvalBoard& board, const PawnFacts& facts, Sheet& sheet);
// Passed pawns with pieces around them, and the races of pawn endings.
void judgePassedPawns(const EvalBoard& board, const PawnFacts& facts, const AttackSets& sets, Sheet& sheet);

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
    std::uint64_t noiseWord = 0;  // the seed combined with the key
};

// Every man's piece-square pair, White's less Black's in the sheet of `judge` under "pieceSquares".
Pair pieceSquareValue(char man, int square);

struct Judgement {
    Sheet pawns;             // not scaled by dynamism
    Sheet pieces;            // scaled
    bool shortPath = false;  // material alone decided: the sheets are empty
    int psqBlend = 0;        // blended positional score, White's view
    int score = 0;           // centipawns, side to move's view
};
Judgement judge(const EvalBoard& board, const Given& given);

}  // namespace slow
