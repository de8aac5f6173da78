// Endings with a judge of their own, and the king-and-pawn bitbase against the rules of chess.
#include "eval/endgames.h"

#include "eval/eval_environment.h"
#include "eval/king_pawn_bitbase.h"

#include <algorithm>
#include <random>

using Endgames = EvalTest;

static int apart(int a, int b) { return std::max(std::abs(a % 8 - b % 8), std::abs(a / 8 - b / 8)); }
static int steps(int a, int b) { return std::abs(a % 8 - b % 8) + std::abs(a / 8 - b / 8); }

// A board with these men on these squares.
static std::string boardOf(const std::string& men, const std::vector<int>& squares) {
    std::string board(64, '1');
    for (std::size_t i = 0; i < men.size(); ++i) board[std::size_t(squares[i])] = men[i];
    return boardText(board);
}

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

// A value in material units, White having the pieces, and a scale.
struct Judgement {
    int value;
    float scale;
};

// The judges once more, for White's pieces on squares in the order of the letters.
static Judgement judgeKBN(const std::vector<int>& at) {  // KBNk
    const bool light = (at[1] % 8 + at[1] / 8) % 2;
    const int corner =
        light ? std::min(steps(at[3], 56), steps(at[3], 7)) : std::min(steps(at[3], 0), steps(at[3], 63));
    return {5000 - 40 * apart(at[3], at[2]) - 80 * apart(at[0], at[3]) - 200 * corner, 0};
}
static Judgement judgeKNP(const std::vector<int>& at) {  // KNPk
    const int rank = at[2] / 8, file = at[2] % 8, goal = 56 + file;
    if (rank == 6 && file % 7 == 0 && apart(at[3], goal) < 2) return {50 - 5 * apart(at[0], goal), 0};
    const int race = 50 * (apart(at[3], at[2]) - apart(at[0], at[2]));
    return {race - 100 * (7 - rank) - 30 * apart(at[1], at[2]) + 4200, 0};
}
static Judgement judgeKRP(const std::vector<int>& at) {  // KRPkr
    const int pawn = at[2], king = at[3], rookRank = at[4] / 8;
    if (king < 48 || king % 8 != pawn % 8) return {500, 0.5f};
    if (rookRank < 2 && pawn >= 40) return {50, 0.158f};
    if (rookRank == 5 && pawn < 40) return {50, 0.158f};
    return {300, 0.387f};
}

struct JudgeRow {
    const char* men;
    Judgement (*judge)(const std::vector<int>&);
};

TEST_F(Endgames, JudgesHoldWhereverTheMenStand) {
    std::mt19937 random(5);
    for (const JudgeRow& row : {JudgeRow{"KBNk", judgeKBN}, {"KNPk", judgeKNP}, {"KRPkr", judgeKRP}}) {
        const std::string men = row.men;
        std::string swapped = men;
        for (char& letter : swapped) letter = char(letter ^ 32);
        const std::size_t pawn = men.find('P');
        std::vector<int> all(64), squares(men.size()), flipped(men.size());
        for (int i = 0; i < 64; ++i) all[std::size_t(i)] = i;
        for (int number = 0; number < 4000; ++number) {
            std::shuffle(all.begin(), all.end(), random);
            std::copy_n(all.begin(), men.size(), squares.begin());
            if (pawn != std::string::npos && (squares[pawn] < 8 || squares[pawn] > 55)) continue;
            for (std::size_t i = 0; i < men.size(); ++i) flipped[i] = squares[i] ^ 56;
            const Judgement expected = row.judge(squares);
            float scale = -1;
            const std::string white = boardOf(men, squares), black = boardOf(swapped, flipped);
            ASSERT_EQ(materialOf(white + " w - -", &scale), expected.value * 96) << white;
            ASSERT_FLOAT_EQ(scale, expected.scale) << white;
            ASSERT_EQ(materialOf(black + " w - -", &scale), -expected.value * 96) << black;
            // Intended: with Black's pawn and a rook on the sixth rank the scale turns over.
            const bool turned = men == "KRPkr" && expected.value == 50 && squares[2] < 40;
            ASSERT_FLOAT_EQ(scale, turned ? -expected.scale : expected.scale) << black;
        }
    }
}

TEST_F(Endgames, PawnEndingsAreJudgedOnEveryFileForBothColours) {
    const PlainPawnEnding plain;
    std::mt19937 random(6);
    int wins = 0, draws = 0;
    while (wins + draws < 10000) {
        const int king = int(random() % 64), pawn = int(random() % 48) + 8, weak = int(random() % 64);
        const bool strongMoves = random() % 2;
        // As Black's pawn stands, and the plain ending on files a to d.
        const int mirror = pawn % 8 > 3 ? 7 : 0;
        if (!PlainPawnEnding::isLegalPlacing(king ^ mirror, pawn ^ mirror, weak ^ mirror, strongMoves))
            continue;
        const bool won = plain.isWon(king ^ mirror, pawn ^ mirror, weak ^ mirror, strongMoves);
        const int expected = won ? 6500 + 160 * (7 - pawn / 8) : 30;
        const std::string black = boardOf("kpK", {king, pawn, weak}) + (strongMoves ? " b - -" : " w - -");
        const std::string white =
            boardOf("KPk", {king ^ 56, pawn ^ 56, weak ^ 56}) + (strongMoves ? " w - -" : " b - -");
        ASSERT_EQ(materialOf(black), -expected * 96) << black;
        ASSERT_EQ(materialOf(white), expected * 96) << white;
        ++(won ? wins : draws);
    }
    EXPECT_GT(wins, 2000);
    EXPECT_GT(draws, 1000);
}

// The corner is the promotion square and what lies beside it; the cut leaves thirty.
TEST_F(Endgames, TheCornerIsFourSquares) {
    struct Row {
        const char* men;
        int bishop, pawn, corner, sign;
    };
    for (const Row& row : {Row{"KBPk", C1, A4, A8, 1}, Row{"KBPk", F1, H4, H8, 1},
                           Row{"kbpK", C1, H5, H1, -1}, Row{"kbpK", F1, A5, A1, -1}}) {
        for (int king = 0; king < 64; ++king) {
            if (king == row.bishop || king == row.pawn || king == D4) continue;
            const std::string fen = boardOf(row.men, {D4, row.bishop, row.pawn, king}) + " w - -";
            const bool cut = apart(king, row.corner) < 2;
            for (const int value : {-900, -31, -30, 0, 30, 31, 900})
                EXPECT_EQ(wrongBishop(rootOf(fen), value),
                          cut && row.sign * value > 30 ? row.sign * 30 : value)
                    << fen << ' ' << value;
        }
    }
}

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
