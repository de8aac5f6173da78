// The slow evaluation's sets of squares: which men stand where, what they attack, and the sum of a sheet.
#include "support/slow_eval.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

namespace slow {

Squares Squares::where(const std::function<bool(int)>& wanted) const {
    Squares kept;
    std::copy_if(begin(), end(), std::inserter(kept, kept.end()), wanted);
    return kept;
}

bool Squares::holdsFile(int file) const {
    return std::any_of(begin(), end(), [file](int square) { return fileOf(square) == file; });
}

int distance(int a, int b) { return std::max(std::abs(a % 8 - b % 8), std::abs(a / 8 - b / 8)); }

Squares between(int a, int b) {
    const int file = b % 8 - a % 8, rank = b / 8 - a / 8, length = distance(a, b);
    Squares inside;
    if (file != 0 && rank != 0 && std::abs(file) != std::abs(rank)) return inside;
    for (int step = 1; step < length; ++step) inside.insert(a + step * (rank * 8 + file) / length);
    return inside;
}

// Whether a man of the type takes steps of that direction.
static bool stepsBy(char type, int file, int rank, int colour) {
    const int reach = std::max(std::abs(file), std::abs(rank));
    const bool diagonal = std::abs(file) == std::abs(rank);
    switch (type) {
        case 'P': return reach == 1 && diagonal && (rank > 0) == (colour == White);
        case 'N': return std::abs(file * rank) == 2;
        case 'B': return reach == 1 && diagonal;
        case 'R': return reach == 1 && !diagonal;
        default: return reach == 1;
    }
}

Squares attacksFrom(char type, int from, const Squares& blockers, int colour) {
    Squares reached;
    const int most = type == 'B' || type == 'R' || type == 'Q' ? 7 : 1;
    for (int file = -2; file <= 2; ++file)
        for (int rank = -2; rank <= 2; ++rank) {
            if (!stepsBy(type, file, rank, colour)) continue;
            for (int step = 1; step <= most; ++step) {
                const int toFile = from % 8 + step * file, toRank = from / 8 + step * rank;
                if (toFile < 0 || toFile > 7 || toRank < 0 || toRank > 7) break;
                reached.insert(toRank * 8 + toFile);
                if (blockers.contains(toRank * 8 + toFile)) break;
            }
        }
    return reached;
}

Squares attacksOf(char type, const Squares& men, const Squares& blockers, int colour) {
    Squares reached;
    for (const int from : men) reached |= attacksFrom(type, from, blockers, colour);
    return reached;
}

Pair Sheet::sum(int colour) const {
    Pair total;
    for (const auto& [name, values] : terms) total += values[std::size_t(colour)];
    return total;
}

// A colour's men of a type, given as a capital.
static Squares menOf(const EvalBoard& board, int colour, char type) {
    Squares found;
    for (int square = 0; square < 64; ++square)
        if (board.man[square] == (colour == White ? type : type + 'a' - 'A')) found.insert(square);
    return found;
}

Army::Army(const EvalBoard& evalBoard, int side)
    : board(evalBoard),
      colour(side),
      king(*menOf(board, side, 'K').begin()),
      pawns(menOf(board, side, 'P')),
      knights(menOf(board, side, 'N')),
      bishops(menOf(board, side, 'B')),
      rooks(menOf(board, side, 'R')),
      queens(menOf(board, side, 'Q')),
      men(pawns | knights | bishops | rooks | queens | Squares{king}) {
    for (int square = 0; square < 64; ++square)
        if (board.man[square] != '.') everyone.insert(square);
    byPawns = attacksOf('P', pawns, {}, colour);
    byKnights = attacksOf('N', knights, {});
    byKing = attacksFrom('K', king, {});
    for (const char line : {'B', 'R'}) {
        const Squares pinners = menOf(board, 1 - colour, line) | menOf(board, 1 - colour, 'Q');
        for (const int pinner : attacksFrom(line, king, {}) & pinners) {
            const Squares shields = between(king, pinner) & everyone;
            if (shields.size() == 1) pinned |= shields;
        }
    }
}

Squares Army::fileAhead(int square) const {
    Squares squares;
    for (int to = ahead(square); to >= 0 && to < 64; to = ahead(to)) squares.insert(to);
    return squares;
}

bool Army::mayEverAttack(int square) const {
    return std::any_of(pawns.begin(), pawns.end(), [&](int pawn) {
        return std::abs(fileOf(pawn) - fileOf(square)) == 1 && rank(pawn) < rank(square);
    });
}

int Army::pawnSpan() const {
    std::set<int> files;
    for (const int pawn : pawns) files.insert(fileOf(pawn));
    return files.empty() ? 0 : *files.rbegin() - *files.begin() + 1;
}

}  // namespace slow
