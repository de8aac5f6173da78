// Pawn structure: one score and a set of facts for each pawn-and-king structure, computed once and cached.
#include "eval/pawns.h"

#include "board/thread_hooks.h"
#include "eval/caches.h"
#include "eval/eval_info.h"
#include "eval/king_shelter.h"
#include "eval/parameters.h"
#include "eval/weights_king.h"
#include "eval/weights_pawns.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstdlib>

namespace {

constexpr Bitboard EdgeFiles = FileA | FileH;
constexpr Bitboard CentreBlock = 0x00003c3c3c3c0000ULL;  // c3 to f6

// By the files that a side's pawns stand on, as eight bits: the last minus the first, plus 1; 0 for none.
constexpr std::array<std::uint8_t, 256> makePawnSpan() {
    std::array<std::uint8_t, 256> table{};
    for (unsigned files = 1; files < 256; ++files)
        table[files] = std::uint8_t(int(std::bit_width(files)) - std::countr_zero(files));
    return table;
}
constexpr std::array<std::uint8_t, 256> PawnSpan = makePawnSpan();

// Sets of squares for each colour; ahead means towards the enemy's first rank.
struct PawnMaps {
    Bitboard pawns[2];
    Bitboard attacks[2];        // squares attacked by the pawns
    Bitboard fileFill[2];       // files that hold a pawn
    Bitboard isolatedFiles[2];  // files with no pawn of the colour beside them
    Bitboard neighbours[2];     // squares directly beside a pawn
    Bitboard noPawnAhead[2];    // no own pawn strictly ahead and no enemy pawn on or ahead of the square
    Bitboard neverAttacked[2];  // squares that the pawns neither attack nor can attack by advancing
};

template <Colour us>
void fillMaps(PawnMaps& maps) {
    constexpr Colour them = opponent(us);
    const Bitboard own = maps.pawns[us];
    maps.attacks[us] = pawnAttacks<us>(own);
    maps.fileFill[us] = fillUp(fillDown(own));
    maps.isolatedFiles[us] = ~besides(maps.fileFill[us]);
    maps.neighbours[us] = besides(own);
    maps.noPawnAhead[us] = ~(fillAhead<them>(pawnPushes<them>(own)) | fillAhead<them>(maps.pawns[them]));
    maps.neverAttacked[us] = ~fillAhead<us>(maps.attacks[us]);
}

// The files that hold a square of the set, as eight bits.
unsigned filesOf(Bitboard set) { return unsigned(fillDown(set) & 0xff); }

// Facts about the whole board that later stages read.
void noteFacts(const Position& pos, const PawnMaps& maps, PawnEntry& entry) {
    constexpr int WestEnd = 3;  // the d-file
    const int whiteFile = fileOf(pos.kingSquare(White));
    const int blackFile = fileOf(pos.kingSquare(Black));
    const bool bothEast = whiteFile > WestEnd && blackFile > WestEnd;
    const bool bothWest = whiteFile <= WestEnd && blackFile <= WestEnd;
    entry.kingWing = bothEast ? 1 : bothWest ? 2 : 0;

    const unsigned whiteFiles = filesOf(maps.pawns[White]);
    const unsigned blackFiles = filesOf(maps.pawns[Black]);
    entry.span[White] = PawnSpan[whiteFiles];
    entry.span[Black] = PawnSpan[blackFiles];
    entry.openFiles = std::uint8_t(8 - std::popcount(whiteFiles | blackFiles));

    // A file is as good as open to a side while the other's pawns on it, if any, are still at home. Intended:
    // a file without any pawn counts for both sides.
    const unsigned blackAdvanced = filesOf(maps.pawns[Black] & ~relativeRankMask(Black, 1));
    const unsigned whiteAdvanced = filesOf(maps.pawns[White] & ~relativeRankMask(White, 1));
    const int nearlyOpen = std::popcount(0xffu & ~(whiteFiles | blackAdvanced)) +
                           std::popcount(0xffu & ~(blackFiles | whiteAdvanced));
    entry.fewOpenFiles = nearlyOpen < 2;
    entry.rams = std::uint8_t(popcount(pawnPushes<White>(maps.pawns[White]) & maps.pawns[Black]));
}

// Both kings should stand near the middle of all pawns.
void kingDistanceFromPawns(const Position& pos, const PawnMaps& maps, Lanes acc[2]) {
    const Bitboard pawns = maps.pawns[White] | maps.pawns[Black];
    if (!pawns) return;
    // The files' numbers by their bits.
    constexpr Bitboard Odd = 0xaaaaaaaaaaaaaaaaULL, Twos = 0xccccccccccccccccULL;
    const int fileSum = popcount(pawns & Odd) + 2 * popcount(pawns & Twos) + 4 * popcount(pawns & ~WestFiles);
    const int average = fileSum / popcount(pawns);
    for (const Colour colour : {White, Black})
        acc[colour] += at(KingFilesFromPawns, std::abs(average - fileOf(pos.kingSquare(colour))));
}

template <Colour us>
Lanes tension(const PawnMaps& maps) {
    const Bitboard farHalf = relativeRankMask(us, 4) | relativeRankMask(us, 5);
    return at(PawnTension, popcount(maps.pawns[us] & farHalf & maps.attacks[opponent(us)]));
}

// Doubled pawns, on one file; the frontmost of them suffers most when nothing defends it.
template <Colour us>
Lanes doubledPawns(const PawnMaps& maps, Bitboard doubledFront) {
    const Bitboard own = maps.pawns[us];
    const int extra = popcount(own) - std::popcount(filesOf(own));
    return at(DoubledPawns, extra) + at(DoubledUnsupported, popcount(doubledFront & ~maps.attacks[us]));
}

// Isolated pawns have no own pawn on the files beside them.
template <Colour us>
Lanes isolatedPawns(const PawnMaps& maps, Bitboard doubledFront) {
    const Bitboard closed = maps.fileFill[opponent(us)];
    const Bitboard isolated = maps.pawns[us] & maps.isolatedFiles[us];
    Lanes sum = at(IsolatedEdgeClosed, popcount(isolated & EdgeFiles & closed)) +
                at(IsolatedEdgeOpen, popcount(isolated & EdgeFiles & ~closed)) +
                at(IsolatedClosed, popcount(isolated & ~EdgeFiles & closed)) +
                at(IsolatedOpen, popcount(isolated & ~EdgeFiles & ~closed));
    if (const Bitboard front = isolated & doubledFront)
        sum += at(DoubledIsolatedEdgeClosed, popcount(front & EdgeFiles & closed)) +
               at(DoubledIsolatedEdgeOpen, popcount(front & EdgeFiles & ~closed)) +
               at(DoubledIsolatedClosed, popcount(front & ~EdgeFiles & closed)) +
               at(DoubledIsolatedOpen, popcount(front & ~EdgeFiles & ~closed));
    return sum;
}

// A pair of neighbours on the edge of an enemy-free file in the own half, which one enemy pawn can hold.
template <Colour us>
Lanes edgePhalanxes(const PawnMaps& maps) {
    const Bitboard pawns =
        maps.pawns[us] & maps.neighbours[us] & OwnHalf<us> & ~maps.fileFill[opponent(us)] & EdgeFiles;
    Lanes sum;
    forEachSquare(pawns, [&](int square) {
        const int inward = fileOf(square) == 0 ? 1 : -1;
        const int keySquare = square + 2 * pawnStep(us) + inward;
        // Intended: the phalanx costs more while the key square is empty.
        sum += maps.pawns[opponent(us)] & bit(keySquare) ? EdgePhalanxHeld : EdgePhalanxFree;
    });
    return sum;
}

// Backward pawns: no own pawn can ever defend them, and whose neighbours have gone ahead.
template <Colour us>
Lanes backwardPawns(const PawnMaps& maps, Bitboard doubledFront) {
    constexpr Colour them = opponent(us);
    const Bitboard own = maps.pawns[us];
    // The front pawn of a doubled pair gets no help from a neighbour.
    const Bitboard unsupported = ~maps.attacks[us] & (doubledFront | ~maps.neighbours[us]);
    const Bitboard backward = own & ~maps.isolatedFiles[us] & maps.neverAttacked[us] & unsupported;
    const Bitboard stops = pawnPushes<us>(backward);
    const Bitboard blocked = stops & (own | maps.pawns[them] | maps.attacks[them]);
    const Bitboard homeStops = pawnPushes<us>(own & relativeRankMask(us, 1));
    return at(BackwardBlockedEdge, popcount(blocked & EdgeFiles)) +
           at(BackwardBlocked, popcount(blocked & ~EdgeFiles)) +
           at(BackwardExposed, popcount(stops & maps.attacks[them] & maps.noPawnAhead[us])) +
           at(StopAttackedHome, popcount(homeStops & maps.attacks[them]));
}

// Passed pawns, as far as pawns and kings alone decide their worth; their squares are noted in the entry.
template <Colour us>
void passedPawns(const Position& pos, const PawnMaps& maps, Bitboard passers, PawnEntry& entry,
                 Lanes acc[2]) {
    constexpr Colour them = opponent(us);
    const int ownKing = pos.kingSquare(us);
    const int enemyKing = pos.kingSquare(them);
    const Bitboard supported = maps.neighbours[us] | maps.attacks[us];
    int count = 0;
    forEachSquare(passers, [&](int square) {
        const int rank = relativeRank(us, square);
        if (supported & bit(square)) acc[us] += SupportedPasser[rank];
        entry.passed[us][count++] = std::uint8_t(square);
        acc[us] += PasserFile[fileOf(square)];
        if (rank < 3) return;
        const int stop = square + pawnStep(us);
        acc[us] += PasserOwnKing[rank - 1][squareDistance(stop, ownKing)] +
                   PasserEnemyKing[rank - 1][squareDistance(stop, enemyKing)];
        const int promotion = makeSquare(fileOf(square), us == White ? 7 : 0);
        if (squareDistance(ownKing, promotion) <= 1) acc[us] += KingAtPromotion;
        if (squareDistance(enemyKing, promotion) <= 1) acc[them] += KingAtPromotion;
    });
    if (count >= 2) acc[us] += SeveralPassers;
}

// Candidate passed pawns: with a free file they may become passed because their sentries are no more than the
// files to help on.
template <Colour us>
Lanes candidates(const Position& pos, const PawnMaps& maps, Bitboard pawns) {
    constexpr Colour them = opponent(us);
    const Bitboard enemies = maps.pawns[them];
    Lanes sum;
    forEachSquare(pawns, [&](int square) {
        const SquareTable& ahead = us == White ? adjacentAbove : adjacentBelow;
        const Bitboard besidePawn = besides(bit(square));
        // Own pawns play no part in the count of files.
        const int freeFiles = popcount(besidePawn) - popcount(besidePawn & enemies);
        if (popcount(enemies & ahead[std::size_t(square)]) > freeFiles) return;
        const int rank = relativeRank(us, square);
        sum += CandidateBonus[std::size_t(rank)];
        if (rank < 3) return;
        const int stop = square + pawnStep(us);
        sum += CandidateOwnKing[rank - 1][squareDistance(stop, pos.kingSquare(us))] +
               CandidateEnemyKing[rank - 1][squareDistance(stop, pos.kingSquare(them))];
    });
    return sum;
}

template <Colour us>
void evaluateSide(const Position& pos, const PawnMaps& maps, PawnEntry& entry, Lanes acc[2]) {
    constexpr Colour them = opponent(us);
    const Bitboard own = maps.pawns[us];
    const Bitboard front = own & ~fillAhead<them>(pawnPushes<them>(own));
    const Bitboard doubledFront = front & fillAhead<us>(pawnPushes<us>(own));
    const Bitboard cover = maps.attacks[us];

    acc[us] += doubledPawns<us>(maps, doubledFront);
    acc[us] += at(PawnCoverEdge, popcount(cover & ~CentreBlock)) +
               at(PawnCoverCentre, popcount(cover & CentreBlock));
    acc[us] += isolatedPawns<us>(maps, doubledFront);
    acc[us] += at(PawnPhalanx, popcount(own & maps.neighbours[us])) + at(PawnDefended, popcount(own & cover));
    acc[us] += edgePhalanxes<us>(maps);
    acc[us] += backwardPawns<us>(maps, doubledFront);

    const Bitboard passers = own & maps.noPawnAhead[us] & maps.neverAttacked[them];
    passedPawns<us>(pos, maps, passers, entry, acc);
    acc[us] += candidates<us>(pos, maps, front & maps.noPawnAhead[us] & ~passers);
}

// The king's own troubles with pawns: shut in behind them, an enemy pawn at its back, or none anywhere near.
template <Colour us>
Lanes kingAmongPawns(const Position& pos, const PawnMaps& maps) {
    const int king = pos.kingSquare(us);
    const int file = fileOf(king);
    Lanes sum;
    const Bitboard front = pawnPushes<us>(bit(king) | besides(bit(king)));
    if (relativeRank(us, king) == 0 && !(front & ~maps.pawns[us])) sum += ShutInKing;
    if (pawnPushes<opponent(us)>(bit(king)) & maps.pawns[opponent(us)]) sum += EnemyPawnBehindKing;
    const int firstFile = file <= 2 ? 0 : file <= 4 ? 2 : 4;
    const Bitboard group = WestFiles << firstFile;  // four files that hold the king's
    if (!(group & (maps.pawns[White] | maps.pawns[Black]))) sum += KingAwayFromPawns;
    return sum;
}

}  // namespace

// Out of line: most structures are found in the cache.
[[gnu::noinline]] void judgePawns(const Position& pos, PawnEntry& entry, Lanes (&acc)[2]) {
    PawnMaps maps;
    maps.pawns[White] = pos.pieces[White][Pawn];
    maps.pawns[Black] = pos.pieces[Black][Pawn];
    fillMaps<White>(maps);
    fillMaps<Black>(maps);

    entry = PawnEntry{};
    entry.key = pos.pawnKey;
    noteFacts(pos, maps, entry);

    acc[White] = acc[Black] = Lanes{};
    acc[White] += tension<White>(maps);
    acc[Black] += tension<Black>(maps);
    kingDistanceFromPawns(pos, maps, acc);
    evaluateSide<White>(pos, maps, entry, acc);
    evaluateSide<Black>(pos, maps, entry, acc);
    kingShelter<White>(pos, entry, acc[White]);
    kingShelter<Black>(pos, entry, acc[Black]);
    acc[White] += kingAmongPawns<White>(pos, maps);
    acc[Black] += kingAmongPawns<Black>(pos, maps);
    entry.score = acc[White] - acc[Black];
}

Lanes evaluatePawns(const Position& pos, PawnEntry*& entry) {
    entry = &pos.pawnHash[pos.pawnKey & prefetchBases.pawnMask];
    if (entry->key != pos.pawnKey) {
        Lanes sums[2];
        judgePawns(pos, *entry, sums);
    }
    return entry->score;
}
