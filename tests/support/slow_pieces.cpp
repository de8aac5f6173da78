// Preparation, the loops over the pieces and the wing term of the slow evaluation.
#include "support/slow_pieces.h"

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
constexpr Pair QueenMobility[] = {
    {-463, -463}, {-388, -388}, {-324, -324}, {-269, -269}, {-221, -221}, {-178, -178}, {-139, -139},
    {-103, -103}, {-70, -70}, {-39, -39}, {-12, -12}, {14, 14}, {38, 38}, {63, 63}, {85, 85}, {106, 106},
    {126, 126}, {144, 144}, {163, 163}, {180, 180}, {197, 197}, {213, 213}, {228, 228}, {243, 243},
    {258, 258}, {271, 271}, {285, 285}, {299, 299}};
constexpr Pair BishopPawnMobility[] = {
    {-171, -194}, {-139, -157}, {-112, -127}, {-89, -101}, {-68, -77}, {-49, -56}, {-32, -36}, {-15, -17},
    {0, 0}, {15, 17}, {29, 32}, {42, 48}, {55, 62}, {67, 76}, {79, 90}, {91, 103}};
constexpr Pair KnightKingDistance[] = {
    {0, 0}, {40, 16}, {15, 6}, {0, 0}, {-10, -4}, {-15, -6}, {-20, -8}, {-25, -10}};
constexpr Pair BishopKingDistance[] = {
    {0, 0}, {24, 0}, {9, 0}, {0, 0}, {-6, 0}, {-9, 0}, {-12, 0}, {-15, 0}};
constexpr Pair KnightPawnSpan[] = {
    {0, 30}, {0, 30}, {0, 30}, {0, 30}, {0, 20}, {0, 10}, {0, 0}, {0, -10}, {0, -20}};
// clang-format on
constexpr Pair OpenFile{20, 20};

static Squares kingZoneOf(int king) {
    const int file = std::clamp(king % 8, 1, 6), rank = std::clamp(king / 8, 1, 6);
    Squares zone;
    for (int square = 0; square < 64; ++square) {
        const int steps = distance(square, rank * 8 + file);
        if (steps == 1 || (steps == 0 && square != king)) zone.insert(square);
    }
    return zone;
}

static Squares pinnedFor(const EvalBoard& board, int colour, const Squares& occupied) {
    const int king = kingOf(board, colour), enemy = enemyOf(colour);
    Squares pinned;
    for (const char line : {'B', 'R'}) {
        const Squares pinners = menOf(board, enemy, std::string{line, 'Q'});
        for (const int pinner : common(attacksFrom(line, king, colour, {}), pinners)) {
            const Squares shields = common(between(king, pinner), occupied);
            if (shields.size() == 1) pinned.insert(*shields.begin());
        }
    }
    return pinned;
}

// Own pawns that are defended or have hardly moved.
static Squares settledPawns(const PieceMaps& maps, int us) {
    return filtered(maps.pawns[at(us)], [&](int square) {
        const int rank = relativeRank(square, us);
        return has(maps.byPawns[at(us)], square) || rank == 1 || rank == 2;
    });
}

static PieceMaps prepare(const EvalBoard& board) {
    PieceMaps maps;
    for (const int us : BothColours) {
        maps.king[at(us)] = kingOf(board, us);
        maps.men[at(us)] = menOf(board, us, "PNBRQK");
        maps.pawns[at(us)] = menOf(board, us, "P");
    }
    maps.occupied = joined(maps.men[White], maps.men[Black]);
    for (const int us : BothColours) {
        maps.byPawns[at(us)] = attacksOf(board, us, 'P', maps.occupied);
        maps.byKnights[at(us)] = attacksOf(board, us, 'N', maps.occupied);
        maps.byKing[at(us)] = attacksFrom('K', maps.king[at(us)], us, maps.occupied);
        maps.pinned[at(us)] = pinnedFor(board, us, maps.occupied);
        maps.kingZone[at(us)] = kingZoneOf(maps.king[at(us)]);
    }
    for (const int us : BothColours) {
        const std::size_t them = at(enemyOf(us));
        maps.avoid[at(us)] = joined(settledPawns(maps, us), without(maps.byPawns[them], maps.men[them]));
        maps.avoid[at(us)].insert(maps.king[at(us)]);
    }
    return maps;
}

// Only the king's wing is tested.
static void judgeShutInRook(const EvalBoard& board, int us, Sheet& sheet) {
    const auto isOn = [&](char type, int file, int rank) {
        return board.man[at(us == White ? rank * 8 + file : (7 - rank) * 8 + file)] == letter(type, us);
    };
    const bool kingThere = isOn('K', 5, 0) || isOn('K', 6, 0);
    const bool rookThere = isOn('R', 6, 0) || isOn('R', 7, 0) || isOn('R', 6, 1) || isOn('R', 7, 1);
    if (kingThere && rookThere) sheet.add("shutInRook", us, {-282, -101});
}

static void judgeKnights(const EvalBoard& board, const PawnFacts& facts, PieceMaps& maps, int us,
                         Sheet& sheet) {
    const std::size_t them = at(enemyOf(us));
    for (const int square : menOf(board, us, "N")) {
        const Squares attacked = attacksFrom('N', square, us, maps.occupied);
        const Squares reach = without(attacked, maps.avoid[at(us)]);
        int count = countOf(reach);
        for (const int target : reach) {
            if (relativeRank(target, us) > relativeRank(square, us)) ++count;
        }
        if (has(maps.pinned[at(us)], square)) count = 0;
        sheet.add("knightPawnSpan", us, entry(KnightPawnSpan, facts.span[them]));
        sheet.add("knightKingDistance", us, entry(KnightKingDistance, distance(square, maps.king[at(us)])));
        sheet.add("knightMobility", us, entry(KnightMobility, count));
        if (meet(attacked, maps.kingZone[them])) maps.units[at(us)] += 2;
    }
}

// Targets on the lines of a slider with one man in front of them score by that man.
static void judgeLinePressure(const EvalBoard& board, const PieceMaps& maps, int us, int square, char line,
                              Sheet& sheet) {
    const Squares targets = menOf(board, enemyOf(us), line == 'B' ? "RQ" : "Q");
    for (const int target : common(attacksFrom(line, square, us, {}), targets)) {
        const Squares shields = common(between(square, target), maps.occupied);
        if (shields.size() != 1) continue;
        const char type = typeOn(board, *shields.begin());
        const bool own = has(maps.men[at(us)], *shields.begin());
        int value = 0;
        if (line == 'B') {
            if (type == 'P') value = own ? 0 : 10;
            if (type == 'N') value = own ? 90 : 120;
            if (type == 'R' || type == 'Q') value = own ? 60 : 225;
        } else {
            if (type == 'P') value = own ? 0 : 10;
            if (type == 'N' || type == 'B') value = 100;
        }
        sheet.add(line == 'B' ? "bishopLinePressure" : "rookLinePressure", us, {value, value});
    }
}

// What a pinned slider may still reach: the squares towards its king.
static Squares heldByPin(const Squares& reach, const PieceMaps& maps, int us, int square) {
    if (!has(maps.pinned[at(us)], square)) return reach;
    return common(reach, between(maps.king[at(us)], square));
}

static void judgeBishops(const EvalBoard& board, PieceMaps& maps, int us, Sheet& sheet) {
    const int enemy = enemyOf(us);
    const std::size_t them = at(enemy);
    const Squares bishops = menOf(board, us, "B"), enemyKnights = menOf(board, enemy, "N");
    const Squares allPawns = joined(maps.pawns[White], maps.pawns[Black]);
    for (const int square : bishops) {
        sheet.add("bishopKingDistance", us, entry(BishopKingDistance, distance(square, maps.king[at(us)])));
        judgeLinePressure(board, maps, us, square, 'B', sheet);
        const int pawnReach = countOf(attacksFrom('B', square, us, allPawns));
        sheet.add("bishopPawnMobility", us, entry(BishopPawnMobility, pawnReach));
        const Squares attacked = attacksFrom('B', square, us, without(maps.occupied, menOf(board, us, "Q")));
        if (meet(attacked, maps.kingZone[them])) maps.units[at(us)] += 1;
        const Squares reach = heldByPin(without(attacked, maps.avoid[at(us)]), maps, us, square);
        sheet.add("bishopMobility", us, entry(BishopMobility, countOf(reach)));
        const bool light = isLight(square);
        const int same = countOf(ofShade(maps.pawns[at(us)], light));
        sheet.add("sameColourPawns", us, same * Pair{-16, -16});
        sheet.add("otherColourPawns", us, countOf(ofShade(maps.pawns[at(us)], !light)) * Pair{16, 16});
        if (countOf(bishops) >= 2 && ofShade(menOf(board, enemy, "B"), light).empty()) {
            sheet.add("sameColourPawnsUnopposed", us, same * Pair{-16, -16});
        }
        const auto dominated = [&](int knight) {
            return has(enemyKnights, knight) && relativeRank(knight, us) >= 4;
        };
        if (dominated(square + 24) || dominated(square - 24)) sheet.add("bishopFacesKnight", us, {20, 19});
        maps.byBishops[at(us)] = joined(maps.byBishops[at(us)], attacked);
    }
}

static void judgeRookFile(const PieceMaps& maps, int us, int square, Sheet& sheet) {
    const std::size_t them = at(enemyOf(us));
    const auto onFile = [square](int other) { return fileOf(other) == fileOf(square); };
    if (!filtered(maps.pawns[at(us)], onFile).empty()) return;
    const Squares enemyPawns = filtered(maps.pawns[them], onFile);
    if (enemyPawns.empty()) {
        sheet.add("rookOpenFile", us, {185, 157});
    } else if (!meet(enemyPawns, maps.byPawns[them])) {
        sheet.add("rookHalfOpenFile", us, {112, 94});
    } else {
        sheet.add("rookDefendedFile", us, {20, 44});
    }
}

static void judgeRooks(const EvalBoard& board, const PawnFacts& facts, PieceMaps& maps, int us,
                       Sheet& sheet) {
    const std::size_t them = at(enemyOf(us));
    const int enemyKing = maps.king[them];
    const Squares knightFear = without(maps.byKnights[them], maps.men[them]);
    for (const int square : menOf(board, us, "R")) {
        sheet.add("openFiles", us, facts.openFiles * OpenFile);
        judgeLinePressure(board, maps, us, square, 'R', sheet);
        const Squares attacked = attacksFrom('R', square, us, without(maps.occupied, menOf(board, us, "QR")));
        if (meet(attacked, maps.kingZone[them])) maps.units[at(us)] += 1;
        const Squares counted = without(attacked, joined(maps.avoid[at(us)], knightFear));
        const Squares reach = heldByPin(counted, maps, us, square);
        if (relativeRank(square, us) == 6 && relativeRank(enemyKing, us) == 7) {
            sheet.add("rookOnSeventh", us, {64, 163});
        }
        if (fileOf(square) == fileOf(enemyKing) && !meet(between(square, enemyKing), maps.pawns[at(us)])) {
            maps.units[at(us)] += 2;
        }
        judgeRookFile(maps, us, square, sheet);
        sheet.add("rookMobility", us, entry(RookMobility, countOf(reach)));
        maps.byRooks[at(us)] = joined(maps.byRooks[at(us)], attacked);
    }
}

static void judgeQueens(const EvalBoard& board, const PawnFacts& facts, PieceMaps& maps, int us,
                        Sheet& sheet) {
    const std::size_t them = at(enemyOf(us));
    const Squares queens = menOf(board, us, "Q");
    if (queens.empty()) maps.units[at(us)] -= 7;
    Squares avoided = settledPawns(maps, us);
    avoided.insert(maps.king[at(us)]);
    for (const int square : queens) {
        const Squares attacked = attacksFrom('Q', square, us, maps.occupied);
        if (meet(attacked, maps.kingZone[them])) maps.units[at(us)] += 1;
        const Squares free = without(without(attacked, maps.withoutQueen[them]), avoided);
        const Squares reach = heldByPin(free, maps, us, square);
        sheet.add("openFiles", us, facts.openFiles * OpenFile);
        sheet.add("queenMobility", us, entry(QueenMobility, countOf(reach)));
        maps.byQueens[at(us)] = joined(maps.byQueens[at(us)], attacked);
    }
}

// Credits the attack on pawns that their queen alone defends.
static void judgeQueenOnlyDefence(const PieceMaps& maps, int us, Sheet& sheet) {
    const std::size_t them = at(enemyOf(us));
    const Squares covered = common(common(maps.pawns[them], maps.allAttacks[at(us)]), maps.byQueens[them]);
    const Squares alone = without(without(covered, maps.withoutQueen[them]), maps.byKing[them]);
    sheet.add("queenOnlyDefence", us, countOf(alone) * Pair{24, 26});
}

static void judgeWing(const EvalBoard& board, const PawnFacts& facts, int us, Sheet& sheet) {
    if (facts.kingWing == 0) return;
    const bool shortWing = facts.kingWing == 1;
    const bool light = shortWing == (us == Black);
    const auto onWing = [shortWing](int square) { return (fileOf(square) >= 4) == shortWing; };
    if (!ofShade(menOf(board, us, "B"), light).empty()) sheet.add("wingBishop", us, {35, 0});
    const int helpers = countOf(filtered(menOf(board, us, "QN"), onWing));
    sheet.add("wingHelpers", us, std::min(helpers, 2) * Pair{35, 0});
    sheet.add("wingPawns", us, countOf(filtered(menOf(board, us, "P"), onWing)) * Pair{8, 0});
}

AttackSets judgePieces(const EvalBoard& board, const PawnFacts& facts, Sheet& sheet) {
    PieceMaps maps = prepare(board);
    for (const int us : BothColours) {
        judgeShutInRook(board, us, sheet);
        sheet.add("openFiles", us, -facts.openFiles * OpenFile);
        maps.units[at(us)] = 6 - facts.shelterUnits[at(enemyOf(us))];
    }
    for (const int us : BothColours) {
        judgeKnights(board, facts, maps, us, sheet);
        judgeBishops(board, maps, us, sheet);
        judgeRooks(board, facts, maps, us, sheet);
        maps.byMinors[at(us)] = joined(maps.byKnights[at(us)], maps.byBishops[at(us)]);
        maps.withoutQueen[at(us)] =
            joined(maps.byMinors[at(us)], joined(maps.byPawns[at(us)], maps.byRooks[at(us)]));
    }
    for (const int us : BothColours) {
        judgeQueens(board, facts, maps, us, sheet);
        maps.attacks[at(us)] = joined(maps.withoutQueen[at(us)], maps.byQueens[at(us)]);
        maps.allAttacks[at(us)] = joined(maps.attacks[at(us)], maps.byKing[at(us)]);
    }
    for (const int us : BothColours) {
        judgeQueenOnlyDefence(maps, us, sheet);
        judgeWing(board, facts, us, sheet);
    }
    judgeKingSafety(board, maps, sheet);
    judgeThreats(board, maps, sheet);
    judgeOutposts(board, maps, sheet);
    judgeRelations(board, maps, sheet);
    return {maps.attacks, maps.byKing};
}

}  // namespace slow
