// The loops over the pieces and the wing term of the slow evaluation.
#include "support/slow_eval.h"

#include <algorithm>

namespace slow {

// clang-format off
constexpr Pair KnightMobility[] = {
    {-422, -516}, {-347, -424}, {-283, -346}, {-228, -279}, {-179, -219}, {-135, -166}, {-95, -118},
    {-59, -74}, {-26, -33}, {5, 4}, {33, 39}, {60, 71}, {85, 102}};
constexpr Pair BishopMobility[] = {
    {-354, -322}, {-280, -254}, {-216, -196}, {-162, -146}, {-113, -102}, {-70, -62}, {-31, -26}, {5, 6},
    {38, 37}, {68, 64}, {96, 90}, {123, 115}, {148, 137}, {171, 159}};
constexpr Pair RookMobility[] = {
    {-172, -340}, {-130, -208}, {-96, -130}, {-65, -75}, {-39, -32}, {-15, 2}, {7, 32}, {26, 57}, {44, 80},
    {61, 100}, {77, 118}, {91, 135}, {105, 150}, {118, 164}, {130, 177}};
constexpr int QueenMobility[] = {
    -463, -388, -324, -269, -221, -178, -139, -103, -70, -39, -12, 14, 38, 63, 85, 106, 126, 144, 163, 180,
    197, 213, 228, 243, 258, 271, 285, 299};
constexpr Pair BishopPawnMobility[] = {
    {-171, -194}, {-139, -157}, {-112, -127}, {-89, -101}, {-68, -77}, {-49, -56}, {-32, -36}, {-15, -17},
    {0, 0}, {15, 17}, {29, 32}, {42, 48}, {55, 62}, {67, 76}, {79, 90}, {91, 103}};
// clang-format on
// What is near the own king is worth more, by the distance in steps.
constexpr int KingDistance[] = {0, 8, 3, 0, -2, -3, -4, -5};

// Own pawns that are defended or have hardly moved, and the king.
static Squares settledMen(const Army& us) {
    const auto isAtHome = [&](int pawn) { return us.rank(pawn) == 1 || us.rank(pawn) == 2; };
    return (us.pawns & us.byPawns) | us.pawns.where(isAtHome) | Squares{us.king};
}

static Pair openFilesValue(const Army& us, const Army& them) {
    int open = 0;
    for (int file = 0; file < 8; ++file) open += !(us.pawns | them.pawns).holdsFile(file);
    return open * Pair{20, 20};
}

// What a piece attacks, through the friends that a slider works with. It brings units if that meets the zone
// of the other king, whose middle is never on the edge.
static Squares reachOf(Army& us, const Army& them, char type, int square, int units) {
    const Squares friends = type == 'B' ? us.queens : type == 'R' ? us.queens | us.rooks : Squares{};
    const Squares attacked = attacksFrom(type, square, us.everyone - friends);
    const int centre = std::clamp(them.king / 8, 1, 6) * 8 + std::clamp(fileOf(them.king), 1, 6);
    Squares zone = attacksFrom('K', centre, {}) | Squares{centre};
    if (centre == them.king) zone.erase(centre);
    if (meet(attacked, zone)) us.units += units;
    return attacked;
}

// The squares that count for a slider's mobility: a pinned one has those towards its king.
static int mobility(const Army& us, int square, const Squares& reach) {
    return countOf(us.pinned.contains(square) ? reach & between(us.king, square) : reach);
}

static void judgeKnights(Army& us, const Army& them, const Squares& avoid) {
    for (const int square : us.knights) {
        const Squares reach = reachOf(us, them, 'N', square, 2) - avoid;
        const auto isForward = [&](int target) { return us.rank(target) > us.rank(square); };
        const int count = countOf(reach) + countOf(reach.where(isForward));
        us.add("knightPawnSpan", {0, 10 * std::min(3, 6 - them.pawnSpan())});
        us.add("knightKingDistance", KingDistance[distance(square, us.king)] * Pair{5, 2});
        us.add("knightMobility", KnightMobility[us.pinned.contains(square) ? 0 : count]);
    }
}

// A target on the line of a slider with one man in front of it scores by that man: own ones in capitals.
static void judgeLinePressure(const Army& us, const Army& them, int square, char line) {
    static const std::map<char, int> bishopValues = {{'N', 90},  {'R', 60},  {'Q', 60}, {'p', 10},
                                                     {'n', 120}, {'r', 225}, {'q', 225}};
    static const std::map<char, int> rookValues = {{'N', 100}, {'B', 100}, {'p', 10}, {'n', 100}, {'b', 100}};
    const std::map<char, int>& values = line == 'B' ? bishopValues : rookValues;
    const Squares targets = line == 'B' ? them.queens | them.rooks : them.queens;
    for (const int target : attacksFrom(line, square, {}) & targets) {
        const Squares shields = between(square, target) & us.everyone;
        if (shields.size() != 1) continue;
        const int shield = *shields.begin();
        const char type = us.board.typeOn(shield);
        const auto value = values.find(us.men.contains(shield) ? type : char(type | 32));
        if (value == values.end()) continue;
        us.add(line == 'B' ? "bishopLinePressure" : "rookLinePressure", value->second * Pair{1, 1});
    }
}

static void judgeBishops(Army& us, const Army& them, const Squares& avoid) {
    for (const int square : us.bishops) {
        const auto isSameShade = [&](int other) { return isLight(other) == isLight(square); };
        const auto isDominated = [&](int knight) {
            return them.knights.contains(knight) && us.rank(knight) >= 4;
        };
        const Squares attacked = reachOf(us, them, 'B', square, 1);
        const Squares sameShade = us.pawns.where(isSameShade);
        const int pawnReach = countOf(attacksFrom('B', square, us.pawns | them.pawns));
        us.add("bishopKingDistance", KingDistance[distance(square, us.king)] * Pair{3, 0});
        judgeLinePressure(us, them, square, 'B');
        us.add("bishopPawnMobility", BishopPawnMobility[pawnReach]);
        us.add("bishopMobility", BishopMobility[mobility(us, square, attacked - avoid)]);
        us.add("sameColourPawns", countOf(sameShade) * Pair{-16, -16});
        us.add("otherColourPawns", countOf(us.pawns - sameShade) * Pair{16, 16});
        if (us.bishops.size() >= 2 && them.bishops.where(isSameShade).empty())
            us.add("sameColourPawnsUnopposed", countOf(sameShade) * Pair{-16, -16});
        if (isDominated(square + 24) || isDominated(square - 24)) us.add("bishopFacesKnight", {20, 19});
        us.byBishops |= attacked;
    }
}

static void judgeRookFile(const Army& us, const Army& them, int file) {
    if (us.pawns.holdsFile(file)) return;
    if (!them.pawns.holdsFile(file))
        us.add("rookOpenFile", {185, 157});
    else if ((them.pawns & them.byPawns).holdsFile(file))
        us.add("rookDefendedFile", {20, 44});
    else
        us.add("rookHalfOpenFile", {112, 94});
}

static void judgeRooks(Army& us, const Army& them, const Squares& avoid) {
    const Squares knightFear = them.byKnights - them.men;
    for (const int square : us.rooks) {
        const Squares attacked = reachOf(us, them, 'R', square, 1);
        us.add("openFiles", openFilesValue(us, them));
        judgeLinePressure(us, them, square, 'R');
        if (us.rank(square) == 6 && us.rank(them.king) == 7) us.add("rookOnSeventh", {64, 163});
        if (fileOf(square) == fileOf(them.king) && !meet(between(square, them.king), us.pawns)) us.units += 2;
        judgeRookFile(us, them, fileOf(square));
        us.add("rookMobility", RookMobility[mobility(us, square, attacked - avoid - knightFear)]);
        us.byRooks |= attacked;
    }
}

void judgeLesserPieces(Army& us, Army& them) {
    const Squares avoid = settledMen(us) | (them.byPawns - them.men);
    // A rook in the corner beside its king: g1, h1, g2 and h2 or, for Black, g8, h8, g7 and h7. Only the
    // king's wing is tested.
    const int corner = us.colour == White ? 7 : 63;
    const bool kingThere = us.king == corner - 1 || us.king == corner - 2;
    const auto isThere = [&](int rook) { return distance(rook, corner) <= 1; };
    if (kingThere && !us.rooks.where(isThere).empty()) us.add("shutInRook", {-282, -101});
    us.add("openFiles", -1 * openFilesValue(us, them));
    us.units = 6 - them.shelterUnits;
    judgeKnights(us, them, avoid);
    judgeBishops(us, them, avoid);
    judgeRooks(us, them, avoid);
    us.byMinors = us.byKnights | us.byBishops;
    us.withoutQueen = us.byMinors | us.byPawns | us.byRooks;
}

void judgeQueens(Army& us, Army& them) {
    if (us.queens.empty()) us.units -= 7;
    for (const int square : us.queens) {
        const Squares attacked = reachOf(us, them, 'Q', square, 1);
        const int count = mobility(us, square, attacked - them.withoutQueen - settledMen(us));
        us.add("openFiles", openFilesValue(us, them));
        us.add("queenMobility", QueenMobility[count] * Pair{1, 1});
        us.byQueens |= attacked;
    }
    us.attacks = us.withoutQueen | us.byQueens;
    us.allAttacks = us.attacks | us.byKing;
}

// Credits the attack on pawns that their queen alone defends.
void judgeQueenOnlyDefence(Army& us, Army& them) {
    const Squares alone = them.byQueens - them.withoutQueen - them.byKing;
    us.add("queenOnlyDefence", countOf(them.pawns & us.allAttacks & alone) * Pair{24, 26});
}

void judgeWing(Army& us, Army& them) {
    const bool shortWing = fileOf(us.king) >= 4;
    if ((fileOf(them.king) >= 4) != shortWing) return;
    const auto isPointed = [&](int bishop) { return isLight(bishop) == (shortWing == (us.colour == Black)); };
    const auto isOnWing = [&](int square) { return (fileOf(square) >= 4) == shortWing; };
    const int helpers = countOf((us.queens | us.knights).where(isOnWing));
    if (!us.bishops.where(isPointed).empty()) us.add("wingBishop", {35, 0});
    us.add("wingHelpers", std::min(helpers, 2) * Pair{35, 0});
    us.add("wingPawns", countOf(us.pawns.where(isOnWing)) * Pair{8, 0});
}

}  // namespace slow
