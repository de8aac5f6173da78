// The evaluation as a whole: the cache, lazy evaluation, the stages, and the tapered arithmetic that turns
// sums into a score. It takes an observer of each step. The engine's sees nothing and leaves no trace in the
// code; one that prints the steps can be had without a second copy of their list.
#pragma once

#include "base/settings.h"
#include "board/thread_hooks.h"
#include "eval/caches.h"
#include "eval/contempt.h"
#include "eval/endgames.h"
#include "eval/material.h"
#include "eval/parameters.h"
#include "eval/pawns.h"
#include "eval/style.h"
#include "eval/terms.h"
#include "eval/weights_pawns.h"
#include "eval/weights_whole.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

// All that an observer must have. Names are for people.
struct NoObserver {
    // After a stage: both sides' sums so far, in lane units.
    static void stage(const char*, const Lanes (&)[2]) {}
    // The pawn score of a position, White minus Black in lane units.
    static void pawns(const Position&, Lanes) {}
    // A pair of lane units from White's view.
    static void sum(const char*, Lanes) {}
    // What is left after a step: blended units from White's view unless the name says another unit.
    static void value(const char*, int) {}
    // Material in blended units from White's view, and the scale of all else.
    static void material(int, float) {}
};

namespace evalFrame {

// Quotients rounded to nearest, halves away from zero.
template <int divisor>
constexpr int roundedBy(int x) {
    static_assert(divisor % 2 == 0);
    return (x + divisor / 2 - divisor * (x < 0)) / divisor;
}
inline constexpr int ResultUnit = 10 * MaxPhase;  // blended units of one centipawn
inline constexpr int TenthUnit = MaxPhase;        // and of a tenth of one

// Tapered evaluation: between the two lanes by phase.
inline int blend(Lanes s, int phase) { return egOf(s) * (MaxPhase - phase) + mgOf(s) * phase; }

// For the side to move, in tenths of a centipawn.
constexpr int tempo(int phase) { return TempoBase + (TempoByPhase * phase + MaxPhase / 2) / MaxPhase; }

// A score that is cut where material is level.
inline int levelCut(int score, int material) {
    return score * (std::abs(material) < LevelMaterial ? LevelPercent : 100) / 100;
}

// Scores shrink as the fifty-move rule comes near.
inline int scaledByClock(const Position& pos, int score) {
    const int threshold = settings.progressThreshold;
    const int clock = pos.halfmoveClock;
    if (clock <= threshold) return score;
    return int(std::int64_t(101 - clock) * score / (100 - threshold));
}

inline int forMover(const Position& pos, int score) { return score * (1 - 2 * pos.sideToMove()); }

// Lazy evaluation: the estimate from material and the line's last positional score; true if it lies outside
// the window. Intended: there is no margin.
inline bool leavesEarly(const Position& pos, int material, float scale, int phase, int alpha, int beta,
                        int& estimate) {
    constexpr int LeastPhase = 6;
    if (phase <= LeastPhase) return false;
    if ((pos.pieces[Black][Pawn] & rankMask(1)) || (pos.pieces[White][Pawn] & rankMask(6))) return false;
    const int blended = int(scale * float(pos.psqBlend)) + material;
    estimate = forMover(pos, scaledByClock(pos, levelCut(roundedBy<ResultUnit>(blended), material)));
    return estimate < alpha || estimate > beta;
}

template <class Observer>
void runStages(const Position& pos, EvalInfo& info, Observer& observer) {
    prepareMaps(pos, info);
    observer.stage("open files, rook shut in", info.score);
    evaluatePieces(pos, info);
    observer.stage("pieces", info.score);
    uniteAttacks(info);
    evaluateQueenDefence(pos, info);
    observer.stage("queens' defence", info.score);
    evaluateWing(pos, info);
    observer.stage("wing of both kings", info.score);
    evaluateKingSafety(pos, info);
    observer.stage("king safety", info.score);
    evaluateThreats(pos, info);
    observer.stage("threats", info.score);
    evaluatePassedPawns(pos, info);
    observer.stage("passed pawns", info.score);
    evaluateRelations(pos, info);
    observer.stage("relations", info.score);
    closedContempt(pos, info);
    observer.stage("closed position", info.score);
}

// Late in the game a wide front of pawns is worth something in itself.
inline Lanes spanDifference(const PawnEntry& pawns) {
    return Lanes(0, SpanEg[pawns.span[White]] - SpanEg[pawns.span[Black]]);
}

// Style: the pieces' sum is stretched lane by lane. Intended: the pawn score is not.
inline Lanes dynamic(Lanes sum) {
    return Lanes(mgOf(sum) * evalStyle.dynamismMg / 128, egOf(sum) * evalStyle.dynamismEg / 128);
}

// All sums together, in tenths of a centipawn from White's view. Keeps the positional score for the line's
// estimates.
template <class Observer>
int assemble(Position& pos, const EvalInfo& info, Lanes pawnScore, int material, float scale,
             Observer& observer) {
    constexpr int LatePhase = 18;
    const PawnEntry& pawns = *info.pawns;
    observer.sum("stages", info.score[White] - info.score[Black]);
    const Lanes pieces = dynamic(info.score[White] - info.score[Black] + Lanes(pos.psqPair));
    observer.sum("with piece squares and dynamism", pieces);
    const Lanes contempt(contemptPair[White]);
    observer.sum("contempt", contempt);
    Lanes sum = pawnScore + contempt + pieces;
    if (info.phase < LatePhase) sum += spanDifference(pawns);
    observer.sum("with pawns, contempt and late pawn fronts", sum);
    int score = blend(sum, info.phase);
    pos.psqBlend = score;
    observer.value("blended by phase", score);
    const bool queens = pos.pieces[White][Queen] | pos.pieces[Black][Queen];
    if (!queens && pawns.passed[White][0] == 0 && pawns.passed[Black][0] == 0) scale *= NoQueensScale;
    score = int(float(score) * scale);
    observer.value("scaled by material", score);
    if (pawns.fewOpenFiles) score = int(double(score) * FewOpenFilesScale);
    observer.value("cut for few open files", score);
    score = int(float(score + material) * RamScale[std::min<int>(pawns.rams, 8)]);
    observer.value("with material, cut for rams", score);
    return roundedBy<TenthUnit>(score);
}

// Moves an advantage with the width of the own pawn front, the more the nearer the endgame. White's view.
inline int pulledBySpan(int score, const PawnEntry& pawns, int phase) {
    constexpr int Cap = 150;               // centipawns
    constexpr int Whole = 128 * MaxPhase;  // the table counts in 128ths
    const int lateness = MaxPhase - phase;
    if (score > 0) return score - std::min(score, Cap) * lateness * SpanPull[pawns.span[White]] / Whole;
    if (score < 0) return score - std::max(score, -Cap) * lateness * SpanPull[pawns.span[Black]] / Whole;
    return score;
}

// The same position gets the same noise all through a search.
inline int withNoise(int score, Key key) {
    if (evalStyle.evalNoise == 0) return score;
    return score - evalStyle.evalNoise / 2 +
           int((evalStyle.noiseKey ^ key) % std::uint64_t(evalStyle.evalNoise));
}

// From White's view in tenths to the side to move's centipawns.
template <class Observer>
int finish(const Position& pos, const EvalInfo& info, int score, int material, Observer& observer) {
    observer.value("in tenths", score);
    if (info.phase >= 4 && info.phase <= 8) score = wrongBishop(pos, score);
    observer.value("limited for the wrong bishop", score);
    score = roundedBy<10>(forMover(pos, score) + tempo(info.phase));
    observer.value("centipawns for the mover, with tempo", score);
    score = withNoise(score, pos.key);
    score = forMover(pos, pulledBySpan(forMover(pos, score), *info.pawns, info.phase));
    observer.value("with noise, pulled by pawn fronts", score);
    return levelCut(score, material);
}

// The score of a position whose material does not settle it, in centipawns for the side to move. Out of line,
// so that an estimate need not save the registers that the stages take; the maps that they share live here
// alone, so that the compiler can keep them where it likes.
template <class Observer>
[[gnu::noinline]] int judgePosition(Position& pos, int phase, int material, float scale, Observer& observer) {
    PawnEntry* pawns;
    const Lanes pawnScore = evaluatePawns(pos, pawns);
    observer.pawns(pos, pawnScore);
    EvalInfo info;
    info.pawns = pawns;
    info.phase = phase;
    runStages(pos, info, observer);
    const int tenths = assemble(pos, info, pawnScore, material, scale, observer);
    return finish(pos, info, tenths, material, observer);
}

// The score of a position that is not in the cache, where it is put unless it is an estimate. Out of line, so
// that a score from the cache need not save the registers that this takes.
template <class Observer>
[[gnu::noinline]] int evaluateAnew(Observer& observer, Position& pos, int alpha, int beta) {
    float scale = 0;
    const int material = evaluateMaterial(pos, scale);
    observer.material(material, scale);
    const int phase = pos.cappedPhase();
    int score;
    if (scale == 0) {
        score = roundedBy<ResultUnit>(forMover(pos, blend(Lanes(contemptPair[White]), phase) + material));
    } else {
        int estimate;
        if (leavesEarly(pos, material, scale, phase, alpha, beta, estimate)) return estimate;
        score = judgePosition(pos, phase, material, scale, observer);
    }
    pos.evalCache[pos.key & prefetchBases.evalMask] = {pos.key, score};
    observer.value("before the fifty-move rule", score);
    return scaledByClock(pos, score);
}

}  // namespace evalFrame

// `evaluate`, before an observer. It sees the material and, unless that alone counts or the score comes from
// the cache or the estimate, the pawns, each stage and each step of the arithmetic; last the score.
template <class Observer>
int evaluateBefore(Observer&& observer, Position& pos, int alpha, int beta) {
    using namespace evalFrame;
    const EvalCacheEntry& cached = pos.evalCache[pos.key & prefetchBases.evalMask];
    if (cached.key == pos.key) return scaledByClock(pos, cached.value);
    return evaluateAnew(observer, pos, alpha, beta);
}
