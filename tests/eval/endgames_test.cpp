// Endings with a judge of their own, and the king-and-pawn bitbase against the rules of chess.
#include "eval/endgames.h"

#include "eval/eval_environment.h"
#include "eval/king_pawn_bitbase.h"

#include <array>

using Endgames = EvalTest;

// King and pawn against king by plain iteration over all placings, the pawn moving down the board on files a
// to d.
class PlainPawnEnding {
   public:
    PlainPawnEnding() {
        for (bool changed = true; changed;) {
            changed = false;
            for (int index = 0; index < Count; ++index) {
                if (won[std::size_t(index)] || !isLegal(index)) continue;
                if (!(strongMoves(index) ? strongWins(index) : weakLoses(index))) continue;
                won[std::size_t(index)] = true;
                changed = true;
            }
        }
    }
    bool isWon(int strong, int pawn, int weak, bool strongToMove) const {
        return won[std::size_t(indexOf(strong, pawn, weak, strongToMove))];
    }
    static bool isLegalPlacing(int strong, int pawn, int weak, bool strongToMove) {
        return isLegal(indexOf(strong, pawn, weak, strongToMove));
    }

   private:
    static constexpr int Count = 64 * 64 * 64 * 2;
    static int indexOf(int strong, int pawn, int weak, bool strongToMove) {
        return ((strong * 64 + pawn) * 64 + weak) * 2 + strongToMove;
    }
    static int strongOf(int index) { return index / 8192; }
    static int pawnOf(int index) { return index / 128 % 64; }
    static int weakOf(int index) { return index / 2 % 64; }
    static bool strongMoves(int index) { return index & 1; }

    static int apart(int a, int b) { return std::max(std::abs(a % 8 - b % 8), std::abs(a / 8 - b / 8)); }
    static bool pawnHits(int pawn, int square) {
        return square / 8 == pawn / 8 - 1 && std::abs(square % 8 - pawn % 8) == 1;
    }
    static bool isLegal(int index) {
        const int strong = strongOf(index), pawn = pawnOf(index), weak = weakOf(index);
        if (pawn % 8 > 3 || pawn / 8 == 0 || pawn / 8 == 7) return false;
        if (strong == pawn || weak == pawn || apart(strong, weak) < 2) return false;
        return !(strongMoves(index) && pawnHits(pawn, weak));
    }

    // A queen or rook that has just been made wins unless it can be taken or leaves the weak king no move.
    static bool promotionWins(int strong, int square, int weak) {
        if (apart(weak, square) == 1 && apart(strong, square) > 1) return false;
        const auto attacks = [&](int target, bool diagonal) {
            const int files = target % 8 - square % 8, ranks = target / 8 - square / 8;
            const bool straight = files == 0 || ranks == 0;
            if (target == square || (!straight && !(diagonal && std::abs(files) == std::abs(ranks))))
                return false;
            const int step = (ranks > 0) * 8 - (ranks < 0) * 8 + (files > 0) - (files < 0);
            for (int on = square + step; on != target; on += step)
                if (on == strong) return false;
            return true;
        };
        for (const bool queen : {true, false}) {
            bool canMove = false;
            for (int to = 0; to < 64; ++to)
                if (to != weak && apart(weak, to) == 1 && apart(strong, to) > 1 && to != square &&
                    !attacks(to, queen))
                    canMove = true;
            if (canMove || attacks(weak, queen)) return true;
        }
        return false;
    }
    bool strongWins(int index) const {
        const int strong = strongOf(index), pawn = pawnOf(index), weak = weakOf(index);
        for (int to = 0; to < 64; ++to)
            if (to != strong && apart(strong, to) == 1 && to != pawn && apart(to, weak) > 1 &&
                isWon(to, pawn, weak, false))
                return true;
        const int next = pawn - 8;
        if (next == strong || next == weak) return false;
        if (next < 8) return promotionWins(strong, next, weak);
        if (isWon(strong, next, weak, false)) return true;
        const int beyond = next - 8;
        return pawn / 8 == 6 && beyond != strong && beyond != weak && isWon(strong, beyond, weak, false);
    }
    bool weakLoses(int index) const {
        const int strong = strongOf(index), pawn = pawnOf(index), weak = weakOf(index);
        bool canMove = false;
        for (int to = 0; to < 64; ++to) {
            if (to == weak || apart(weak, to) > 1 || apart(strong, to) < 2 || pawnHits(pawn, to)) continue;
            if (to == pawn || !isWon(strong, pawn, to, true)) return false;
            canMove = true;
        }
        return canMove || pawnHits(pawn, weak);
    }

    std::vector<bool> won = std::vector<bool>(std::size_t(Count));
};

TEST_F(Endgames, BitbaseKnowsEveryPlacing) {
    const PlainPawnEnding plain;
    int wins = 0, placings = 0;
    for (int strong = 0; strong < 64; ++strong)
        for (int pawn = 8; pawn < 56; ++pawn)
            for (int weak = 0; weak < 64; ++weak)
                for (const bool strongToMove : {false, true}) {
                    if (!PlainPawnEnding::isLegalPlacing(strong, pawn, weak, strongToMove)) continue;
                    ++placings;
                    wins += plain.isWon(strong, pawn, weak, strongToMove);
                    ASSERT_EQ(kingPawnWins(strong, pawn, weak, strongToMove),
                              plain.isWon(strong, pawn, weak, strongToMove))
                        << strong << ' ' << pawn << ' ' << weak << ' ' << strongToMove;
                }
    EXPECT_GT(placings, 150000);
    EXPECT_GT(wins, placings / 2);
}

struct JudgedRow {
    const char* fen;
    int value;  // material units, White's view
    float scale;
};

class Judged : public EvalTest, public ::testing::WithParamInterface<JudgedRow> {};

TEST_P(Judged, GivesValueAndScaleForBothColours) {
    const JudgedRow& row = GetParam();
    float scale = 0;
    EXPECT_EQ(materialOf(row.fen, &scale), row.value * 96) << row.fen;
    EXPECT_FLOAT_EQ(scale, row.scale) << row.fen;
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Judged,
    ::testing::Values(
        // Bishop and knight: the corner of the bishop's colour, the kings and the knight.
        JudgedRow{"7k/5K2/6N1/8/8/8/8/2B5 w - -", 5000 - 40 * 2 - 80 * 2 - 0, 0},
        JudgedRow{"k7/2K5/1N6/8/8/8/8/2B5 w - -", 5000 - 40 * 2 - 80 * 2 - 200 * 7, 0},
        JudgedRow{"7K/5k2/6n1/8/8/8/8/2b5 w - -", -(5000 - 40 * 2 - 80 * 2), 0},
        // King and pawn: won and drawn, either side.
        JudgedRow{"4k3/8/4K3/4P3/8/8/8/8 w - -", 6500 + 160 * 4, 0},
        JudgedRow{"4k3/8/8/4P3/8/4K3/8/8 w - -", 30, 0},
        JudgedRow{"8/8/8/8/4p3/4k3/8/4K3 b - -", -(6500 + 160 * 4), 0},
        JudgedRow{"7k/8/8/8/8/8/K6P/8 w - -", 30, 0},
        // Knight and pawn: the edge pawn that has gone too far, and the formula.
        JudgedRow{"k7/P7/8/8/3N4/8/8/4K3 w - -", 5 * (10 - 7), 0},
        JudgedRow{"7k/8/8/8/3N4/3P4/3K4/8 w - -", 10 * (5 * (5 - 1) - 10 * 5 - 3 * 1) + 4200, 0},
        JudgedRow{"3k4/3p4/3n4/8/8/8/8/7K w - -", -(10 * (5 * (6 - 1) - 10 * 6 - 3 * 1) + 4200), 0},
        // Rook and pawn against rook. Intended: Black's pawn turns one scale over.
        JudgedRow{"8/8/8/3k4/8/3P4/3K4/R6r w - -", 500, 0.5f},
        JudgedRow{"3k4/8/3P4/4K3/8/8/R7/7r w - -", 50, 0.158f},
        JudgedRow{"3k4/8/7r/3P4/4K3/8/R7/8 w - -", 50, 0.158f},
        JudgedRow{"8/r7/8/4k3/3p4/7R/8/3K4 w - -", -50, -0.158f},
        JudgedRow{"3k4/8/8/3P4/4K3/7r/R7/8 w - -", 300, 0.387f}));

// Cornered, the weak side holds: what is left is thirty tenths for the bishop and as much for the move.
TEST_F(Endgames, TheWrongBishopCanNotHelpARooksPawn) {
    for (const char* placing :
         {"k7/8/1K6/8/P7/8/8/2B5 w - -", "1k6/8/1K6/P7/P7/8/8/2B5 w - -", "8/6k1/8/6K1/7P/8/8/5B2 w - -",
          "8/8/8/7p/8/6k1/8/2b4K b - -", "8/8/2b5/p7/8/1k6/8/K7 b - -", "8/8/2b5/p7/8/2k5/K7/8 b - -"}) {
        EXPECT_EQ(scoreOf(placing), 6) << placing;
        std::string weakMoves = placing;
        char& mover = weakMoves[weakMoves.find(' ') + 1];
        mover = mover == 'w' ? 'b' : 'w';
        EXPECT_EQ(scoreOf(weakMoves), 0) << weakMoves;
    }
    // The right bishop, a king that comes too late, another pawn or a knight win all the same.
    for (const char* placing :
         {"k7/8/1K6/8/P7/8/8/5B2 w - -", "2k5/8/1K6/8/P7/8/8/2B5 w - -", "k7/8/1K6/8/PP6/8/8/2B5 w - -",
          "k7/8/1K6/8/P7/8/8/2B3N1 w - -", "8/8/2b5/7p/8/6k1/8/7K b - -", "8/8/2b5/p7/8/2k5/8/K6n b - -"})
        EXPECT_GT(scoreOf(placing), 200) << placing;
}
