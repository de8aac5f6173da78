#include "board/castling.h"

#include "board/position.h"

#include <algorithm>
#include <initializer_list>

CastlingTables castling;

namespace {

constexpr int firstSquareOf(Colour colour) { return colour == White ? A1 : A8; }

// Of several kings the one that a FEN names last; without a king the usual square keeps the tables sane.
int kingStartOf(const Position& pos, Colour colour) {
    const Bitboard kings = pos.pieces[colour][King];
    if (!kings) return firstSquareOf(colour) + 4;
    return highestSquare(kings & rankMask(rankOf(lowestSquare(kings))));
}

// Finds the outermost rooks. Where the scan meets the king first, the corner stands. Intended: with no king
// in between, a lone rook on the a-file is the short rook.
void findRooks(const Position& pos, Colour colour) {
    const int first = firstSquareOf(colour);
    const int rook = boardCode(colour, Rook);
    const int king = boardCode(colour, King);
    int shortRook = first + 7;
    int longRook = first;
    for (int square = first + 7; square >= first && pos.board[square] != king; --square) {
        if (pos.board[square] != rook) continue;
        shortRook = square;
        break;
    }
    for (int square = first; square < shortRook && pos.board[square] != king; ++square) {
        if (pos.board[square] != rook) continue;
        longRook = square;
        break;
    }
    castling.rook[shortRightOf(colour)] = std::uint32_t(shortRook);
    castling.rook[longRightOf(colour)] = std::uint32_t(longRook);
}

// All squares from the lowest to the highest of those given.
Bitboard span(std::initializer_list<int> squares) {
    const auto [low, high] = std::minmax(squares);
    Bitboard set = 0;
    for (int square = low; square <= high; ++square) set |= bit(square);
    return set;
}

void keepStartSquares(int right) {
    const int king = castling.kingStart[colourOfRight(right)];
    castling.keep[right] = ~(bit(int(castling.rook[right])) | bit(king));
}

// Whether the king of a right stands on its start square, and a rook on the given one.
bool stand(const Position& pos, int right, int rookSquare) {
    const Colour colour = colourOfRight(right);
    return pos.board[castling.kingStart[colour]] == boardCode(colour, King) &&
           pos.board[rookSquare] == boardCode(colour, Rook);
}

}  // namespace

void beginCastling(const Position& pos) {
    castling = {};
    for (const Colour colour : {White, Black}) {
        castling.kingStart[colour] = kingStartOf(pos, colour);
        castling.mask[castling.kingStart[colour]] =
            std::uint8_t(1 << shortRightOf(colour) | 1 << longRightOf(colour));
        findRooks(pos, colour);
    }
    for (int right = WhiteShort; right <= BlackLong; ++right) keepStartSquares(right);
}

void grantCastling(Position& pos, int right, int rookSquare) {
    const int king = castling.kingStart[colourOfRight(right)];
    if (!stand(pos, right, rookSquare) || relativeRank(colourOfRight(right), king) != 0) return;
    castling.rook[right] = std::uint32_t(rookSquare);
    castling.mask[rookSquare] = std::uint8_t(1 << right);
    castling.kingPath[right] = span({king, castlingKingTarget(king, rookSquare)});
    castling.path[right] =
        span({king, rookSquare, castlingKingTarget(king, rookSquare), castlingRookTarget(king, rookSquare)});
    keepStartSquares(right);
    pos.castleLost = std::uint8_t(pos.castleLost & ~(1 << right));
}

std::uint8_t rightsThatStand(const Position& pos) {
    int rights = 0;
    for (int right = WhiteShort; right <= BlackLong; ++right)
        if (castling.kingPath[right] && stand(pos, right, int(castling.rook[right]))) rights |= 1 << right;
    return std::uint8_t(rights);
}
