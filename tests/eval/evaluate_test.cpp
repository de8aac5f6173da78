// The whole evaluation against exact values by an independent writing, in positions in which every rule is
// met; what the list leaves out; the early exit, the symmetries, and the account of the steps.
#include "eval/evaluate.h"

#include "eval/endgames.h"
#include "eval/eval_environment.h"
#include "support/eval_account.h"

#include <cmath>
#include <fstream>
#include <sstream>

class WholeEval : public EvalTest {
   protected:
    struct Listed {
        std::string fen;                    // four fields
        std::map<std::string, int> scores;  // by the style's name
    };
    static const std::vector<Listed>& listed() {
        static const std::vector<Listed> all = [] {
            std::vector<Listed> read;
            std::ifstream file(TARVOK_SOURCE_DIR "/tests/data/evaluations.epd");
            for (std::string line; std::getline(file, line);) {
                std::istringstream words(line);
                std::string board, side, castling, target, style, score;
                words >> board >> side >> castling >> target;
                if (board == "#") continue;
                read.push_back({board + ' ' + side + ' ' + castling + ' ' + target, {}});
                while (words >> style >> score) read.back().scores[style] = std::stoi(score);
            }
            return read;
        }();
        return all;
    }
    static void setStyle(const std::string& style, Colour mover) {
        settings.kingSafety = style == "ks0" ? 0 : style == "ks200" ? 200 : 72;
        settings.dynamism = style == "dyn0" ? 0 : style == "dyn400" ? 400 : 125;
        settings.contempt = style == "con100" ? 100 : 0;
        setContempt(settings.contempt, mover, false);
        initEvalParameters();
    }
};

// At first, and again from the cache. The parameters are built anew for each style, and the piece-square sum
// with them.
TEST_F(WholeEval, EqualsTheListedScores) {
    int compared = 0;
    for (const Listed& row : listed()) {
        const Colour mover = positionOf(row.fen).sideToMove();
        for (const auto& [style, score] : row.scores) {
            if (style != "eval") setStyle(style, mover);
            Position pos = rootOf(row.fen);
            EXPECT_EQ(freshScore(pos), score) << row.fen << ' ' << style;
            EXPECT_EQ(evaluate(pos, -OpenEvalBound, OpenEvalBound), score) << row.fen << ' ' << style;
            ++compared;
        }
    }
    EXPECT_EQ(compared, 3326 + 5 * 400);
}

// Boards that only somebody who means it sets up: sums and their products must not overflow.
TEST_F(WholeEval, CrowdsStayInRange) {
    for (const auto& [fen, score] :
         {std::pair{"4k3/8/8/QQQQQQQQ/QQQQQQQQ/8/8/4K3 b - -", -4123},
          {"rnbqkbnr/qqqqqqqq/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -", -1447},
          {"6k1/pppppppp/nnbbrrnn/bbbbrrnn/NNRRBBBB/NNRRBBNN/PPPPPPPP/1K6 w - -", 10},
          {"knnnnnnn/nnnnnnnn/nnnnnnnn/nnnnnnnn/nnnnnnnn/nnnnnnnn/nnnnnnPp/nnnnnnnK w - -", -11534}}) {
        Position pos = rootOf(fen);
        EXPECT_EQ(freshScore(pos), score) << fen;
    }
}

// What the list has no column for: the clock beyond its threshold, the limits of a wrong bishop, which few
// boards meet, and noise of the asked width, the same each time.
TEST_F(WholeEval, ClockWrongBishopAndNoise) {
    settings.progressThreshold = 41;
    Position pos = rootOf("4k3/8/8/8/8/2N5/PP6/4K3 b - -");
    const int score = freshScore(pos);
    ASSERT_LT(score, -400);
    for (const auto& [clock, expected] :
         {std::pair{41, score}, {42, score}, {71, score * 30 / 59}, {100, score / 59}}) {
        pos.halfmoveClock = std::uint16_t(clock);
        EXPECT_EQ(freshScore(pos), expected) << clock;
        EXPECT_EQ(evaluate(pos, -OpenEvalBound, OpenEvalBound), expected) << "from the cache, " << clock;
    }
    for (const int value : {-900, -31, -30, 30, 31, 900}) {
        EXPECT_EQ(wrongBishop(rootOf("k7/8/8/8/P7/8/8/K1B5 w - -"), value), std::min(value, 30));
        EXPECT_EQ(wrongBishop(rootOf("k4b2/8/8/7p/8/8/8/7K w - -"), value), std::max(value, -30));
    }
    std::set<int> differences;
    for (const Listed& row : listed()) {
        Position quiet = rootOf(row.fen), noisy = quiet;
        setNoise(0);
        const int before = freshScore(quiet);
        if (before == 0) continue;
        setNoise(37);
        setNoiseKey(0x5bd1e9955bd1e995ULL);
        const int after = freshScore(noisy);
        EXPECT_EQ(freshScore(noisy), after) << row.fen;
        EXPECT_NEAR(after, before, 19 + 2) << row.fen;
        differences.insert(after - before);
    }
    EXPECT_GT(differences.size(), 30u);
}

// Outside the window an estimate from the line's last positional score will do, but neither late in the game
// nor with a pawn about to promote. It has no margin and is not kept.
TEST_F(WholeEval, EstimatesLeaveEarly) {
    settings.progressThreshold = 41;
    std::mt19937 random(4);
    int left = 0, stayed = 0;
    for (const Listed& row : listed()) {
        Position pos = rootOf(row.fen);
        if (random() % 4 == 0) pos.halfmoveClock = std::uint16_t(random() % 110);
        const int exact = freshScore(pos);
        float scale;
        const int material = evaluateMaterial(pos, scale);
        if (scale == 0) continue;
        pos.psqBlend = int(random() % 400001) - 200000;
        int estimate = int(std::lround((int(scale * float(pos.psqBlend)) + material) / 960.0));
        if (pos.sideToMove() == Black) estimate = -estimate;
        if (std::abs(material) < 19200) estimate = estimate * 88 / 100;
        if (pos.halfmoveClock > 41) estimate = int((101L - pos.halfmoveClock) * estimate / 59);
        const bool seventh =
            (pos.pieces[White][Pawn] & rankMask(6)) || (pos.pieces[Black][Pawn] & rankMask(1));
        for (const int shift : {-1, 0, 1}) {
            const int bound = estimate + shift;
            const bool leaves = shift != 0 && pos.phase > 6 && !seventh;
            Position line = pos;
            ASSERT_EQ(freshScore(line, bound, bound), leaves ? estimate : exact) << row.fen << shift;
            ASSERT_EQ(cacheEntryOf(pos).key == pos.key, !leaves) << row.fen;
            ++(leaves ? left : stayed);
        }
    }
    EXPECT_GT(left, 1000);
    EXPECT_GT(stayed, 1000);
}

// Rules that favour a wing: the mean file of the pawns is rounded towards the a-file, and a rook is shut in
// on the king's side alone.
static bool favoursAWing(const Position& pos) {
    int files = 0, pawns = 0;
    forEachSquare(pos.pieces[White][Pawn] | pos.pieces[Black][Pawn], [&](int square) {
        files += fileOf(square);
        ++pawns;
    });
    const auto kingAtHome = [&](Colour us) {
        return relativeRank(us, pos.kingSquare(us)) == 0 && pos.pieces[us][Rook];
    };
    return (pawns && files % pawns != 0) || kingAtHome(White) || kingAtHome(Black);
}

// The board turned by half and the colours exchanged.
TEST_F(WholeEval, ColoursAndWingsAreAlike) {
    int compared = 0;
    for (const Listed& row : listed()) {
        const std::string board = row.fen.substr(0, row.fen.find(' '));
        const std::string turned = colourSwapped({board.rbegin(), board.rend()});
        Position pos = rootOf(board + " w - -"), image = rootOf(turned + " w - -");
        if (favoursAWing(pos)) continue;
        freshScore(pos);
        freshScore(image);
        EXPECT_EQ(image.psqBlend, -pos.psqBlend) << row.fen;
        ++compared;
    }
    EXPECT_GT(compared, 500);
}

// The rows lead to the score: what a reader of the account adds up is what the engine has added.
TEST_F(WholeEval, AccountsAddUp) {
    int whole = 0;
    for (const Listed& row : listed()) {
        Position pos = rootOf(row.fen);
        const int score = freshScore(pos);
        const EvalAccount account(pos);
        ASSERT_EQ(account.score, score) << row.fen;
        ASSERT_EQ(account.steps.back().value, score) << row.fen;
        if (account.rows.empty()) continue;
        Lanes pieces, pawns;
        for (const EvalAccount::Row& stage : account.rows)
            (stage.name == "pawns" ? pawns : pieces) += stage.white - stage.black;
        const int phase = pos.cappedPhase();
        const int mg = mgOf(pawns) + mgOf(pieces) * evalStyle.dynamismMg / 128;
        const int eg = egOf(pawns) + egOf(pieces) * evalStyle.dynamismEg / 128;
        const Lanes sum = account.sums.back().value;
        ASSERT_EQ(mgOf(sum), mg) << row.fen;
        if (phase >= 18) {
            ASSERT_EQ(egOf(sum), eg) << row.fen;
        }
        ASSERT_EQ(account.steps[0].value, egOf(sum) * (MaxPhase - phase) + mg * phase) << row.fen;
        ++whole;
    }
    EXPECT_GT(whole, 2000);
}
