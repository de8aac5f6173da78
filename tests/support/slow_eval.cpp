// The slow evaluation's frame: piece-square values by rule, the sum of all stages and its last arithmetic.
#include "support/slow_eval.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>

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

static Pair pawnValue(int file, int rank) {
    constexpr int RankBonus[8] = {0, -1, 0, 2, 4, 6, 6, 0};
    constexpr int FileMg[4] = {-14, -4, 3, 8}, FileEg[4] = {0, -1, -3, -5};
    constexpr int RankWeight[4] = {-4, 0, 4, 8};
    if (rank == 0 || rank == 7) return {};
    const int column = std::min(file, 7 - file), bonus = RankBonus[rank];
    return {8 * (FileMg[column] + bonus) + RankWeight[column] * bonus, 7 * (FileEg[column] + bonus) / 2};
}

// `type` is a capital, the rank the one that the man's side sees.
static Pair manValue(char type, int file, int rank) {
    const int column = std::min(file, 7 - file), row = 7 - rank;
    switch (type) {
        case 'P': return pawnValue(file, rank);
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

static void judgePlaces(Army& us, Army&) {
    for (const int square : us.men)
        us.add("pieceSquares", manValue(us.board.typeOn(square), fileOf(square), us.rank(square)));
}

// White's value alone, whichever side searches; this is intended.
static void judgeClosed(const Army& white, const Army& black, const Given& given) {
    if (given.contemptOption > 0 && countOf(white.pawns | black.pawns) >= 15)
        white.add("closedContempt", {-given.contemptValue, 0});
}

// Nearest whole quotient, halves away from 0.
static int rounded(int value, int divisor) {
    return (value >= 0 ? value + divisor / 2 : value - divisor / 2) / divisor;
}

// A bishop that can't drive the king from the corner where its rook's pawns promote is worth next to nothing.
// Tenths, White's view, more than 30 for the side whose bishop it is.
static int limitWrongBishop(const Army& us, const Army& them, int value) {
    if (us.bishops.empty() || !us.knights.empty()) return value;
    const int bishop = *us.bishops.begin();  // the lowest alone; others are not looked at
    const int pawnFile = isLight(bishop) == (us.colour == White) ? 7 : 0;  // where it doesn't help
    const auto isElsewhere = [&](int pawn) { return fileOf(pawn) != pawnFile; };
    const bool inCorner = us.rank(them.king) >= 6 && std::abs(fileOf(them.king) - pawnFile) <= 1;
    if (!inCorner || !us.pawns.where(isElsewhere).empty()) return value;
    return us.colour == White ? 30 : -30;
}

static int spanValue(const Army& us) {
    const int span = us.pawnSpan();
    return span <= 5 ? 2 * (span * span - 16) : 2 * (9 * span - 36);
}

// Files without a pawn of the colour on which the other side's, if any, are still at home. A file without any
// pawn counts for both sides.
static int nearlyOpenFiles(const Army& us, const Army& them) {
    const Squares advanced = them.pawns.where([&](int pawn) { return them.rank(pawn) != 1; });
    int open = 0;
    for (int file = 0; file < 8; ++file) open += !(us.pawns | advanced).holdsFile(file);
    return open;
}

// Blended units, White's view: positional sum and material together. Writes psqBlend.
static int assemble(const Army& white, const Army& black, const Given& given, Judgement& judgement) {
    constexpr float RamScale[9] = {1.0f, 1.0f, 0.95f, 0.9f, 0.8f, 0.7f, 0.6f, 0.5f, 0.4f};
    const int phase = std::min(white.board.phase, 96);
    const Pair pieces = judgement.pieces.sum(White) - judgement.pieces.sum(Black);
    const Pair scaled = {pieces.mg * given.dynamismMg / 128, pieces.eg * given.dynamismEg / 128};
    Pair total = judgement.pawns.sum(White) - judgement.pawns.sum(Black) + given.contempt + scaled;
    if (phase < 18) total.eg += spanValue(white) - spanValue(black);
    judgement.psqBlend = total.eg * (96 - phase) + total.mg * phase;
    const bool eventful = !(white.queens | black.queens | white.passed | black.passed).empty();
    // Formed in double, kept in single.
    const float scale = eventful ? given.scale : float(double(given.scale) * 0.9);
    int blend = int(float(judgement.psqBlend) * scale);
    if (nearlyOpenFiles(white, black) + nearlyOpenFiles(black, white) < 2) blend = int(double(blend) * 0.9);
    const auto isRammed = [&](int pawn) { return black.pawns.contains(white.ahead(pawn)); };
    const int rams = countOf(white.pawns.where(isRammed));
    return int(float(blend + given.material) * RamScale[std::min(rams, 8)]);
}

static int levelCut(const Given& given, int value) {
    return std::abs(given.material) < 19200 ? value * 88 / 100 : value;
}

// From tenths in White's view to the score for the side to move that would be remembered.
static int finish(const Army& white, const Army& black, const Given& given, int value) {
    constexpr int SpanPull[9] = {12, 10, 8, 6, 4, 2, 0, -2, -4};
    const int phase = std::min(white.board.phase, 96), sign = white.board.whiteToMove ? 1 : -1;
    if (phase >= 4 && phase <= 8 && value > 30) value = limitWrongBishop(white, black, value);
    if (phase >= 4 && phase <= 8 && value < -30) value = limitWrongBishop(black, white, value);
    const int tempo = (2496 + 91 * phase + 48) / 96;
    value = rounded(sign * value + tempo, 10);
    if (given.noise > 0) value += int(given.noiseWord % unsigned(given.noise)) - given.noise / 2;
    value *= sign;
    // White's view again: in endgames a wide pawn front helps the side that is ahead, a narrow one doesn't.
    const int pull = SpanPull[(value > 0 ? white : black).pawnSpan()];
    value -= std::clamp(value, -150, 150) * (96 - phase) * pull / 12288;
    return levelCut(given, sign * value);
}

// Scores shrink towards 0 when no progress is made.
static int shrink(const EvalBoard& board, const Given& given, int value) {
    if (board.halfmoveClock <= given.progressThreshold) return value;
    return int(std::int64_t(101 - board.halfmoveClock) * value / (100 - given.progressThreshold));
}

// From blended units in White's view.
static int forMover(const EvalBoard& board, int value) {
    return rounded(board.whiteToMove ? value : -value, 960);
}

int estimate(const EvalBoard& board, const Given& given, int psqBlend) {
    const int blend = int(given.scale * float(psqBlend)) + given.material;
    return shrink(board, given, levelCut(given, forMover(board, blend)));
}

Judgement judge(const EvalBoard& board, const Given& given) {
    Judgement judgement;
    const int phase = std::min(board.phase, 96);
    if (given.scale == 0) {
        const int value = given.contempt.mg * phase + given.contempt.eg * (96 - phase) + given.material;
        judgement.score = shrink(board, given, forMover(board, value));
        return judgement;
    }
    Army white(board, White), black(board, Black);
    const auto run = [&](Sheet& sheet, std::initializer_list<void (*)(Army&, Army&)> stages) {
        white.sheet = black.sheet = &sheet;
        for (const auto stage : stages) {
            stage(white, black);
            stage(black, white);
        }
    };
    run(judgement.pawns, {judgePawns});
    run(judgement.pieces,
        {judgePlaces, judgeLesserPieces, judgeQueens, judgeQueenOnlyDefence, judgeWing, countUnits,
         judgeKingSafety, judgeThreats, judgeOutposts, judgeRelations, judgePassers});
    judgeClosed(white, black, given);
    const int tenths = rounded(assemble(white, black, given, judgement), 96);
    judgement.score = shrink(board, given, finish(white, black, given, tenths));
    return judgement;
}

}  // namespace slow
