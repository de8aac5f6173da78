#include "shell/options.h"

#include "base/output.h"
#include "base/settings.h"
#include "search/strength.h"
#include "shell/start_up.h"

#include <algorithm>
#include <cstdlib>
#include <strings.h>
#include <variant>

namespace {

using SpinCallback = void (*)(int);
using TextCallback = void (*)(const std::string&);
using ButtonCallback = void (*)();

struct Check {
    Relaxed<bool>* value;
};
// A check whose variable is a number; any but 0 is true.
struct NumberCheck {
    Relaxed<int>* value;
};
struct Spin {
    Relaxed<int>* value;
    SpinBounds bounds;
    SpinCallback callback;
};
struct Text {
    std::string* value;
    TextCallback callback;
};
struct Button {
    ButtonCallback callback;
};

struct OptionEntry {
    const char* name;
    std::variant<Check, NumberCheck, Spin, Text, Button> kind;
};

std::vector<OptionEntry> optionTable;

void addCheck(const char* name, Relaxed<bool>* value) { optionTable.push_back({name, Check{value}}); }
void addSpin(const char* name, Relaxed<int>* value, SpinBounds bounds, SpinCallback callback = nullptr) {
    optionTable.push_back({name, Spin{value, bounds, callback}});
}
void addText(const char* name, std::string* value, TextCallback callback) {
    optionTable.push_back({name, Text{value, callback}});
}
void addButton(const char* name, ButtonCallback callback) { optionTable.push_back({name, Button{callback}}); }

template <class... Visitors>
struct Overloaded : Visitors... {
    using Visitors::operator()...;
};
template <class... Visitors>
Overloaded(Visitors...) -> Overloaded<Visitors...>;

const char* truthText(bool value) { return value ? "true" : "false"; }

// The row's type, value and bounds as `uci` prints them.
std::string describe(const OptionEntry& entry) {
    return std::visit(
        Overloaded{
            [](const Check& row) { return std::string("check default ") + truthText(*row.value); },
            [](const NumberCheck& row) { return std::string("check default ") + truthText(*row.value != 0); },
            [](const Spin& row) {
                return "spin default " + std::to_string(*row.value) + " min " +
                       std::to_string(row.bounds.least) + " max " + std::to_string(row.bounds.most);
            },
            [](const Text& row) {
                return "string default " + (row.value->empty() ? std::string("<empty>") : *row.value);
            },
            [](const Button&) { return std::string("button"); },
        },
        entry.kind);
}

bool parseTruth(const std::string& text) {
    if (strcasecmp(text.c_str(), "true") == 0) return true;
    if (strcasecmp(text.c_str(), "false") == 0) return false;
    return std::strtol(text.c_str(), nullptr, 10) != 0;
}

int parseNumber(const std::string& text) {
    constexpr long Least = -2147483647, Most = 2147483647;
    return int(std::clamp(std::strtol(text.c_str(), nullptr, 10), Least, Most));
}

// Stores a value or hands it to the row's callback. True if it was stored.
bool applyValue(const OptionEntry& entry, const std::string& text) {
    return std::visit(Overloaded{
                          [&](const Check& row) {
                              *row.value = parseTruth(text);
                              return true;
                          },
                          [&](const NumberCheck& row) {
                              *row.value = parseTruth(text) ? 1 : 0;
                              return true;
                          },
                          [&](const Spin& row) {
                              const int value = parseNumber(text);
                              if (row.callback)
                                  row.callback(value);
                              else
                                  *row.value = row.bounds.clamp(value);
                              return row.callback == nullptr;
                          },
                          [&](const Text& row) {
                              row.callback(text);
                              return false;
                          },
                          [&](const Button& row) {
                              row.callback();
                              return false;
                          },
                      },
                      entry.kind);
}

struct NameAndValue {
    std::string name, value;
};

// The name is joined from its words by single blanks; the value is the rest of the verbatim line, blanks and
// all.
NameAndValue parseAssignment(const Tokens& tokens, const std::string& line) {
    enum class Mode { None, Name, Value } mode = Mode::None;
    NameAndValue result;
    for (std::size_t i = 1; i < tokens.size(); ++i) {
        if (mode == Mode::Value) {
            const std::size_t mark = line.find("value ");
            if (mark != std::string::npos) result.value = line.substr(mark + 6);
            break;
        }
        if (tokens[i] == "name") {
            mode = Mode::Name;
        } else if (tokens[i] == "value") {
            mode = Mode::Value;
        } else if (mode == Mode::Name) {
            if (!result.name.empty()) result.name += ' ';
            result.name += tokens[i];
        }
    }
    return result;
}

}  // namespace

void buildOptionTable() {
    optionTable.clear();
    addSpin("Threads", &settings.threads, {1, 128});
    addCheck("Ponder", &settings.ponder);
    addSpin("Hash", &settings.hash, HashBounds, onHash);
    addButton("Clear Hash", onClearHash);
    addSpin("Table Memory", &settings.tableMemory, {1, 1024});
    addSpin("MultiPV", &settings.multiPv, {1, 218});
    optionTable.push_back({"OwnBook", NumberCheck{&settings.ownBook}});
    addText("Book File", &settings.bookFile, onBookFile);
    addSpin("Book Moves", &settings.bookMoves, {0, 1000});
    addCheck("Best Book Line", &settings.bestBookLine);
    addText("Log File", &settings.logFile, onLogFile);
    addText("Hash File Name", &settings.hashFileName, onHashFileName);
    addButton("Save Hash to File", onSaveHash);
    addButton("Load Hash from File", onLoadHash);
    addCheck("UCI_Chess960", &settings.chess960);
    addCheck("UCI_AnalyseMode", &settings.analyseMode);
    addCheck("Use LMR", &settings.useLmr);
    addCheck("Null Move Pruning", &settings.nullMovePruning);
    addSpin("Minimal Reporting", &settings.minimalReporting, {0, 200});
    addSpin("Overhead ms", &settings.overheadMs, {0, 10000});
    addSpin("Time Usage", &settings.timeUsage, {-9, 10});
    addCheck("Use Syzygy", &settings.useSyzygy);
    addText("SyzygyPath", &settings.syzygyPath, onSyzygyPath);
    addSpin("Syzygy Probe Depth", &settings.syzygyProbeDepth, {0, 99});
    addSpin("Syzygy Probe Limit", &settings.syzygyProbeLimit, SyzygyProbeLimitBounds, onSyzygyProbeLimit);
    addCheck("Syzygy 50 Move Rule", &settings.syzygy50MoveRule);
    addCheck("Smart Syzygy", &settings.smartSyzygy);
    addSpin("King Safety", &settings.kingSafety, {0, 200});
    addSpin("Selectivity", &settings.selectivity, {10, 250});
    addSpin("Reduction", &settings.reduction, {-500, 51});
    addSpin("Dynamism", &settings.dynamism, {0, 400});
    addSpin("Contempt", &settings.contempt, {-250, 250});
    addCheck("White Contempt", &settings.whiteContempt);
    addSpin("MCTS Hash", &settings.mctsHash, MctsHashBounds, onMctsHash);
    addCheck("Use MCTS", &settings.useMcts);
    addSpin("MCTS Explore", &settings.mctsExplore, {1, 500});
    addSpin("Progress Threshold", &settings.progressThreshold, {10, 99});
    addSpin("Variety", &settings.variety, {0, 20});
    addSpin("Skill", &settings.skill, {0, FullSkill});
}

void printOptions() {
    sendLine("id name Tarvok %s 64-bit \n", Version);
    sendLine("id author the Tarvok team\n");
    for (const OptionEntry& entry : optionTable)
        sendLine("option name %s type %s\n", entry.name, describe(entry).c_str());
    sendLine("uciok\n");
}

bool setOption(const Tokens& tokens, const std::string& line, std::string& name, bool& changed) {
    const NameAndValue assignment = parseAssignment(tokens, line);
    name = assignment.name;
    changed = false;
    const auto entry = std::find_if(optionTable.begin(), optionTable.end(), [&](const OptionEntry& row) {
        return strcasecmp(row.name, assignment.name.c_str()) == 0;
    });
    if (entry == optionTable.end()) return false;
    changed = applyValue(*entry, assignment.value);
    return true;
}
