// The file is searched on disk at every probe: records of 16 bytes, big-endian, sorted by key, without a
// header. Nothing of it is kept in memory, since a game asks a few dozen times at most.
#include "endgame/book.h"

#include "base/end_process.h"
#include "base/settings.h"
#include "board/attacks.h"
#include "board/make_move.h"
#include "board/move_picker.h"
#include "board/move_text.h"
#include "endgame/polyglot_keys.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

int bookMoveLimit = 0;

namespace {

std::FILE* bookHandle = nullptr;

constexpr int RecordSize = 16;
constexpr int PickerDepth = 2;  // half plies: no move is put off

struct Record {
    Key key;
    unsigned move;  // three bits each, from the lowest: target file and rank, start file and rank, promotion
    int weight;
};

struct BookMove {
    Move move;
    char text[MoveTextSize];
};
struct LegalMoves {
    BookMove moves[MaxListMoves];
    int count = 0;
};

struct Candidate {
    Move move;
    int weight;
};
struct Candidates {
    Candidate list[MaxListMoves];
    int count = 0;
    int total = 0;  // of the weights
};

[[noreturn]] void failProbe(const char* message) {
    std::fputs(message, stderr);
    endProcess(1);
}

bool seekRecord(int index) { return std::fseek(bookHandle, long(index) * RecordSize, SEEK_SET) == 0; }

bool readRecord(Record& record) {
    unsigned char bytes[RecordSize];
    if (std::fread(bytes, RecordSize, 1, bookHandle) != 1) return false;
    record.key = 0;
    for (int i = 0; i < 8; ++i) record.key = record.key << 8 | bytes[i];
    record.move = unsigned(bytes[8] << 8 | bytes[9]);
    record.weight = bytes[10] << 8 | bytes[11];
    return true;
}

// The index of a record with this key, or -1. Intended: the search starts with an end beyond the last record,
// so that a key above all of the book's reads past the end and says so on standard error.
int findRecord(Key key, int count) {
    int low = 0, high = count;
    for (;;) {
        const int span = high - low;
        const int middle = low + span / 2;
        Record record;
        if (!seekRecord(middle)) {
            std::perror("");
            std::fputs("info Error with fseek in binary search\n", stderr);
            return -1;
        }
        if (!readRecord(record)) {
            std::fputs("info Error with fread opening book\n", stderr);
            return -1;
        }
        if (record.key == key) return middle;
        if (record.key > key) {
            high = middle - 1;
            if (span < 2) return -1;
        } else {
            low = middle + 1;
            if (high <= middle) return -1;
        }
    }
}

// The first record of the group that has the key of record `index`.
int groupStart(int index, Key key) {
    for (; index > 0; --index) {
        Record record;
        if (!seekRecord(index - 1)) failProbe("Error with fseek in back up\n");
        if (!readRecord(record)) failProbe("Error with fread opening book\n");
        if (record.key != key) break;
    }
    return index;
}

void listLegalMoves(const Position& pos, LegalMoves& legal) {
    MovePicker picker;
    picker.start(pos, isInCheck(pos) ? KindEvasions : KindFull, PickerDepth, NoMove);
    Position child;
    while (const Move move = nextMove(&picker)) {
        if (legal.count == MaxListMoves) break;
        if (!makeMove(&pos, &child, move)) continue;
        BookMove& entry = legal.moves[legal.count++];
        entry.move = move;
        moveToText(entry.move, entry.text);
    }
}

// The engine's text of a record's move. The book writes castling as king takes rook, which only a king on its
// standard square is read as. Intended: that happens in Chess960 too, where no move has the text that comes
// out.
void recordText(const Position& pos, unsigned move, char* text) {
    const auto field = [move](int shift) { return int(move >> shift & 7); };
    std::strcpy(text, "0000");
    if (move & FromToMask) {
        text[0] = char('a' + field(6));
        text[1] = char('1' + field(9));
        text[2] = char('a' + field(0));
        text[3] = char('1' + field(3));
    }
    const int promotion = field(12);
    if (promotion >= 1 && promotion <= 4) {
        text[4] = " nbrq"[promotion];
        text[5] = '\0';
    }
    struct CastlingText {
        Colour colour;
        Square king;
        const char* book;
        const char* ours;
    };
    constexpr CastlingText castlings[] = {{White, E1, "e1h1", "e1g1"},
                                          {White, E1, "e1a1", "e1c1"},
                                          {Black, E8, "e8h8", "e8g8"},
                                          {Black, E8, "e8a8", "e8c8"}};
    for (const CastlingText& castling : castlings)
        if (pos.pieces[castling.colour][King] & bit(castling.king) && std::strcmp(text, castling.book) == 0) {
            std::strcpy(text, castling.ours);
            break;
        }
}

// Collects the group that starts at `index`. False if one of its moves is not legal here: then the key
// belongs to another position, and none of the group can be trusted.
bool collectGroup(const Position& pos, int index, Key key, Candidates& candidates) {
    LegalMoves legal;
    listLegalMoves(pos, legal);
    for (;; ++index) {
        if (!seekRecord(index)) failProbe("Error with fseek in collection\n");
        Record record;
        // Intended: a group may not be the file's last; books end with other records.
        if (!readRecord(record)) failProbe("Error with fread opening book\n");
        if (record.key != key) return true;
        if (record.weight == 0) continue;
        char text[MoveTextSize];
        recordText(pos, record.move, text);
        const BookMove* const begin = legal.moves;
        const BookMove* const end = begin + legal.count;
        const BookMove* const match =
            std::find_if(begin, end, [&](const BookMove& m) { return std::strcmp(m.text, text) == 0; });
        if (match == end) return false;
        if (candidates.count == MaxListMoves) continue;  // a group that repeats its moves
        candidates.list[candidates.count++] = {match->move, record.weight};
        candidates.total += record.weight;
    }
}

// Leaves the moves of the highest weight; there is one at least.
void keepBest(Candidates& candidates) {
    Candidate* const list = candidates.list;
    for (int i = 0; i < candidates.count; ++i)
        for (int j = i + 1; j < candidates.count; ++j)
            if (list[j].weight > list[i].weight) std::swap(list[i], list[j]);
    int kept = 1;
    while (kept < candidates.count && list[kept].weight >= list[kept - 1].weight) ++kept;
    candidates.count = kept;
    candidates.total = kept * list[0].weight;
}

Move drawMove(const Candidates& candidates) {
    const std::uint64_t product = std::uint64_t(std::int64_t(std::rand()) * candidates.total);
    const std::uint64_t drawn = product / 0x7fffffffu;
    std::uint64_t sum = 0;
    for (int i = 0; i < candidates.count; ++i) {
        sum += std::uint64_t(candidates.list[i].weight);
        if (sum > drawn) return candidates.list[i].move;
    }
    return NoMove;  // the generator's highest number
}

}  // namespace

void openBook() {
    closeBook();
    if (settings.bookMoves) bookHandle = std::fopen(settings.bookFile.c_str(), "rb");
}

void closeBook() {
    if (bookHandle) std::fclose(bookHandle);
    bookHandle = nullptr;
}

Move bookProbe(Position& pos) {
    if (!bookHandle || bookMoveLimit <= pos.gamePly / 2 || !settings.ownBook) return NoMove;
    const Key key = bookKey(pos);
    if (std::fseek(bookHandle, 0, SEEK_END) != 0) failProbe("Error with initial fseek of opening book\n");
    const std::int32_t size = std::int32_t(std::ftell(bookHandle));  // larger books are not supported
    if (size < RecordSize) return NoMove;
    const int found = findRecord(key, size / RecordSize);
    if (found < 0) return NoMove;
    Candidates candidates;
    if (!collectGroup(pos, groupStart(found, key), key, candidates) || candidates.total == 0) return NoMove;
    if (settings.bestBookLine) keepBest(candidates);
    return drawMove(candidates);
}
