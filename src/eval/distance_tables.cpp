// What the distance between a king and the square ahead of a pawn is worth in the endgame, by the pawn's
// rank.
#include "eval/parameters.h"
#include "eval/weights_pawns.h"

DistanceTable PasserOwnKing, PasserEnemyKing;
DistanceTable CandidateOwnKing, CandidateEnemyKing;
DistanceTable PawnEndOwnKing, PawnEndEnemyKing;

namespace {

// Intended: the half is added before truncation for negative values too.
int rankTerm(int factor, double weight) {
    const double raised = factor * weight + 0.5;
    return int(raised);
}

}  // namespace

void buildDistanceTables() {
    for (int row = 0; row < DistanceRows; ++row) {
        for (int distance = 0; distance < 9; ++distance) {
            const double weight = (row - 1) * row * KingDistanceWeight[distance];
            const int base = KingDistanceBase[distance];
            const int own = base + rankTerm(PasserKings.own, weight);
            const int enemy = -base + rankTerm(PasserKings.enemy, weight);
            PasserOwnKing[row][distance] = Lanes(0, own);
            PasserEnemyKing[row][distance] = Lanes(0, enemy);
            CandidateOwnKing[row][distance] = Lanes(0, candidateShare(own));
            CandidateEnemyKing[row][distance] = Lanes(0, candidateShare(enemy));
            PawnEndOwnKing[row][distance] = Lanes(0, rankTerm(PawnEndKings.own, weight));
            PawnEndEnemyKing[row][distance] = Lanes(0, rankTerm(PawnEndKings.enemy, weight));
        }
    }
}
