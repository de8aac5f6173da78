// The slow evaluation's pawn stage, with the shelter and storm of both kings.
#include "support/slow_eval.h"

#include <algorithm>
#include <cstdlib>

namespace slow {

int distanceValue(int factor, int row, int steps) {
    static constexpr double weight[9] = {0, 0, 0.43, 1.01, 1.3, 1.5, 1.53, 1.55, 1.57};
    return int(factor * ((row - 1) * row * weight[steps]) + 0.5);
}

// In percent of what the distances of both kings are worth to a passed pawn.
static void judgeKingDistances(const Army& us, const Army& them, const std::string& name, int pawn,
                               int percent) {
    static constexpr int base[9] = {390, 270, 180, 120, 90, 60, 30, 0, 0};
    const int row = us.rank(pawn) - 1, stop = us.ahead(pawn);
    const int own = distance(stop, us.king), enemy = distance(stop, them.king);
    us.add(name + "OwnKing", {0, (base[own] + distanceValue(-28, row, own)) * percent / 100});
    us.add(name + "EnemyKing", {0, (distanceValue(72, row, enemy) - base[enemy]) * percent / 100});
}

static bool onEdge(int square) { return fileOf(square) == 0 || fileOf(square) == 7; }

// The one or two squares beside it on its rank.
static Squares besides(int square) {
    return attacksFrom('K', square, {}).where([=](int to) { return to / 8 == square / 8; });
}

// No own pawn strictly ahead on the file, and none of the enemy's on the square or ahead.
static bool noPawnAhead(const Army& us, const Army& them, int square) {
    return !meet(us.fileAhead(square), us.pawns | them.pawns) && !them.pawns.contains(square);
}

// Own pawns without another ahead on the file, and those of them with another behind.
static Squares frontPawns(const Army& us) {
    return us.pawns.where([&](int pawn) { return !meet(us.fileAhead(pawn), us.pawns); });
}
static Squares doubledFront(const Army& us, const Army& them) {
    return frontPawns(us).where([&](int pawn) { return meet(them.fileAhead(pawn), us.pawns); });
}

static bool isIsolated(const Army& us, int pawn) {
    return !us.pawns.holdsFile(fileOf(pawn) - 1) && !us.pawns.holdsFile(fileOf(pawn) + 1);
}

static void judgeDoubledAndIsolated(const Army& us, const Army& them) {
    // By whether it is a file of the edge, and whether an enemy pawn closes it.
    static constexpr Pair isolated[2][2] = {{{-121, -136}, {-34, -40}}, {{-75, -87}, {-31, -26}}};
    static constexpr Pair both[2][2] = {{{-24, -47}, {-14, -8}}, {{-18, -42}, {-10, -5}}};
    const Squares front = frontPawns(us), doubled = doubledFront(us, them);
    us.add("doubledPawns", countOf(us.pawns - front) * Pair{-42, -65});
    us.add("doubledUnsupported", countOf(doubled - us.byPawns) * Pair{-36, -50});
    for (const int pawn : us.pawns) {
        if (!isIsolated(us, pawn)) continue;
        const bool edge = onEdge(pawn), closed = them.pawns.holdsFile(fileOf(pawn));
        const std::string kind = std::string(edge ? "Edge" : "") + (closed ? "Closed" : "Open");
        us.add("isolated" + kind, isolated[edge][closed]);
        if (doubled.contains(pawn)) us.add("doubledIsolated" + kind, both[edge][closed]);
    }
}

static void judgeCover(const Army& us, const Army& them) {
    for (const int square : us.byPawns) {
        const int file = fileOf(square), rank = square / 8;
        const bool centre = file >= 2 && file <= 5 && rank >= 2 && rank <= 5;
        us.add(centre ? "pawnCoverCentre" : "pawnCoverEdge", centre ? Pair{9, 11} : Pair{6, 8});
    }
    for (const int pawn : us.pawns) {
        const int rank = us.rank(pawn), stop = us.ahead(pawn);
        if ((rank == 4 || rank == 5) && them.byPawns.contains(pawn)) us.add("pawnTension", {89, 78});
        if (us.byPawns.contains(pawn)) us.add("pawnDefended", {48, 25});
        if (rank == 1 && them.byPawns.contains(stop)) us.add("stopAttackedHome", {-11, -12});
        if (!meet(besides(pawn), us.pawns)) continue;
        us.add("pawnPhalanx", {22, 22});
        // Worse without an enemy pawn on the key square: that is intended.
        if (rank <= 3 && onEdge(pawn) && !them.pawns.holdsFile(fileOf(pawn))) {
            const int key = us.ahead(stop) + (fileOf(pawn) == 0 ? 1 : -1);
            us.add("edgePhalanx", them.pawns.contains(key) ? Pair{-1, -25} : Pair{-2, -50});
        }
    }
}

static void judgeBackward(const Army& us, const Army& them) {
    const Squares doubled = doubledFront(us, them);
    for (const int pawn : us.pawns) {
        if (isIsolated(us, pawn) || us.mayEverAttack(pawn)) continue;
        // A neighbour does not help the front pawn of a doubled file.
        if (meet(besides(pawn), us.pawns) && !doubled.contains(pawn)) continue;
        const int stop = us.ahead(pawn);
        const bool attacked = them.byPawns.contains(stop);
        if (attacked || (us.pawns | them.pawns).contains(stop))
            us.add(onEdge(pawn) ? "backwardBlockedEdge" : "backwardBlocked",
                   onEdge(pawn) ? Pair{-26, -25} : Pair{-30, -32});
        if (attacked && noPawnAhead(us, them, stop)) us.add("backwardExposed", {-55, -86});
    }
}

static void judgePassed(const Army& us, const Army& them) {
    static constexpr Pair base[8] = {{0, 0},     {28, 47},   {28, 47},     {127, 188},
                                     {325, 470}, {622, 893}, {1018, 1457}, {0, 0}};
    static constexpr int byFile[8] = {60, 20, -20, -60, -60, -20, 20, 60};
    if (us.passed.size() >= 2) us.add("severalPassers", {33, 128});
    for (const int pawn : us.passed) {
        const int rank = us.rank(pawn);
        if (meet(besides(pawn), us.pawns) || us.byPawns.contains(pawn))
            us.add("supportedPasser", {base[rank].mg / 4, base[rank].eg / 4});
        us.add("passerFile", {0, byFile[fileOf(pawn)]});
        if (rank < 3) continue;
        judgeKingDistances(us, them, "passer", pawn, 100);
        // A king near the promotion square earns this for its own side, whoever's pawn it is.
        const int promotion = fileOf(pawn) + (us.colour == White ? 56 : 0);
        for (const Army* side : {&us, &them})
            if (distance(side->king, promotion) <= 1) side->add("kingAtPromotion", {0, 129});
    }
}

// Pawns with a free file and no more sentries beside it than files to help on.
static void judgeCandidates(const Army& us, const Army& them) {
    for (const int pawn : us.pawns) {
        if (us.passed.contains(pawn) || !noPawnAhead(us, them, pawn)) continue;
        const Squares sentries = them.pawns.where([&](int enemy) {
            return std::abs(fileOf(enemy) - fileOf(pawn)) == 1 && us.rank(enemy) > us.rank(pawn);
        });
        if (countOf(sentries) > countOf(besides(pawn) - them.pawns)) continue;
        const Pair full = passerValue(us.rank(pawn) - 1);
        us.add("candidate", {full.mg * 65 / 100, full.eg * 65 / 100});
        if (us.rank(pawn) >= 3) judgeKingDistances(us, them, "candidate", pawn, 65);
    }
}

// The file in the middle of the three that shelter a king: never a file of the edge.
static int shelterMiddle(int king) { return std::clamp(fileOf(king), 1, 6); }

static Squares onShelterFiles(const Squares& pawns, int king) {
    return pawns.where([=](int pawn) { return std::abs(fileOf(pawn) - shelterMiddle(king)) <= 1; });
}

// Middlegame value of own pawns before a king on the square and of enemy pawns on their way to it. With the
// limit set, own pawns behind the king count nothing.
static int shelterValue(const Army& us, const Army& them, int king, bool limit) {
    static constexpr int shelter[8] = {0, 240, 200, 80, 40, 0, 0, 0};
    static constexpr int storm[8] = {-2, 0, 0, -4, -12, -40, -13, 0};  // by the enemy's own ranks
    const int middle = shelterMiddle(king);
    const Squares storming = onShelterFiles(them.pawns, king);
    int value = 0;
    for (const int pawn : onShelterFiles(us.pawns, king))
        if (!limit || us.rank(pawn) >= us.rank(king))
            value += shelter[us.rank(pawn)] * (fileOf(pawn) == middle ? 2 : 1);
    for (const int pawn : storming - Squares{us.ahead(king)}) {
        const Squares below = us.pawns.where([&](int own) { return us.rank(own) < us.rank(pawn); });
        const int weight = below.empty() ? 9 : below.contains(them.ahead(pawn)) ? 7 : 8;
        value += weight * storm[them.rank(pawn)];
    }
    for (int file = middle - 1; file <= middle + 1; ++file)
        if (!storming.holdsFile(file)) value -= 18;
    return value;
}

static void judgeShelter(Army& us, const Army& them) {
    int value = shelterValue(us, them, us.king, true);
    // Castling long is not looked at: that is intended.
    if (us.board.castlesShort[us.colour])
        value = std::max(value, shelterValue(us, them, us.colour == White ? 6 : 62, false));
    us.add("shelter", {value, 0});
    // Stormers count against the king where it stands, castled in thought or not.
    const auto isClose = [&](int pawn) { return us.rank(pawn) == 2 || us.rank(pawn) == 3; };
    us.shelterUnits = value / 220 - countOf(onShelterFiles(them.pawns, us.king).where(isClose));
}

static void judgeKing(const Army& us, const Army& them) {
    const int file = fileOf(us.king);
    const Squares all = us.pawns | them.pawns;
    int files = 0;
    for (const int pawn : all) files += fileOf(pawn);
    if (!all.empty()) us.add("kingFromPawnMass", {0, -15 * std::abs(files / countOf(all) - file)});
    const auto onSecond = [&](int square) { return us.rank(square) == 1; };
    if (us.rank(us.king) == 0 && (us.byKing.where(onSecond) - us.pawns).empty())
        us.add("shutInKing", {-63, -173});
    if (them.pawns.contains(them.ahead(us.king))) us.add("enemyPawnBehindKing", {0, 27});
    const int first = file <= 2 ? 0 : file <= 4 ? 2 : 4;
    const auto isNear = [&](int pawn) { return fileOf(pawn) >= first && fileOf(pawn) < first + 4; };
    if (all.where(isNear).empty()) us.add("kingAwayFromPawns", {-50, -200});
}

void judgePawns(Army& us, Army& them) {
    us.passed =
        us.pawns.where([&](int pawn) { return noPawnAhead(us, them, pawn) && !them.mayEverAttack(pawn); });
    judgeDoubledAndIsolated(us, them);
    judgeCover(us, them);
    judgeBackward(us, them);
    judgePassed(us, them);
    judgeCandidates(us, them);
    judgeShelter(us, them);
    judgeKing(us, them);
}

}  // namespace slow
