// Any bytes as an opening book, probed in some positions. The first byte of an input: bit 0 the option Best
// Book Line, bit 1 Chess960, bit 2 a book that is made from short records. Such a record has five bytes:
// which position's key (with its top bit: one more than that), move, weight; and the book is sorted.
// Otherwise the rest of the input is the file.
#include "endgame/book.h"
#include "endgame/polyglot_keys.h"
#include "fuzz/fuzz_support.h"
#include "support/book_record.h"
#include "support/temporary_folder.h"

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

// The file that short records stand for. What is left over at the end follows as it is.
std::string madeBook(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t ShortSize = 5, KeySize = 8;
    std::vector<std::string> records;
    for (; size >= ShortSize; data += ShortSize, size -= ShortSize) {
        const Key key = bookKey(positionOf(Fens[(data[0] & 127) % std::size(Fens)])) + (data[0] >> 7);
        const auto word = [data](int at) { return unsigned(data[at] << 8 | data[at + 1]); };
        records.push_back(bookRecord(key, word(1), word(3)));
    }
    std::stable_sort(records.begin(), records.end(), [](const std::string& a, const std::string& b) {
        return a.compare(0, KeySize, b, 0, KeySize) < 0;
    });
    std::string bytes;
    for (const std::string& record : records) bytes += record;
    return bytes.append(reinterpret_cast<const char*>(data), size);
}

}  // namespace

int LLVMFuzzerInitialize(int*, char***) {
    startSmallEngine();
    bookMoveLimit = 1000;
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TemporaryFolder folder;
    if (size == 0) return 0;
    settings.bestBookLine = data[0] & 1;
    settings.chess960 = data[0] & 2;
    folder.write("book.bin", data[0] & 4 ? madeBook(data + 1, size - 1)
                                         : std::string(reinterpret_cast<const char*>(data) + 1, size - 1));
    settings.bookFile = folder.file("book.bin");
    openBook();
    for (const char* fen : Fens) {
        Position pos = positionOf(fen), child;
        std::srand(1);
        try {
            const Move move = bookProbe(pos);
            require(move == NoMove || makeLegal(pos, child, move), "a book move is legal");
        } catch (const ProcessEnded&) {
            // Intended in the engine: a group at the very end of the file ends the process.
        }
    }
    closeBook();
    return 0;
}
