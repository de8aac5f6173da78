// The numbering of positions: every placement and its mirror images share one number, and nobody else has it.
// So it also holds for kinds of material of which no file is at hand.
#include "endgame/tb_index.h"

#include "board/types.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <vector>

// A placement as one word, men in list order; like men sorted, so that exchanging them makes no difference.
static std::uint64_t wordOf(const std::vector<int>& men, std::vector<int> squares) {
    std::uint64_t word = 0;
    for (std::size_t i = 0; i < men.size();) {
        std::size_t end = i;
        while (end < men.size() && men[end] == men[i]) ++end;
        std::sort(squares.begin() + std::ptrdiff_t(i), squares.begin() + std::ptrdiff_t(end));
        i = end;
    }
    for (const int square : squares) word = word << 6 | std::uint64_t(square);
    return word;
}

// The least word of a placement's mirror images: two with pawns, eight without.
static std::uint64_t leastImage(const std::vector<int>& men, const std::vector<int>& squares, bool pawns) {
    std::uint64_t least = ~0ULL;
    for (int image = 0; image < (pawns ? 2 : 8); ++image) {
        std::vector<int> turned = squares;
        for (int& square : turned) {
            if (image & 1) square ^= 7;
            if (image & 2) square ^= 56;
            if (image & 4) square = makeSquare(rankOf(square), fileOf(square));
        }
        least = std::min(least, wordOf(men, turned));
    }
    return least;
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
    std::vector<std::uint64_t> owner[LeadingFiles];
    for (int file = 0; file < (row.shape.hasPawns ? LeadingFiles : 1); ++file) {
        std::copy(row.men.begin(), row.men.end(), lists[file].men);
        const std::uint64_t size = tbSetUpManList(lists[file], row.shape, row.place, row.secondPlace, file);
        ASSERT_GT(size, 0u);
        owner[file].resize(size);
    }
    std::vector<int> placement;
    int wrong = 0;
    forEachPlacement(row, placement, [&](const std::vector<int>& squares) {
        if (row.shape.kkEncoding) {
            const int files = fileOf(squares[0]) - fileOf(squares[1]);
            const int ranks = rankOf(squares[0]) - rankOf(squares[1]);
            if (files * files <= 1 && ranks * ranks <= 1) return;  // kings that touch have no number
        }
        int turned[MaxTableMen];
        std::copy(squares.begin(), squares.end(), turned);
        const int file = row.shape.hasPawns ? tbLeadingFile(turned, row.shape.pawnsLeading) : 0;
        const std::uint64_t number = tbPositionNumber(lists[file], row.shape, turned);
        ASSERT_LT(number, owner[file].size());
        // With leading pawns on both of two mirrored squares, the left one leads in either image, and each
        // image has a number of its own.
        const bool tied =
            row.shape.hasPawns && std::count(turned, turned + row.shape.pawnsLeading, turned[0] ^ 7);
        const std::uint64_t image =
            (tied ? wordOf(row.men, squares) : leastImage(row.men, squares, row.shape.hasPawns)) + 1;
        wrong += owner[file][number] != 0 && owner[file][number] != image;
        owner[file][number] = image;
    });
    EXPECT_EQ(wrong, 0);
    std::vector<std::uint64_t> images;
    for (const std::vector<std::uint64_t>& owners : owner)
        for (const std::uint64_t image : owners) images.push_back(image);
    EXPECT_EQ(std::count(images.begin(), images.end(), 0), 0) << "unused numbers";
    std::sort(images.begin(), images.end());
    EXPECT_EQ(std::adjacent_find(images.begin(), images.end()), images.end())
        << "two numbers for one placement";
}

// Codes: pawn 1, knight 2, rook 4, queen 5, king 6, the other side's with 8 more.
INSTANTIATE_TEST_SUITE_P(
    Shapes, TbIndex,
    testing::Values(IndexRow{"ThreeLead", {14, 6, 5}, {3, 0, 0, 0, 0}, 0, 0},
                    IndexRow{"KingsLead", {6, 14}, {2, 0, 1, 0, 0}, 0, 0},
                    IndexRow{"OnePawnAndKing", {9, 14}, {2, 1, 0, 1, 0}, 1, 0},
                    IndexRow{"ThreePawns", {1, 1, 1}, {3, 1, 0, 3, 0}, 0, 0},
                    IndexRow{"FivePawns", {1, 1, 1, 1, 1}, {5, 1, 0, 5, 0}, 0, 0},
                    IndexRow{"TwoAgainstTwoPawns", {9, 9, 1, 1}, {4, 1, 0, 2, 2}, 1, 0},
                    IndexRow{"OneAgainstThreePawns", {1, 9, 9, 9}, {4, 1, 0, 1, 3}, 0, 1},
                    IndexRow{"PlainPair", {9, 5, 5}, {3, 1, 0, 1, 0}, 1, 0},
                    IndexRow{"PlainAfterTwoPawnGroups", {1, 9, 14}, {3, 1, 0, 1, 1}, 2, 0}),
    [](const auto& row) { return std::string(row.param.name); });

// Lists that no table has must be refused: a probe would number positions beyond the slice.
TEST(TbManLists, AreRefusedInAnImpossibleOrder) {
    struct Row {
        std::vector<int> men;
        TbShape shape;
        int place, secondPlace;
    };
    const Row rows[] = {{{5, 5, 6, 14}, {4, 0, 0, 0, 0}, 0, 0},     // like men lead
                        {{6, 14, 5, 4, 5}, {5, 0, 0, 0, 0}, 0, 0},  // like men apart
                        {{6, 14, 1}, {3, 1, 0, 1, 0}, 0, 0},        // pawns must lead
                        {{1, 9, 6, 14}, {4, 1, 0, 1, 1}, 2, 2},     // two groups in one place
                        {{1, 9, 6, 14}, {4, 1, 0, 1, 1}, 4, 1},     // a place beyond the last
                        {{6, 14, 5}, {3, 0, 0, 0, 0}, 1, 0}};
    for (const Row& row : rows) {
        TbManList list{};
        std::copy(row.men.begin(), row.men.end(), list.men);
        EXPECT_EQ(tbSetUpManList(list, row.shape, row.place, row.secondPlace, 0), 0u);
    }
}
