// The pages behind large tables, by all search threads side by side: touched before a clock runs, and
// cleared. All of it only while no search runs.
#pragma once

#include "base/large_memory.h"

#include <functional>
#include <vector>

// Puts the threads' caches, each by its own thread, and then these tables on huge pages, until `mayGoOn` says
// no. Every thread asks it, some milliseconds apart. What is ready or settled already costs nothing.
void touchTables(const std::vector<LargeMemory*>& tables, const std::function<bool()>& mayGoOn);

// Fills a table with zeros. What was never made ready is given back to the system and fresh again.
void clearTable(LargeMemory& table);
