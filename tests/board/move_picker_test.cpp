// The staged pickers: what they hand out, from which stage, in which order, and what they put off.
#include "board/move_picker.h"

#include "board/exchange.h"
#include "board/legality.h"
#include "board/movegen.h"
#include "support/board_environment.h"

#include <algorithm>
#include <map>
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
};

static std::vector<Picked> drain(const Position& pos, const PickerSetup& setup, Move (*next)(MovePicker*)) {
    MovePicker picker;
    picker.start(pos, setup.kind, setup.depth, setup.hash, setup.killer1, setup.killer2, setup.counter);
    std::vector<Picked> picked;
    while (const Move move = next(&picker)) picked.push_back({move, picker.stage});
    EXPECT_EQ(next(&picker), NoMove) << "the end is not the end";
    return picked;
}
static std::vector<Picked> pick(const Position& pos, const PickerSetup& setup) {
    return drain(pos, setup, nextMove);
}
static std::vector<Picked> pickQuiescence(const Position& pos, const PickerSetup& setup) {
    return drain(pos, setup, nextQuiescenceMove);
}

static std::vector<Move> movesOf(const std::vector<Picked>& picked, int stage = -1) {
    std::vector<Move> moves;
    for (const Picked& one : picked)
        if (stage < 0 || one.stage == std::uint32_t(stage)) moves.push_back(one.move);
    return moves;
}
static std::vector<Move> sorted(std::vector<Move> moves) {
    std::sort(moves.begin(), moves.end());
    return moves;
}
static std::vector<std::uint32_t> stagesOf(const std::vector<Picked>& picked) {
    std::vector<std::uint32_t> stages;
    for (const Picked& one : picked)
        if (stages.empty() || stages.back() != one.stage) stages.push_back(one.stage);
    return stages;
}

// Random histories, so that orders come from keys and ties still happen, also ties by rounding alone.
class Picker : public ::testing::Test {
   protected:
    Picker() {
        const auto level = [&] { return 4000 + 2000 * int(random() % 3) + 4 * int(random() % 3); };
        for (auto& mover : boardArrays.captureHistory)
            for (auto& target : mover)
                for (std::int32_t& counter : target) counter = level();
        for (std::int32_t& counter : boardArrays.history) counter = level();
        for (std::uint16_t& counter : boardArrays.continuationHistory) counter = std::uint16_t(level());
    }
    Move anyOf(const std::vector<Move>& moves) { return moves[random() % moves.size()]; }

    std::mt19937 random{8};
};

TEST_F(Picker, HandsOutEachMoveOnce) {
    int positions = 0;
    walkRandomGames(4, 120, [&](const Position& pos) {
        const std::vector<Move> all = sorted(pseudoLegalMoves(pos));
        if (all.empty()) return;
        ++positions;
        const Move hash = random() % 2 ? anyOf(all) : NoMove;
        for (const int depth : {6, 11, 12, 20}) {
            const std::vector<Picked> picked = pick(pos, {.depth = depth, .hash = hash});
            ASSERT_EQ(sorted(movesOf(picked)), all);
            ASSERT_EQ(picked[0].stage == StageHash, hash != NoMove);
        }
        if (!pos.inCheck) return;
        Move list[MaxListMoves];
        const int count = genEvasions(pos, list);
        std::vector<Move> evasions;
        for (int i = 0; i < count; ++i) evasions.push_back(cleanMove(list[i]));
        ASSERT_EQ(sorted(movesOf(pick(pos, {.kind = KindEvasions}))), sorted(evasions));
        ASSERT_EQ(movesOf(pickQuiescence(pos, {.kind = KindEvasions})),
                  movesOf(pick(pos, {.kind = KindEvasions})));
    });
    EXPECT_GT(positions, 3000);
}

// Words from elsewhere come only where they are moves, and nothing but what the captures gave before comes
// twice.
TEST_F(Picker, RepeatsOnlyWhatTheCapturesGave) {
    std::vector<Move> pool = {NoMove};
    int repeated = 0;
    walkRandomGames(4, 120, [&](const Position& pos) {
        const std::vector<Move> all = sorted(pseudoLegalMoves(pos));
        if (all.empty()) return;
        for (const Move move : all)
            if (random() % 8 == 0) pool.push_back(move);
        const PickerSetup setup = {.depth = int(random() % 24),
                                   .hash = anyOf(pool),
                                   .killer1 = anyOf(pool),
                                   .killer2 = anyOf(pool),
                                   .counter = anyOf(random() % 2 ? all : pool)};
        const std::vector<Picked> picked = pick(pos, setup);
        std::map<Move, std::vector<std::uint32_t>> stages;
        for (const Picked& one : picked) stages[one.move].push_back(one.stage);
        for (const Move move : all) ASSERT_TRUE(stages.count(move));
        for (const auto& [move, from] : stages) {
            ASSERT_TRUE(isValidMove(pos, move));
            if (from.size() == 1) continue;
            ++repeated;
            ASSERT_EQ(from.size(), 2u);
            ASSERT_EQ(from[0], StageCaptures);
            ASSERT_TRUE(from[1] >= StageKiller1 && from[1] <= StageCounter);
            const bool becameCapture = pos.board[toOf(move)] != NoPiece;
            ASSERT_TRUE(!becameCapture || from[1] == StageCounter);
        }
    });
    EXPECT_GT(repeated, 50);
}

// The list of a stage as the generator wrote it, in the order in which it must come.
static std::vector<Move> inOrder(std::vector<Move> words) {
    std::stable_sort(words.begin(), words.end(),
                     [](Move a, Move b) { return std::int16_t(a >> 16) > std::int16_t(b >> 16); });
    for (Move& word : words) word &= 0xffff;
    return words;
}

TEST_F(Picker, OrdersAndPutsOff) {
    int losingCaptures = 0;
    int losingQuiets = 0;
    walkRandomGames(4, 120, [&](const Position& pos) {
        const auto loses = [&](Move move) { return !isEnPassant(move) && seeLosing(pos, move); };
        std::vector<Move> captures = inOrder(listOf([&](Move* list) { return genCaptures(pos, list); }));
        std::vector<Move> quiets = inOrder(listOf([&](Move* list) { return genQuiets(pos, list); }));
        std::vector<Move> putOff;
        std::copy_if(captures.begin(), captures.end(), std::back_inserter(putOff), loses);
        std::erase_if(captures, loses);
        losingCaptures += int(putOff.size());

        const std::vector<Picked> shallow = pick(pos, {.depth = 11});
        ASSERT_EQ(movesOf(shallow, StageCaptures), captures);
        ASSERT_EQ(movesOf(shallow, StageQuiets), quiets);
        ASSERT_EQ(movesOf(shallow, StageDeferred), putOff);

        std::copy_if(quiets.begin(), quiets.end(), std::back_inserter(putOff), loses);
        losingQuiets += int(std::count_if(quiets.begin(), quiets.end(), loses));
        std::erase_if(quiets, loses);
        const std::vector<Picked> deep = pick(pos, {.depth = 12});
        ASSERT_EQ(movesOf(deep, StageCaptures), captures);
        ASSERT_EQ(movesOf(deep, StageQuiets), quiets);
        ASSERT_EQ(movesOf(deep, StageDeferred), putOff);
    });
    EXPECT_GT(losingCaptures, 1000);
    EXPECT_GT(losingQuiets, 1000);
}

TEST_F(Picker, OrdersChecksByHistory) {
    int checks = 0;
    int losing = 0;
    walkRandomGames(6, 120, [&](const Position& pos) {
        std::vector<Move> words = listOf([&](Move* list) { return genQuietChecks(pos, list); });
        for (Move& word : words) word |= Move(quietStat(pos, word) / 4) << 16;
        std::vector<Move> expected = inOrder(words);
        checks += int(expected.size());
        losing += int(std::erase_if(expected, [&](Move move) { return seeLosing(pos, move); }));
        for (const int depth : {6, 7})
            ASSERT_EQ(movesOf(pick(pos, {.kind = 2, .depth = depth}), StageQuietChecks), expected);
        const auto quiescence = pickQuiescence(pos, {.kind = KindQuiescenceChecks, .depth = 0});
        ASSERT_EQ(movesOf(quiescence, StageQuiescenceChecks), expected);
        // Those of the queen come as they are generated, losing ones too.
        const auto queen = listOf([&](Move* list) { return genQueenChecks(pos, list); });
        const auto queenOnly = pickQuiescence(pos, {.kind = KindQuiescenceQueenChecks, .depth = 0});
        ASSERT_EQ(movesOf(queenOnly, StageQueenChecks), queen);
    });
    EXPECT_GT(checks, 2000);
    EXPECT_GT(losing, 500);
}

TEST_F(Picker, OrdersEvasionsByKind) {
    int promotions = 0;
    const auto judge = [&](const Position& pos) {
        if (!pos.inCheck) return;
        const std::vector<Move> evasions = listOf([&](Move* list) { return genEvasions(pos, list); });
        if (evasions.empty()) return;
        const Move killer1 = anyOf(evasions);
        const Move killer2 = anyOf(evasions);
        std::vector<Move> words = evasions;
        for (Move& word : words) {
            const int victim = pos.board[toOf(word)] & 7;
            const int attacker = pos.board[fromOf(word)];
            int key = quietStat(pos, word) / 8;
            if (word == killer2) key = 28000;
            if (word == killer1) key = 29000;
            if (victim) key = 30000 + 16 * victim - 2 * (attacker & 7);
            if (flagOf(word) >= QueenPromotion) key = 31000;
            if (flagOf(word) == EnPassant) key = 30000;
            promotions += flagOf(word) >= QueenPromotion;
            word |= Move(key) << 16;
        }
        const auto picked = pick(pos, {.kind = KindEvasions, .killer1 = killer1, .killer2 = killer2});
        ASSERT_EQ(movesOf(picked), inOrder(words));
    };
    walkRandomGames(8, 120, judge);
    for (const char* fen : {"r6K/1P6/8/8/8/8/6k1/8 w - -", "7k/8/8/2PpP3/4K3/3P4/8/8 w - d6"})
        judge(positionOf(fen));
    EXPECT_GT(promotions, 0);
}

// A white queen that may take a defended pawn or a free knight, or give check on three squares, one of them
// attacked; two pawns near promotion, one of which would be lost by its step.
static const char* const RichFen = "4k3/3p3p/P1p2p2/6P1/3Q3n/8/8/R3K3 w - -";

struct StageRow {
    const char* name;
    std::uint32_t kind;
    int depth;
    bool quiescence;
    std::vector<std::uint32_t> stages;
};
static void PrintTo(const StageRow& row, std::ostream* out) { *out << row.name; }

class PickerStages : public ::testing::TestWithParam<StageRow> {};

// What is put off by a row without a deferred stage never comes back.
TEST_P(PickerStages, ComeInTheRowsOrder) {
    const StageRow& row = GetParam();
    const Position pos = positionOf(RichFen);
    const PickerSetup setup = {.kind = row.kind,
                               .depth = row.depth,
                               .hash = makeWord(E1, E2),
                               .killer1 = makeWord(E1, F1),
                               .killer2 = makeWord(E1, F2),
                               .counter = makeWord(E1, D2)};
    const auto picked = drain(pos, setup, row.quiescence ? nextQuiescenceMove : nextMove);
    EXPECT_EQ(stagesOf(picked), row.stages);
    const auto moves = movesOf(picked);
    const bool comesBack = std::find(moves.begin(), moves.end(), makeWord(D4, D7)) != moves.end();
    const bool neverPutsOff = row.quiescence && row.kind >= 7;
    EXPECT_EQ(comesBack, row.stages.back() == StageDeferred || neverPutsOff);
}

static const StageRow StageRows[] = {
    {"Full", 0, 10, false, {1, 2, 3, 4, 5, 6, 10}},
    {"ChecksAndDeferred", 1, 10, false, {1, 2, 8, 10}},
    {"Checks", 2, 6, false, {1, 2, 8}},
    {"Captures", 3, 10, false, {1, 2}},
    {"ChecksAndAdvances", 5, 6, false, {1, 2, 8, 9}},
    {"ChecksAdvancesAndDeferred", 6, 10, false, {1, 2, 8, 9, 10}},
    {"QuiescenceCaptures", 7, 0, true, {1, 13}},
    {"QuiescenceChecks8", 8, 0, true, {1, 13, 12, 14}},
    {"QuiescenceChecks9", 9, 0, true, {1, 13, 12, 14}},
    {"QuiescenceChecks10", 10, 0, true, {1, 13, 12, 14}},
    {"QuiescenceQueenChecks", 11, 0, true, {1, 13, 15}},
    {"FewQuiets", 12, 10, false, {1, 2, 3, 5, 8, 9}},
    {"FewQuietsAndDeferred", 13, 10, false, {1, 2, 3, 5, 8, 9, 10}},
};
INSTANTIATE_TEST_SUITE_P(Kinds, PickerStages, ::testing::ValuesIn(StageRows),
                         [](const auto& row) { return row.param.name; });

TEST_F(Picker, HandsOutChecksAndAdvancesThatDontLose) {
    const Position pos = positionOf(RichFen);
    for (const std::uint32_t kind : {5u, 8u}) {
        const auto picked = kind == 5 ? pick(pos, {.kind = kind, .depth = 2})
                                      : pickQuiescence(pos, {.kind = kind, .depth = -2});
        const int checks = kind == 5 ? StageQuietChecks : StageQuiescenceChecks;
        const int advances = kind == 5 ? StagePawnAdvances : StageQuiescenceAdvances;
        EXPECT_EQ(sorted(movesOf(picked, checks)), sorted({makeWord(D4, E3), makeWord(D4, E4)}));
        EXPECT_EQ(movesOf(picked, advances), std::vector<Move>{makeWord(A6, A7)});
    }
}

struct KillerRow {
    const char* name;
    const char* fen;
    Move hash, killer1, killer2, counter;
    std::vector<Picked> singles;  // what the stages of one move give
};
static void PrintTo(const KillerRow& row, std::ostream* out) { *out << row.name; }

class PickerSingles : public ::testing::TestWithParam<KillerRow> {};

TEST_P(PickerSingles, ComeUnderTheirConditions) {
    const KillerRow& row = GetParam();
    const Position pos = positionOf(row.fen);
    std::vector<Picked> picked =
        pick(pos, {.hash = row.hash, .killer1 = row.killer1, .killer2 = row.killer2, .counter = row.counter});
    std::erase_if(picked, [](const Picked& one) {
        return one.stage == StageCaptures || one.stage == StageQuiets || one.stage == StageDeferred;
    });
    EXPECT_EQ(picked, row.singles);
}

static const char* const RookTakesFen = "4k3/8/8/8/r7/8/4P3/R3K3 w Q -";
static const Move RookTakes = makeWord(A1, A4), RookUp = makeWord(A1, A3), RookSide = makeWord(A1, C1);
static const Move LongCastling = makeWord(E1, A1, Castling), NoSuchMove = makeWord(B1, C3);
static const KillerRow KillerRows[] = {
    {"EachOnce",
     RookTakesFen,
     RookTakes,
     RookUp,
     RookSide,
     makeWord(E2, E3),
     {{RookTakes, StageHash},
      {RookUp, StageKiller1},
      {RookSide, StageKiller2},
      {makeWord(E2, E3), StageCounter}}},
    {"HashMoveIsTheKiller", RookTakesFen, RookUp, RookUp, RookUp, RookUp, {{RookUp, StageHash}}},
    {"KillersAlike", RookTakesFen, NoMove, RookUp, RookUp, RookUp, {{RookUp, StageKiller1}}},
    {"KillersThatCaptureWait", RookTakesFen, NoMove, RookTakes, RookTakes, NoMove, {}},
    {"CounterThatCapturesComes",
     RookTakesFen,
     NoMove,
     NoMove,
     NoMove,
     RookTakes,
     {{RookTakes, StageCounter}}},
    {"CastlingIsNoCapture",
     RookTakesFen,
     NoMove,
     NoMove,
     LongCastling,
     NoMove,
     {{LongCastling, StageKiller2}}},
    {"ForeignWords", RookTakesFen, NoSuchMove, NoSuchMove, makeWord(E2, D3), makeWord(A4, A1), {}},
};
INSTANTIATE_TEST_SUITE_P(Killers, PickerSingles, ::testing::ValuesIn(KillerRows),
                         [](const auto& row) { return row.param.name; });

TEST_F(Picker, QuiescenceSkipsTheHashMoveAlone) {
    const Position pos = positionOf("4k3/8/3n4/2P5/r7/8/4P3/R3K3 w - -");
    const Move takesKnight = makeWord(C5, D6);
    const auto picked = pickQuiescence(pos, {.kind = KindQuiescence, .depth = 0, .hash = RookTakes});
    EXPECT_EQ(picked, (std::vector<Picked>{{RookTakes, StageHash}, {takesKnight, StageQuiescenceCaptures}}));
    EXPECT_EQ(pickQuiescence(pos, {.kind = KindQuiescence, .depth = 0, .hash = NoSuchMove}).size(), 2u);
}

TEST_F(Picker, QuiescencePutsCapturesOffOnlyIfAsked) {
    const Position pos = positionOf(RichFen);
    for (const bool asked : {false, true}) {
        MovePicker picker;
        picker.start(pos, KindQuiescence, 0, NoMove);
        picker.deferBad = asked;
        std::set<Move> moves;
        while (const Move move = nextQuiescenceMove(&picker)) moves.insert(move);
        EXPECT_EQ(moves.count(makeWord(D4, D7)), asked ? 0u : 1u);
        EXPECT_EQ(moves.count(makeWord(D4, H4)), 1u);
    }
}

TEST_F(Picker, HandsLosingMovesOutWhenTheDeferredListIsFull) {
    const Position pos = positionOf(RichFen);
    MovePicker picker;
    picker.start(pos, KindFull, 10, NoMove);
    picker.badCount = MaxListMoves;
    std::set<Move> captures;
    for (Move move = nextMove(&picker); picker.stage == StageCaptures; move = nextMove(&picker))
        captures.insert(move);
    EXPECT_EQ(captures.count(makeWord(D4, D7)), 1u);
    EXPECT_EQ(picker.badCount, MaxListMoves);
}

TEST_F(Picker, EndsAListOnDemand) {
    const Position pos = positionOf("4k3/3p4/8/8/8/8/8/3QK3 w - -");
    MovePicker picker;
    picker.start(pos, KindFull, 10, NoMove);
    nextMove(&picker);
    ASSERT_EQ(picker.stage, StageQuiets);
    picker.endList();
    EXPECT_EQ(nextMove(&picker), makeWord(D1, D7));
    EXPECT_EQ(picker.stage, StageDeferred);
    EXPECT_EQ(nextMove(&picker), NoMove);
}

TEST_F(Picker, HandsOutTheWidestBoard) {
    const Position pos = positionOf("R6R/3Q4/1Q4Q1/4Q3/2Q4Q/Q4Q2/pp1Q4/kBNN1KB1 w - -");
    for (const int depth : {10, 20}) EXPECT_EQ(pick(pos, {.depth = depth}).size(), 218u);
}
