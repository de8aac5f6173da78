// Material: the list of known sets, and the formula of all others written a second time.
#include "eval/eval_environment.h"
#include "eval/material_patterns.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <random>
#include <set>

// A set of men without the kings, as letters: B and b stand on light squares, C and c on dark ones.
static std::string colourSwapped(std::string letters) {
    for (char& letter : letters) letter = char(letter ^ 32);
    return letters;
}
static int count(const std::string& letters, char letter) {
    return int(std::count(letters.begin(), letters.end(), letter));
}

class MaterialTest : public EvalTest {
   protected:
    // One side's men.
    struct Side {
        int p, n, light, dark, r, q;
        Side(const std::string& letters, const char* names)
            : p(count(letters, names[0])),
              n(count(letters, names[1])),
              light(count(letters, names[2])),
              dark(count(letters, names[3])),
              r(count(letters, names[4])),
              q(count(letters, names[5])) {}
        int b() const { return light + dark; }
        int weight() const { return 28 * b() + 24 * n + 40 * r + 72 * q; }
        int phase() const { return 4 * b() + 3 * n + 8 * r + 18 * q; }
    };

    static int sideSum(const Side& own, const Side& enemy) {
        const int p = own.p, n = own.n, b = own.b(), r = own.r, q = own.q;
        int worth = 1200 * p + 4420 * n + 4680 * b + 8033 * r + 15732 * q;
        worth += 25 * p * n - 95 * p * r - 155 * p * q;
        worth += 5 * n * b - 54 * n * r - 56 * n * q;
        worth -= 36 * b * r + 72 * b * q + 232 * r * r + 629 * r * q + 854 * q * q;
        if (b >= 2) worth += (enemy.n || enemy.b() ? 647 : 691) - 10 * p - 4 * n - 20 * r - 91 * q;
        worth += enemy.p * (22 * n + 2 * b + 11 * r + 29 * q);
        if (n + b - enemy.n - enemy.b() > 2) worth += 200;
        return worth;
    }

    static int unequalBishops(const Side& white, const Side& black) {
        const bool differ = white.light != black.light;
        const bool single = white.b() == 1 && black.b() == 1;
        int worth = 0;
        if (white.b() && black.b() <= 1 && !black.n && (!single || differ)) worth += 30;
        if (black.b() && white.b() <= 1 && !white.n && (!single || differ)) worth += single ? -30 : 30;
        return worth;
    }

    // In blended units.
    int plainFormula(const std::string& letters, float& scale) {
        const Side white(letters, "PNBCRQ"), black(letters, "pnbcrq");
        const int difference = sideSum(white, black) - sideSum(black, white) + unequalBishops(white, black);
        const int pieces = white.phase() + black.phase();
        const int phase = std::min(pieces, 96);
        const int pawns = white.p + black.p;
        const bool oneEach = white.b() == 1 && black.b() == 1;
        const bool opposite = oneEach && white.light != black.light;
        scale = float(0.95 + phase / 480.0);
        const int weight = white.weight() == black.weight() ? white.weight() : -1;
        if (pawns && weight == 0) ++hits["pawn ending"], scale = 1.3f;
        if (weight == 72 || weight == 40) ++hits["one heavy piece each"], scale *= 0.9f;
        if (opposite && weight == 28) ++hits["opposite bishops alone"], scale = 0.64f;
        scale *= pawnFactor(white, black, difference);
        int value = int(scale * float(96 * difference));
        if (opposite) ++hits["opposite bishops"], value = int(value * 9LL / 10);
        const int excess = std::max(std::abs(value) - 72000, 0) * (value < 0 ? -1 : 1);
        hits["excess"] += excess != 0;
        return value - excess * phase / 384;
    }

    float pawnFactor(const Side& white, const Side& black, int difference) {
        const std::vector<float> none = {0.05f, 0.11f, 0.2f, 0.28f},
                                 few = {0.4f, 0.5f, 0.62f, 0.72f, 0.82f, 0.9f};
        const int gap = std::abs(white.weight() / 8 - black.weight() / 8);
        const bool near = gap < 4;
        if (white.p == 0 && black.p == 0) return near ? none[std::size_t(gap)] : 1;
        if (white.phase() + black.phase() == 0) return 1;
        const int better = difference > 0 ? white.p : difference < 0 ? black.p : std::max(white.p, black.p);
        const int worse = difference > 0 ? black.p : difference < 0 ? white.p : 0;
        const bool bare = difference != 0 ? better == 0 && worse < 2 : better < 2;
        if (bare && near) return ++hits["bare"], none[std::size_t(gap)];
        if (difference == 0) ++hits["even"];
        return better > 5 ? 1 : few[std::size_t(better)];
    }

    std::map<std::string, int> hits;
};

// Each row and its mirror, wherever the men stand. A bishop stays on its square colour.
TEST_F(MaterialTest, KnownSetsSpeakForBothColours) {
    std::mt19937 random(1);
    for (const MaterialRow& row : materialRows) {
        if (row.handler) continue;
        const std::string letters = row.pattern;
        float scale = -1;
        EXPECT_EQ(materialOf(placedAtRandom(letters, random) + " w - -", &scale), row.value * 96) << letters;
        EXPECT_EQ(scale, row.scale) << letters;
        if (letters.find('k') == std::string::npos) {
            EXPECT_EQ(materialOf(placedAtRandom(colourSwapped(letters), random) + " w - -", &scale),
                      -row.value * 96)
                << letters;
            EXPECT_EQ(scale, row.scale) << letters;
        }
    }
    // Intended: the row means two queens and more of Black's and speaks for White, its mirror for Black.
    EXPECT_EQ(materialOf("qqrrk1b1/8/8/8/8/8/8/4K3 w - -"), 521 * 96);
    EXPECT_EQ(materialOf("4k3/8/8/8/8/8/8/QQRRKB2 w - -"), -521 * 96);
}

TEST_F(MaterialTest, KnownSetsHaveKeysAndSlotsOfTheirOwn) {
    std::set<Key> keys, slots;
    std::mt19937 random(1);
    for (const MaterialRow& row : materialRows) {
        for (const std::string& letters : {std::string(row.pattern), colourSwapped(row.pattern)}) {
            const Key key = rootOf(placedAtRandom(letters, random) + " w - -").matKey;
            keys.insert(key);
            slots.insert(key & 0xffff);
        }
    }
    EXPECT_EQ(keys.size(), 244u);
    EXPECT_EQ(slots.size(), 244u);
}

// The sum weighted by place was worked out apart from the program.
TEST_F(MaterialTest, ListAddsUp) {
    int values = 0, handlers = 0;
    long scales = 0;
    for (int row = 0; row < MaterialRows; ++row) {
        values += (row + 1) * materialRows[row].value;
        scales += (row + 1) * std::lround(100 * materialRows[row].scale);
        handlers += materialRows[row].handler != nullptr;
    }
    EXPECT_EQ(values, 4803018);
    EXPECT_EQ(scales, 202972);
    EXPECT_EQ(handlers, 5);
}

TEST_F(MaterialTest, FormulaGivesTheNumbersOfItsRule) {
    float scale = 0;
    EXPECT_EQ(materialOf("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -"), 0);
    EXPECT_EQ(materialOf("r1bqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -", &scale), 403356);
    EXPECT_FLOAT_EQ(scale, 1.14375f);
    EXPECT_EQ(materialOf("4k3/p7/8/8/8/8/PP6/4K3 w - -", &scale), 149760);
    EXPECT_FLOAT_EQ(scale, 1.3f);
    EXPECT_EQ(materialOf("4k3/pp6/8/8/8/8/P7/4K3 w - -"), -149760);
}

TEST_F(MaterialTest, FormulaHoldsForEverySet) {
    std::set<std::string> known;
    const auto sorted = [](std::string letters) {
        std::erase(letters, 'k');
        std::sort(letters.begin(), letters.end());
        return letters;
    };
    for (const MaterialRow& row : materialRows) {
        known.insert(sorted(row.pattern));
        known.insert(sorted(colourSwapped(row.pattern)));
    }
    std::mt19937 random(7);
    int compared = 0;
    for (int number = 0; number < 20000; ++number) {
        // Thin sets more often than full ones, and often the same pieces on both sides.
        const unsigned fullness = unsigned(number) % 4 + 1;
        const auto some = [&](char letter, unsigned most) {
            return std::string(random() % ((most * fullness + 3) / 4 + 1), letter);
        };
        const std::string white =
            some('P', 8) + some('N', 4) + some('B', 3) + some('C', 3) + some('R', 4) + some('Q', 4);
        std::string black = random() % 3 ? some('P', 8) + some('N', 4) + some('B', 3) + some('C', 3) +
                                               some('R', 4) + some('Q', 4)
                                         : white;
        if (random() % 2) std::replace(black.begin(), black.end(), 'B', 'C');
        if (random() % 2 && !black.empty()) black.erase(random() % black.size(), 1);
        const std::string letters = white + colourSwapped(black);
        if (known.count(sorted(letters)) || letters.size() > 30) continue;
        float expectedScale = 0, scale = -1;
        const int expected = plainFormula(letters, expectedScale);
        ASSERT_EQ(materialOf(placedAtRandom(letters, random) + " w - -", &scale), expected) << letters;
        ASSERT_EQ(scale, expectedScale) << letters;
        ++compared;
    }
    EXPECT_GT(compared, 15000);
    EXPECT_EQ(hits.size(), 7u);
    for (const auto& [rule, times] : hits) EXPECT_GE(times, 20) << rule;
}

// Intended: a lone black bishop, with no white knight about, is worth thirty to White.
TEST_F(MaterialTest, SingleBishopsFavourWhite) {
    const int white = materialOf("4k2r/pppp4/8/8/8/8/PPPP4/2B1K2R w - -");
    const int black = -materialOf("2b1k2r/pppp4/8/8/8/8/PPPP4/4K2R w - -");
    EXPECT_GT(white, black);
}
