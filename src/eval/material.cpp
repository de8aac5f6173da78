#include "eval/material.h"

#include "board/geometry.h"
#include "board/zobrist.h"
#include "eval/caches.h"
#include "eval/material_patterns.h"
#include "eval/parameters.h"
#include "eval/weights_material.h"

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
    int pieceWeight() const { return KnightWeight * n + BishopWeight * b + RookWeight * r + QueenWeight * q; }
};

Counts countsOf(const Position& pos, Colour us) {
    const Bitboard* own = pos.pieces[us];
    return {popcount(own[Pawn]), popcount(own[Knight]), popcount(own[Bishop]), popcount(own[Rook]),
            popcount(own[Queen])};
}

// What one man of a kind is worth beside these men, in material units.
int worth(const MaterialWorth& man, const Counts& own, const Counts& enemy) {
    return man.alone + man.ownPawn * own.p + man.ownKnight * own.n + man.ownBishop * own.b +
           man.ownRook * own.r + man.ownQueen * own.q + man.enemyPawn * enemy.p;
}

// One side's material units.
int sideValue(const Counts& own, const Counts& enemy) {
    int value = PawnWorth * own.p + worth(KnightWorth, own, enemy) * own.n +
                worth(BishopWorth, own, enemy) * own.b + worth(RookWorth, own, enemy) * own.r +
                worth(QueenWorth, own, enemy) * own.q;
    if (own.b > 1) value += worth(enemy.minors() == 0 ? UnopposedBishopPair : BishopPair, own, enemy);
    return value;
}

bool bishopsOnBothColours(const Position& pos) {
    const bool whiteDark = pos.pieces[White][Bishop] & DarkSquares;
    const bool blackDark = pos.pieces[Black][Bishop] & DarkSquares;
    return whiteDark != blackDark;
}

// White minus Black in material units.
int materialDifference(const Position& pos, const Counts& white, const Counts& black) {
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
    const std::int64_t excess = value > LargeLead    ? value - LargeLead
                                : value < -LargeLead ? value + LargeLead
                                                     : 0;
    return value - int(excess * phase / (LeadSoftening * MaxPhase));
}

int materialByFormula(const Position& pos, float& scale) {
    const Counts white = countsOf(pos, White);
    const Counts black = countsOf(pos, Black);
    const int difference = materialDifference(pos, white, black);
    const int whiteWeight = white.pieceWeight(), blackWeight = black.pieceWeight();
    const int phase = pos.cappedPhase();

    scale = MaterialPhaseScale[phase];
    if (white.p + black.p > 0 && whiteWeight == 0 && blackWeight == 0)
        scale = PawnEndScale;
    else if (whiteWeight == blackWeight && (whiteWeight == QueenWeight || whiteWeight == RookWeight))
        scale *= LoneHeavyScale;
    // Opposite-coloured bishops.
    const bool oppositeBishops = white.b == 1 && black.b == 1 && bishopsOnBothColours(pos);
    if (oppositeBishops && whiteWeight == BishopWeight && blackWeight == BishopWeight)
        scale = OppositeBishopsScale;
    scale *= pawnScale(pos, white, black, difference);

    int value = int(scale * float(difference * BlendedUnit));
    if (oppositeBishops) value = value * OppositeBishopsTenths / 10;
    return softened(value, phase);
}

}  // namespace

void initMaterialTable() {
    std::fill(MaterialTable, MaterialTable + MaterialSlots, MaterialSlot{});
    for (const MaterialRow& row : KnownMaterial) enterRow(row, false);
    for (const MaterialRow& row : KnownMaterial) enterRow(row, true);
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
