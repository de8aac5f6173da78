// The FEN reader and writer. The reader trusts nothing: any text gives a record that is safe to hold and to
// ask whether it is playable.
#include "board/fen.h"

#include "base/end_process.h"
#include "board/attacks.h"
#include "board/castling.h"
#include "board/move_text.h"
#include "board/thread_hooks.h"
#include "board/zobrist.h"

#include <cctype>
#include <cstdio>
#include <cstring>

static constexpr std::size_t MaxFenLength = 255;                // a longer text is cut
static constexpr const char* PieceLetters = " PNBRQK  pnbrqk";  // by board code

static bool isSpace(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

static const char* skipSpaces(const char* text) {
    while (isSpace(*text)) ++text;
    return text;
}

static const char* skipField(const char* text) {
    while (*text && !isSpace(*text)) ++text;
    return text;
}

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
    for (const Colour colour : {White, Black})
        for (int type = Pawn; type <= King; ++type) pos.pieces[colour][AllPieces] |= pos.pieces[colour][type];
    pos.occupied = pos.pieces[White][AllPieces] | pos.pieces[Black][AllPieces];
    return text;
}

// One character of the castling field; false if it ends the field.
static bool readCastlingLetter(Position& pos, char letter) {
    const Colour colour = std::isupper(static_cast<unsigned char>(letter)) ? White : Black;
    const char lower = char(std::tolower(static_cast<unsigned char>(letter)));
    if (lower == 'k' || lower == 'q') {
        const int right = lower == 'k' ? shortRightOf(colour) : longRightOf(colour);
        grantCastling(pos, right, int(castling.rook[right]));
        return true;
    }
    if (lower < 'a' || lower > 'h') return false;
    // A file letter is a right of its own: towards the a-file from the king it is the long one.
    const int rookSquare = makeSquare(lower - 'a', colour == White ? 0 : 7);
    const bool isShort = rookSquare > castling.kingStart[colour];
    grantCastling(pos, isShort ? shortRightOf(colour) : longRightOf(colour), rookSquare);
    return true;
}

static const char* readCastling(Position& pos, const char* text) {
    beginCastling(pos);
    while (*text && !isSpace(*text) && readCastlingLetter(pos, *text)) ++text;
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
