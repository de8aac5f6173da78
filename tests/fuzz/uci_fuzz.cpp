// UCI lines of any bytes, run through the interpreter as the main loop does: between searches, and from
// inside of them. Every answer is checked against the rules.
//
// What would cost time, memory or files is bounded before the interpreter sees it:
// - `go` gets a limit of nodes in front of its own; a larger one of its own is cut. Where no such limit
//   acts, while pondering and at the end of a search without one, the search reads the lines that follow and
//   then a `stop`. So no search waits for the clock or for a person. `perft` stops after two plies.
// - Lines that name the options of memory, threads or files are written anew from what they say: small
//   tables, three threads at most, and files in a folder of the fuzzer's own.
// - `quit` is left out, since the tables are gone after it.
#include "board/legality.h"
#include "endgame/book.h"
#include "fuzz/fuzz_support.h"
#include "search/limits.h"
#include "search/search_host.h"
#include "shell/commands.h"
#include "shell/log.h"
#include "shell/main_loop.h"
#include "shell/start_up.h"
#include "support/book_record.h"
#include "support/temporary_folder.h"
#include "tree/node_store.h"
#include "tree/tree_driver.h"

#include <cctype>
#include <deque>
#include <iterator>
#include <sstream>

namespace {

constexpr std::size_t MostLines = 48;
constexpr int MostSearches = 6;  // of one input; so many perft commands too
constexpr std::uint64_t MostNodes = 400;
constexpr int MostPolls = 8;  // of one search, before it is stopped
constexpr long MostPerftPlies = 2;

const TemporaryFolder& folder() {
    static const TemporaryFolder made;
    return made;
}

// ---- Bounded lines ----

Tokens splitTokens(const std::string& line) {
    std::istringstream text(line);
    return {std::istream_iterator<std::string>(text), {}};
}

std::string boundedGo(const Tokens& tokens) {
    std::string line = "go nodes " + std::to_string(MostNodes);
    for (std::size_t i = 1; i < tokens.size(); ++i) {
        line += ' ' + tokens[i];
        if (tokens[i] != "nodes" || i + 1 == tokens.size()) continue;
        const std::uint64_t nodes = std::strtoull(tokens[++i].c_str(), nullptr, 10);
        line += ' ' + std::to_string(std::min(nodes, MostNodes));
    }
    return line;
}

// A number that must not be large.
std::string boundedNumber(const std::string& text, long most) {
    return std::to_string(std::clamp(std::strtol(text.c_str(), nullptr, 10), -100L, most));
}

// One of the files that the folder has, or none of them, by the value's first letter.
std::string fileOf(const std::string& value) {
    if (value.empty() || value[0] == '<') return "<empty>";
    if (value[0] == 'f') return folder().path();
    return folder().file(value[0] == 'b' ? "book.bin" : value[0] == 'h' ? "hash" : "other");
}

std::string tablesOf(const std::string& value) {
    if (value.empty() || value[0] == '<') return "<empty>";
    return value[0] == 't' ? TARVOK_SOURCE_DIR "/tests/data/syzygy" : folder().path();
}

// A `setoption` line whose option must be bounded is written anew; any other is left alone.
std::string boundedOption(const std::string& line) {
    std::string lower = line;
    for (char& c : lower) c = char(std::tolower(static_cast<unsigned char>(c)));
    const auto names = [&lower](const char* word) { return lower.find(word) != std::string::npos; };
    const std::size_t mark = line.find("value ");
    const std::string value = mark == std::string::npos ? "" : line.substr(mark + 6);
    constexpr long MostMegabytes = 4, MostThreads = 3;
    const std::string set = "setoption name ", megabytes = boundedNumber(value, MostMegabytes);
    if (names("save")) return set + "Save Hash to File";
    if (names("load")) return set + "Load Hash from File";
    if (names("clear")) return set + "Clear Hash";
    if (names("book") && names("file")) return set + "Book File value " + fileOf(value);
    if (names("hash") && names("file")) return set + "Hash File Name value " + fileOf("hash");
    if (names("file")) return set + "Log File value " + fileOf(value);
    if (names("path")) return set + "SyzygyPath value " + tablesOf(value);
    if (names("mcts") && names("hash")) return set + "MCTS Hash value " + megabytes;
    if (names("hash")) return set + "Hash value " + megabytes;
    if (names("memory")) return set + "Table Memory value " + megabytes;
    if (names("threads")) return set + "Threads value " + boundedNumber(value, MostThreads);
    return line;
}

// ---- The lines that are still to come ----

struct Session {
    std::deque<std::string> lines;
    int searches = 0, perfts = 0;
    int polls = 0, answers = 0;  // of the running command
};
Session session;

// The line as it may be run; empty if it may not.
std::string bounded(const std::string& line) {
    const Tokens tokens = splitTokens(line.substr(0, line.find_first_of(std::string("\0\n\r\f", 4))));
    if (tokens.empty()) return line;
    const std::string& word = tokens[0];
    if (word == "quit") return {};
    if (word == "go") return session.searches++ < MostSearches ? boundedGo(tokens) : "";
    if (word == "perft" && session.perfts++ >= MostSearches) return {};
    if (word == "perft") return "perft " + boundedNumber(tokens.size() > 1 ? tokens[1] : "", MostPerftPlies);
    if (word == "setoption") return boundedOption(line);
    return line;
}

void pushNextLine() {
    const std::string line = bounded(session.lines.front());
    session.lines.pop_front();
    if (!line.empty()) pushInputLine(line);
}

// What a search asks: it gets a line each time, and in the end a stop.
bool isLineWaiting() {
    if (isInputWaiting()) return true;
    if (++session.polls <= MostPolls && !session.lines.empty())
        pushNextLine();
    else
        pushInputLine("stop");
    return isInputWaiting();
}

// ---- Answers ----

// The position is the one that the search began with: others wait until the end.
void checkAnswer(Move best, Move ponder) {
    ++session.answers;
    const Position& pos = game.records[game.index];
    Position child, grandchild;
    if (best == NoMove)
        require(ponder == NoMove, "no move has no answer");
    else
        require(isPlayable(pos) && makeLegal(pos, child, best), "the best move is legal");
    if (ponder != NoMove) require(makeLegal(child, grandchild, ponder), "the answer to it is legal");
}

void (*reportBestMove)(Move best, Move ponder);
void (*reportTreeMove)(Move best, Move ponder);

void installHost() {
    searchHost.inputWaiting = isLineWaiting;
    searchHost.waitForInput = [] {};
    reportBestMove = searchHost.reportBestMove;
    searchHost.reportBestMove = [](Move best, Move ponder) {
        checkAnswer(best, ponder);
        reportBestMove(best, ponder);
    };
    reportTreeMove = treeReports.bestMove;
    treeReports.bestMove = [](Move best, Move ponder) {
        checkAnswer(best, ponder);
        reportTreeMove(best, ponder);
    };
}

// ---- One input after another ----

void setSmallOptions() {
    settings = Settings{};
    settings.hash = 1;
    settings.tableMemory = 1;
    settings.mctsHash = 1;
    settings.hashFileName = folder().file("hash");
    settings.bookFile = folder().file("book.bin");
}

void run(const std::string& line) {
    pushInputLine(line);
    processCommand();
}

// Whatever an input did must not be seen by the next.
void startOver() {
    session = Session{};
    std::fill(std::begin(game.records), std::end(game.records), Position{});
    setSmallOptions();
    searchControl.quitRequested = false;
    searchControl.searching = false;
    searchControl.ponder = false;
    run("setoption name Log File value <empty>");
    run("setoption name SyzygyPath value <empty>");
    run("setoption name Book Moves value 1000");  // stored: the pool and the tables follow the options
    run("position startpos");
    openBook();
    transTable.resize(settings.hash);
    transTable.clear();
    mctsTable.allocate(settings.mctsHash);
    threadPool.threadRecords[0].resetHistory();
    threadPool.threadRecords[0].clearKillers();
    std::srand(1);
    for (const char* name : {"hash", "other"}) std::remove(folder().file(name).c_str());
}

// The engine would be gone. Here its workers may still search, and what waits for the search's end must not
// wait for that of the next input.
void afterProcessEnd() {
    threadPool.stopAllThreads();
    threadPool.stopWorkers();
    searchControl.searching = false;
    while (isInputWaiting()) popInputLine();
    try {
        runHeldBackActions();
    } catch (const ProcessEnded&) {
        // Those behind it are forgotten too.
    }
}

}  // namespace

int LLVMFuzzerInitialize(int*, char***) {
    takeOverProcessEnd();
    setSmallOptions();
    threadPool.tableMemoryInUse = settings.tableMemory;
    // A book with one move of the start position.
    constexpr Key StartKey = 0x463b96181691fc9c;
    folder().write("book.bin", bookRecord(StartKey, 0x031c, 1) + bookRecord(~Key{0}, 0, 0));
    startUp();
    installHost();
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    startOver();
    std::istringstream text(std::string(reinterpret_cast<const char*>(data), size));
    for (std::string line; session.lines.size() < MostLines && std::getline(text, line);)
        session.lines.push_back(line);
    try {
        while (!session.lines.empty()) {
            pushNextLine();
            while (isInputWaiting()) {
                const bool searches = nextInputLineBegins("go ");
                session.polls = session.answers = 0;
                processCommand();
                require(!searchControl.searching, "a command returns when its search is over");
                require(session.answers == int(searches),
                        "a search has one answer, and nothing else has any");
            }
        }
    } catch (const ProcessEnded&) {
        afterProcessEnd();
    }
    return 0;
}
