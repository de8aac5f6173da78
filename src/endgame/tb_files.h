// Finding Syzygy table files, recording which exist, and mapping one at its first use.
#pragma once

#include "board/position.h"

#include <cstddef>

struct TbEntry;

// Forgets all tables and registers those found in `path`, directories separated by ":"; an empty text or
// "<empty>" registers none. Prints the counts. Only while no search runs.
void tbInit(const char* path);

// The most men of any WDL file, 0 at start-up. Intended: an emptied path leaves it.
int tbLargestTable();

// File kinds in the order of the per-kind fields of an entry.
enum TbKind : std::uint8_t { TbWdl = 0, TbDtm = 1, TbDtz = 2 };
inline constexpr int TbKinds = 3;

// A name such as "KQPvKRB", of at most seven men.
inline constexpr std::size_t TbNameSize = 16;

// Writes the table name of a position's material, White's men first, or Black's if `mirrored`. `name` must
// hold TbNameSize bytes.
void tbTableName(const Position& pos, char* name, bool mirrored);

// The table of a position's material, ready to be read, or null if there is none. The first caller of all
// threads maps the file and the others wait. A table that can't be read is null from then on.
TbEntry* tbTableFor(const Position& pos, TbKind kind);
