// Moves as coordinate text. Which form castling takes depends on the interface's Chess960 option, not on the
// board.
#include "board/move_text.h"

#include "base/settings.h"

static char fileLetter(int square) { return char('a' + fileOf(square)); }
static char rankDigit(int square) { return char('1' + rankOf(square)); }

void moveToText(Move move, char* text) {
    const Move clean = cleanMove(move);
    const int from = fromOf(clean);
    const int to = toOf(clean);
    if (clean == NoMove) {
        for (int i = 0; i < 4; ++i) *text++ = '0';
        *text = '\0';
        return;
    }
    *text++ = fileLetter(from);
    *text++ = rankDigit(from);
    // The word holds the rook's square; outside Chess960 the text names the king's destination.
    if (isCastling(clean) && !settings.chess960)
        *text++ = fileOf(to) > fileOf(from) ? 'g' : 'c';
    else
        *text++ = fileLetter(to);
    *text++ = rankDigit(to);
    if (isPromotion(clean)) *text++ = "qnrb"[flagOf(clean) & 3];
    *text = '\0';
}

std::string moveText(Move move) {
    char text[MoveTextSize];
    moveToText(move, text);
    return text;
}

std::string pvToText(const Move* line) {
    std::string text;
    for (; *line != NoMove; ++line) {
        if (!text.empty()) text += ' ';
        text += moveText(*line);
    }
    return text;
}

int squareFromText(const char* text) { return makeSquare((text[0] - 'a') & 7, (text[1] - '1') & 7); }

std::string squareText(int square) { return {fileLetter(square), rankDigit(square)}; }
