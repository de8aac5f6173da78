// The early exit: an estimate in place of the score.
#include "eval/eval_environment.h"

#include <cmath>
#include <random>

static int nearest(int value, int unit) { return int(std::lround(double(value) / unit)); }
static int seenByMover(const Position& pos, int score) { return pos.sideToMove() == White ? score : -score; }

static int shrunkByClock(const Position& pos, int score) {
    const int threshold = settings.progressThreshold;
    return pos.halfmoveClock > threshold ? (101 - pos.halfmoveClock) * score / (100 - threshold) : score;
}
static int cutIfLevel(int score, int material) {
    return std::abs(material) < 19200 ? score * 88 / 100 : score;
}

class EarlyExit : public EvalTest {
   protected:
    EarlyExit() { settings.progressThreshold = 41; }
};

// Outside the window an estimate from the line's last positional score will do, but neither late in the game
// nor with a pawn about to promote. It has no margin and is not kept.
TEST_F(EarlyExit, EstimatesLeaveEarly) {
    std::mt19937 random(4);
    int left = 0, stayed = 0;
    walkRandomGames(2, 120, [&](const Position& game) {
        Position pos = withCaches(game);
        pos.psqBlend = int(random() % 400001) - 200000;
        if (random() % 4 == 0) pos.halfmoveClock = std::uint16_t(random() % 110);
        forgetCaches();
        float scale = 0;
        const int material = evaluateMaterial(pos, scale);
        if (scale == 0) return;
        const bool seventh =
            (pos.pieces[White][Pawn] & rankMask(6)) || (pos.pieces[Black][Pawn] & rankMask(1));
        const int blended = int(scale * float(pos.psqBlend)) + material;
        const int estimate =
            shrunkByClock(pos, seenByMover(pos, cutIfLevel(nearest(blended, 960), material)));
        const int exact = scoreOf(pos);
        for (const int shift : {-1, 0, 1}) {
            forgetCaches();
            const int bound = estimate + shift;
            const bool leaves = shift != 0 && pos.phase > 6 && !seventh;
            Position line = pos;
            ASSERT_EQ(evaluate(line, bound, bound), leaves ? estimate : exact) << writeFen(pos) << shift;
            const bool kept = caches.eval[pos.key & (Entries - 1)].key == pos.key;
            ASSERT_EQ(kept, !leaves) << writeFen(pos);
            ++(leaves ? left : stayed);
        }
    });
    EXPECT_GT(left, 1000);
    EXPECT_GT(stayed, 1000);
}
