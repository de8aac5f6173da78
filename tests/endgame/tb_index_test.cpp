// The numbering of positions with pawns: every placement and its mirror image share one number, and nobody
// else has it. So it also holds for groups of pawns of which no table is at hand; the real tables show the
// others.
#include "endgame/tb_index.h"

#include "board/types.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <vector>

// A placement as one word, men in list order; like men sorted, so that exchanging them makes no difference.
static std::uint64_t wordOf(const std::vector<int>& men, std::vector<int> squares, int mirror) {
    for (int& square : squares) square ^= mirror;
    for (std::size_t i = 0, end; i < men.size(); i = end) {
        for (end = i; end < men.size() && men[end] == men[i];) ++end;
        std::sort(squares.begin() + std::ptrdiff_t(i), squares.begin() + std::ptrdiff_t(end));
    }
    std::uint64_t word = 0;
    for (const int square : squares) word = word << 6 | std::uint64_t(square);
    return word;
}

struct IndexRow {
    const char* name;
    std::vector<int> men;  // in the list's order
    TbShape shape;
    int place, secondPlace;
};
struct TbIndex : testing::TestWithParam<IndexRow> {};

// Visits every placement in which like men stand in ascending order.
static void forEachPlacement(const IndexRow& row, std::vector<int>& squares,
                             const std::function<void(const std::vector<int>&)>& visit) {
    const std::size_t i = squares.size();
    if (i == row.men.size()) return visit(squares);
    const bool pawn = typeOfCode(row.men[i]) == Pawn;
    const int first = i && row.men[i] == row.men[i - 1] ? squares.back() + 1 : pawn ? 8 : 0;
    for (int square = first; square < (pawn ? 56 : 64); ++square) {
        if (std::find(squares.begin(), squares.end(), square) != squares.end()) continue;
        squares.push_back(square);
        forEachPlacement(row, squares, visit);
        squares.pop_back();
    }
}

TEST_P(TbIndex, NumbersEachPlacementOnce) {
    const IndexRow& row = GetParam();
    TbManList lists[LeadingFiles] = {};
    std::vector<std::uint64_t> owners[LeadingFiles];
    std::size_t numbers = 0, images = 0;
    int wrong = 0;
    for (int file = 0; file < LeadingFiles; ++file) {
        std::copy(row.men.begin(), row.men.end(), lists[file].men);
        owners[file].resize(tbSetUpManList(lists[file], row.shape, row.place, row.secondPlace, file));
        numbers += owners[file].size();
    }
    std::vector<int> placement;
    forEachPlacement(row, placement, [&](const std::vector<int>& squares) {
        int turned[MaxTableMen];
        std::copy(squares.begin(), squares.end(), turned);
        const int file = tbLeadingFile(turned, row.shape.pawnsLeading);
        const std::uint64_t number = tbPositionNumber(lists[file], row.shape, turned);
        ASSERT_LT(number, owners[file].size());
        // With leading pawns on both of two mirrored squares, the left one leads in either image, and each
        // image has a number of its own.
        const bool tied = std::count(turned, turned + row.shape.pawnsLeading, turned[0] ^ 7);
        const std::uint64_t word = wordOf(row.men, squares, 0), mirrored = wordOf(row.men, squares, 7);
        const std::uint64_t image = tied ? word : std::min(word, mirrored);
        std::uint64_t& owner = owners[file][number];
        wrong += owner != 0 && owner != image;
        owner = image;
        images += image == word;
    });
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(images, numbers) << "so none is unused, and no image has two";
}

// Codes: pawn 1, queen 5, king 6, the other side's with 8 more.
INSTANTIATE_TEST_SUITE_P(
    Shapes, TbIndex,
    testing::Values(IndexRow{"ThreePawns", {1, 1, 1}, {3, 1, 0, 3, 0}, 0, 0},
                    IndexRow{"FivePawns", {1, 1, 1, 1, 1}, {5, 1, 0, 5, 0}, 0, 0},
                    IndexRow{"TwoAgainstTwoPawns", {9, 9, 1, 1}, {4, 1, 0, 2, 2}, 1, 0},
                    IndexRow{"OneAgainstThreePawns", {1, 9, 9, 9}, {4, 1, 0, 1, 3}, 0, 1},
                    IndexRow{"PlainPair", {9, 5, 5}, {3, 1, 0, 1, 0}, 1, 0},
                    IndexRow{"PlainAfterTwoPawnGroups", {1, 9, 14}, {3, 1, 0, 1, 1}, 2, 0}),
    [](const auto& row) { return std::string(row.param.name); });

// Lists that no table has must be refused: a probe would number positions beyond the slice.
TEST(TbManLists, AreRefusedInAnImpossibleOrder) {
    const IndexRow rows[] = {{"like men lead", {5, 5, 6, 14}, {4, 0, 0, 0, 0}, 0, 0},
                             {"like men apart", {6, 14, 5, 4, 5}, {5, 0, 0, 0, 0}, 0, 0},
                             {"pawns behind", {6, 14, 1}, {3, 1, 0, 1, 0}, 0, 0},
                             {"two groups in one place", {1, 9, 6, 14}, {4, 1, 0, 1, 1}, 2, 2},
                             {"a place beyond the last", {1, 9, 6, 14}, {4, 1, 0, 1, 1}, 4, 1},
                             {"the same without pawns", {6, 14, 5}, {3, 0, 0, 0, 0}, 1, 0}};
    for (const IndexRow& row : rows) {
        TbManList list{};
        std::copy(row.men.begin(), row.men.end(), list.men);
        EXPECT_EQ(tbSetUpManList(list, row.shape, row.place, row.secondPlace, 0), 0u) << row.name;
    }
}
