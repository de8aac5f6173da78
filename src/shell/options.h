// The option table: rows in print order, each with everything about one option.
#pragma once

#include "shell/commands.h"

#include <algorithm>
#include <string>

// What a spin takes. Those named here bound the value in a callback too.
struct SpinBounds {
    int least, most;
    int clamp(int value) const { return std::clamp(value, least, most); }
};
inline constexpr SpinBounds HashBounds{1, 65536};          // megabytes
inline constexpr SpinBounds SyzygyProbeLimitBounds{0, 7};  // men
inline constexpr SpinBounds MctsHashBounds{128, 32768};    // megabytes

// Makes the rows. Their variables hold the defaults already.
void buildOptionTable();

// The answer to `uci`: identity, options with the values now held as their defaults, and the end mark.
void printOptions();

// Carries out a `setoption` line; `line` is the verbatim text of `tokens`. False if no row has the name,
// which is given back in `name`. `changed` is set if a value was stored; a row with a callback stores nothing
// itself.
bool setOption(const Tokens& tokens, const std::string& line, std::string& name, bool& changed);

// ---- Callbacks: a value as it was parsed, unclamped ----

void onHash(int megabytes);
void onClearHash();
void onBookFile(const std::string& name);
void onLogFile(const std::string& name);
void onHashFileName(const std::string& name);
void onSaveHash();
void onLoadHash();
void onSyzygyPath(const std::string& path);
void onSyzygyProbeLimit(int men);
void onMctsHash(int megabytes);
