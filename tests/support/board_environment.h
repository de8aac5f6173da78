// What tests of the board and of the layers above it stand on: tables filled once, thread 0's hooks on plain
// arrays, and ways to reach many positions. A test program gets the environment by including this file.
#pragma once

#include "base/relaxed.h"
#include "base/settings.h"
#include "board/history_tables.h"
#include "board/move.h"
#include "board/position.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

// Fills the slider tables and row 0 of the thread hooks, before the first test, in start-up's order.
class BoardEnvironment : public ::testing::Environment {
   public:
    void SetUp() override;
};
inline ::testing::Environment* const boardEnvironment =
    ::testing::AddGlobalTestEnvironment(new BoardEnvironment);

// The arrays behind row 0.
struct BoardArrays {
    Relaxed<std::uint64_t> nodes;
    Relaxed<std::uint8_t> stopFlag;
    std::int32_t history[CodeCount * FromToCount];
    CaptureHistory captureHistory;
    std::uint16_t continuationHistory[ContinuationSlices * ContinuationSlice];
};
extern BoardArrays boardArrays;

// Puts `settings` back as they were when it was made.
class SettingsGuard {
   public:
    SettingsGuard() : before(settings) {}
    ~SettingsGuard() { settings = before; }
    SettingsGuard(const SettingsGuard&) = delete;
    SettingsGuard& operator=(const SettingsGuard&) = delete;

   private:
    Settings before;
};

// A record as a search's root has it: read from a FEN, with its piece-square sum and phase.
Position positionOf(const std::string& fen);

// The 64 squares from a1 on, letters for men and '1' where there is none, as the first field of a FEN.
std::string boardText(const std::string& squares);

// What a generator writes, word for word.
std::vector<Move> listOf(const Position& pos, int (*generate)(const Position&, Move*));

// Clean words. Legal ones are those that make accepts.
std::vector<Move> pseudoLegalMoves(const Position& pos);
std::vector<Move> legalMoves(const Position& pos);

// The pseudo-legal move with this text, in the notation that the settings ask for; NoMove if there is none.
Move moveOf(const Position& pos, const std::string& text);

// A root and the child of each move, of which "0000" passes. The records point at each other, so the line
// must not be copied.
std::vector<Position> playLine(const Position& root, const std::vector<std::string>& moves);
inline std::vector<Position> playLine(const std::string& fen, const std::vector<std::string>& moves) {
    return playLine(positionOf(fen), moves);
}

// Makes a move and sets the child's check flag, as every search does. False if make refuses.
bool makeChild(const Position& parent, Position& child, Move move);

// Plays random legal games, the same ones each time, and shows each position on the way. The starts are rich
// in castling, promotions, en passant, pins and checks; half of them are Chess960, and `settings.chess960`
// says so. The chain of `prev` holds while the visit lasts.
void walkRandomGames(int gamesPerStart, int plies, const std::function<void(const Position&)>& visit);
