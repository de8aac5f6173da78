// Any bytes as an opening book, probed in some positions. The first byte of an input: bit 0 the option Best
// Book Line, bit 1 Chess960, bit 2 a book that is made from short records. Such a record has five bytes:
// which position's key (with its top bit: one more than that), move, weight; and the book is sorted.
// Otherwise the rest of the input is the file.
#include "board/fen.h"
#include "board/make_move.h"
#include "board/movegen.h"
#include "board/settings.h"
#include "board/sliders.h"
#include "endgame/book.h"
#include "endgame/polyglot_keys.h"
#include "fuzz/fuzz_support.h"
#include "search/thread_pool.h"
#include "search/trans_table.h"
#include "support/temporary_folder.h"

#include <algorithm>
#include <vector>

namespace {

constexpr const char* Fens[] = {
    "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -",
    "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq -",
    "r3k2r/8/8/8/8/8/8/R3K2R w KQkq -",
    "r3k2r/8/8/8/8/8/8/R3K2R b KQkq -",
    "7k/P7/8/8/8/8/p7/K7 w - -",
    "rnbqkbnr/ppp1pppp/8/8/3pP3/8/PPPP1PPP/RNBQKBNR b KQkq e3",
    "1r3kr1/8/8/8/8/8/8/1R3KR1 w GBgb -",
    "4k3/8/8/8/8/8/4q3/4K3 w - -",
    "7k/5Q2/6K1/8/8/8/8/8 b - -",  // stalemate: no move is legal
};

struct Record {
    Key key;
    std::uint8_t move[2], weight[2];
};

std::string bytesOf(const Record& record) {
    std::string bytes;
    for (int shift = 56; shift >= 0; shift -= 8) bytes += char(record.key >> shift);
    for (const std::uint8_t* word : {record.move, record.weight})
        bytes.append({char(word[0]), char(word[1])});
    bytes.resize(16);
    return bytes;
}

Position positionOf(const char* fen) {
    Position pos;
    setFen(&pos, fen);
    return pos;
}

// The file that short records stand for. What is left over at the end follows as it is.
std::string madeBook(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t ShortSize = 5;
    std::vector<Record> records;
    for (; size >= ShortSize; data += ShortSize, size -= ShortSize) {
        const Position pos = positionOf(Fens[(data[0] & 127) % std::size(Fens)]);
        records.push_back({bookKey(pos) + (data[0] >> 7), {data[1], data[2]}, {data[3], data[4]}});
    }
    std::stable_sort(records.begin(), records.end(),
                     [](const Record& a, const Record& b) { return a.key < b.key; });
    std::string bytes;
    for (const Record& record : records) bytes += bytesOf(record);
    return bytes.append(reinterpret_cast<const char*>(data), size);
}

bool isLegal(const Position& pos, Move move) {
    Move list[MaxListMoves];
    const int count = genAllMoves(pos, list);
    Position child;
    return std::any_of(list, list + count,
                       [&](Move m) { return cleanMove(m) == move && makeMove(&pos, &child, move); });
}

}  // namespace

int LLVMFuzzerInitialize(int*, char***) {
    takeOverProcessEnd();
    initSliders();
    ThreadPool::tableMemoryInUse = 1;
    ThreadPool::resize(true);
    transTable.resize(1);
    bookMoveLimit = 1000;
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TemporaryFolder folder;
    if (size == 0) return 0;
    settings.bestBookLine = data[0] & 1;
    settings.chess960 = data[0] & 2;
    const std::string bytes = data[0] & 4 ? madeBook(data + 1, size - 1)
                                          : std::string(reinterpret_cast<const char*>(data) + 1, size - 1);
    folder.write("book.bin", bytes);
    settings.bookFile = folder.file("book.bin");
    openBook();
    for (const char* fen : Fens) {
        Position pos = positionOf(fen);
        std::srand(1);
        try {
            const Move move = bookProbe(pos);
            require(move == NoMove || isLegal(pos, move), "a book move is legal");
        } catch (const ProcessEnded&) {
            // Intended in the engine: a group at the very end of the file ends the process.
        }
    }
    closeBook();
    return 0;
}
