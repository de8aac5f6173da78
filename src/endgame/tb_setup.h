// Reading the head of a mapped table file.
#pragma once

#include "endgame/tb_entry.h"

// Makes the decoding tables of one kind from the file that is mapped at `entry.mappedData[kind]`. Every size
// and offset in the file is checked here, so that no probe can read outside of the mapping. False if the file
// is not a whole table of these men; nothing is then left allocated.
bool tbReadTable(TbEntry& entry, const char* name, TbKind kind);

// Frees what tbReadTable made.
void tbFreeTable(TbEntry& entry, TbKind kind);
