#include "eval/material.h"

#include "board/geometry.h"
#include "board/zobrist.h"
#include "eval/caches.h"
#include "eval/material_patterns.h"
#include "eval/parameters.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>

namespace {

struct MaterialSlot {
    Key key;  // 0 also in an empty slot
    int value;
    float scale;
    EndgameHandler handler;
};
static_assert(sizeof(MaterialSlot) == 24);

constexpr std::size_t MaterialSlots = 65536;
MaterialSlot MaterialTable[MaterialSlots];

constexpr int BlendedUnit = MaxPhase;  // of one material unit

MaterialSlot& slotOf(Key key) { return MaterialTable[key % MaterialSlots]; }

// ---- The table of known sets ----

// What a letter of a pattern adds to the key; 0 for letters that stand for no piece.
Key letterKey(char letter, bool swapColours) {
    const bool upper = std::isupper(static_cast<unsigned char>(letter)) != 0;
    const Colour colour = upper != swapColours ? White : Black;
    switch (std::toupper(static_cast<unsigned char>(letter))) {
        case 'P': return matValue[colour][Pawn][0];
        case 'N': return matValue[colour][Knight][0];
        case 'B': return matValue[colour][Bishop][0];
        case 'C': return matValue[colour][Bishop][1];
        case 'R': return matValue[colour][Rook][0];
        case 'Q': return matValue[colour][Queen][0];
        default: return 0;
    }
}

void enterRow(const MaterialRow& row, bool swapColours) {
    Key key = 0;
    for (const char* letter = row.pattern; *letter; ++letter) key += letterKey(*letter, swapColours);
    MaterialSlot& slot = slotOf(key);
#ifdef TARVOK_CHECKS
    // Two sets in one slot would silently lose the first.
    if (slot.key != 0 && slot.key != key) {
        std::fprintf(stderr, "material sets share a slot: %s\n", row.pattern);
        std::abort();
    }
#endif
    slot = {key, swapColours ? -row.value : row.value, row.scale, row.handler};
}

// ---- The formula for all other sets ----

struct Counts {
    int p, n, b, r, q;
    int minors() const { return n + b; }
    // Weight of the pieces: 28 is one bishop alone, 40 one rook, 72 one queen.
    int pieceWeight() const { return 28 * b + 24 * n + 40 * r + 72 * q; }
};
constexpr int BishopAlone = 28, RookAlone = 40, QueenAlone = 72;

Counts countsOf(const Position& pos, Colour us) {
    const Bitboard* own = pos.pieces[us];
    return {popcount(own[Pawn]), popcount(own[Knight]), popcount(own[Bishop]), popcount(own[Rook]),
            popcount(own[Queen])};
}

// One side's material units: knights gain by own pawns and bishops by own knights; rooks and queens lose with
// the number of their own kind.
int sideValue(const Counts& own, const Counts& enemy) {
    const auto [p, n, b, r, q] = own;
    int value = 1200 * p + (4420 + 25 * p) * n + (4680 + 5 * n) * b +
                (8033 - 95 * p - 54 * n - 36 * b - 232 * r) * r +
                (15732 - 155 * p - 56 * n - 72 * b - 629 * r - 854 * q) * q;
    if (b > 1) {
        const bool unopposed = enemy.minors() == 0;
        value += -10 * p - 4 * n - 20 * r - 91 * q + (unopposed ? 691 : 647);
    }
    return value + (22 * n + 2 * b + 11 * r + 29 * q) * enemy.p;
}

bool bishopsOnBothColours(const Position& pos) {
    const bool whiteDark = pos.pieces[White][Bishop] & DarkSquares;
    const bool blackDark = pos.pieces[Black][Bishop] & DarkSquares;
    return whiteDark != blackDark;
}

// White minus Black in material units.
int materialDifference(const Position& pos, const Counts& white, const Counts& black) {
    constexpr int MinorMajority = 200, SingleBishop = 30;
    int whiteSum = sideValue(white, black);
    int blackSum = sideValue(black, white);
    if (white.minors() >= black.minors() + 3)
        whiteSum += MinorMajority;
    else if (black.minors() >= white.minors() + 3)
        blackSum += MinorMajority;

    const bool oneEach = white.b == 1 && black.b == 1;
    if (black.b <= 1 && white.b > 0 && black.n == 0 && (!oneEach || bishopsOnBothColours(pos)))
        whiteSum += SingleBishop;
    if (white.b <= 1 && black.b > 0 && white.n == 0) {
        // Intended: it is White who gains where Black's bishop stands alone or is one of several.
        if (!oneEach)
            whiteSum += SingleBishop;
        else if (bishopsOnBothColours(pos))
            blackSum += SingleBishop;
    }
    return whiteSum - blackSum;
}

// How much of an advantage can be turned into a win, by the pawns that are left to the side that has it.
float pawnScale(const Position& pos, const Counts& white, const Counts& black, int difference) {
    constexpr float NoPawnScale[4] = {0.05f, 0.11f, 0.2f, 0.28f};
    constexpr float FewPawnScale[6] = {0.4f, 0.5f, 0.62f, 0.72f, 0.82f, 0.9f};
    const int gap = std::abs((white.pieceWeight() >> 3) - (black.pieceWeight() >> 3));
    if (white.p + black.p == 0) return gap <= 3 ? NoPawnScale[gap] : 1.0f;
    if (pos.phase == 0) return 1.0f;
    int pawns = std::max(white.p, black.p);
    bool bare = pawns < 2;
    if (difference != 0) {
        pawns = difference > 0 ? white.p : black.p;
        bare = pawns == 0 && (difference > 0 ? black.p : white.p) < 2;
    }
    if (bare && gap < 4) return NoPawnScale[gap];
    return pawns > 5 ? 1.0f : FewPawnScale[pawns];
}

// A huge lead is worth less with many pieces on the board. Wide, since boards that somebody sets up may hold
// sixty knights.
int softened(int value, int phase) {
    constexpr int LargeLead = 72000;  // blended units
    const std::int64_t excess = value > LargeLead    ? value - LargeLead
                                : value < -LargeLead ? value + LargeLead
                                                     : 0;
    return value - int(excess * phase / (4 * MaxPhase));
}

int materialByFormula(const Position& pos, float& scale) {
    const Counts white = countsOf(pos, White);
    const Counts black = countsOf(pos, Black);
    const int difference = materialDifference(pos, white, black);
    const int whiteWeight = white.pieceWeight(), blackWeight = black.pieceWeight();
    const int phase = pos.cappedPhase();

    scale = MaterialPhaseScale[phase];
    if (white.p + black.p > 0 && whiteWeight == 0 && blackWeight == 0)
        scale = 1.3f;
    else if (whiteWeight == blackWeight && (whiteWeight == QueenAlone || whiteWeight == RookAlone))
        scale *= 0.9f;
    const bool oppositeBishops = white.b == 1 && black.b == 1 && bishopsOnBothColours(pos);
    if (oppositeBishops && whiteWeight == BishopAlone && blackWeight == BishopAlone) scale = 0.64f;
    scale *= pawnScale(pos, white, black, difference);

    int value = int(scale * float(difference * BlendedUnit));
    if (oppositeBishops) value = value * 9 / 10;
    return softened(value, phase);
}

}  // namespace

void initMaterialTable() {
    std::fill(MaterialTable, MaterialTable + MaterialSlots, MaterialSlot{});
    for (const MaterialRow& row : materialRows) enterRow(row, false);
    for (const MaterialRow& row : materialRows) enterRow(row, true);
}

int evaluateMaterial(const Position& pos, float& scale) {
    const Key key = pos.matKey;
    MatCacheEntry& entry = pos.matHash[key % MatCacheEntries];
    if (entry.key == key) {
        scale = entry.scale;
        return entry.value;
    }
    scale = 1.0f;
    const MaterialSlot& slot = slotOf(key);
    int value;
    if (slot.key == key) {
        // What a handler says depends on the squares and is not cached.
        if (slot.handler) return slot.handler(pos, scale) * BlendedUnit;
        scale = slot.scale;
        value = slot.value * BlendedUnit;
    } else {
        value = materialByFormula(pos, scale);
    }
    entry = {key, scale, value};
    return value;
}
