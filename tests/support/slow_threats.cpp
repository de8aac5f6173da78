// King safety, threats, outposts and the small relations between men of the slow evaluation.
#include "support/slow_eval.h"

#include <algorithm>
#include <utility>

namespace slow {

// clang-format off
constexpr int KingSafetyCurve[129] = {
    0, 1, 3, 6, 11, 17, 25, 34, 44, 55, 68, 81, 96, 112, 129, 147, 166, 185, 205, 227, 248, 270, 293, 317,
    340, 364, 388, 413, 438, 463, 487, 512, 537, 562, 587, 611, 636, 660, 684, 708, 731, 754, 777, 799, 821,
    842, 863, 884, 904, 924, 943, 962, 980, 998, 1016, 1033, 1049, 1065, 1081, 1096, 1111, 1125, 1139, 1152,
    1165, 1178, 1190, 1201, 1213, 1224, 1234, 1245, 1254, 1264, 1273, 1282, 1291, 1299, 1307, 1314, 1322,
    1329, 1336, 1342, 1349, 1355, 1360, 1366, 1371, 1377, 1382, 1387, 1391, 1396, 1400, 1404, 1408, 1412,
    1415, 1419, 1422, 1425, 1428, 1431, 1434, 1437, 1439, 1442, 1444, 1447, 1449, 1451, 1453, 1455, 1457,
    1459, 1460, 1462, 1464, 1465, 1467, 1468, 1469, 1471, 1472, 1473, 1474, 1475, 1476};
// clang-format on
constexpr int KingSafety = 72;  // the default of the option

// Units for the squares from which one kind of piece gives check: doubled when one of them is safe.
static int checkUnits(const Army& us, const Army& them, const Squares& checks, int plain) {
    if (checks.empty()) return 0;
    if ((checks - them.allAttacks).empty()) return plain;
    us.add("safeChecks", {0, 84});
    return 2 * plain;
}

void countUnits(Army& us, Army& them) {
    const auto lines = [&](char type) { return attacksFrom(type, them.king, us.everyone) - us.men; };
    us.units += checkUnits(us, them, lines('N') & us.byKnights, 4);
    us.units += checkUnits(us, them, lines('B') & us.byBishops, 3);
    us.units += checkUnits(us, them, lines('R') & us.byRooks, 4);
    int queenUnits = checkUnits(us, them, (lines('Q') & us.byQueens) - them.byKing, 5);
    const Squares helped = us.byKing | us.withoutQueen;
    for (const int square : (them.byKing & us.byQueens) - us.men - them.attacks)
        queenUnits += helped.contains(square) ? 10 : 1;
    us.units += std::min(queenUnits, 25);
    // One unit off for each kind of piece that guards the attacked king's neighbours.
    for (const Squares* guards : {&them.byKnights, &them.byBishops, &them.byQueens})
        us.units -= meet(*guards, them.byKing);
    us.units += 2 * countOf((them.byKing & us.allAttacks) - them.attacks);
}

void judgeKingSafety(Army& us, Army& them) {
    const int index = std::clamp(us.units, 0, 128);  // the curve stays level from there
    us.add("kingDanger", {KingSafety * KingSafetyCurve[index] / 10, 0});
    // d4 e4 d5 e5, and e3 f3 f4 or c3 d3 c4 as each side sees them, by its king's wing.
    Squares centre = {27, 28, 35, 36};
    for (const Army* side : {&us, &them})
        for (const int square : fileOf(side->king) >= 4 ? Squares{20, 21, 29} : Squares{18, 19, 26})
            centre.insert(side->rank(square) * 8 + fileOf(square));
    us.add("centreControl", countOf(centre & us.attacks) * Pair{20, 0});
    us.add("undefendedPawns", countOf(us.pawns - us.attacks) * Pair{-15, -30});
}

// The values of the men on the squares; those that the list lacks are worth nothing.
using Values = std::map<char, Pair>;
static void addByType(const Army& us, const std::string& term, const Squares& men, const Values& values) {
    for (const int square : men)
        if (const auto value = values.find(us.board.typeOn(square)); value != values.end())
            us.add(term, value->second);
}

// Defended by us or not attacked by the enemy.
static Squares safeOf(const Squares& squares, const Army& us, const Army& them) {
    return squares - (them.allAttacks - us.allAttacks);
}

static void judgePawnThreats(const Army& us, const Army& them) {
    static const Values values = {{'N', {528, 417}}, {'B', {393, 381}}, {'R', {651, 654}}, {'Q', {609, 545}}};
    const Squares hit = (them.men - them.pawns) & us.byPawns;
    const Squares safeHit = hit & attacksOf('P', safeOf(us.pawns, us, them), {}, us.colour);
    if (hit != safeHit) us.add("unsafePawnThreat", {262, 236});
    addByType(us, "pawnThreat", safeHit, values);
}

static void judgePieceThreats(const Army& us, const Army& them) {
    static const Values minorValues = {
        {'P', {0, 124}}, {'N', {170, 161}}, {'B', {172, 176}}, {'R', {260, 380}}, {'Q', {170, 420}}};
    static const Values rookValues = {
        {'P', {0, 94}}, {'N', {150, 232}}, {'B', {150, 221}}, {'R', {0, 128}}, {'Q', {131, 180}}};
    // Intended: kings belong to every set here, so that a king in check counts as hanging.
    const Squares unguarded = them.men - them.byPawns, weak = unguarded & us.allAttacks;
    const Squares shielded = (them.men - them.pawns) & them.byPawns;
    addByType(us, "minorThreat", (weak | shielded) & us.byMinors, minorValues);
    addByType(us, "rookThreat", (weak | them.queens) & us.byRooks, rookValues);
    us.add("hangingPieces", countOf(weak - them.allAttacks) * Pair{180, 105});
    const int kingHits = countOf(unguarded & us.byKing);
    if (kingHits > 0) us.add("kingThreat", kingHits == 1 ? Pair{11, 232} : Pair{34, 518});
}

static void judgePushThreats(const Army& us, const Army& them) {
    Squares pushes;
    for (const int pawn : us.pawns) {
        const int once = us.ahead(pawn), twice = us.ahead(once);
        if (us.rank(pawn) >= 6 || us.everyone.contains(once)) continue;
        pushes.insert(once);
        if (us.rank(pawn) == 1 && !us.everyone.contains(twice)) pushes.insert(twice);
    }
    pushes = safeOf(pushes - them.byPawns, us, them);
    const Squares victims = (them.men & attacksOf('P', pushes, {}, us.colour)) - us.byPawns;
    us.add("pushThreat", countOf(victims) * Pair{116, 71});
}

void judgeThreats(Army& us, Army& them) {
    judgePawnThreats(us, them);
    judgePieceThreats(us, them);
    judgePushThreats(us, them);
}

void judgeOutposts(Army& us, Army& them) {
    const auto isSafe = [&](int square) { return !them.mayEverAttack(square); };
    const Squares outposts = ((us.knights | us.bishops) & us.byPawns).where([&](int square) {
        const int rank = us.rank(square), file = fileOf(square);
        return isSafe(square) && file >= 2 && file <= 5 && rank >= 3 && rank <= 5;
    });
    us.add("outposts", countOf(outposts) * Pair{62, 70});
    const Squares unopposed = outposts.where([&](int square) {
        const auto isSameShade = [&](int bishop) { return isLight(bishop) == isLight(square); };
        return them.knights.empty() && them.bishops.where(isSameShade).empty();
    });
    us.add("unopposedOutposts", countOf(unopposed) * Pair{156, 74});
    const Squares knights = us.knights.where(isSafe);
    const auto isBlocking = [&](int knight) { return them.pawns.contains(us.ahead(knight)); };
    us.add("knightBlockades", countOf(knights.where(isBlocking)) * Pair{14, 34});
    us.add("unassailablePieces", countOf(knights | (us.bishops | us.rooks).where(isSafe)) * Pair{35, 27});
}

static void judgePawnRelations(const Army& us, const Army& them) {
    Squares stops;
    for (const int pawn : us.pawns) stops.insert(us.ahead(pawn));
    us.add("blockedPawns", countOf(stops & us.everyone) * Pair{-43, -167});
    us.add("controlledStops", countOf(stops & (them.allAttacks - us.allAttacks)) * Pair{-21, -42});
    us.add("pawnDefendedPieces", countOf((us.men - us.pawns) & us.byPawns) * Pair{55, 29});
    const auto isBehind = [&](int square) { return us.pawns.contains(us.ahead(square)); };
    us.add("pieceBehindPawn", countOf((us.knights | us.bishops).where(isBehind)) * Pair{32, 8});
    // A pawn one file beside and one rank ahead is one that the knight's square would attack as a pawn.
    const auto isBeside = [&](int square) { return meet(us.pawns, attacksFrom('P', square, {}, us.colour)); };
    us.add("knightBesidePawn", countOf(us.knights.where(isBeside)) * Pair{32, 8});
    // Their pawns at home on the files towards the centre, which their own king's wing decides.
    const int first = fileOf(them.king) <= 3 ? 3 : 1;
    const Squares stuck = them.pawns.where([&](int pawn) {
        return fileOf(pawn) >= first && fileOf(pawn) <= first + 3 && them.rank(pawn) == 1 &&
               us.everyone.contains(them.ahead(pawn));
    });
    us.add("enemyHomeBlocked", countOf(stuck) * Pair{20, 3});
}

void judgeRelations(Army& us, Army& them) {
    judgePawnRelations(us, them);
    if (us.bishops.contains(us.ahead(us.king))) us.add("bishopBeforeKing", {73, 0});
    // A bishop in a corner behind an own man.
    const int corner = us.colour == White ? 0 : 56;  // on the a-file; the other one is 7 on
    for (const auto& [bishop, man] : {std::pair{corner, corner + 1}, std::pair{corner + 7, corner + 6}})
        if (us.bishops.contains(bishop) && us.men.contains(us.ahead(man))) us.add("cornerBishop", {-63, -96});
}

}  // namespace slow
