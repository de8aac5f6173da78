#include "shell/host.h"

#include "base/output.h"
#include "search/search_host.h"
#include "shell/commands.h"
#include "shell/log.h"
#include "shell/main_loop.h"
#include "shell/reports.h"
#include "shell/tree_reports.h"
#include "tree/tree_driver.h"

void installSearchHost() {
    outputFailedHook = endInput;  // nobody hears what the engine says
    searchHost.inputWaiting = isInputWaiting;
    searchHost.processCommand = processCommand;
    searchHost.waitForInput = waitForInput;
    searchHost.reportDepth = reportDepth;
    searchHost.reportMultiPvLine = reportMultiPvLine;
    searchHost.reportDepthEnd = reportDepthEnd;
    searchHost.reportSearchEnd = reportSearchEnd;
    searchHost.reportNodes = reportNodes;
    searchHost.reportCurrentMove = reportCurrentMove;
    searchHost.reportBookMove = reportBookMove;
    searchHost.reportBestMove = reportBestMove;
    searchHost.log = logPrintf;
    searchHost.isLogging = isLogging;
    searchHost.searchOver = runHeldBackActions;
    searchHost.shutDown = shutDown;
    installTreeReports();
    installTreeSearch();
}
