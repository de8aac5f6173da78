// What the distance between a king and the square ahead of a pawn is worth in the endgame, by the pawn's
// rank.
#include "eval/parameters.h"

DistanceTable PasserOwnKing, PasserEnemyKing;
DistanceTable CandidateOwnKing, CandidateEnemyKing;
DistanceTable PawnEndOwnKing, PawnEndEnemyKing;

namespace {

constexpr int baseByDistance[9] = {390, 270, 180, 120, 90, 60, 30, 0, 0};
constexpr double weightByDistance[9] = {0, 0, 0.43, 1.01, 1.3, 1.5, 1.53, 1.55, 1.57};

// Intended: the half is added before truncation for negative values too.
int rankTerm(int factor, double weight) { return int(factor * weight + 0.5); }

int candidateShare(int value) { return value * 65 / 100; }

}  // namespace

void buildDistanceTables() {
    for (int row = 0; row < DistanceRows; ++row) {
        for (int distance = 0; distance < 9; ++distance) {
            const double weight = (row - 1) * row * weightByDistance[distance];
            const int base = baseByDistance[distance];
            const int own = base + rankTerm(-28, weight);
            const int enemy = -base + rankTerm(72, weight);
            PasserOwnKing[row][distance] = pair(0, own);
            PasserEnemyKing[row][distance] = pair(0, enemy);
            CandidateOwnKing[row][distance] = pair(0, candidateShare(own));
            CandidateEnemyKing[row][distance] = pair(0, candidateShare(enemy));
            PawnEndOwnKing[row][distance] = pair(0, rankTerm(-12, weight));
            PawnEndEnemyKing[row][distance] = pair(0, rankTerm(15, weight));
        }
    }
}
