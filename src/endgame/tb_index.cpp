#include "endgame/tb_index.h"

#include "board/types.h"

#include <algorithm>
#include <array>

namespace {

constexpr bool onDiagonal(int square) { return fileOf(square) == rankOf(square); }
constexpr bool aboveDiagonal(int square) { return rankOf(square) > fileOf(square); }

// Ten squares a1-d1-d4 hold one man of every position without pawns. Those off the diagonal come first.
constexpr int TriangleSquares = 10;
constexpr std::array<std::uint8_t, 64> triangleNumbers() {
    std::array<std::uint8_t, 64> table{};
    std::uint8_t next = 0;
    for (const bool diagonal : {false, true})
        for (int square = 0; square < 32; ++square)
            if (fileOf(square) < 4 && !aboveDiagonal(square) && onDiagonal(square) == diagonal)
                table[std::size_t(square)] = next++;
    return table;
}
constexpr auto TriangleNumber = triangleNumbers();

// The 28 squares under the long diagonal.
constexpr int LowerSquares = 28;
constexpr std::array<std::uint8_t, 64> lowerNumbers() {
    std::array<std::uint8_t, 64> table{};
    std::uint8_t next = 0;
    for (int square = 0; square < 64; ++square)
        if (fileOf(square) > rankOf(square)) table[std::size_t(square)] = next++;
    return table;
}
constexpr auto LowerNumber = lowerNumbers();

// Pairs of kings that don't touch, by the first one's triangle number and the second one's square. Pairs with
// both on the diagonal come last; a mirror image of such a pair has a number of its own. Impossible pairs
// read as 0.
constexpr int KingPairs = 462;
using KingPairTable = std::array<std::array<std::uint16_t, 64>, TriangleSquares>;
constexpr bool isKingPair(int king, int other) {
    const int files = fileOf(king) - fileOf(other), ranks = rankOf(king) - rankOf(other);
    const bool apart = files < -1 || files > 1 || ranks < -1 || ranks > 1;
    return apart && !(onDiagonal(king) && aboveDiagonal(other));
}
constexpr KingPairTable kingPairNumbers() {
    KingPairTable table{};
    std::uint16_t next = 0;
    for (const bool bothOnDiagonal : {false, true})
        for (std::size_t number = 0; number < TriangleSquares; ++number)
            for (int king = 0; king < 32; ++king) {
                const bool here = fileOf(king) < 4 && !aboveDiagonal(king);
                if (!here || TriangleNumber[std::size_t(king)] != number) continue;
                for (int other = 0; other < 64; ++other)
                    if (isKingPair(king, other) && (onDiagonal(king) && onDiagonal(other)) == bothOnDiagonal)
                        table[number][std::size_t(other)] = next++;
            }
    return table;
}
constexpr auto KingPairNumber = kingPairNumbers();
static_assert(KingPairNumber[0][H8] == 57 && KingPairNumber[9][H7] == 440 &&
              KingPairNumber[9][H8] == KingPairs - 1);

// By the number of men chosen, then by the squares to choose from.
constexpr std::size_t MaxLikeMen = 5;
constexpr std::array<std::array<std::uint32_t, 64>, MaxLikeMen + 1> binomials() {
    std::array<std::array<std::uint32_t, 64>, MaxLikeMen + 1> table{};
    for (std::size_t n = 0; n < 64; ++n) table[0][n] = 1;
    for (std::size_t k = 1; k <= MaxLikeMen; ++k)
        for (std::size_t n = 1; n < 64; ++n) table[k][n] = table[k - 1][n - 1] + table[k][n - 1];
    return table;
}
constexpr auto Binomial = binomials();
static_assert(Binomial[5][63] == 7028847);
constexpr std::uint32_t choose(int n, int k) { return Binomial[std::size_t(k)][std::size_t(n)]; }

// The order of pawn squares: highest on the edge files and low ranks, the left one before its mirror image.
constexpr std::array<std::int8_t, 64> pawnOrder() {
    std::array<std::int8_t, 64> table{};
    for (int square = A2; square <= H7; ++square) {
        const int edge = std::min(fileOf(square), 7 - fileOf(square));
        const int right = fileOf(square) > 3 ? 1 : 0;
        table[std::size_t(square)] = std::int8_t(47 - 12 * edge - 2 * (rankOf(square) - 1) - right);
    }
    return table;
}
constexpr auto PawnOrder = pawnOrder();

// How many placements of `n` leading pawns have their leader on a lower square of the same file; one more
// entry per file, on its eighth rank, holds the count for the whole file.
constexpr std::array<std::array<std::uint32_t, 64>, MaxLikeMen + 1> leaderStarts() {
    std::array<std::array<std::uint32_t, 64>, MaxLikeMen + 1> table{};
    for (std::size_t n = 1; n <= MaxLikeMen; ++n)
        for (int file = 0; file < LeadingFiles; ++file) {
            std::uint32_t sum = 0;
            for (int rank = 1; rank < 8; ++rank) {
                const std::size_t square = std::size_t(makeSquare(file, rank));
                table[n][square] = sum;
                sum += Binomial[n - 1][std::size_t(PawnOrder[square])];
            }
        }
    return table;
}
constexpr auto LeaderStart = leaderStarts();
static_assert(LeaderStart[2][A7] == 215 && LeaderStart[5][A8] == 700336 && LeaderStart[5][D8] == 496);

constexpr int leaderWays(int pawns, int file) {
    return int(LeaderStart[std::size_t(pawns)][std::size_t(makeSquare(file, 7))]);
}

// Sizes of the blocks of numbers of three leading men: the first off the diagonal, else the second, and so
// on.
constexpr int ThreeMenSecond = 6 * 63 * 62;
constexpr int ThreeMenThird = ThreeMenSecond + 4 * LowerSquares * 62;
constexpr int ThreeMenDiagonal = ThreeMenThird + 4 * 7 * LowerSquares;
constexpr int ThreeMenSize = ThreeMenDiagonal + 4 * 7 * 6;
static_assert(ThreeMenSize == 31332);

int leadingLength(const TbShape& shape) {
    if (shape.hasPawns) return shape.pawnsLeading;
    return shape.kkEncoding ? 2 : 3;
}

// Whether the list leads as its kind of table must, and no two groups hold like men.
bool isListOrdered(const TbManList& list, const TbShape& shape) {
    int counts[16] = {};
    for (int i = 0; i < shape.menCount; ++i) ++counts[list.men[i] & 15];
    const int lead = leadingLength(shape);
    if (shape.hasPawns) {
        for (int i = 0; i < lead + shape.pawnsOther; ++i)
            if (typeOfCode(list.men[i]) != Pawn || (list.men[i] == list.men[0]) != (i < lead)) return false;
    } else {
        for (int i = 0; i < lead; ++i)
            if (counts[list.men[i] & 15] != 1) return false;
    }
    for (int i = lead; i < shape.menCount;) {
        const int code = list.men[i];
        int length = 0;
        while (i < shape.menCount && list.men[i] == code) ++i, ++length;
        if (length != counts[code & 15]) return false;
    }
    return true;
}

void mirror(int* squares, int count, int mask) {
    for (int i = 0; i < count; ++i) squares[i] ^= mask;
}

// Turns the board until the first man stands in the triangle a1-d1-d4, and the first leading man off the long
// diagonal under it.
void turnIntoTriangle(int* squares, int count, int lead) {
    if (fileOf(squares[0]) > 3) mirror(squares, count, 7);
    if (rankOf(squares[0]) > 3) mirror(squares, count, 56);
    int first = 0;
    while (first < lead && onDiagonal(squares[first])) ++first;
    if (first == lead || !aboveDiagonal(squares[first])) return;
    for (int i = 0; i < count; ++i) squares[i] = makeSquare(rankOf(squares[i]), fileOf(squares[i]));
}

int threeMenNumber(const int* p) {
    const int i = p[1] > p[0];
    const int j = (p[2] > p[0]) + (p[2] > p[1]);
    const auto lower = [](int square) { return int(LowerNumber[std::size_t(square)]); };
    if (!onDiagonal(p[0])) return (TriangleNumber[std::size_t(p[0])] * 63 + p[1] - i) * 62 + p[2] - j;
    if (!onDiagonal(p[1]))
        return ThreeMenSecond + (rankOf(p[0]) * LowerSquares + lower(p[1])) * 62 + p[2] - j;
    const int pairNumber = rankOf(p[0]) * 7 + rankOf(p[1]) - i;
    if (!onDiagonal(p[2])) return ThreeMenThird + pairNumber * LowerSquares + lower(p[2]);
    return ThreeMenDiagonal + pairNumber * 6 + rankOf(p[2]) - j;
}

// The leader's file and rank, then the others as a choice among the squares that come later in pawn order.
std::uint32_t leadingPawnsNumber(int* pawns, int count) {
    const auto order = [](int square) { return int(PawnOrder[std::size_t(square)]); };
    std::uint32_t number = LeaderStart[std::size_t(count)][std::size_t(pawns[0])];
    std::sort(pawns + 1, pawns + count, [order](int a, int b) { return order(a) < order(b); });
    for (int i = 1; i < count; ++i) number += choose(order(pawns[i]), i);
    return number;
}

}  // namespace

std::uint64_t tbSetUpManList(TbManList& list, const TbShape& shape, int place, int secondPlace, int file) {
    if (!isListOrdered(list, shape)) return 0;
    const int lead = leadingLength(shape);
    list.groupCount = 0;
    list.groupLength[list.groupCount++] = std::uint8_t(lead);
    for (int i = lead; i < shape.menCount;) {
        int end = i + 1;
        while (end < shape.menCount && list.men[end] == list.men[i]) ++end;
        list.groupLength[list.groupCount++] = std::uint8_t(end - i);
        i = end;
    }
    const bool hasSecond = shape.hasPawns && shape.pawnsOther;
    if (place >= list.groupCount) return 0;
    if (hasSecond && (secondPlace >= list.groupCount || secondPlace == place)) return 0;

    int freeSquares = 64 - lead - (hasSecond ? shape.pawnsOther : 0);
    int plain = hasSecond ? 2 : 1;
    std::uint64_t weight = 1;
    for (int position = 0; position < list.groupCount; ++position) {
        if (position == place) {
            list.weight[0] = weight;
            weight *= std::uint64_t(shape.hasPawns     ? leaderWays(lead, file)
                                    : shape.kkEncoding ? KingPairs
                                                       : ThreeMenSize);
        } else if (hasSecond && position == secondPlace) {
            list.weight[1] = weight;
            weight *= choose(48 - lead, shape.pawnsOther);
        } else {
            const int length = list.groupLength[plain];
            list.weight[plain++] = weight;
            weight *= choose(freeSquares, length);
            freeSquares -= length;
        }
    }
    return weight;
}

int tbLeadingFile(int* squares, int count) {
    int* leader = std::max_element(squares, squares + count, [](int a, int b) {
        return PawnOrder[std::size_t(a)] < PawnOrder[std::size_t(b)];
    });
    std::swap(squares[0], *leader);
    return std::min(fileOf(squares[0]), 7 - fileOf(squares[0]));
}

std::uint64_t tbPositionNumber(const TbManList& list, const TbShape& shape, int* squares) {
    const int lead = list.groupLength[0];
    std::uint64_t number;
    if (shape.hasPawns) {
        if (fileOf(squares[0]) > 3) mirror(squares, shape.menCount, 7);
        number = list.weight[0] * leadingPawnsNumber(squares, lead);
    } else {
        turnIntoTriangle(squares, shape.menCount, lead);
        const int leadNumber =
            shape.kkEncoding
                ? KingPairNumber[TriangleNumber[std::size_t(squares[0])]][std::size_t(squares[1])]
                : threeMenNumber(squares);
        number = list.weight[0] * std::uint64_t(leadNumber);
    }
    int* group = squares + lead;
    for (int g = 1; g < list.groupCount; ++g) {
        const int length = list.groupLength[g];
        std::sort(group, group + length);
        // Pawns of the other side have no first rank to stand on.
        const int base = g == 1 && shape.hasPawns && shape.pawnsOther ? 8 : 0;
        std::uint32_t choice = 0;
        for (int i = 0; i < length; ++i) {
            const auto below = std::count_if(squares, group, [=](int square) { return square < group[i]; });
            choice += choose(group[i] - base - int(below), i + 1);
        }
        number += list.weight[g] * choice;
        group += length;
    }
    return number;
}
