#include "shell/reports.h"

#include "base/output.h"
#include "board/move_text.h"
#include "board/types.h"
#include "endgame/tb_probe.h"
#include "search/search_host.h"
#include "search/thread_pool.h"
#include "search/time_manager.h"
#include "search/trans_table.h"
#include "shell/log.h"

#include <algorithm>
#include <cstdlib>

namespace {

using Count = unsigned long long;

// The numbers that every line of a search has.
struct Progress {
    double seconds;
    Count milliseconds, nodes, nps;
};

Progress progressNow() {
    const double seconds = elapsedSeconds();
    const Count nodes = threadPool.totalNodes();
    return {seconds, Count(seconds * 1000), nodes, Count(double(nodes) / seconds)};
}

const char* boundWord(int bound) {
    return bound == ReportUpper ? " upperbound" : bound == ReportLower ? " lowerbound" : "";
}

// The first 31 characters of a line, cut back at the last blank.
std::string beginningOf(const std::string& line) {
    constexpr std::size_t Longest = 31;
    if (line.size() <= Longest) return line;
    const std::string cut = line.substr(0, Longest);
    return cut.substr(0, cut.rfind(' '));
}

}  // namespace

std::string scoreToText(int score, int bound, int* shown) {
    constexpr int TableRange = 31700;  // from here on a table's score is a sure win
    const bool tableDecides = tbSearch.rootScore() != NoTbScore;
    int value = score;
    if (tableDecides) {
        if (std::abs(score) < MateBound) value = tbSearch.rootScore();
        bound = ReportExact;
    }
    if (shown) *shown = value;
    const int magnitude = std::abs(value);
    std::string text;
    if (magnitude >= MateBound) {
        const int moves = value > 0 ? (MateScore - value) / 2 + 1 : -((MateScore - 1 - magnitude) / 2) - 1;
        text = "mate " + std::to_string(moves);
    } else if (!tableDecides || magnitude < TableRange) {
        text = "cp " + std::to_string(std::clamp(value, -LargestShown, LargestShown));
    } else {
        text = value < 0 ? "mate -1000" : "mate 1000";
    }
    return text + boundWord(bound);
}

void reportDepth(int depth, int score, const Move* pv, int bound) {
    constexpr int HashfullDepth = 18;                    // plies; the share means little before
    constexpr const char* Tags[3] = {"--", "FH", "FL"};  // by bound
    if (depth < 1) return;
    const Progress now = progressNow();
    int shown = 0;
    const std::string scoreText = scoreToText(score, bound, &shown);
    const std::string line = pvToText(pv);
    std::string hashfull;
    if (depth >= HashfullDepth) hashfull = " hashfull " + std::to_string(transTable.occupancy());
    sendLine("info depth %d time %llu nodes %llu score %s nps %llu%s tbhits %llu pv %s\n", depth,
             now.milliseconds, now.nodes, scoreText.c_str(), now.nps, hashfull.c_str(),
             Count(tbSearch.hits()), line.c_str());
    logPrintf("info: %3d %8.2f %8d %s  %s\n", depth, now.seconds, shown, Tags[bound],
              beginningOf(line).c_str());
}

void reportMultiPvLine(int index, int depth, int score, const Move* pv) {
    const Progress now = progressNow();
    sendLine("info multipv %d depth %d time %llu nodes %llu score %s nps %llu tbhits %llu pv %s\n", index,
             depth, now.milliseconds, now.nodes, scoreToText(score, ReportExact).c_str(), now.nps,
             Count(tbSearch.hits()), pvToText(pv).c_str());
}

void reportDepthEnd(int depth) {
    if (depth < 1) return;
    const Progress now = progressNow();
    sendLine("info depth %d time %llu nodes %llu nps %llu\n", depth, now.milliseconds, now.nodes, now.nps);
}

void reportSearchEnd() {
    const Progress now = progressNow();
    sendLine("info time %llu nodes %llu nps %llu\n", now.milliseconds, now.nodes, now.nps);
}

void reportNodes() { sendLine("info nodes %llu\n", Count(threadPool.totalNodes())); }

void reportCurrentMove(Move move, int number) {
    sendLine("info currmove %s currmovenumber %d\n", moveText(move).c_str(), number);
}

void reportBookMove(Move move) { sendLine("info book move is %s\n", moveText(move).c_str()); }

void sendBestMove(Move best, Move ponder) {
    if (ponder == NoMove)
        sendLine("bestmove %s\n", moveText(best).c_str());
    else
        sendLine("bestmove %s ponder %s\n", moveText(best).c_str(), moveText(ponder).c_str());
}

void reportBestMove(Move best, Move ponder) {
    sendBestMove(best, ponder);
    logPrintf("bestmove: %s\n", moveText(best).c_str());
    if (ponder != NoMove) logPrintf("ponder: %s\n", moveText(ponder).c_str());
}
