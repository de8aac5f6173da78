// Scores as text.
#include "shell/reports.h"

#include "endgame/tb_probe.h"

#include <gtest/gtest.h>

struct ScoreTextRow {
    int score, bound, rootScore;
    const char* text;
};

class ScoreText : public ::testing::TestWithParam<ScoreTextRow> {};

TEST_P(ScoreText, IsWhatTheProtocolWants) {
    const ScoreTextRow& row = GetParam();
    tbRootScore = row.rootScore;
    EXPECT_EQ(scoreToText(row.score, row.bound), row.text);
    tbRootScore = NoTbScore;
}

INSTANTIATE_TEST_SUITE_P(Plain, ScoreText,
                         ::testing::Values(ScoreTextRow{31999, 0, NoTbScore, "mate 1"},
                                           ScoreTextRow{31998, 0, NoTbScore, "mate 2"},
                                           ScoreTextRow{31997, 0, NoTbScore, "mate 2"},
                                           ScoreTextRow{-31998, 0, NoTbScore, "mate -1"},
                                           ScoreTextRow{-31996, 0, NoTbScore, "mate -2"},
                                           ScoreTextRow{31800, 0, NoTbScore, "mate 101"},
                                           ScoreTextRow{-31800, 0, NoTbScore, "mate -100"},
                                           ScoreTextRow{25001, 0, NoTbScore, "cp 25000"},
                                           ScoreTextRow{31750, 0, NoTbScore, "cp 25000"},
                                           ScoreTextRow{-12, 0, NoTbScore, "cp -12"},
                                           ScoreTextRow{-12, 1, NoTbScore, "cp -12 lowerbound"},
                                           ScoreTextRow{31999, 2, NoTbScore, "mate 1 upperbound"}));

// Tables that decided the root speak for the search, without a bound, unless it has seen a mate.
INSTANTIATE_TEST_SUITE_P(Tables, ScoreText,
                         ::testing::Values(ScoreTextRow{150, 1, 31799, "mate 1000"},
                                           ScoreTextRow{150, 0, -31799, "mate -1000"},
                                           ScoreTextRow{150, 2, 0, "cp 0"}, ScoreTextRow{150, 0, 2, "cp 2"},
                                           ScoreTextRow{31999, 1, 2, "mate 1"}));
