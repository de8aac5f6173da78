// Scores as text.
#include "shell/reports.h"

#include "endgame/tb_probe.h"

#include <gtest/gtest.h>

TEST(ScoreText, IsWhatTheProtocolWants) {
    struct Row {
        int score, bound;
        const char* text;
        int rootScore = NoTbScore;  // by the tables
    };
    for (const Row& row :
         {Row{31999, 0, "mate 1"}, Row{31998, 0, "mate 2"}, Row{31997, 0, "mate 2"},
          Row{-31998, 0, "mate -1"}, Row{-31996, 0, "mate -2"}, Row{31800, 0, "mate 101"},
          Row{-31800, 0, "mate -100"}, Row{25001, 0, "cp 25000"}, Row{-31750, 0, "cp -25000"},
          Row{-12, 0, "cp -12"}, Row{-12, 1, "cp -12 lowerbound"}, Row{31999, 2, "mate 1 upperbound"},
          // Tables that decided the root speak for the search, without a bound, unless it has seen a mate.
          Row{150, 1, "mate 1000", 31799}, Row{150, 0, "mate -1000", -31799}, Row{150, 2, "cp 0", 0},
          Row{150, 0, "cp 2", 2}, Row{31999, 1, "mate 1", 2}}) {
        tbSearch.decideRoot(row.rootScore);
        EXPECT_EQ(scoreToText(row.score, row.bound), row.text) << row.score << ' ' << row.rootScore;
    }
    tbSearch.begin(0);
}
