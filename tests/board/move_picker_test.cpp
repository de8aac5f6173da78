// The staged pickers against a plain account of what they hand out: from which stage, in which order, and
// what they put off.
#include "board/move_picker.h"

#include "board/exchange.h"
#include "board/fen.h"
#include "board/legality.h"
#include "board/movegen.h"
#include "support/board_environment.h"

#include <algorithm>
#include <random>
#include <set>

struct Picked {
    Move move;
    std::uint32_t stage;
    bool operator==(const Picked&) const = default;
};

static std::ostream& operator<<(std::ostream& out, const Picked& picked) {
    return out << std::hex << picked.move << std::dec << " from stage " << picked.stage;
}

struct PickerSetup {
    std::uint32_t kind = KindFull;
    int depth = 10;  // half plies
    Move hash = NoMove, killer1 = NoMove, killer2 = NoMove, counter = NoMove;
    bool deferCaptures = false;  // of the quiescence search
};

static void start(MovePicker& picker, const Position& pos, const PickerSetup& setup) {
    picker.start(pos, setup.kind, setup.depth, setup.hash, setup.killer1, setup.killer2, setup.counter);
    picker.deferBad = setup.deferCaptures;
}

static std::vector<Picked> drain(const Position& pos, const PickerSetup& setup, Move (*next)(MovePicker*)) {
    MovePicker picker;
    start(picker, pos, setup);
    std::vector<Picked> picked;
    while (const Move move = next(&picker)) picked.push_back({move, picker.stage});
    EXPECT_EQ(next(&picker), NoMove) << "the end is not the end";
    return picked;
}

// By kind. What a row without a deferred stage puts off never comes back.
static const std::vector<std::uint32_t> StagesOfKind[14] = {
    {1, 2, 3, 4, 5, 6, 10},
    {1, 2, 8, 10},
    {1, 2, 8},
    {1, 2},
    {1, 7},
    {1, 2, 8, 9},
    {1, 2, 8, 9, 10},
    {1, 13},
    {1, 13, 12, 14},
    {1, 13, 12, 14},
    {1, 13, 12, 14},
    {1, 13, 15},
    {1, 2, 3, 5, 8, 9},
    {1, 2, 3, 5, 8, 9, 10},
};

static int evasionKey(const Position& pos, const PickerSetup& setup, Move move) {
    const int victim = pos.board[toOf(move)];
    const int attacker = pos.board[fromOf(move)];
    if (flagOf(move) == EnPassant) return 30000;
    if (flagOf(move) >= QueenPromotion) return 31000;
    if (victim) return 30000 + 16 * typeOfCode(victim) - 2 * typeOfCode(attacker);
    if (move == setup.killer1) return 29000;
    return move == setup.killer2 ? 28000 : quietStat(pos, move) / 8;
}

// The list of a stage as its generator wrote it, in the order in which it must come.
static std::vector<Move> orderedList(const Position& pos, const PickerSetup& setup, std::uint32_t stage) {
    std::vector<Move> words;
    switch (stage) {
        case StageCaptures:
        case StageQuiescenceCaptures: words = listOf(pos, genCaptures); break;
        case StageQuiets: words = listOf(pos, genQuiets); break;
        case StageEvasions:
            words = listOf(pos, genEvasions);
            for (Move& word : words) word = withKey(word, evasionKey(pos, setup, word));
            break;
        case StageQuietChecks:
        case StageQuiescenceChecks:
            words = listOf(pos, genQuietChecks);
            for (Move& word : words) word = withKey(word, quietStat(pos, word) / 4);
            break;
        case StageQueenChecks: words = listOf(pos, genQueenChecks); break;
        default: words = listOf(pos, genPawnPushesToSeventh);
    }
    std::stable_sort(words.begin(), words.end(),
                     [](Move a, Move b) { return std::int16_t(a >> 16) > std::int16_t(b >> 16); });
    for (Move& word : words) word = cleanMove(word);
    return words;
}

static bool putsOff(const PickerSetup& setup, std::uint32_t stage) {
    switch (stage) {
        case StageQuiets: return setup.depth >= 12;
        case StageQuiescenceCaptures:
        case StageQueenChecks: return setup.deferCaptures;
        default: return stage != StageEvasions && stage != StageDeferred;
    }
}

static std::vector<Picked> expectedPicks(const Position& pos, const PickerSetup& setup) {
    std::vector<Picked> picks;
    std::vector<Move> putOff;
    std::set<Move> singles;  // what stages of one move gave; no other stage gives it again
    // A killer that has become a capture has come already. Intended: the counter move may come twice.
    const auto giveSingle = [&](Move move, std::uint32_t stage, bool mayCapture) {
        if (!isValidMove(pos, move) || singles.count(move)) return;
        if (!mayCapture && pos.board[toOf(move)] != NoPiece && !isCastling(move)) return;
        singles.insert(move);
        picks.push_back({move, stage});
    };
    for (const std::uint32_t stage : StagesOfKind[setup.kind]) {
        if (stage == StageHash) giveSingle(setup.hash, stage, true);
        if (stage == StageKiller1) giveSingle(setup.killer1, stage, false);
        if (stage == StageKiller2) giveSingle(setup.killer2, stage, false);
        if (stage == StageCounter) giveSingle(setup.counter, stage, true);
        if (stage == StageHash || (stage >= StageKiller1 && stage <= StageCounter)) continue;
        for (const Move move : stage == StageDeferred ? putOff : orderedList(pos, setup, stage)) {
            if (singles.count(move)) continue;
            if (putsOff(setup, stage) && !isEnPassant(move) && seeLosing(pos, move))
                putOff.push_back(move);
            else
                picks.push_back({move, stage});
        }
    }
    return picks;
}

TEST(Picker, HandsOutWhatItShould) {
    // Random histories, so that orders come from keys and ties still happen, also ties by rounding alone.
    std::mt19937 random(8);
    const auto level = [&] { return 4000 + 2000 * int(random() % 3) + 4 * int(random() % 3); };
    for (auto& mover : boardArrays.captureHistory)
        for (auto& target : mover)
            for (std::int32_t& counter : target) counter = level();
    for (std::int32_t& counter : boardArrays.history) counter = level();
    for (std::uint16_t& counter : boardArrays.continuationHistory) counter = std::uint16_t(level());

    std::vector<Move> pool = {NoMove};  // of other positions, as hash tables and killer slots hold them
    int seen[16] = {};                  // by stage
    int repeated = 0;
    const auto judge = [&](const Position& pos) {
        const std::vector<Move> own = pos.inCheck ? legalMoves(pos) : pseudoLegalMoves(pos);
        if (own.empty()) return;
        for (const Move move : own)
            if (random() % 8 == 0) pool.push_back(move);
        const auto anyWord = [&] {
            const std::vector<Move>& words = random() % 2 ? own : pool;
            return words[random() % words.size()];
        };
        for (std::uint32_t kind = 0; kind < 14; ++kind) {
            if (kind == KindEvasions && !pos.inCheck) continue;
            const bool quiescence = kind >= KindQuiescence && kind <= KindQuiescenceQueenChecks;
            PickerSetup setup = {.kind = kind, .depth = int(random() % 24)};
            setup.deferCaptures = quiescence && random() % 2;
            setup.hash = anyWord();
            setup.killer1 = anyWord();
            setup.killer2 = anyWord();
            setup.counter = anyWord();
            const std::vector<Picked> expected = expectedPicks(pos, setup);
            for (const auto next : {nextMove, nextQuiescenceMove}) {
                if (kind != KindEvasions && quiescence != (next == nextQuiescenceMove)) continue;
                ASSERT_EQ(drain(pos, setup, next), expected) << "kind " << kind << " in " << writeFen(pos);
            }
            std::set<Move> moves;
            for (const Picked& picked : expected) {
                ++seen[picked.stage];
                repeated += !moves.insert(picked.move).second;
            }
        }
    };
    walkRandomGames(4, 120, judge);
    // An evasion that promotes in between, and some that take in passing.
    for (const char* fen : {"r6K/1P6/8/8/8/8/6k1/8 w - -", "7k/8/8/2PpP3/4K3/3P4/8/8 w - d6",
                            "8/8/3p4/4k3/2pPp3/8/8/7K b - d3"})
        judge(positionOf(fen));
    for (const int stage : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 12, 13, 14, 15})
        EXPECT_GT(seen[stage], 100) << "stage " << stage;
    EXPECT_GT(repeated, 50);
}

TEST(Picker, HandsLosingMovesOutWhenTheDeferredListIsFull) {
    const Position pos = positionOf("4k3/3p4/2p5/3p4/8/3Q4/8/4K3 w - -");
    MovePicker picker;
    start(picker, pos, {});
    picker.badCount = MaxListMoves;
    EXPECT_EQ(nextMove(&picker), makeWord(D3, D5));
    EXPECT_EQ(picker.stage, StageCaptures);
    EXPECT_EQ(picker.badCount, MaxListMoves);
}

TEST(Picker, EndsAListOnDemand) {
    const Position pos = positionOf("4k3/3p4/8/8/8/8/8/3QK3 w - -");
    MovePicker picker;
    start(picker, pos, {});
    nextMove(&picker);
    ASSERT_EQ(picker.stage, StageQuiets);
    picker.endList();
    EXPECT_EQ(nextMove(&picker), makeWord(D1, D7));
    EXPECT_EQ(picker.stage, StageDeferred);
    EXPECT_EQ(nextMove(&picker), NoMove);
}
