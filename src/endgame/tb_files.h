// Finding Syzygy table files, recording which exist, and mapping one at its first use.
#pragma once

#include "board/position.h"

// Forgets all tables and registers those found in `path`, directories separated by ":"; nothing for an empty text or
// "<empty>". Prints the counts. Only while no search runs.
void tbInit(const char* path);

extern int tbWdlCount;  // files found
extern int tbDtmCount;
extern int tbDtzCount;
extern int tbMaxMen;  // the most men of any WDL file; keeps its value when the path is emptied
