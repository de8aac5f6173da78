// The command interpreter. It runs on the main thread, between searches from the main loop and, re-entrantly,
// from inside a search.
#pragma once

#include "board/position.h"

#include <functional>
#include <string>
#include <vector>

using Tokens = std::vector<std::string>;

// Runs at most one line of the queue.
void processCommand();

// Ends the process with status 0: joins the threads and frees the tables.
void shutDown();

// Runs an action now, or, while a search runs, when it is over, in the order of the calls.
void whenIdle(std::function<void()> action);
void runHeldBackActions();

// Readies the memory of all tables that a search will use, by all threads. Waits for it a second and a half
// at most; what is left stays on small pages. With `hurried` it ends when the next line comes, and an
// `isready` may go on with the rest. Only while no search runs.
void readyMemory(bool hurried = false);

// ---- The game ----

inline constexpr int MaxGameRecords = 2048;

// The positions of the game. Records behind the current one are stale.
struct Game {
    Position records[MaxGameRecords];
    int index = 0;  // of the current record
    bool started = false;

    void startFrom(const char* fen);
};
extern Game game;

// The current record, with its pointers set anew: a pool that was rebuilt has other tables.
Position& currentPosition();

// ---- Commands with files of their own ----

void positionCommand(const Tokens& tokens);
void goCommand(const Tokens& tokens);

// A whole number at the beginning of a text, as strtol reads it; 0 where a token is missing.
long integerToken(const Tokens& tokens, std::size_t index);
