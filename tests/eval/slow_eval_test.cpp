// The whole evaluation against the slow one, exactly, on games, on every known set of material and on sets
// drawn at random; its early exit and its symmetries.
#include "eval/endgames.h"
#include "eval/eval_environment.h"
#include "eval/material_patterns.h"
#include "eval/slow_eval_of.h"

#include <algorithm>
#include <random>
#include <sstream>

namespace {

// Boards with every known set of material, for both colours, and with sets from thin to full, most of them
// unbalanced; with either side to move.
std::vector<std::string> drawnFens(std::mt19937& random, int eachKnown, int others) {
    std::vector<std::string> fens;
    const auto draw = [&](const std::string& men) {
        fens.push_back(placedAtRandom(men, random) + (random() % 2 ? " w - -" : " b - -"));
    };
    for (const MaterialRow& row : materialRows)
        for (int number = 0; number < eachKnown; ++number)
            draw(number % 2 ? colourSwapped(row.pattern) : row.pattern);
    for (int number = 0; number < others; ++number) {
        const unsigned fullness = unsigned(number) % 4 + 1;
        const unsigned most[] = {2 * fullness, 2, 1, 2, 2, 1};
        std::string men;
        for (const char* letters : {"PNBCRQ", "pnbcrq"})
            for (int type = 0; type < 6; ++type)
                men += std::string(random() % (most[type] + 1), letters[type]);
        draw(men);
    }
    return fens;
}

const char* const RareBoards[] = {
    // Thin endings of every kind of phase below 18.
    "8/5k2/1p4p1/p6p/P2N3P/1P4P1/5K2/8 w - -",
    "8/2k5/8/PP2b3/8/8/8/4K3 w - -",
    "4k3/4p3/4n3/2b5/8/3B1N2/3PP3/3K4 b - -",
    "8/pp3k2/4r3/8/8/4R3/PPP2K2/8 w - -",
    "4k3/8/8/2p1p1p1/2P1P1P1/8/8/4K3 w - -",
    "5bk1/p5pp/8/8/8/8/PP5P/5BK1 w - -",
    "8/1p1k4/p1pp4/P1P1p1p1/1P1PPpPp/5P1P/3K4/8 w - -",
    // Queens alone, with passed pawns.
    "4k3/pp3q2/8/3P4/8/8/1Q4PP/6K1 w - -",
    // The bishop that can't help its rook's pawn, in all four corners, and the one that can; the second of a
    // pair, another pawn and a knight.
    "8/1k6/8/8/P7/8/8/K1B5 b - -",
    "8/6k1/8/8/7P/8/8/K4B2 b - -",
    "k1b5/8/8/p7/8/8/1K6/8 w - -",
    "k4b2/8/8/7p/8/8/6K1/8 w - -",
    "8/1k6/8/8/P7/8/8/K4B2 b - -",
    "k4b2/8/8/p7/8/8/1K6/8 w - -",
    "8/1k6/8/8/P7/8/8/K1B1B3 b - -",
    "8/1k6/8/8/PP6/8/8/K1B5 b - -",
    "8/1k6/8/8/P7/8/8/K1B3N1 b - -",
    "k1b1n3/8/8/p7/8/8/1K6/8 w - -",
    // Crowds that nobody plays for.
    "4k3/8/8/QQQQQQQQ/QQQQQQQQ/8/8/4K3 b - -",
    "rnbqkbnr/qqqqqqqq/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -",
    "6k1/pppppppp/nnbbrrnn/bbbbrrnn/NNRRBBBB/NNRRBBNN/PPPPPPPP/1K6 w - -",
};

}  // namespace

class WholeEval : public EvalTest {
   protected:
    // Both evaluations, and the engine's again from its caches; with the slow one's terms if they differ.
    void compare(const Position& game) {
        Position pos = withCaches(game);
        const int score = freshScore(pos), again = evaluate(pos, -OpenEvalBound, OpenEvalBound);
        const slow::Given given = givenFor(pos);
        const slow::Judgement judgement = slow::judge(slowEvalBoardOf(pos), given);
        ++compared;
        if (score == judgement.score && again == score && pos.psqBlend == judgement.psqBlend) return;
        if (++failed > 3) return;
        std::ostringstream terms;
        printTerms(terms, judgement, given);
        ADD_FAILURE() << writeFen(pos) << "\nscore " << score << ", from the cache " << again << ", blended "
                      << pos.psqBlend << '\n'
                      << terms.str();
    }
    // Odd numbers, so that each truncation shows.
    static void setOddStyle() {
        contemptPair[White] = pair(-173, 41);
        contemptPair[Black] = pair(173, -41);
        contemptValue[White] = -17;
        settings.contempt = 3;
        settings.dynamism = 137;
        settings.progressThreshold = 41;
        initEvalParameters();
        evalNoise = 37;
        noiseKey = 0x5bd1e9955bd1e995ULL;
    }
    static int blendOf(const std::string& fen) {
        Position pos = rootOf(fen);
        freshScore(pos);
        return pos.psqBlend;
    }

    int compared = 0;
    int failed = 0;
};

TEST_F(WholeEval, AgreesInGames) {
    walkRandomGames(3, 120, [&](const Position& game) { compare(game); });
    setOddStyle();
    walkRandomGames(1, 120, [&](const Position& game) { compare(game); });
    EXPECT_EQ(failed, 0);
    EXPECT_GT(compared, 4000);
}

TEST_F(WholeEval, AgreesOnDrawnBoards) {
    setOddStyle();
    std::mt19937 random(3);
    for (const std::string& fen : drawnFens(random, 24, 3000)) {
        Position pos = positionOf(fen);
        if (random() % 2) pos.halfmoveClock = std::uint16_t(random() % 120);
        compare(pos);
    }
    EXPECT_EQ(failed, 0);
    EXPECT_EQ(compared, 24 * MaterialRows + 3000);
}

// And on the boards that a move of them leads to.
TEST_F(WholeEval, AgreesOnRareBoards) {
    for (const bool odd : {false, true}) {
        if (odd) setOddStyle();
        for (const char* fen : RareBoards) {
            const Position pos = positionOf(fen);
            compare(pos);
            for (const Move move : legalMoves(pos)) {
                Position child;
                ASSERT_TRUE(makeChild(pos, child, move));
                compare(child);
            }
        }
    }
    EXPECT_EQ(failed, 0);
}

// The limit itself, in tenths of a centipawn, which few boards meet.
TEST_F(WholeEval, TheWrongBishopIsWorthThirty) {
    for (const int value : {-900, -31, -30, 30, 31, 900}) {
        EXPECT_EQ(wrongBishop(rootOf("k7/8/8/8/P7/8/8/K1B5 w - -"), value), std::min(value, 30));
        EXPECT_EQ(wrongBishop(rootOf("k4b2/8/8/7p/8/8/8/7K w - -"), value), std::max(value, -30));
    }
}

// Outside the window an estimate from the line's last positional score will do, but neither late in the game
// nor with a pawn about to promote. It has no margin and is not kept.
TEST_F(WholeEval, EstimatesLeaveEarly) {
    settings.progressThreshold = 41;
    std::mt19937 random(4);
    int left = 0, stayed = 0;
    for (const std::string& fen : drawnFens(random, 8, 3000)) {
        Position pos = rootOf(fen);
        if (random() % 4 == 0) pos.halfmoveClock = std::uint16_t(random() % 110);
        const int exact = freshScore(pos);
        pos.psqBlend = int(random() % 400001) - 200000;
        const slow::Given given = givenFor(pos);
        if (given.scale == 0) continue;
        const int estimate = slow::estimate(slowEvalBoardOf(pos), given, pos.psqBlend);
        const bool seventh =
            (pos.pieces[White][Pawn] & rankMask(6)) || (pos.pieces[Black][Pawn] & rankMask(1));
        for (const int shift : {-1, 0, 1}) {
            const int bound = estimate + shift;
            const bool leaves = shift != 0 && pos.phase > 6 && !seventh;
            Position line = pos;
            ASSERT_EQ(freshScore(line, bound, bound), leaves ? estimate : exact) << fen << shift;
            ASSERT_EQ(cacheEntryOf(pos).key == pos.key, !leaves) << fen;
            ++(leaves ? left : stayed);
        }
    }
    EXPECT_GT(left, 1000);
    EXPECT_GT(stayed, 1000);
}

// Rules that favour a wing: the mean file of the pawns is rounded towards the a-file, and a rook is shut in
// on the king's side alone.
static bool favoursAWing(const slow::EvalBoard& board) {
    const slow::Army white(board, slow::White), black(board, slow::Black);
    const slow::Squares pawns = white.pawns | black.pawns;
    int files = 0;
    for (const int pawn : pawns) files += slow::fileOf(pawn);
    if (!pawns.empty() && files % slow::countOf(pawns) != 0) return true;
    return (white.rank(white.king) == 0 && !white.rooks.empty()) ||
           (black.rank(black.king) == 0 && !black.rooks.empty());
}

// The board turned by half and the colours exchanged.
TEST_F(WholeEval, ColoursAndWingsAreAlike) {
    std::mt19937 random(5);
    for (const std::string& fen : drawnFens(random, 8, 3000)) {
        if (favoursAWing(slowEvalBoardOf(positionOf(fen)))) continue;
        const std::size_t board = fen.find(' ');
        const std::string turned = colourSwapped(std::string(fen.rend() - long(board), fen.rend()));
        EXPECT_EQ(blendOf(turned + " w - -"), -blendOf(fen)) << fen;
        ++compared;
    }
    EXPECT_GT(compared, 1000);
}
