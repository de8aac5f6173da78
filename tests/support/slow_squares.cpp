// The slow evaluation's sets of squares: which men stand where, what they attack, and the sum of a sheet.
#include "support/slow_eval.h"

#include <algorithm>
#include <cstdlib>

namespace slow {

int distance(int a, int b) { return std::max(std::abs(a % 8 - b % 8), std::abs(a / 8 - b / 8)); }

Squares menOf(const EvalBoard& board, int colour, const std::string& types) {
    Squares found;
    for (int square = 0; square < 64; ++square)
        for (char type : types)
            if (board.man[std::size_t(square)] == letter(type, colour)) found.insert(square);
    return found;
}

int kingOf(const EvalBoard& board, int colour) { return *menOf(board, colour, "K").begin(); }

Squares joined(const Squares& a, const Squares& b) {
    Squares all = a;
    all.insert(b.begin(), b.end());
    return all;
}

Squares filtered(const Squares& squares, const std::function<bool(int)>& wanted) {
    Squares kept;
    for (int square : squares)
        if (wanted(square)) kept.insert(square);
    return kept;
}

Squares common(const Squares& a, const Squares& b) {
    return filtered(a, [&](int square) { return b.contains(square); });
}

Squares without(const Squares& a, const Squares& b) {
    return filtered(a, [&](int square) { return !b.contains(square); });
}

// Squares reached by repeating a step until the edge, a blocker or the most steps allowed.
static void walk(Squares& reached, int from, int fileStep, int rankStep, int most, const Squares& blockers) {
    int file = from % 8 + fileStep, rank = from / 8 + rankStep;
    for (int step = 0; step < most && onBoard(file, rank); ++step, file += fileStep, rank += rankStep) {
        reached.insert(rank * 8 + file);
        if (blockers.contains(rank * 8 + file)) return;
    }
}

Squares attacksFrom(char type, int from, int colour, const Squares& blockers) {
    Squares reached;
    for (int file = -2; file <= 2; ++file)
        for (int rank = -2; rank <= 2; ++rank) {
            const int reach = std::max(std::abs(file), std::abs(rank));
            const bool straight = reach == 1 && (file == 0 || rank == 0), diagonal = reach == 1 && !straight;
            if (type == 'P' && diagonal && rank == forward(colour) / 8)
                walk(reached, from, file, rank, 1, blockers);
            if (type == 'N' && std::abs(file * rank) == 2) walk(reached, from, file, rank, 1, blockers);
            if (type == 'K' && reach == 1) walk(reached, from, file, rank, 1, blockers);
            if ((type == 'B' || type == 'Q') && diagonal) walk(reached, from, file, rank, 7, blockers);
            if ((type == 'R' || type == 'Q') && straight) walk(reached, from, file, rank, 7, blockers);
        }
    return reached;
}

Squares between(int a, int b) {
    const int file = b % 8 - a % 8, rank = b / 8 - a / 8, length = distance(a, b);
    Squares inside;
    if (file != 0 && rank != 0 && std::abs(file) != std::abs(rank)) return inside;
    for (int step = 1; step < length; ++step) inside.insert(a + step * (rank * 8 + file) / length);
    return inside;
}

Squares attacksOf(const EvalBoard& board, int colour, char type, const Squares& blockers) {
    Squares reached;
    for (int from : menOf(board, colour, std::string(1, type)))
        reached = joined(reached, attacksFrom(type, from, colour, blockers));
    return reached;
}

Pair Sheet::sum(int colour) const {
    Pair total;
    for (const auto& [name, values] : terms) total += values[std::size_t(colour)];
    return total;
}

}  // namespace slow
