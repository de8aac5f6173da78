#include "search/strength.h"

#include "base/settings.h"
#include "endgame/book.h"
#include "eval/king_danger.h"
#include "eval/style.h"
#include "search/limits.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>

namespace {

// By skill. Intended: neither list is smooth; noise and depth work together.
constexpr int SkillNoise[FullSkill + 1] = {2500, 1400, 750, 420, 380, 280, 200, 220, 155, 105, 65,
                                           95,   50,   65,  90,  25,  15,  7,   5,   3,   0};
constexpr int SkillDepth[FullSkill + 1] = {1, 1, 1, 1, 2, 2, 2, 3, 3, 3, 3, 4, 4, 5, 6, 6, 7, 8, 9, 10, 999};

std::uint64_t randomWord() {
    const std::uint64_t first = std::uint64_t(std::rand());
    const std::uint64_t second = std::uint64_t(std::rand());
    const std::uint64_t third = std::uint64_t(std::rand());
    return third ^ second << 14 ^ first << 29;
}

}  // namespace

void seedRandom() {
    std::srand(unsigned(std::time(nullptr)));
    setNoiseKey(randomWord());
}

void applyStrength(const Position& root, bool treeMode) {
    static int lastGamePly = 0;
    const int skill = settings.skill;
    int jitter = settings.variety;
    setNoise(SkillNoise[skill] * 2);
    searchState.skillDepth = SkillDepth[skill];
    bookMoveLimit = settings.bookMoves;
    if (skill < FullSkill) {
        seedRandom();
        jitter = 25 - skill;
        bookMoveLimit = std::max(skill - 2, 0);
    }
    setKingSafetyJitter(jitter);
    // A new game gets a king safety of its own, and a search at full strength the plain one.
    const bool newGame = root.gamePly < lastGamePly;
    if (jitter != 0 ? newGame : isKingSafetyVaried())
        buildKingSafetyTable(treeMode ? UsualKingSafety : settings.kingSafety.load());
    lastGamePly = root.gamePly;
}
