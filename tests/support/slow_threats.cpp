// King safety, threats, outposts and the small relations between men of the slow evaluation.
#include "support/slow_pieces.h"

#include <algorithm>

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

static Squares centreFor(int colour, int king) {
    const bool shortWing = fileOf(king) >= 4;
    // d4 e4 d5 e5, and e3 f3 f4 or c3 d3 c4 as the colour's own side sees them.
    Squares squares = {27, 28, 35, 36};
    const Squares near = shortWing ? Squares{20, 21, 29} : Squares{18, 19, 26};
    for (const int square : near) {
        squares.insert(colour == White ? square : (7 - square / 8) * 8 + square % 8);
    }
    return squares;
}

// Units for the checks of one kind of piece: doubled when one of them is safe.
static int checkUnits(const PieceMaps& maps, int us, char type, const Squares& attacked, int plain,
                      Sheet& sheet) {
    const std::size_t them = at(enemyOf(us));
    const Squares lines = attacksFrom(type, maps.king[them], enemyOf(us), maps.occupied);
    const Squares checks = without(common(lines, attacked), maps.men[at(us)]);
    if (checks.empty()) return 0;
    if (without(checks, maps.allAttacks[them]).empty()) return plain;
    sheet.add("safeChecks", us, {0, 84});
    return 2 * plain;
}

static int queenUnits(const PieceMaps& maps, int us, Sheet& sheet) {
    const std::size_t own = at(us), them = at(enemyOf(us));
    int units = 0;
    const Squares lines = attacksFrom('Q', maps.king[them], enemyOf(us), maps.occupied);
    const Squares reached = without(common(lines, maps.byQueens[own]), maps.men[own]);
    const Squares checks = without(reached, maps.byKing[them]);
    if (!checks.empty()) units = 5;
    if (!without(checks, maps.allAttacks[them]).empty()) {
        units = 10;
        sheet.add("safeChecks", us, {0, 84});
    }
    const Squares helped = joined(maps.byKing[own], maps.withoutQueen[own]);
    for (const int square : common(maps.byKing[them], maps.byQueens[own])) {
        if (has(maps.men[own], square) || has(maps.attacks[them], square)) continue;
        units += has(helped, square) ? 10 : 1;
    }
    return std::min(units, 25);
}

void judgeKingSafety(const EvalBoard& board, PieceMaps& maps, Sheet& sheet) {
    for (const int us : BothColours) {
        const std::size_t own = at(us), them = at(enemyOf(us));
        int& units = maps.units[own];
        units += checkUnits(maps, us, 'N', maps.byKnights[own], 4, sheet);
        units += checkUnits(maps, us, 'B', maps.byBishops[own], 3, sheet);
        units += checkUnits(maps, us, 'R', maps.byRooks[own], 4, sheet);
        units += queenUnits(maps, us, sheet);
        // One unit off for each kind of piece that guards the attacked king's neighbours.
        if (meet(maps.byKnights[them], maps.byKing[them])) --units;
        if (meet(maps.byBishops[them], maps.byKing[them])) --units;
        if (meet(maps.byQueens[them], maps.byKing[them])) --units;
        units += 2 * countOf(without(common(maps.byKing[them], maps.allAttacks[own]), maps.attacks[them]));
    }
    const Squares centre = joined(centreFor(White, maps.king[White]), centreFor(Black, maps.king[Black]));
    for (const int us : BothColours) {
        const int index = std::clamp(maps.units[at(us)], 0, 128);  // the curve stays level from there
        sheet.add("kingDanger", us, {KingSafety * KingSafetyCurve[index] / 10, 0});
        sheet.add("centreControl", us, countOf(common(centre, maps.attacks[at(us)])) * Pair{20, 0});
        const Squares undefended = without(menOf(board, us, "P"), maps.attacks[at(us)]);
        sheet.add("undefendedPawns", us, countOf(undefended) * Pair{-15, -30});
    }
}

static Pair pawnThreat(char type) {
    switch (type) {
        case 'N': return {528, 417};
        case 'B': return {393, 381};
        case 'R': return {651, 654};
        case 'Q': return {609, 545};
        default: return {};
    }
}

static Pair minorThreat(char type) {
    switch (type) {
        case 'P': return {0, 124};
        case 'N': return {170, 161};
        case 'B': return {172, 176};
        case 'R': return {260, 380};
        case 'Q': return {170, 420};
        default: return {};
    }
}

static Pair rookThreat(char type) {
    switch (type) {
        case 'P': return {0, 94};
        case 'N': return {150, 232};
        case 'B': return {150, 221};
        case 'R': return {0, 128};
        case 'Q': return {131, 180};
        default: return {};
    }
}

// Squares that pawns of the colour on the given squares attack.
static Squares pawnAttacksFrom(const Squares& pawns, int us) {
    Squares attacked;
    for (const int pawn : pawns) attacked = joined(attacked, attacksFrom('P', pawn, us, {}));
    return attacked;
}

// Defended by us or not attacked by the enemy.
static bool isSafe(const PieceMaps& maps, int us, int square) {
    return has(maps.allAttacks[at(us)], square) || !has(maps.allAttacks[at(enemyOf(us))], square);
}

static void judgePawnThreats(const EvalBoard& board, const PieceMaps& maps, int us, Sheet& sheet) {
    const std::size_t own = at(us), them = at(enemyOf(us));
    const Squares hit = common(without(maps.men[them], maps.pawns[them]), maps.byPawns[own]);
    const Squares safe = filtered(maps.pawns[own], [&](int pawn) { return isSafe(maps, us, pawn); });
    const Squares safeHit = common(hit, pawnAttacksFrom(safe, us));
    if (hit != safeHit) sheet.add("unsafePawnThreat", us, {262, 236});
    for (const int square : safeHit) sheet.add("pawnThreat", us, pawnThreat(typeOn(board, square)));
}

static void judgePieceThreats(const EvalBoard& board, const PieceMaps& maps, int us, Sheet& sheet) {
    const std::size_t own = at(us), them = at(enemyOf(us));
    // Intended: kings belong to every set here, so that a king in check counts as hanging.
    const Squares unguarded = without(maps.men[them], maps.byPawns[them]);
    const Squares weak = common(unguarded, maps.allAttacks[own]);
    const Squares shielded = common(without(maps.men[them], maps.pawns[them]), maps.byPawns[them]);
    for (const int square : common(joined(weak, shielded), maps.byMinors[own])) {
        sheet.add("minorThreat", us, minorThreat(typeOn(board, square)));
    }
    for (const int square : common(joined(weak, menOf(board, enemyOf(us), "Q")), maps.byRooks[own])) {
        sheet.add("rookThreat", us, rookThreat(typeOn(board, square)));
    }
    sheet.add("hangingPieces", us, countOf(without(weak, maps.allAttacks[them])) * Pair{180, 105});
    const int kingHits = countOf(common(unguarded, maps.byKing[own]));
    if (kingHits == 1) sheet.add("kingThreat", us, {11, 232});
    if (kingHits > 1) sheet.add("kingThreat", us, {34, 518});
}

static void judgePushThreats(const PieceMaps& maps, int us, Sheet& sheet) {
    const std::size_t own = at(us), them = at(enemyOf(us));
    Squares pushes;
    for (const int pawn : maps.pawns[own]) {
        const int rank = relativeRank(pawn, us), once = pawn + forward(us), twice = once + forward(us);
        if (rank >= 6 || has(maps.occupied, once)) continue;
        pushes.insert(once);
        if (rank == 1 && !has(maps.occupied, twice)) pushes.insert(twice);
    }
    pushes = filtered(without(pushes, maps.byPawns[them]), [&](int to) { return isSafe(maps, us, to); });
    const Squares victims = without(common(maps.men[them], pawnAttacksFrom(pushes, us)), maps.byPawns[own]);
    sheet.add("pushThreat", us, countOf(victims) * Pair{116, 71});
}

void judgeThreats(const EvalBoard& board, const PieceMaps& maps, Sheet& sheet) {
    for (const int us : BothColours) {
        judgePawnThreats(board, maps, us, sheet);
        judgePieceThreats(board, maps, us, sheet);
        judgePushThreats(maps, us, sheet);
    }
}

// Squares that no pawn of the colour attacks now or would attack from further up its file.
static Squares neverAttackedBy(const PieceMaps& maps, int colour) {
    Squares safe;
    for (int square = 0; square < 64; ++square) {
        const Squares reaching = filtered(maps.pawns[at(colour)], [square, colour](int pawn) {
            const int files = fileOf(pawn) - fileOf(square);
            return files * files == 1 && relativeRank(pawn, colour) < relativeRank(square, colour);
        });
        if (reaching.empty()) safe.insert(square);
    }
    return safe;
}

void judgeOutposts(const EvalBoard& board, const PieceMaps& maps, Sheet& sheet) {
    for (const int us : BothColours) {
        const int enemy = enemyOf(us);
        const Squares safe = neverAttackedBy(maps, enemy);
        const Squares minors = common(common(menOf(board, us, "NB"), safe), maps.byPawns[at(us)]);
        const Squares outposts = filtered(minors, [us](int square) {
            const int rank = relativeRank(square, us), file = fileOf(square);
            return file >= 2 && file <= 5 && rank >= 3 && rank <= 5;
        });
        sheet.add("outposts", us, countOf(outposts) * Pair{62, 70});
        for (const int square : outposts) {
            if (!menOf(board, enemy, "N").empty()) break;
            if (!ofShade(menOf(board, enemy, "B"), isLight(square)).empty()) continue;
            sheet.add("unopposedOutposts", us, {156, 74});
        }
        const Squares blockades = filtered(common(menOf(board, us, "N"), safe), [&](int square) {
            return has(maps.pawns[at(enemy)], square - forward(enemy));
        });
        sheet.add("knightBlockades", us, countOf(blockades) * Pair{14, 34});
        sheet.add("unassailablePieces", us, countOf(common(menOf(board, us, "NBR"), safe)) * Pair{35, 27});
    }
}

static void judgePawnRelations(const EvalBoard& board, const PieceMaps& maps, int us, Sheet& sheet) {
    const std::size_t own = at(us), them = at(enemyOf(us));
    for (const int pawn : maps.pawns[own]) {
        const int stop = pawn + forward(us);
        if (has(maps.occupied, stop)) sheet.add("blockedPawns", us, {-43, -167});
        if (has(maps.allAttacks[them], stop) && !has(maps.allAttacks[own], stop)) {
            sheet.add("controlledStops", us, {-21, -42});
        }
    }
    const Squares defended = common(without(maps.men[own], maps.pawns[own]), maps.byPawns[own]);
    sheet.add("pawnDefendedPieces", us, countOf(defended) * Pair{55, 29});
    const Squares behind = filtered(menOf(board, us, "NB"),
                                    [&](int square) { return has(maps.pawns[own], square + forward(us)); });
    // A pawn one file beside and one rank ahead is one that the knight's square would attack as a pawn.
    const Squares beside = filtered(menOf(board, us, "N"), [&](int square) {
        return meet(maps.pawns[own], attacksFrom('P', square, us, {}));
    });
    sheet.add("pieceBehindPawn", us, countOf(behind) * Pair{32, 8});
    sheet.add("knightBesidePawn", us, countOf(beside) * Pair{32, 8});

    // Their pawns at home on the files towards the centre, which their own king's wing decides.
    const int firstFile = fileOf(maps.king[them]) <= 3 ? 3 : 1;
    const Squares atHome = filtered(maps.pawns[them], [&](int pawn) {
        const bool named = fileOf(pawn) >= firstFile && fileOf(pawn) <= firstFile + 3;
        return named && relativeRank(pawn, enemyOf(us)) == 1 &&
               has(maps.occupied, pawn + forward(enemyOf(us)));
    });
    sheet.add("enemyHomeBlocked", us, countOf(atHome) * Pair{20, 3});
}

void judgeRelations(const EvalBoard& board, const PieceMaps& maps, Sheet& sheet) {
    for (const int us : BothColours) {
        judgePawnRelations(board, maps, us, sheet);
        const Squares bishops = menOf(board, us, "B");
        if (has(bishops, maps.king[at(us)] + forward(us))) sheet.add("bishopBeforeKing", us, {73, 0});
        const int edge = us == White ? 0 : 56;  // the corner on file a, from which h is 7 on
        const int inner = edge + forward(us);
        const Squares& own = maps.men[at(us)];
        if (has(bishops, edge + 7) && has(own, inner + 6)) sheet.add("cornerBishop", us, {-63, -96});
        if (has(bishops, edge) && has(own, inner + 1)) sheet.add("cornerBishop", us, {-63, -96});
    }
}

}  // namespace slow
