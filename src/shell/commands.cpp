#include "shell/commands.h"

#include "base/end_process.h"
#include "base/output.h"
#include "base/settings.h"
#include "board/attacks.h"
#include "board/fen.h"
#include "board/perft.h"
#include "board/sliders.h"
#include "board/thread_hooks.h"
#include "eval/parameters.h"
#include "search/limits.h"
#include "search/search_tables.h"
#include "search/strength.h"
#include "search/table_memory.h"
#include "search/thread_pool.h"
#include "search/trans_table.h"
#include "shell/main_loop.h"
#include "shell/options.h"
#include "tree/node_store.h"

#include <algorithm>
#include <chrono>
#include <cinttypes>
#include <cstdlib>
#include <cstring>

Game game;

namespace {

std::vector<std::function<void()>> heldBack;  // by whenIdle, oldest first

}  // namespace

void Game::startFrom(const char* fen) {
    started = true;
    index = 0;
    setFen(&records[0], fen);
}

void whenIdle(std::function<void()> action) {
    if (searchControl.searching)
        heldBack.push_back(std::move(action));
    else
        action();
}

void runHeldBackActions() {
    const std::vector<std::function<void()>> actions = std::move(heldBack);
    heldBack.clear();
    for (const std::function<void()>& action : actions) action();
}

void shutDown() {
    stopInputThread();
    threadPool.stopWorkers();
    transTable.free();
    mctsTable.free();
    threadPool.resize(false);
    endProcess(0);
}

// An interface waits two seconds for its `readyok` without losing patience, on a busy machine too.
void readyMemory(bool hurried) {
    using Clock = std::chrono::steady_clock;
    constexpr auto LongestWait = std::chrono::milliseconds(1500);
    const Clock::time_point deadline = Clock::now() + LongestWait;
    std::vector<LargeMemory*> tables = {&transTable.pages()};
    // A tree that nobody grows is to take no memory.
    if (settings.useMcts) tables.push_back(&mctsTable.nodes.pages());
    touchTables(tables, [&] {
        return Clock::now() < deadline && !searchControl.quitRequested && !(hurried && isInputWaiting());
    });
    if (hurried) return;
    threadPool.settleCaches();
    for (LargeMemory* memory : tables) memory->settle();
}

Position& currentPosition() {
    Position& pos = game.records[game.index];
    attachThread(pos, 0);
    return pos;
}

long integerToken(const Tokens& tokens, std::size_t index) {
    return index < tokens.size() ? std::strtol(tokens[index].c_str(), nullptr, 10) : 0;
}

// ---- Lines ----

// Cuts a text at the first line feed, carriage return or form feed.
static void stripLineEnd(std::string& line) {
    const std::size_t end = line.find_first_of("\n\r\f");
    if (end != std::string::npos) line.resize(end);
}

static Tokens splitTokens(const std::string& line) {
    constexpr const char* Blanks = "\t ";
    Tokens tokens;
    std::size_t begin = line.find_first_not_of(Blanks);
    while (begin != std::string::npos) {
        const std::size_t end = line.find_first_of(Blanks, begin);
        tokens.push_back(line.substr(begin, end - begin));
        begin = line.find_first_not_of(Blanks, end);
    }
    return tokens;
}

// The oldest line of the queue, up to the first NUL or line end. Empty if there is none, or if it begins with
// a byte above 127.
static std::string nextLine() {
    std::string line = popInputLine();
    line.resize(std::strlen(line.c_str()));
    if (line.empty() || static_cast<signed char>(line[0]) < 0) return {};
    stripLineEnd(line);
    return line;
}

// ---- Small commands ----

// Intended, all of this: the queen-like set starts from the rooks, and the knights' sets hold the pawns' too.
static void printAttacksOf(const Position& pos, Colour colour) {
    const Bitboard* own = pos.pieces[colour];
    const Bitboard pawns = pawnAttacks(colour, own[Pawn]);
    Bitboard knights = pawns, bishops = 0, rooks = 0, queenLike = 0, kings = 0;
    forEachSquare(own[Knight], [&](int square) { knights |= knightAttacks[std::size_t(square)]; });
    forEachSquare(own[Bishop], [&](int square) { bishops |= bishopAttacksOf(square, pos.occupied); });
    forEachSquare(own[Rook], [&](int square) {
        rooks |= rookAttacksOf(square, pos.occupied);
        queenLike |= queenAttacksOf(square, pos.occupied);
    });
    forEachSquare(own[King], [&](int square) { kings |= kingAttacks[std::size_t(square)]; });
    for (const Bitboard set : {pawns, knights, bishops, rooks, queenLike, kings})
        sendLine("%" PRIu64 " ", set);
}

// Pawns with no enemy pawn ahead of them on their own file or beside it.
template <Colour us>
static Bitboard passedPawnsOf(const Position& pos) {
    const Bitboard spans = fillAhead<opponent(us)>(pawnPushes<opponent(us)>(pos.pieces[opponent(us)][Pawn]));
    return pos.pieces[us][Pawn] & ~(spans | besides(spans));
}

static void attacksCommand() {
    const Position& pos = game.records[game.index];
    printAttacksOf(pos, White);
    printAttacksOf(pos, Black);
    sendLine("%" PRIu64 " %" PRIu64 " \n", passedPawnsOf<White>(pos), passedPawnsOf<Black>(pos));
}

static void perftCommand(const Tokens& tokens) {
    constexpr long MostPlies = 100;
    const int plies = int(std::clamp(integerToken(tokens, 1), 0L, MostPlies));
    perftTimed(currentPosition(), plies, !searchControl.searching);
}

// Intended: a new game reseeds and clears no table.
static void newGameCommand() {
    seedRandom();
    if (!searchControl.searching) readyMemory(true);
}

static void isReadyCommand() {
    if (!searchControl.searching) readyMemory();
    sendLine("readyok\n");
}

// After an option that was stored. The tables of evaluation and search follow it, then the pool.
static void applyStoredOption() {
    initEvalParameters();
    buildSearchTables();
    threadPool.clearEvalCaches();
    if (settings.threads != threadPool.threadCount) threadPool.restartForOption();
    if (settings.tableMemory > settings.hash) settings.tableMemory = settings.hash;
    if (settings.tableMemory != threadPool.tableMemoryInUse)
        threadPool.restartWithTableMemory(settings.tableMemory);
}

static void setOptionCommand(const Tokens& tokens, const std::string& line) {
    std::string name;
    bool changed = false;
    if (!setOption(tokens, line, name, changed)) sendLine("info string %s not recognized\n", name.c_str());
    if (changed) whenIdle(applyStoredOption);
}

static void runCommand(const std::string& line) {
    const Tokens tokens = splitTokens(line);
    if (tokens.empty()) return;
    const std::string& word = tokens[0];
    if (word == "uci") {
        printOptions();
    } else if (word == "isready") {
        isReadyCommand();
    } else if (word == "ponderhit") {
        searchControl.ponder = false;
    } else if (word == "attacks") {
        attacksCommand();
    } else if (word == "position") {
        whenIdle([tokens] { positionCommand(tokens); });
    } else if (word == "quit") {
        searchControl.quitRequested = true;
    } else if (word == "perft") {
        perftCommand(tokens);
    } else if (word == "go") {
        goCommand(tokens);
    } else if (word == "ucinewgame") {
        newGameCommand();
    } else if (word == "setoption") {
        setOptionCommand(tokens, line);
    } else if (word == "stop") {
        stopMainThread();
    }
}

void processCommand() {
    if (!game.started) game.startFrom("");
    // Lines ahead of a quit still run, but a search first has to unwind.
    if (searchControl.quitRequested && (!isInputWaiting() || nextInputLineBegins("quit"))) {
        if (!searchControl.searching) shutDown();
        return;
    }
    const std::string line = nextLine();
    if (!line.empty()) runCommand(line);
}
