// What the staged picker hands out.
#include "board/move_picker.h"

#include "board/exchange.h"
#include "board/fen.h"
#include "board/make_move.h"
#include "board/move_sort.h"
#include "board/move_text.h"
#include "support/board_environment.h"

#include <algorithm>
#include <random>
#include <vector>

static void start(MovePicker& picker, const Position& pos, std::uint32_t kind = KindFull, Move hash = NoMove,
                  Move killer1 = NoMove, Move killer2 = NoMove, Move counter = NoMove) {
    constexpr int Depth = 10;  // half plies
    picker.start(pos, kind, Depth, hash, killer1, killer2, counter);
}

// With foreign words as hash move, killers and counter move, as tables hold them. What comes first and last
// decides how many nodes a search takes, which the signature tells.
TEST(Picker, HandsEveryMoveOutOnce) {
    std::mt19937 random(8);
    std::vector<Move> pool = {NoMove};  // of other positions
    const auto judge = [&](const Position& pos) {
        std::vector<Move> legal = legalMoves(pos);
        for (const Move move : legal)
            if (random() % 8 == 0) pool.push_back(move);
        const auto anyWord = [&] {
            const std::vector<Move>& words = random() % 2 && !legal.empty() ? legal : pool;
            return words[random() % words.size()];
        };
        const Move hash = anyWord(), special[] = {anyWord(), anyWord(), anyWord()};
        MovePicker picker;
        start(picker, pos, pos.inCheck ? KindEvasions : KindFull, hash, special[0], special[1], special[2]);
        std::vector<Move> picked;
        Position child;
        while (const Move move = nextMove(&picker))
            if (makeMove(&pos, &child, move)) picked.push_back(move);
        EXPECT_EQ(nextMove(&picker), NoMove) << "the end is not the end";
        std::sort(picked.begin(), picked.end());
        // Intended: the counter move may come twice, and so may a killer that promotes.
        for (const Move move : special)
            if (std::count(picked.begin(), picked.end(), move) > 1)
                picked.erase(std::find(picked.begin(), picked.end(), move));
        // Promotions to rook and bishop that interpose are left out, unless the hash move is one.
        const auto interposes = [&](Move move) {
            return pos.inCheck && cleanMove(move) >= Move(RookPromotion) << 12 && !pos.board[toOf(move)];
        };
        std::erase_if(picked, interposes);
        std::erase_if(legal, interposes);
        std::sort(legal.begin(), legal.end());
        ASSERT_EQ(picked, legal) << writeFen(pos);
    };
    walkRandomGames(4, 120, judge);
    // An evasion that promotes in between, and some that take in passing.
    for (const char* fen : {"r6K/1P6/8/8/8/8/6k1/8 w - -", "7k/8/8/2PpP3/4K3/3P4/8/8 w - d6",
                            "8/8/3p4/4k3/2pPp3/8/8/7K b - d3"})
        judge(positionOf(fen));
}

TEST(Picker, SortsListsOfEveryLength) {
    std::mt19937 random(9);
    for (int count = 0; count <= MaxListMoves; ++count) {
        // From nearly all keys equal to nearly none, with both ends of their range.
        for (const int spread : {1, 3, 100, 0x10000}) {
            std::vector<Move> moves;
            for (int i = 0; i < count; ++i)
                moves.push_back(withKey(Move(i), int(random() % unsigned(spread)) - spread / 2));
            std::vector<Move> expected = moves;
            std::stable_sort(expected.begin(), expected.end(),
                             [](Move a, Move b) { return sortKeyOf(a) > sortKeyOf(b); });
            sortMoves(moves.data(), count);
            ASSERT_EQ(moves, expected) << count << " moves";
        }
    }
}

TEST(Picker, HandsLosingMovesOutWhenTheDeferredListIsFull) {
    const Position pos = positionOf("4k3/3p4/2p5/3p4/8/3Q4/8/4K3 w - -");
    MovePicker picker;
    start(picker, pos);
    picker.badCount = MaxListMoves;
    EXPECT_EQ(nextMove(&picker), makeWord(D3, D5));
    EXPECT_EQ(picker.stage, StageCaptures);
    EXPECT_EQ(picker.badCount, MaxListMoves);
}

TEST(Picker, PutsOffJustTheMovesThatLoseMaterial) {
    constexpr int FarFromLeaves = 20;  // half plies, where losing quiet moves are put off too
    int quiet = 0, deferred = 0;
    walkRandomGames(4, 120, [&](const Position& pos) {
        if (pos.inCheck) return;
        MovePicker picker;
        picker.start(pos, KindFull, FarFromLeaves, NoMove);
        while (const Move move = nextMove(&picker)) {
            const bool late = picker.stage == StageDeferred;
            ASSERT_EQ(late, seeLosing(pos, move)) << writeFen(pos) << moveText(move);
            quiet += picker.stage == StageQuiets;
            deferred += late;
        }
    });
    EXPECT_GT(quiet, 1000);
    EXPECT_GT(deferred, 100);
}

TEST(Picker, EndsAListOnDemand) {
    const Position pos = positionOf("4k3/3p4/8/8/8/8/8/3QK3 w - -");
    MovePicker picker;
    start(picker, pos);
    nextMove(&picker);
    ASSERT_EQ(picker.stage, StageQuiets);
    picker.endList();
    EXPECT_EQ(nextMove(&picker), makeWord(D1, D7));
    EXPECT_EQ(picker.stage, StageDeferred);
    EXPECT_EQ(nextMove(&picker), NoMove);
}
