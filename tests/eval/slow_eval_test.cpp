// The whole evaluation against the slow one, exactly, on games, on every known set of material and on sets
// drawn at random; and its symmetries over the same positions.
#include "eval/eval_environment.h"
#include "eval/material_patterns.h"
#include "eval/slow_eval_of.h"

#include <algorithm>
#include <random>
#include <sstream>

namespace {

// With either side to move.
std::string drawnFen(const std::string& men, std::mt19937& random) {
    const std::string board = placedAtRandom(men, random);
    return board + (random() % 2 ? " w - -" : " b - -");
}

// Both colours' sets of each known pattern.
std::vector<std::string> knownSets(std::mt19937& random, int each) {
    std::vector<std::string> fens;
    for (const MaterialRow& row : materialRows) {
        for (int number = 0; number < each; ++number) {
            std::string men = row.pattern;
            if (number % 2)
                for (char& man : men) man = char(man ^ 32);
            fens.push_back(drawnFen(men, random));
        }
    }
    return fens;
}

// From thin to full boards, mostly unbalanced. No side has more men than a game can bring.
std::vector<std::string> drawnSets(std::mt19937& random, int count) {
    std::vector<std::string> fens;
    for (int number = 0; number < count; ++number) {
        std::string men;
        for (const char* letters : {"PNBRQ", "pnbrq"}) {
            const unsigned fullness = unsigned(number) % 4 + 1;
            const unsigned most[] = {2 * fullness, 2, 2, 2, 1};
            for (unsigned type = 0; type < 5; ++type) {
                const std::size_t some = random() % (most[type] + 1);
                // Any square's colour will do for a bishop.
                for (std::size_t man = 0; man < some; ++man)
                    men += type == 2 && random() % 2 ? char(letters[type] + 1) : letters[type];
            }
        }
        fens.push_back(drawnFen(men, random));
    }
    return fens;
}

// Files from h to a, without castling rights.
std::string mirroredFiles(const std::string& fen) {
    std::istringstream words(fen);
    std::string board, side, result, rank;
    words >> board >> side;
    std::istringstream ranks(board);
    while (std::getline(ranks, rank, '/')) {
        std::reverse(rank.begin(), rank.end());
        result += (result.empty() ? "" : "/") + rank;
    }
    return result + " " + side + " - -";
}

// Thin endings of every kind of phase below 18, which random games seldom reach.
const char* const ThinEndings[] = {
    "8/5k2/1p4p1/p6p/P2N3P/1P4P1/5K2/8 w - -",
    "8/2k5/8/PP2b3/8/8/8/4K3 w - -",
    "4k3/4p3/4n3/2b5/8/3B1N2/3PP3/3K4 b - -",
    "8/pp3k2/4r3/8/8/4R3/PPP2K2/8 w - -",
    "k7/8/1K6/8/P7/8/8/2B5 w - -",
    "k7/8/1K6/8/P7/8/8/2B1B3 w - -",
    "8/8/2b5/p7/8/1k6/8/K7 b - -",
    "4k3/8/8/2p1p1p1/2P1P1P1/8/8/4K3 w - -",
    "5bk1/p5pp/8/8/8/8/PP5P/5BK1 w - -",
    "8/1p1k4/p1pp4/P1P1p1p1/1P1PPpPp/5P1P/3K4/8 w - -",
};

}  // namespace

class WholeEval : public EvalTest {
   protected:
    // Both evaluations, with the slow one's terms if they differ.
    void compare(const Position& game) {
        Position pos = withCaches(game);
        forgetCaches();
        const int score = scoreOf(pos);
        forgetCaches();
        pos.psqBlend = 0;
        evaluate(pos, -OpenEvalBound, OpenEvalBound);
        const slow::Given given = givenFor(pos);
        const slow::Judgement judgement = slow::judge(slowEvalBoardOf(pos), given);
        ++compared;
        if (score == judgement.score && pos.psqBlend == judgement.psqBlend) return;
        if (++failed > 3) return;
        std::ostringstream terms;
        printTerms(terms, judgement, given);
        ADD_FAILURE() << writeFen(pos) << "\nscore " << score << ", blended " << pos.psqBlend << '\n'
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

TEST_F(WholeEval, AgreesOnKnownMaterial) {
    setOddStyle();
    std::mt19937 random(3);
    for (const std::string& fen : knownSets(random, 24)) compare(positionOf(fen));
    EXPECT_EQ(compared, 24 * MaterialRows);
    for (const char* fen : ThinEndings) {
        const Position pos = positionOf(fen);
        compare(pos);
        for (const Move move : legalMoves(pos)) {
            Position child;
            ASSERT_TRUE(makeChild(pos, child, move));
            compare(child);
        }
    }
    EXPECT_EQ(failed, 0);
}

TEST_F(WholeEval, AgreesOnDrawnMaterial) {
    std::mt19937 random(4);
    for (const std::string& fen : drawnSets(random, 3000)) {
        Position pos = positionOf(fen);
        pos.halfmoveClock = std::uint16_t(random() % 120);
        compare(pos);
    }
    EXPECT_EQ(failed, 0);
    EXPECT_EQ(compared, 3000);
}

// Rules that favour a wing: the mean file of the pawns is rounded towards the a-file, a rook is shut in on
// the king's side alone, and of two bishops the lowest counts in the corner of a rook's pawn. Material, which
// asks for the colours of the bishops' squares, is left to its own tests.
static bool favoursAWing(const slow::EvalBoard& board) {
    int files = 0;
    slow::Squares pawns = slow::joined(menOf(board, 0, "P"), menOf(board, 1, "P"));
    for (const int pawn : pawns) files += pawn % 8;
    if (!pawns.empty() && std::size_t(files) % pawns.size()) return true;
    for (const int colour : {0, 1}) {
        const int king = kingOf(board, colour);
        if (slow::relativeRank(king, colour) == 0 && !menOf(board, colour, "R").empty()) return true;
        if (menOf(board, colour, "B").size() > 1) return true;
    }
    return false;
}

TEST_F(WholeEval, WingsAreAlike) {
    std::mt19937 random(5);
    std::vector<std::string> fens = knownSets(random, 8);
    for (const std::string& fen : drawnSets(random, 2000)) fens.push_back(fen);
    for (const std::string& fen : fens) {
        if (favoursAWing(slowEvalBoardOf(positionOf(fen)))) continue;
        float scale = 0, mirroredScale = 0;
        if (materialOf(fen, &scale) != materialOf(mirroredFiles(fen), &mirroredScale)) continue;
        if (scale != mirroredScale) continue;
        ++compared;
        const int score = scoreOf(fen);
        EXPECT_EQ(scoreOf(mirroredFiles(fen)), score) << fen;
    }
    EXPECT_GT(compared, 500);
}
