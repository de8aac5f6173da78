#include "shell/log.h"

#include "base/clock.h"
#include "base/relaxed.h"
#include "search/time_manager.h"

#include <cstdarg>
#include <cstdio>
#include <mutex>

static std::mutex logMutex;  // the main thread may close the file while the input thread writes
static std::FILE* logFile = nullptr;
static Relaxed<bool> logOpen = false;
static double logStartTime = 0;

void startLogClock() { logStartTime = currentTime(); }

bool openLog(const std::string& name) {
    const std::lock_guard lock(logMutex);
    if (logFile) std::fclose(logFile);
    logFile = name.empty() ? nullptr : std::fopen(name.c_str(), "a+");
    logOpen = logFile != nullptr;
    return name.empty() || logFile;
}

bool isLogging() { return logOpen; }

void logPrintf(const char* format, ...) {
    if (!logOpen) return;
    // Intended: a longer text is cut and loses its new line, so that the next entry follows on the same line.
    char text[256];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    const std::lock_guard lock(logMutex);
    if (!logFile) return;
    std::fprintf(logFile, "%10.3f %s", currentTime() - logStartTime, text);
    std::fflush(logFile);
}
