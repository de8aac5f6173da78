// Captures, keyed by the victim (the MVV of MVV/LVA) and by what the thread has learnt of such captures; the
// attacker plays no part beside that.
#include "board/geometry.h"
#include "board/list_writer.h"
#include "board/movegen.h"
#include "board/pawn_moves.h"
#include "board/sliders.h"
#include "board/thread_hooks.h"

namespace {

// By type of the victim.
constexpr int captureValue[8] = {0, 600, 2210, 2340, 3900, 7439, 9939, 0};

template <Colour us>
class CaptureGenerator {
   public:
    CaptureGenerator(const Position& position, Move* list)
        : pos(position),
          enemies(position.pieces[opponent(us)][AllPieces]),
          knightChecks(knightAttacks[std::size_t(position.kingSquare(opponent(us)))]),
          learnt(threadHooks[position.threadIndex].captureHistory),
          writer(list) {}

    int generate() {
        forEachPawnCapture<us>(pos, [&](int from, int to) { addPawn(from, to); });
        forEachEnPassant(pos, us, [&](int from, int to) {
            writer.add(withKey(makeWord(from, to, EnPassant), keyOf(Pawn, to) + captureValue[Pawn]));
        });
        const Bitboard promoting = pos.pieces[us][Pawn] & relativeRankMask(us, 6);
        forEachSquare(pawnPushes<us>(promoting) & ~pos.occupied,
                      [&](int to) { addPromotions(to - pawnStep(us), to); });
        addPieces<Knight>();
        addPieces<Bishop>();
        addPieces<Rook>();
        addPieces<Queen>();
        addPieces<King>();
        return writer.count();
    }

   private:
    // The learnt counters stay between 4000 and 12000, so that even a queen taken by a pawn that becomes one
    // fits the signed 16 bits of a key. En passant counts its victim by the empty square that it enters.
    int keyOf(int type, int to) const {
        const int victim = pos.board[to];
        return learnt[boardCode(us, type)][to][victim] + captureValue[typeOfCode(victim)];
    }

    // A queen, and a knight where it gives check; the other promotions come with the quiet moves.
    void addPromotions(int from, int to) {
        const int key = keyOf(Pawn, to);
        writer.add(withKey(makeWord(from, to, QueenPromotion), key + captureValue[Queen]));
        if (knightChecks & bit(to))
            writer.add(withKey(makeWord(from, to, KnightPromotion), key + captureValue[Knight]));
    }

    void addPawn(int from, int to) {
        if (relativeRank(us, to) == 7)
            addPromotions(from, to);
        else
            writer.add(withKey(makeWord(from, to), keyOf(Pawn, to)));
    }

    template <PieceType type>
    void addPieces() {
        forEachSquare(pos.pieces[us][type], [&](int from) {
            forEachSquare(attacksOf<type>(from, pos.occupied) & enemies,
                          [&](int to) { writer.add(withKey(makeWord(from, to), keyOf(type, to))); });
        });
    }

    const Position& pos;
    const Bitboard enemies;
    const Bitboard knightChecks;
    const CaptureRow* const learnt;
    ListWriter writer;
};

}  // namespace

int genCaptures(const Position& pos, Move* list) {
    return pos.sideToMove() == White ? CaptureGenerator<White>(pos, list).generate()
                                     : CaptureGenerator<Black>(pos, list).generate();
}
