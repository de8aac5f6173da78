// The arithmetic between the terms' sums and the score, and the early exit, against a second writing in plain
// numbers: lanes apart, no packed pairs, rounding by the library.
#include "eval/endgames.h"
#include "eval/eval_environment.h"
#include "eval/pawns.h"
#include "eval/terms.h"

#include <cmath>
#include <random>

struct Lanes {
    int mg = 0, eg = 0;
};
static Lanes lanesOf(Score score) { return {mgOf(score), egOf(score)}; }
static Lanes sum(Lanes a, Lanes b) { return {a.mg + b.mg, a.eg + b.eg}; }

static int nearest(int value, int unit) { return int(std::lround(double(value) / unit)); }
static int seenByMover(const Position& pos, int score) { return pos.sideToMove() == White ? score : -score; }

static int shrunkByClock(const Position& pos, int score) {
    const int threshold = settings.progressThreshold;
    return pos.halfmoveClock > threshold ? (101 - pos.halfmoveClock) * score / (100 - threshold) : score;
}
static int cutIfLevel(int score, int material) {
    return std::abs(material) < 19200 ? score * 88 / 100 : score;
}

// How often each rule had a say, so that no comparison passes for want of positions.
struct Seen {
    int shortPath = 0, late = 0, quiet = 0, closedFiles = 0, rams = 0, closed = 0, cornered = 0, pull = 0,
        level = 0, clock = 0;
};

class Assembly : public EvalTest {
   protected:
    Assembly() {
        // Odd numbers, so that each truncation shows.
        contemptPair[White] = pair(-173, 41);
        contemptPair[Black] = pair(173, -41);
        contemptValue[White] = -17;
        settings.contempt = 3;
        settings.dynamism = 137;
        settings.progressThreshold = 41;
        initEvalParameters();
        noiseKey = 0x5bd1e9955bd1e995ULL;
    }

    // All terms' sums, by the stages themselves.
    static EvalInfo stagesOf(const Position& pos, const PawnEntry* pawns) {
        EvalInfo info;
        info.pawns = pawns;
        info.phase = pos.cappedPhase();
        prepareMaps(pos, info);
        evaluatePieces(pos, info);
        uniteAttacks(pos, info);
        evaluateQueenDefence(pos, info);
        evaluateWing(pos, info);
        evaluateKingSafety(pos, info);
        evaluateThreats(pos, info);
        evaluatePassedPawns(pos, info);
        evaluateRelations(pos, info);
        return info;
    }

    // The score for the side to move, and what the line's later estimates will start from.
    int plainScore(const Position& pos, int& blend) {
        float scale = 0;
        const int material = evaluateMaterial(pos, scale);
        const int phase = std::min<int>(pos.phase, 96);
        const Lanes contempt = lanesOf(contemptPair[White]);
        blend = pos.psqBlend;
        if (scale == 0) {
            ++seen.shortPath;
            const int value = contempt.mg * phase + contempt.eg * (96 - phase) + material;
            return shrunkByClock(pos, nearest(seenByMover(pos, value), 960));
        }
        PawnEntry* pawns;
        Lanes total = sum(lanesOf(evaluatePawns(pos, pawns)), contempt);
        const EvalInfo info = stagesOf(pos, pawns);
        const Lanes white = lanesOf(info.score[White]), black = lanesOf(info.score[Black]);
        const Lanes psq = lanesOf(pos.psqPair);
        Lanes pieces = {white.mg - black.mg + psq.mg, white.eg - black.eg + psq.eg};
        if (settings.contempt > 0 && popcount(pos.pieces[White][Pawn] | pos.pieces[Black][Pawn]) > 14) {
            ++seen.closed;
            pieces.mg -= contemptValue[White];
        }
        total = sum(total, {pieces.mg * dynamismMg / 128, pieces.eg * dynamismEg / 128});
        if (phase < 18) {
            ++seen.late;
            const auto width = [](int i) { return i <= 5 ? 2 * (i * i - 16) : 2 * (9 * i - 36); };
            total.eg += width(pawns->span[White]) - width(pawns->span[Black]);
        }
        blend = total.eg * (96 - phase) + total.mg * phase;
        return plainFinish(pos, *pawns, blend, material, scale);
    }

    int plainFinish(const Position& pos, const PawnEntry& pawns, int value, int material, float scale) {
        const int phase = std::min<int>(pos.phase, 96);
        const bool passers = pawns.passed[White][0] || pawns.passed[Black][0];
        if (!pos.pieces[White][Queen] && !pos.pieces[Black][Queen] && !passers) {
            ++seen.quiet;
            scale *= 0.9f;
        }
        value = int(float(value) * scale);
        if (pawns.fewOpenFiles) {
            ++seen.closedFiles;
            value = int(double(value) * 0.9);
        }
        static const float afterRams[] = {1, 1, 0.95f, 0.9f, 0.8f, 0.7f, 0.6f, 0.5f, 0.4f};
        seen.rams += pawns.rams > 1;
        value = nearest(int(float(value + material) * afterRams[pawns.rams]), 96);
        if (phase >= 4 && phase <= 8) {
            const int uncut = value;
            value = wrongBishop(pos, value);
            seen.cornered += value != uncut;
        }
        value = nearest(seenByMover(pos, value) + int(26.5 + 91 * phase / 96.0), 10);
        if (evalNoise) value += int((noiseKey ^ pos.key) % unsigned(evalNoise)) - evalNoise / 2;
        value = seenByMover(pos, value);
        if (value != 0) {
            const int span = pawns.span[value > 0 ? White : Black];
            const int moved = std::clamp(value, -150, 150) * (96 - phase) * (12 - 2 * span) / 12288;
            seen.pull += moved != 0;
            value -= moved;
        }
        seen.level += std::abs(material) < 19200;
        seen.clock += pos.halfmoveClock > settings.progressThreshold;
        return shrunkByClock(pos, cutIfLevel(seenByMover(pos, value), material));
    }

    Seen seen;
};

// Thin endings of every kind of phase below 18, which random games seldom reach.
static const char* const Endings[] = {
    "8/5k2/1p4p1/p6p/P2N3P/1P4P1/5K2/8 w - -",
    "8/2k5/8/PP2b3/8/8/8/4K3 w - -",
    "4k3/4p3/4n3/2b5/8/3B1N2/3PP3/3K4 b - -",
    "8/pp3k2/4r3/8/8/4R3/PPP2K2/8 w - -",
    "k7/8/1K6/8/P7/8/8/2B5 w - -",
    "8/8/2b5/p7/8/1k6/8/K7 b - -",
    "4k3/8/8/2p1p1p1/2P1P1P1/8/8/4K3 w - -",
    "5bk1/p5pp/8/8/8/8/PP5P/5BK1 w - -",
    "8/1p1k4/p1pp4/P1P1p1p1/1P1PPpPp/5P1P/3K4/8 w - -",
};

TEST_F(Assembly, ScoreFollowsFromTheSumsAndTheLineKeepsItsPositionalPart) {
    std::mt19937 random(3);
    int number = 0;
    const auto compare = [&](const Position& game) {
        Position pos = withCaches(game);
        evalNoise = ++number % 3 == 0 ? 37 : 0;
        if (number % 5 == 0) pos.halfmoveClock = std::uint16_t(random() % 110);
        forgetCaches();
        int blend;
        const int expected = plainScore(pos, blend);
        forgetCaches();
        ASSERT_EQ(evaluate(pos, -OpenEvalBound, OpenEvalBound), expected) << writeFen(pos);
        ASSERT_EQ(pos.psqBlend, blend) << writeFen(pos);
    };
    walkRandomGames(3, 120, compare);
    for (const char* fen : Endings) {
        compare(rootOf(fen));
        for (const Move move : legalMoves(rootOf(fen))) {
            const Position parent = rootOf(fen);
            Position child;
            ASSERT_TRUE(makeChild(parent, child, move));
            compare(child);
        }
    }
    EXPECT_GT(number, 2000);
    for (const int count : {seen.late, seen.quiet, seen.closedFiles, seen.rams, seen.closed, seen.cornered,
                            seen.pull, seen.level, seen.clock, seen.shortPath})
        EXPECT_GE(count, 10);
}

// Outside the window an estimate from the line's last positional score will do, but neither late in the game
// nor with a pawn about to promote. It has no margin and is not kept.
TEST_F(Assembly, EstimatesLeaveEarly) {
    std::mt19937 random(4);
    int left = 0, stayed = 0;
    const auto compare = [&](const Position& game) {
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
    };
    walkRandomGames(2, 120, compare);
    for (const char* fen : Endings) compare(rootOf(fen));
    EXPECT_GT(left, 1000);
    EXPECT_GT(stayed, 1000);
}
