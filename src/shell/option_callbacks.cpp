// What options do beyond storing a value. A callback that may not run during a search waits for its end.
#include "base/output.h"
#include "base/settings.h"
#include "endgame/book.h"
#include "endgame/tb_files.h"
#include "search/trans_table.h"
#include "shell/log.h"
#include "shell/options.h"
#include "tree/node_store.h"

#include <algorithm>

static void resizeHash(int megabytes) {
    const int size = HashBounds.clamp(megabytes);
    settings.hash = size;
    if (transTable.resize(size)) sendLine("info string Hash table size is now %d meg\n", size);
}

void onHash(int megabytes) {
    whenIdle([megabytes] { resizeHash(megabytes); });
}

void onClearHash() {
    transTable.clear();
    sendLine("info string Clearing Hash\n");
}

void onBookFile(const std::string& name) {
    settings.bookFile = name;
    sendLine("info string Book file is %s\n", name.c_str());
    openBook();
}

void onLogFile(const std::string& name) {
    settings.logFile = name == "<empty>" ? "" : name;
    if (!settings.logFile.empty()) sendLine("info string Log file is %s\n", settings.logFile.c_str());
    if (!openLog(settings.logFile)) settings.logFile.clear();
}

void onHashFileName(const std::string& name) { settings.hashFileName = name; }

void onSaveHash() { transTable.saveToFile(settings.hashFileName.c_str()); }

void onLoadHash() {
    whenIdle([] { transTable.loadFromFile(settings.hashFileName.c_str()); });
}

static void printProbeLimit() {
    sendLine("info string Probing tablebases up to %d-man.\n",
             std::min(settings.syzygyProbeLimit.load(), tbLargestTable()));
}

void onSyzygyPath(const std::string& path) {
    whenIdle([path] {
        settings.syzygyPath = path;
        tbInit(path.c_str());
        settings.syzygyProbeLimit = SyzygyProbeLimitBounds.clamp(settings.syzygyProbeLimit);
        printProbeLimit();
    });
}

void onSyzygyProbeLimit(int men) {
    settings.syzygyProbeLimit = SyzygyProbeLimitBounds.clamp(men);
    printProbeLimit();
}

void onMctsHash(int megabytes) {
    // Intended: sizes below the least are taken as they are.
    const int size = std::min(megabytes, MctsHashBounds.most);
    settings.mctsHash = size;
    if (size < 1) return;  // the store stays as it is
    whenIdle([size] {
        mctsTable.allocate(size);
        sendLine("info string MCTS Hash table size is now %d meg\n", size);
    });
}
