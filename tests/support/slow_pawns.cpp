// The slow evaluation's pawn stage, with the shelter and storm of both kings.
#include "support/slow_eval.h"

#include <algorithm>
#include <cstdlib>

namespace slow {

template <class Array>
static auto& at(Array& array, int index) {
    return array[std::size_t(index)];
}

int kingDistanceValue(KingDistance table, int row, int steps) {
    static constexpr int base[9] = {390, 270, 180, 120, 90, 60, 30, 0, 0};
    static constexpr double weight[9] = {0, 0, 0.43, 1.01, 1.3, 1.5, 1.53, 1.55, 1.57};
    const double x = (row - 1) * row * weight[steps];
    const int passerOwn = base[steps] + int(-28 * x + 0.5), passerEnemy = -base[steps] + int(72 * x + 0.5);
    switch (table) {
        case KingDistance::PasserOwn: return passerOwn;
        case KingDistance::PasserEnemy: return passerEnemy;
        case KingDistance::CandidateOwn: return passerOwn * 65 / 100;
        case KingDistance::CandidateEnemy: return passerEnemy * 65 / 100;
        case KingDistance::PawnEndOwn: return int(-12 * x + 0.5);
        case KingDistance::PawnEndEnemy: return int(15 * x + 0.5);
    }
    return 0;
}

// One side's pawns as seen by that side.
struct Pawns {
    int colour = White;
    Squares own, enemy, attacks, enemyAttacks;
    Squares front;         // no own pawn ahead on the file
    Squares doubledFront;  // those with an own pawn behind
    Squares isolated;
    Squares passed;
};

static bool edgeFile(int square) { return square % 8 == 0 || square % 8 == 7; }

static bool holdsFile(const Squares& pawns, int file) {
    for (int square : pawns)
        if (square % 8 == file) return true;
    return false;
}

// Whether `other` is nearer to the enemy's first rank than `square`.
static bool aheadOf(int other, int square, int colour) {
    return relativeRank(other, colour) > relativeRank(square, colour);
}

static bool besideOne(const Squares& pawns, int square) {
    return (square % 8 > 0 && pawns.contains(square - 1)) || (square % 8 < 7 && pawns.contains(square + 1));
}

// No pawn of colour strictly ahead on the file, and none of the enemy's on the square or ahead.
static bool noPawnAhead(const Squares& own, const Squares& enemy, int square, int colour) {
    for (int pawn : own)
        if (pawn % 8 == square % 8 && aheadOf(pawn, square, colour)) return false;
    for (int pawn : enemy)
        if (pawn % 8 == square % 8 && (pawn == square || aheadOf(pawn, square, colour))) return false;
    return true;
}

// No pawn of colour attacks the square, now or after advancing.
static bool neverAttacked(const Squares& pawns, int square, int colour) {
    for (int pawn : pawns)
        if (std::abs(pawn % 8 - square % 8) == 1 && aheadOf(square, pawn, colour)) return false;
    return true;
}

static Pawns pawnsOf(const EvalBoard& board, int colour) {
    Pawns p;
    p.colour = colour;
    p.own = menOf(board, colour, "P");
    p.enemy = menOf(board, 1 - colour, "P");
    p.attacks = attacksOf(board, colour, 'P', {});
    p.enemyAttacks = attacksOf(board, 1 - colour, 'P', {});
    for (int square : p.own) {
        bool first = true, doubled = false;
        for (int other : p.own)
            if (other != square && other % 8 == square % 8) {
                doubled = true;
                if (aheadOf(other, square, colour)) first = false;
            }
        if (first) p.front.insert(square);
        if (first && doubled) p.doubledFront.insert(square);
        if (!holdsFile(p.own, square % 8 - 1) && !holdsFile(p.own, square % 8 + 1)) p.isolated.insert(square);
        if (noPawnAhead(p.own, p.enemy, square, colour) && neverAttacked(p.enemy, square, 1 - colour))
            p.passed.insert(square);
    }
    return p;
}

static void findFacts(const EvalBoard& board, PawnFacts& facts) {
    const Squares white = menOf(board, White, "P"), black = menOf(board, Black, "P");
    const int whiteFile = kingOf(board, White) % 8, blackFile = kingOf(board, Black) % 8;
    if (whiteFile >= 4 && blackFile >= 4) facts.kingWing = 1;
    if (whiteFile < 4 && blackFile < 4) facts.kingWing = 2;
    for (int colour : {White, Black}) {
        int first = -1, last = -1;
        for (int file = 0; file < 8; ++file)
            if (holdsFile(colour == White ? white : black, file)) {
                if (first < 0) first = file;
                last = file;
            }
        at(facts.span, colour) = first < 0 ? 0 : last - first + 1;
    }
    // A file without any pawn counts for both sides.
    const Squares whiteMoved = filtered(white, [](int square) { return square / 8 != 1; });
    const Squares blackMoved = filtered(black, [](int square) { return square / 8 != 6; });
    int halfOpen = 0;
    for (int file = 0; file < 8; ++file) {
        const bool noWhite = !holdsFile(white, file), noBlack = !holdsFile(black, file);
        if (noWhite && noBlack) ++facts.openFiles;
        if (noWhite && !holdsFile(blackMoved, file)) ++halfOpen;
        if (noBlack && !holdsFile(whiteMoved, file)) ++halfOpen;
    }
    facts.fewOpenFiles = halfOpen < 2;
    for (int square : white)
        if (black.contains(square + 8)) ++facts.rams;
}

static void judgeDoubledAndIsolated(const Pawns& p, Sheet& sheet) {
    const int c = p.colour;
    sheet.add("doubledPawns", c, int(p.own.size() - p.front.size()) * Pair{-42, -65});
    sheet.add("doubledUnsupported", c, int(without(p.doubledFront, p.attacks).size()) * Pair{-36, -50});
    for (int square : p.isolated) {
        const bool closed = holdsFile(p.enemy, square % 8), front = p.doubledFront.contains(square);
        if (edgeFile(square)) {
            sheet.add(closed ? "isolatedEdgeClosed" : "isolatedEdgeOpen", c,
                      closed ? Pair{-31, -26} : Pair{-75, -87});
            if (front)
                sheet.add(closed ? "doubledIsolatedEdgeClosed" : "doubledIsolatedEdgeOpen", c,
                          closed ? Pair{-10, -5} : Pair{-18, -42});
        } else {
            sheet.add(closed ? "isolatedClosed" : "isolatedOpen", c,
                      closed ? Pair{-34, -40} : Pair{-121, -136});
            if (front)
                sheet.add(closed ? "doubledIsolatedClosed" : "doubledIsolatedOpen", c,
                          closed ? Pair{-14, -8} : Pair{-24, -47});
        }
    }
}

static void judgeCover(const Pawns& p, Sheet& sheet) {
    const int c = p.colour, step = forward(c);
    for (int square : p.attacks) {
        const int file = square % 8, rank = square / 8;
        const bool centre = file >= 2 && file <= 5 && rank >= 2 && rank <= 5;
        sheet.add(centre ? "pawnCoverCentre" : "pawnCoverEdge", c, centre ? Pair{9, 11} : Pair{6, 8});
    }
    for (int square : p.own) {
        const int r = relativeRank(square, c), file = square % 8;
        if ((r == 4 || r == 5) && p.enemyAttacks.contains(square)) sheet.add("pawnTension", c, {89, 78});
        if (p.attacks.contains(square)) sheet.add("pawnDefended", c, {48, 25});
        if (r == 1 && p.enemyAttacks.contains(square + step)) sheet.add("stopAttackedHome", c, {-11, -12});
        if (!besideOne(p.own, square)) continue;
        sheet.add("pawnPhalanx", c, {22, 22});
        // Worse without an enemy pawn on the key square: that is intended.
        if (r <= 3 && edgeFile(square) && !holdsFile(p.enemy, file)) {
            const int key = square + 2 * step + (file == 0 ? 1 : -1);
            sheet.add("edgePhalanx", c, p.enemy.contains(key) ? Pair{-1, -25} : Pair{-2, -50});
        }
    }
}

static void judgeBackward(const Pawns& p, Sheet& sheet) {
    const int c = p.colour;
    for (int square : p.own) {
        if (p.isolated.contains(square) || !neverAttacked(p.own, square, c)) continue;
        if (p.attacks.contains(square)) continue;
        // A neighbour does not help the front pawn of a doubled file.
        if (besideOne(p.own, square) && !p.doubledFront.contains(square)) continue;
        const int stop = square + forward(c);
        const bool attacked = p.enemyAttacks.contains(stop);
        if (attacked || p.own.contains(stop) || p.enemy.contains(stop))
            sheet.add(edgeFile(square) ? "backwardBlockedEdge" : "backwardBlocked", c,
                      edgeFile(square) ? Pair{-26, -25} : Pair{-30, -32});
        if (attacked && noPawnAhead(p.own, p.enemy, stop, c)) sheet.add("backwardExposed", c, {-55, -86});
    }
}

static void judgePassed(const EvalBoard& board, const Pawns& p, PawnFacts& facts, Sheet& sheet) {
    static constexpr Pair base[8] = {{0, 0},     {28, 47},   {28, 47},     {127, 188},
                                     {325, 470}, {622, 893}, {1018, 1457}, {0, 0}};
    static constexpr int byFile[8] = {60, 20, -20, -60, -60, -20, 20, 60};
    const int c = p.colour, ownKing = kingOf(board, c), enemyKing = kingOf(board, 1 - c);
    for (int square : p.passed) {
        const int r = relativeRank(square, c), stop = square + forward(c);
        at(facts.passed, c).push_back(square);
        if (besideOne(p.own, square) || p.attacks.contains(square))
            sheet.add("supportedPasser", c, {base[r].mg / 4, base[r].eg / 4});
        sheet.add("passerFile", c, {0, byFile[square % 8]});
        if (r < 3) continue;
        sheet.add("passerOwnKing", c,
                  {0, kingDistanceValue(KingDistance::PasserOwn, r - 1, distance(stop, ownKing))});
        sheet.add("passerEnemyKing", c,
                  {0, kingDistanceValue(KingDistance::PasserEnemy, r - 1, distance(stop, enemyKing))});
        // A king near the promotion square earns this for its own side, whoever's pawn it is.
        const int promotion = square % 8 + (c == White ? 56 : 0);
        if (distance(ownKing, promotion) <= 1) sheet.add("kingAtPromotion", c, {0, 129});
        if (distance(enemyKing, promotion) <= 1) sheet.add("kingAtPromotion", 1 - c, {0, 129});
    }
    if (p.passed.size() >= 2) sheet.add("severalPassers", c, {33, 128});
}

static void judgeCandidates(const EvalBoard& board, const Pawns& p, Sheet& sheet) {
    // By relative rank less 1; a candidate gets 65 percent of a passed pawn's value.
    static constexpr Pair base[6] = {{42, 34}, {42, 68}, {84, 170}, {252, 340}, {504, 578}, {840, 884}};
    const int c = p.colour, ownKing = kingOf(board, c), enemyKing = kingOf(board, 1 - c);
    for (int square : p.front) {
        if (p.passed.contains(square) || !noPawnAhead(p.own, p.enemy, square, c)) continue;
        int free = 0, sentries = 0;
        for (int file : {square % 8 - 1, square % 8 + 1})
            if (file >= 0 && file < 8 && !p.enemy.contains(square / 8 * 8 + file)) ++free;
        for (int enemy : p.enemy)
            if (std::abs(enemy % 8 - square % 8) == 1 && aheadOf(enemy, square, c)) ++sentries;
        if (sentries > free) continue;
        const int r = relativeRank(square, c), stop = square + forward(c);
        const Pair full = base[std::max(0, r - 1)];
        sheet.add("candidate", c, {full.mg * 65 / 100, full.eg * 65 / 100});
        if (r < 3) continue;
        sheet.add("candidateOwnKing", c,
                  {0, kingDistanceValue(KingDistance::CandidateOwn, r - 1, distance(stop, ownKing))});
        sheet.add("candidateEnemyKing", c,
                  {0, kingDistanceValue(KingDistance::CandidateEnemy, r - 1, distance(stop, enemyKing))});
    }
}

// The file in the middle of the three that shelter a king: never a file of the edge.
static int shelterMiddle(int king) { return std::min(std::max(king % 8, 1), 6); }

static bool onShelterFiles(int square, int king) { return std::abs(square % 8 - shelterMiddle(king)) <= 1; }

// Middlegame value of own pawns before a king on the square and of enemy pawns on their way to it. With the
// limit set, own pawns behind the king count nothing.
static int shelterValue(const Pawns& p, int king, bool limit) {
    static constexpr int shelter[8] = {0, 240, 200, 80, 40, 0, 0, 0};
    static constexpr int open[8] = {-18, 0, 0, -36, -108, -360, -117, 0};
    static constexpr int blocked[8] = {-14, 0, 0, -28, -84, -280, -91, 0};
    static constexpr int other[8] = {-16, 0, 0, -32, -96, -320, -104, 0};
    static constexpr int enemyFiles[4] = {-54, -36, -18, 0};
    const int c = p.colour, middle = shelterMiddle(king);
    int value = 0, files = 0;
    for (int square : p.own)
        if (onShelterFiles(square, king) && !(limit && aheadOf(king, square, c)))
            value += shelter[relativeRank(square, c)] * (square % 8 == middle ? 2 : 1);
    for (int square : p.enemy) {
        if (!onShelterFiles(square, king) || square == king + forward(c)) continue;
        const int r = relativeRank(square, 1 - c);
        bool ownBelow = false;
        for (int own : p.own)
            if (aheadOf(square, own, c)) ownBelow = true;
        if (!ownBelow)
            value += open[r];
        else
            value += p.own.contains(square - forward(c)) ? blocked[r] : other[r];
    }
    for (int file = middle - 1; file <= middle + 1; ++file)
        if (holdsFile(p.enemy, file)) ++files;
    return value + enemyFiles[files];
}

static void judgeShelter(const EvalBoard& board, const Pawns& p, PawnFacts& facts, Sheet& sheet) {
    const int c = p.colour, king = kingOf(board, c);
    int value = shelterValue(p, king, true);
    // Castling long is not looked at: that is intended.
    if (at(board.castlesShort, c)) value = std::max(value, shelterValue(p, c == White ? 6 : 62, false));
    sheet.add("shelter", c, {value, 0});
    // Stormers count against the king where it stands, castled in thought or not.
    int stormers = 0;
    for (int square : p.enemy) {
        const int r = relativeRank(square, c);
        if (onShelterFiles(square, king) && (r == 2 || r == 3)) ++stormers;
    }
    at(facts.shelterUnits, c) = value / 220 - stormers;
}

static void judgeKing(const EvalBoard& board, const Pawns& p, Sheet& sheet) {
    const int c = p.colour, king = kingOf(board, c), file = king % 8;
    const Squares all = joined(p.own, p.enemy);
    if (!all.empty()) {
        int files = 0;
        for (int square : all) files += square % 8;
        sheet.add("kingFromPawnMass", c, {0, -15 * std::abs(files / int(all.size()) - file)});
    }
    if (relativeRank(king, c) == 0) {
        bool shut = true;
        for (int next = std::max(0, file - 1); next <= std::min(7, file + 1); ++next)
            if (!p.own.contains(king / 8 * 8 + next + forward(c))) shut = false;
        if (shut) sheet.add("shutInKing", c, {-63, -173});
    }
    if (p.enemy.contains(king - forward(c))) sheet.add("enemyPawnBehindKing", c, {0, 27});
    const int group = file <= 2 ? 0 : file <= 4 ? 2 : 4;
    bool pawnNear = false;
    for (int next = group; next < group + 4; ++next)
        if (holdsFile(all, next)) pawnNear = true;
    if (!pawnNear) sheet.add("kingAwayFromPawns", c, {-50, -200});
}

PawnFacts judgePawns(const EvalBoard& board, Sheet& sheet) {
    PawnFacts facts;
    findFacts(board, facts);
    for (int colour : {White, Black}) {
        const Pawns pawns = pawnsOf(board, colour);
        judgeDoubledAndIsolated(pawns, sheet);
        judgeCover(pawns, sheet);
        judgeBackward(pawns, sheet);
        judgePassed(board, pawns, facts, sheet);
        judgeCandidates(board, pawns, sheet);
        judgeShelter(board, pawns, facts, sheet);
        judgeKing(board, pawns, sheet);
    }
    return facts;
}

}  // namespace slow
