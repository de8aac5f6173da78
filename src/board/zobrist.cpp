// The key constants: random words from one fixed generator, run by the compiler, and the listed material
// words.
#include "board/zobrist.h"

// A counter with a fixed stride, mixed to a random word at each step. No word repeats within a period of
// 2^64.
struct KeyGenerator {
    Key state = 0x7461726b6f76ULL;

    constexpr Key next() {
        state += 0x9e3779b97f4a7c15ULL;
        Key word = state;
        word = (word ^ (word >> 30)) * 0xbf58476d1ce4e5b9ULL;
        word = (word ^ (word >> 27)) * 0x94d049bb133111ebULL;
        return word ^ (word >> 31);
    }
};

// Rows without a meaning stay zero: type 7 everywhere, type 0 but for the side and en-passant keys, and in
// the pawn set every type but pawn and king.
static constexpr ZobristTables makeTables() {
    ZobristTables tables{};
    KeyGenerator generator;
    for (int colour = White; colour <= Black; ++colour)
        for (int type = Pawn; type <= King; ++type)
            for (Key& key : tables.piece[colour][type]) key = generator.next();
    for (int side = White; side <= Black; ++side) tables.piece[0][NoPiece][side] = generator.next();
    for (Key& key : tables.piece[1][NoPiece]) key = generator.next();
    for (int colour = White; colour <= Black; ++colour) {
        for (Key& key : tables.pawn[colour][Pawn]) key = generator.next();
        for (Key& key : tables.pawn[colour][King]) key = generator.next();
    }
    for (Key& key : tables.castle) key = generator.next();
    for (Key& key : tables.excludedTo) key = generator.next();
    for (Key& key : tables.excludedFrom) key = generator.next();
    return tables;
}

constexpr ZobristTables zobristTables = makeTables();

// The light column names endgame tables, so its words are part of that search's index. The two dark bishops
// are chosen so that no two rows of the material table fall into one slot.
// clang-format off
constexpr Key matValue[2][8][2] = {
    {
        {0, 0},
        {0x959266a48dca47cc, 0x959266a48dca47cc},
        {0x71413fd9a034a3c7, 0x71413fd9a034a3c7},
        {0xd8f63c3ca4d78ba8, 0x91b7584a2265b1f5},
        {0xd223436cf274773b, 0xd223436cf274773b},
        {0x8942899c1f94cb9d, 0x8942899c1f94cb9d},
        {0, 0},
        {0, 0},
    },
    {
        {0, 0},
        {0x4b23294bfbbfad44, 0x4b23294bfbbfad44},
        {0xf8112711561565cc, 0xf8112711561565cc},
        {0xf4878684694633a3, 0xcd613e30d8f16adf},
        {0x874a4612b276e40a, 0x874a4612b276e40a},
        {0x1078d7c9fa595856, 0x1078d7c9fa595856},
        {0, 0},
        {0, 0},
    },
};
// clang-format on
