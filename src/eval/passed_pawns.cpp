// Passed pawns, as far as pieces matter: who supports them, who stops them, and the kings' race without
// pieces.
#include "eval/parameters.h"
#include "eval/terms.h"
#include "eval/weights_pawns.h"

#include <algorithm>

namespace {

template <Colour us>
class PassedPawnStage {
   public:
    PassedPawnStage(const Position& position, EvalInfo& evalInfo)
        : pos(position), info(evalInfo), passed(evalInfo.pawns->passed[us]) {}

    void run() {
        for (int i = 0; i < MaxPassed && passed[i]; ++i) evaluatePawn(passed[i]);
        if (pos.phase == 0) race();
    }

   private:
    static constexpr Colour them = opponent(us);
    static constexpr int MaxPassed = 8;

    void evaluatePawn(int pawn) {
        const int rank = relativeRank(us, pawn);
        const std::size_t index = std::size_t(rank - 1);
        farthest = std::max(farthest, rank - 1);
        // Intended: the queens' table is for one single phase, two queens and nothing else.
        const bool queensOnly = info.phase == 36 && pos.pieces[White][Queen] && pos.pieces[Black][Queen];
        info.score[us] += queensOnly ? PasserQueens[index] : PasserBase[index];
        if (rank <= 2) return;
        const int stop = pawn + pawnStep(us);
        if (knightNear(stop)) info.score[them] += KnightNearPasser;
        const Bitboard file = fileMask[std::size_t(pawn)];
        const Bitboard ahead = us == White ? ranksAbove[std::size_t(pawn)] : ranksBelow[std::size_t(pawn)];
        const Bitboard rear = file & ~ahead & ~bit(pawn);
        // A rook behind the passed pawn, either side's. Intended: what stands between rook and pawn is not
        // looked at here.
        if (pos.pieces[us][Rook] & rear) info.score[us] += RookBehindPasser;
        if (pos.pieces[them][Rook] & rear) info.score[them] += RookBehindPasser;
        if (pos.occupied & bit(stop)) return;
        evaluatePath(pawn, stop, file & ahead, rear, index);
    }

    bool knightNear(int stop) const {
        bool near = false;
        forEachSquare(pos.pieces[them][Knight],
                      [&](int knight) { near |= squareDistance(knight, stop) <= 2; });
        return near;
    }

    // A heavy enemy piece behind the pawn with nothing in between rules its whole way. Such pieces don't hide
    // behind those above them.
    bool heavyBehind(int pawn, Bitboard rear) const {
        Bitboard heavy = rear & (pos.pieces[them][Rook] | pos.pieces[them][Queen]);
        while (heavy) {
            const Bitboard blockers = pos.occupied & ~heavy;
            const int square = popLowest(heavy);
            if (!(between[std::size_t(square)][std::size_t(pawn)] & blockers)) return true;
        }
        return false;
    }

    void evaluatePath(int pawn, int stop, Bitboard path, Bitboard rear, std::size_t index) {
        const Bitboard danger =
            heavyBehind(pawn, rear) ? path : path & (info.allAttacks[them] | pos.pieces[them][AllPieces]);
        const Bitboard support = path & info.allAttacks[us];
        Lanes sum;
        if (!danger)
            sum += support == path ? PasserFreeSupported[index] : PasserFree[index];
        else if (!(danger & ~support))
            sum += PasserDefended[index];
        if (!(path & pos.pieces[us][AllPieces])) sum += PasserClearPath[index];
        if (bit(stop) & support & ~danger) sum += PasserStopSupported[index];
        info.score[us] += sum;
    }

    // With pawns and kings alone the distances decide.
    void race() {
        info.score[us] += at(FarthestPasser, farthest);
        for (int i = 0; i < MaxPassed && passed[i]; ++i) {
            const int rank = relativeRank(us, passed[i]);
            if (rank < 2) continue;
            const int stop = passed[i] + pawnStep(us);
            info.score[us] += PawnEndOwnKing[rank][squareDistance(stop, info.king[us])] +
                              PawnEndEnemyKing[rank][squareDistance(stop, info.king[them])];
        }
    }

    const Position& pos;
    EvalInfo& info;
    const std::uint8_t* const passed;
    int farthest = 0;
};

}  // namespace

void evaluatePassedPawns(const Position& pos, EvalInfo& info) {
    PassedPawnStage<White>(pos, info).run();
    PassedPawnStage<Black>(pos, info).run();
}
