// The slow evaluation's frame: piece-square values by rule, the sum of all stages and its last arithmetic.
#include "support/slow_eval.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace slow {

// Files a to d from the eighth rank down to the first; files e to h are their mirror image.
// clang-format off
static constexpr int KnightMg[8][4] = {
    {-55, -5, -3, -2}, {-7, -3, 0, 1}, {-4, 0, 3, 5}, {-4, 0, 3, 5},
    {-5, -1, 2, 3}, {-7, -3, -1, 0}, {-10, -7, -5, -4}, {-15, -12, -10, -9}};
static constexpr int BishopMg[8][4] = {
    {-6, -7, -7, -6}, {-8, 1, 3, 0}, {-9, 2, 4, 3}, {-9, -2, 2, 7},
    {-8, -1, 3, 8}, {-8, 1, 3, 2}, {-7, 0, 0, -3}, {-5, -8, -10, -11}};
static constexpr int BishopEg[8][4] = {
    {-1, -2, -2, -1}, {-2, 1, 2, 1}, {-2, 1, 2, 2}, {-2, 0, 1, 3},
    {-2, 0, 2, 3}, {-2, 1, 2, 1}, {-2, 1, 1, 0}, {-1, -2, -3, -3}};
static constexpr int RookMg[8][4] = {
    {-2, 1, 4, 7}, {-2, 1, 4, 7}, {-3, 0, 3, 6}, {-4, -1, 2, 5},
    {-4, -1, 2, 5}, {-4, -1, 2, 5}, {-4, -1, 2, 5}, {-4, -1, 2, 5}};
static constexpr int QueenBoth[8][4] = {
    {-6, -6, -6, -6}, {-6, 0, 0, 0}, {-6, 0, 5, 5}, {-6, 0, 5, 9},
    {-6, 0, 5, 9}, {-6, 0, 5, 5}, {-6, 0, 0, 0}, {-6, -6, -6, -6}};
static constexpr int KingMg[8][4] = {
    {-71, -65, -87, -99}, {-63, -57, -80, -93}, {-56, -50, -74, -88}, {-48, -42, -67, -82},
    {-39, -33, -59, -75}, {-30, -24, -51, -68}, {-12, -6, -35, -54}, {-6, 0, -30, -50}};
static constexpr int KingEg[8][4] = {
    {-72, -52, -40, -36}, {-52, -32, -20, -16}, {-40, -20, -8, -4}, {-36, -16, -4, 0},
    {-40, -20, -8, -4}, {-52, -32, -20, -16}, {-72, -52, -40, -36}, {-100, -80, -68, -64}};
static constexpr int RookEgByRank[8] = {0, 2, 2, 1, 0, 0, 0, 0};  // from the eighth rank down
// clang-format on

static Pair whitePawnValue(int file, int rank) {
    constexpr int RankBonus[8] = {0, -1, 0, 2, 4, 6, 6, 0};
    constexpr int FileMg[4] = {-14, -4, 3, 8}, FileEg[4] = {0, -1, -3, -5};
    constexpr int RankWeight[4] = {-4, 0, 4, 8};
    if (rank == 0 || rank == 7) return {};
    const int column = std::min(file, 7 - file), bonus = RankBonus[rank];
    return {8 * (FileMg[column] + bonus) + RankWeight[column] * bonus, 7 * (FileEg[column] + bonus) / 2};
}

// `type` is a capital, file and rank count from a1 as White sees it.
static Pair whiteManValue(char type, int file, int rank) {
    const int column = std::min(file, 7 - file), row = 7 - rank;
    switch (type) {
        case 'P': return whitePawnValue(file, rank);
        case 'N': {
            // In the endgame the far corners are less of a grave than in the middlegame.
            const bool farCorner = row == 0 && column == 0;
            return {22 * KnightMg[row][column], 10 * (farCorner ? -40 : KnightMg[row][column])};
        }
        case 'B': return {7 * BishopMg[row][column], 10 * BishopEg[row][column]};
        case 'R': return {13 * RookMg[row][column], 16 * RookEgByRank[row]};
        case 'Q': return {5 * QueenBoth[row][column], 9 * QueenBoth[row][column]};
        case 'K': return {8 * KingMg[row][column], 11 * KingEg[row][column]};
        default: return {};
    }
}

// White's view: a black man has the negated value of a white one on the mirrored square.
Pair pieceSquareValue(char man, int square) {
    const int file = square % 8, rank = square / 8;
    if (man >= 'a' && man <= 'z') return Pair{} - whiteManValue(char(man - 'a' + 'A'), file, 7 - rank);
    return whiteManValue(man, file, rank);
}

static void judgePlaces(const EvalBoard& board, Sheet& sheet) {
    for (int square = 0; square < 64; ++square) {
        const char man = board.man[std::size_t(square)];
        if (man == '.') continue;
        const Pair value = pieceSquareValue(man, square);
        if (man >= 'a') {
            sheet.add("pieceSquares", Black, Pair{} - value);
        } else {
            sheet.add("pieceSquares", White, value);
        }
    }
}

// Nearest whole quotient, halves away from 0.
static int rounded(int value, int divisor) {
    return (value >= 0 ? value + divisor / 2 : value - divisor / 2) / divisor;
}

// A bishop that can't drive the king from the corner where its rook's pawns promote is worth next to nothing.
// Tenths, White's view.
static int limitWrongBishop(const EvalBoard& board, int value) {
    const int colour = value > 0 ? White : Black;
    const Squares bishops = menOf(board, colour, "B");
    if (bishops.empty() || !menOf(board, colour, "N").empty()) return value;
    const int bishop = *bishops.begin();  // the lowest alone; others are not looked at
    const bool dark = (bishop / 8 + bishop % 8) % 2 == 0;
    const int pawnFile = dark == (colour == White) ? 0 : 7;  // whose promotion square it doesn't reach
    for (const int pawn : menOf(board, colour, "P")) {
        if (pawn % 8 != pawnFile) return value;
    }
    const int king = kingOf(board, 1 - colour);
    const bool inCorner = relativeRank(king, colour) >= 6 && std::abs(king % 8 - pawnFile) <= 1;
    if (!inCorner) return value;
    return colour == White ? 30 : -30;
}

static int pawnSpanValue(int span) { return span <= 5 ? 2 * (span * span - 16) : 2 * (9 * span - 36); }

// Blended units, White's view: positional sum and material together. Writes psqBlend.
static int assemble(const EvalBoard& board, const Given& given, const PawnFacts& facts,
                    Judgement& judgement) {
    constexpr float RamScale[9] = {1.0f, 1.0f, 0.95f, 0.9f, 0.8f, 0.7f, 0.6f, 0.5f, 0.4f};
    const int phase = std::min(board.phase, 96);
    const Pair pieces = judgement.pieces.sum(White) - judgement.pieces.sum(Black);
    const Pair scaled = {pieces.mg * given.dynamismMg / 128, pieces.eg * given.dynamismEg / 128};
    Pair total = judgement.pawns.sum(White) - judgement.pawns.sum(Black);
    total += given.contempt + scaled;
    if (phase < 18) total.eg += pawnSpanValue(facts.span[White]) - pawnSpanValue(facts.span[Black]);
    int blend = total.eg * (96 - phase) + total.mg * phase;
    judgement.psqBlend = blend;
    float scale = given.scale;
    const bool queens = !menOf(board, White, "Q").empty() || !menOf(board, Black, "Q").empty();
    const bool passers = !facts.passed[White].empty() || !facts.passed[Black].empty();
    if (!queens && !passers) scale = float(double(scale) * 0.9);  // formed in double, kept in single
    blend = int(float(blend) * scale);
    if (facts.fewOpenFiles) blend = int(double(blend) * 0.9);
    return int(float(blend + given.material) * RamScale[std::min(facts.rams, 8)]);
}

// From tenths in White's view to the score for the side to move that would be remembered.
static int finish(const EvalBoard& board, const Given& given, const PawnFacts& facts, int value) {
    constexpr int SpanPull[9] = {12, 10, 8, 6, 4, 2, 0, -2, -4};
    const int phase = std::min(board.phase, 96), sign = board.whiteToMove ? 1 : -1;
    if (phase >= 4 && phase <= 8 && std::abs(value) > 30) value = limitWrongBishop(board, value);
    const int tempo = (2496 + 91 * phase + 48) / 96;
    value = rounded(sign * value + tempo, 10);
    if (given.noise > 0) value += int(given.noiseWord % unsigned(given.noise)) - given.noise / 2;
    value *= sign;
    // White's view again: in endgames a wide pawn front helps the side that is ahead, a narrow one doesn't.
    if (value != 0) {
        const int span = facts.span[value > 0 ? White : Black];
        const int pulled = std::clamp(value, -150, 150);
        value -= pulled * (96 - phase) * SpanPull[span] / 12288;
    }
    value *= sign;
    return std::abs(given.material) < 19200 ? value * 88 / 100 : value;
}

// Scores shrink towards 0 when no progress is made.
static int shrink(const EvalBoard& board, const Given& given, int value) {
    if (board.halfmoveClock <= given.progressThreshold) return value;
    return int(std::int64_t(101 - board.halfmoveClock) * value / (100 - given.progressThreshold));
}

Judgement judge(const EvalBoard& board, const Given& given) {
    Judgement judgement;
    const int phase = std::min(board.phase, 96);
    if (given.scale == 0) {
        const int value = given.contempt.mg * phase + given.contempt.eg * (96 - phase) + given.material;
        judgement.shortPath = true;
        judgement.score = shrink(board, given, rounded(board.whiteToMove ? value : -value, 960));
        return judgement;
    }
    const PawnFacts facts = judgePawns(board, judgement.pawns);
    judgePlaces(board, judgement.pieces);
    const AttackSets sets = judgePieces(board, facts, judgement.pieces);
    judgePassedPawns(board, facts, sets, judgement.pieces);
    // White's value alone, whichever side searches; this is intended.
    const std::size_t pawns = menOf(board, White, "P").size() + menOf(board, Black, "P").size();
    if (given.contemptOption > 0 && pawns >= 15) {
        judgement.pieces.add("closedContempt", White, {-given.contemptValue, 0});
    }
    const int tenths = rounded(assemble(board, given, facts, judgement), 96);
    judgement.score = shrink(board, given, finish(board, given, facts, tenths));
    return judgement;
}

}  // namespace slow
