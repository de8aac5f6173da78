// Builds the piece-square table: pawns by rule, the other pieces from half-board tables in small units.
#include "board/piece_square.h"
#include "board/types.h"
#include "eval/parameters.h"
#include "eval/weights_squares.h"

namespace {

Score pawnValue(int square) {
    if (rankOf(square) == 0 || rankOf(square) == 7) return {};
    const int rank = PawnRanks[rankOf(square)];
    const int file = fileOf(square);
    return pair(PawnMgUnit * (PawnFilesMg[file] + rank) + PawnRankUnits[file] * rank,
                PawnEgHalfUnit * (PawnFilesEg[file] + rank) / 2);
}

Score pieceValue(int type, int square) {
    const PieceValues& values = ValuesOf[type];
    const int row = 7 - rankOf(square);
    const int file = fileOf(square) < 4 ? fileOf(square) : 7 - fileOf(square);
    return pair(values.mg[row][file] * values.mgUnit, values.eg[row][file] * values.egUnit);
}

}  // namespace

void buildPieceSquare() {
    for (int square = 0; square < 64; ++square) {
        for (int type = Pawn; type <= King; ++type) {
            const Score value = type == Pawn ? pawnValue(square) : pieceValue(type, square);
            PieceSquare[boardCode(White, type)][square] = value;
            PieceSquare[boardCode(Black, type)][square ^ 56] = -value;
        }
    }
}
