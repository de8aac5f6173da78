// The `position` command: sets the game's first record from a FEN and walks its moves.
#include "base/end_process.h"
#include "board/attacks.h"
#include "board/castling.h"
#include "board/fen.h"
#include "board/geometry.h"
#include "board/legality.h"
#include "board/make_move.h"
#include "board/move_text.h"
#include "board/movegen.h"
#include "shell/commands.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <strings.h>

namespace {

bool isSquareText(const char* text) {
    return text[0] >= 'a' && text[0] <= 'h' && text[1] >= '1' && text[1] <= '8';
}

// The word that a token spells out, without regard to the position but for double pushes; 0 if it names no
// squares. Castling is never among them: it is found by its text.
Move wordFromToken(const Position& pos, const std::string& token) {
    if (token.size() < 4 || !isSquareText(token.c_str()) || !isSquareText(token.c_str() + 2)) return NoMove;
    const int from = squareFromText(token.c_str());
    const int to = squareFromText(token.c_str() + 2);
    MoveFlag flag = NormalMove;
    const bool pawn = pos.pieces[pos.sideToMove()][Pawn] & bit(from);
    if (pawn && std::abs(from - to) == 16) flag = DoublePush;
    if (token.size() > 4) {
        // Only small letters count here; a capital one is found by the text.
        switch (token[4]) {
            case 'q': flag = QueenPromotion; break;
            case 'n': flag = KnightPromotion; break;
            case 'r': flag = RookPromotion; break;
            case 'b': flag = BishopPromotion; break;
            default: break;
        }
    }
    return makeWord(from, to, flag);
}

// Makes the generated move whose text the token is. A refused move leaves the child worthless.
bool makeByText(const Position& pos, Position& child, const std::string& token) {
    Move list[MaxListMoves];
    const int count = genAllMoves(pos, list);
    for (int i = 0; i < count; ++i) {
        const Move move = cleanMove(list[i]);
        char text[MoveTextSize];
        moveToText(move, text);
        if (strcasecmp(text, token.c_str()) != 0) continue;
        if (makeMove(&pos, &child, move)) return true;
        std::fprintf(stderr, "Cannot execute move %s\n", token.c_str());
    }
    return false;
}

bool makeToken(const Position& pos, Position& child, const std::string& token) {
    const Move word = wordFromToken(pos, token);
    if (isValidMove(pos, word) && makeMove(&pos, &child, word)) return true;
    return makeByText(pos, child, token);
}

// A stale record may come from a game that began elsewhere. Its castling rights hold only as far as the
// tables of the present start know them, or castling would move what stands on other squares.
void dropForeignRights(Position& pos) {
    const std::uint8_t before = pos.castleLost;
    pos.castleLost = std::uint8_t(pos.castleLost | (NoCastlingRights & ~rightsThatStand(pos)));
    if (pos.castleLost == before) return;
    pos.key = computeKey(pos);
    pos.pawnKey = computePawnKey(pos);
}

// Intended: every token moves the game on. One that makes no move leaves a stale record as the current one.
void playToken(const std::string& token) {
    if (game.index + 1 >= MaxGameRecords) return;
    Position& next = game.records[game.index + 1];
    const Position& pos = currentPosition();
    Position child;  // a refused move must not touch the next record
    if (isPlayable(pos) && makeToken(pos, child, token)) {
        child.inCheck = isInCheck(child);
        next = child;
    } else {
        dropForeignRights(next);
    }
    ++game.index;
}

}  // namespace

void positionCommand(const Tokens& tokens) {
    constexpr std::size_t FenFields = 4;  // the clocks on the line are not read
    const std::string kind = tokens.size() > 1 ? tokens[1] : "";
    std::string fen;
    std::size_t next = 2;
    if (kind == "startpos") {
        fen = StartFen;
    } else if (kind == "fen") {
        for (; next < tokens.size() && next < 2 + FenFields && tokens[next] != "moves"; ++next) {
            if (!fen.empty()) fen += ' ';
            fen += tokens[next];
        }
        if (fen.empty()) fen = " ";  // nothing to read is an error, and not the start position
    } else {
        std::fputs("Error here!\n", stderr);
        endProcess(1);
    }
    game.startFrom(fen.c_str());
    const auto moves = std::find(tokens.begin() + std::ptrdiff_t(next), tokens.end(), "moves");
    if (moves == tokens.end()) return;
    for (auto token = moves + 1; token != tokens.end(); ++token) playToken(*token);
}
