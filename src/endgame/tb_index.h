// Numbering the positions of an endgame table: from a list of men and their squares to the place of a
// position in a slice of the file. Like men are interchangeable, and mirror images share a number, so that a
// slice is as small as the geometry of the board allows.
#pragma once

#include <cstdint>

inline constexpr int MaxTableMen = 7;
// Slices of a table with pawns, by the file of the leading pawn, a to d.
inline constexpr int LeadingFiles = 4;

// What of a table's material the numbering depends on.
struct TbShape {
    std::uint8_t menCount;  // kings included
    std::uint8_t hasPawns;
    std::uint8_t kkEncoding;    // without pawns: the kings are the only single men and lead alone
    std::uint8_t pawnsLeading;  // the smaller nonzero pawn count
    std::uint8_t pawnsOther;    // the other side's, 0 if only one side has pawns
};

// The men of a slice in the order in which it numbers them, and how the numbers of its groups are weighted. A
// group is a stretch of like men, except that the first one leads and is numbered by a rule of its own.
struct TbManList {
    std::uint8_t men[MaxTableMen];  // board codes; white is the side that the table's name puts first
    std::uint8_t groupCount;
    std::uint8_t groupLength[MaxTableMen];
    std::uint64_t weight[MaxTableMen];
};

// Splits `list.men` into groups and weights them. `place` and `secondPlace` are where the leading group and
// the second group of pawns stand in the weighting order; `file` is the leading file, 0 without pawns.
// Returns the size of the slice in positions, or 0 if the men stand in an order that no table has.
std::uint64_t tbSetUpManList(TbManList& list, const TbShape& shape, int place, int secondPlace, int file);

// Brings the leading one of `count` pawns to the front, and returns the leading file, 0 to 3.
int tbLeadingFile(int* squares, int count);

// The number of a position: `squares` are those of the men in the list's order, the leading pawn first, as
// the table's white sees them. They are turned and sorted on the way. Below the slice's size for every legal
// position.
std::uint64_t tbPositionNumber(const TbManList& list, const TbShape& shape, int* squares);
