// The FEN reader and writer. The reader trusts nothing: any text gives a record that is safe to hold and to
// ask whether it is playable.
#include "board/fen.h"

#include "base/end_process.h"
#include "board/attacks.h"
#include "board/move_text.h"
#include "board/thread_hooks.h"
#include "board/zobrist.h"

#include <cctype>
#include <cstdio>
#include <cstring>

std::uint32_t castleRook[4];
std::uint8_t castleMask[64];
Bitboard castlePath[4];
Bitboard castleKingPath[4];
Bitboard castleKeep[4];
int whiteKingStart;
int blackKingStart;

static constexpr std::size_t MaxFenLength = 255;                // a longer text is cut
static constexpr const char* PieceLetters = " PNBRQK  pnbrqk";  // by board code
static constexpr std::uint8_t KingCastleMask[2] = {3, 12};      // both rights of a colour

static bool isSpace(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

static const char* skipSpaces(const char* text) {
    while (isSpace(*text)) ++text;
    return text;
}

static const char* skipField(const char* text) {
    while (*text && !isSpace(*text)) ++text;
    return text;
}

static Colour colourOfRight(int right) { return right < BlackShort ? White : Black; }
static bool isShort(int right) { return (right & 1) == 0; }
static int firstSquareOf(Colour colour) { return colour == White ? A1 : A8; }
static int& kingStartOf(Colour colour) { return colour == White ? whiteKingStart : blackKingStart; }

static void putPiece(Position& pos, int code, int square) {
    pos.board[square] = std::uint8_t(code);
    pos.pieces[colourOfCode(code)][typeOfCode(code)] |= bit(square);
}

// Reads the board field. Letters of no piece count as an empty square; what lies beyond the last square is
// dropped.
static const char* readBoard(Position& pos, const char* text) {
    int index = 0;  // in the order of the field, which begins on the eighth rank
    for (; *text && !isSpace(*text); ++text) {
        if (*text >= '0' && *text <= '9') {
            index += *text - '0';
        } else if (*text == '/') {
            index = (index + 7) & ~7;
        } else {
            const char* letter = std::strchr(PieceLetters, *text);
            if (letter && index < 64) putPiece(pos, int(letter - PieceLetters), flipSquare(index));
            ++index;
        }
    }
    for (const Colour colour : {White, Black}) {
        for (int type = Pawn; type <= King; ++type) pos.pieces[colour][AllPieces] |= pos.pieces[colour][type];
        // Of several kings the one that the field names last; without a king the usual square keeps the
        // tables sane.
        const Bitboard kings = pos.pieces[colour][King];
        int& start = kingStartOf(colour);
        start = firstSquareOf(colour) + 4;
        if (kings) {
            const int lastRank = rankOf(lowestSquare(kings));
            start = highestSquare(kings & rankMask(lastRank));
        }
    }
    pos.occupied = pos.pieces[White][AllPieces] | pos.pieces[Black][AllPieces];
    return text;
}

// Finds the rooks that "K" and "Q" mean: the outermost on each side of the king. Where the scan meets the
// king first, the corner stands. Intended: with no king in between, a lone rook on the a-file is the short
// rook.
static void findCastlingRooks(const Position& pos, Colour colour) {
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
    castleRook[2 * colour] = std::uint32_t(shortRook);
    castleRook[2 * colour + 1] = std::uint32_t(longRook);
}

// All squares of one rank from the lowest to the highest of those given.
static Bitboard span(std::initializer_list<int> squares) {
    int low = 63;
    int high = 0;
    for (const int square : squares) {
        if (square < low) low = square;
        if (square > high) high = square;
    }
    Bitboard set = 0;
    for (int square = low; square <= high; ++square) set |= bit(square);
    return set;
}

// Grants a right, unless king and rook don't stand on their back rank as the field claims.
static void grantRight(Position& pos, int right, int rookSquare) {
    const Colour colour = colourOfRight(right);
    const int first = firstSquareOf(colour);
    const int king = kingStartOf(colour);
    if (pos.board[king] != boardCode(colour, King) || rankOf(king) != rankOf(first)) return;
    if (pos.board[rookSquare] != boardCode(colour, Rook)) return;
    const int kingTarget = first + (isShort(right) ? 6 : 2);
    const int rookTarget = first + (isShort(right) ? 5 : 3);
    castleRook[right] = std::uint32_t(rookSquare);
    castleMask[rookSquare] = std::uint8_t(1 << right);
    pos.castleLost = std::uint8_t(pos.castleLost & ~(1 << right));
    castleKingPath[right] = span({king, kingTarget});
    castlePath[right] = span({king, rookSquare, kingTarget, rookTarget});
}

// One character of the castling field; false if it ends the field.
static bool readCastlingLetter(Position& pos, char letter) {
    const Colour colour = std::isupper(static_cast<unsigned char>(letter)) ? White : Black;
    const char lower = char(std::tolower(static_cast<unsigned char>(letter)));
    const int firstRight = 2 * colour;
    if (lower == 'k' || lower == 'q') {
        const int right = firstRight + (lower == 'q');
        grantRight(pos, right, int(castleRook[right]));
        return true;
    }
    if (lower < 'a' || lower > 'h') return false;
    // A file letter is a right of its own: towards the a-file from the king it is the long one.
    const int rookSquare = firstSquareOf(colour) + (lower - 'a');
    grantRight(pos, firstRight + (rookSquare <= kingStartOf(colour)), rookSquare);
    return true;
}

static const char* readCastling(Position& pos, const char* text) {
    std::memset(castleMask, 0, sizeof castleMask);
    std::memset(castlePath, 0, sizeof castlePath);
    std::memset(castleKingPath, 0, sizeof castleKingPath);
    for (const Colour colour : {White, Black}) {
        castleMask[kingStartOf(colour)] = KingCastleMask[colour];
        findCastlingRooks(pos, colour);
    }
    while (*text && !isSpace(*text) && readCastlingLetter(pos, *text)) ++text;
    for (int right = WhiteShort; right <= BlackLong; ++right)
        castleKeep[right] = ~(bit(int(castleRook[right])) | bit(kingStartOf(colourOfRight(right))));
    return skipField(text);
}

// Reads the en-passant field. A text that names no square of the third or sixth rank counts as none.
static void readEnPassant(Position& pos, const char* text) {
    if (text[0] < 'a' || text[0] > 'h' || (text[1] != '3' && text[1] != '6')) return;
    const int target = squareFromText(text);
    const Colour pusher = text[1] == '3' ? White : Black;
    const int from = target - pawnStep(pusher);
    const int to = target + pawnStep(pusher);
    pos.lastMove = makeWord(from, to);  // kept even if nobody can capture
    if (pusher == pos.sideToMove() || !(pos.pieces[pusher][Pawn] & bit(to))) return;
    if (pos.occupied & (bit(target) | bit(from))) return;
    if (!(besides(bit(to)) & pos.pieces[pos.sideToMove()][Pawn])) return;
    pos.epMask = bit(target);
    pos.key ^= zobrist[1][NoPiece][target];
}

void attachThread(Position& pos, int threadIndex) {
    const ThreadHooks& hooks = threadHooks[threadIndex];
    pos.threadIndex = std::int16_t(threadIndex);
    pos.evalCache = hooks.evalCache;
    pos.pawnHash = hooks.pawnHash;
    pos.matHash = hooks.matHash;
    pos.history = hooks.history;
    pos.contHist = hooks.continuationHistory;
    pos.contHist2 = hooks.continuationHistory;
}

void setFen(Position* pos, const char* fen) {
    char text[MaxFenLength + 1];
    const std::size_t length = strnlen(fen, MaxFenLength);
    std::memcpy(text, fen, length);
    text[length] = '\0';
    if (length == 0) std::strcpy(text, StartFen);

    *pos = Position{};
    pos->castleLost = NoCastlingRights;
    attachThread(*pos, 0);

    const char* cursor = skipSpaces(readBoard(*pos, text));
    if (*cursor != 'w' && *cursor != 'b') {
        std::fprintf(stderr, "Error in ctm for fen \"%s\"", text);
        endProcess(1);
    }
    pos->gamePly = *cursor == 'b';
    cursor = skipSpaces(readCastling(*pos, skipSpaces(cursor + 1)));

    pos->pieceCount = std::uint32_t(popcount(pos->occupied));
    pos->inCheck = pos->pieces[pos->sideToMove()][King] && isInCheck(*pos);
    pos->key = computeKey(*pos);
    pos->pawnKey = computePawnKey(*pos);
    pos->matKey = computeMatKey(*pos);
    pos->matKeyPlain = computeMatKeyPlain(*pos);
    readEnPassant(*pos, cursor);
}

std::string writeFen(const Position& pos) {
    std::string fen;
    for (int rank = 7; rank >= 0; --rank) {
        int empty = 0;
        for (int file = 0; file < 8; ++file) {
            const int code = pos.board[makeSquare(file, rank)];
            if (code == 0) {
                ++empty;
                continue;
            }
            if (empty) fen += char('0' + empty);
            empty = 0;
            fen += PieceLetters[code];
        }
        if (empty) fen += char('0' + empty);
        if (rank) fen += '/';
    }
    fen += pos.sideToMove() == White ? " w " : " b ";
    // Intended: the letters follow bits that are not those of the rights. "K", "k" and "q" always stand, "Q"
    // only while White may castle short, and "-" never comes. The text is for reading by eye.
    fen += 'K';
    if (!(pos.castleLost & 0x11)) fen += 'Q';
    fen += "kq ";
    const bool capturable =
        pos.epMask && (pawnAttacks(pos.sideToMove(), pos.pieces[pos.sideToMove()][Pawn]) & pos.epMask);
    fen += capturable ? squareText(lowestSquare(pos.epMask)) : "-";
    return fen;
}
