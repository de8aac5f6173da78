// Any bytes as an endgame table, probed in many positions. The first byte of an input chooses the table's
// name, the second its kind ('z' for distances, else win/draw/loss) and the rest is the file. Its length is
// rounded up to what tables have, since hardly any input would get past that test, unless the second byte is
// 'Z' or 'W'.
//
// The bytes are first read from memory of exactly their size, where every read beyond them is seen, and what
// is readable then once more from a file, among real tables where ../shared/data has them.
#include "board/attacks.h"
#include "board/fen.h"
#include "board/make_move.h"
#include "board/movegen.h"
#include "board/settings.h"
#include "board/sliders.h"
#include "endgame/table_files.h"
#include "endgame/tb_entry.h"
#include "endgame/tb_probe.h"
#include "endgame/tb_root.h"
#include "endgame/tb_setup.h"
#include "fuzz/fuzz_support.h"
#include "search/thread_pool.h"
#include "search/trans_table.h"

#include <algorithm>
#include <map>
#include <memory>
#include <random>
#include <sanitizer/asan_interface.h>
#include <vector>

namespace {

constexpr const char* Names[] = {"KQvK",    "KRvK",    "KPvK",     "KNNvK",    "KBNvK",    "KRRvK",
                                 "KNvKN",   "KBvKN",   "KQvKR",    "KRvKR",    "KPPvK",    "KPvKP",
                                 "KQvKP",   "KRPvK",   "KPPPvK",   "KPPvKP",   "KRPvKR",   "KNNNvK",
                                 "KPPvKPP", "KRRvKBN", "KPPPPPvK", "KPPPvKPP", "KQRBNvKN", "KNNNNNvK"};

// ---- Positions ----

constexpr int PositionsOfTable = 24;

// Men on random squares in a FEN's first field, of either colouring.
std::string randomFen(const std::string& name, std::mt19937& random) {
    char board[64];
    std::fill(board, board + 64, '.');
    const bool turned = random() % 2;
    bool second = false;
    for (const char letter : name) {
        if (letter == 'v') {
            second = true;
            continue;
        }
        std::size_t square;
        do square = random() % 64;
        while (board[square] != '.');
        board[square] = char(second != turned ? std::tolower(letter) : letter);
    }
    std::string fen;
    for (std::size_t square = 0; square < 64; ++square) {
        if (square && square % 8 == 0) fen += '/';
        fen += board[square] == '.' ? '1' : board[square];
    }
    const bool black = random() % 2;
    fen += black ? " b - " : " w - ";
    return fen + char('a' + random() % 8) + (black ? '3' : '6');  // counts only where a pawn can be taken
}

// The same playable positions each time.
const std::vector<Position>& positionsOf(const std::string& name) {
    static std::map<std::string, std::vector<Position>> all;
    std::vector<Position>& positions = all[name];
    std::mt19937 random(unsigned(name.size()));
    while (positions.size() < PositionsOfTable) {
        Position pos;
        setFen(&pos, randomFen(name, random).c_str());
        if (isPlayable(pos)) positions.push_back(pos);
    }
    return positions;
}

// ---- From memory ----

class TableInMemory {
   public:
    TableInMemory(const std::string& name, TbKind kind, const std::vector<char>& file)
        : bytes(new std::uint8_t[file.size()]), tableKind(kind) {
        std::copy(file.begin(), file.end(), bytes.get());
        const TbMenCounts men = tbCountMen(name.c_str());
        const std::uint8_t white = men.of[Pawn], black = men.of[boardCode(Black, Pawn)];
        entry.hasPawns = white || black;
        entry.symmetric = name.substr(0, name.find('v')) == name.substr(name.find('v') + 1);
        entry.menCount = std::uint8_t(name.size() - 1);
        entry.kkEncoding = !entry.hasPawns && std::count(std::begin(men.of), std::end(men.of), 1) == 2;
        entry.pawnsLeading = white && (!black || white <= black) ? white : black;
        entry.pawnsOther = std::uint8_t(white + black - entry.pawnsLeading);
        entry.mappedData[kind] = bytes.get();
        entry.mappedSize[kind] = file.size();
        readable = tbReadTable(entry, name.c_str(), kind);
    }
    ~TableInMemory() {
        if (readable) tbFreeTable(entry, tableKind);
    }
    TableInMemory(const TableInMemory&) = delete;
    TableInMemory& operator=(const TableInMemory&) = delete;

    bool isReadable() const { return readable; }
    // Values from all over each slice, its ends included.
    void readValues() {
        std::mt19937 random(1);
        for (int file = 0; file < (entry.hasPawns ? LeadingFiles : 1); ++file) {
            const TbFileSlices& slices = tbSlicesOf(entry, file);
            if (tableKind == TbDtz) {
                readSlice(slices.dtz, random);
                continue;
            }
            readSlice(slices.wdl[0], random);
            if (!entry.symmetric) readSlice(slices.wdl[1], random);
        }
    }

   private:
    void readSlice(const TbSlice& slice, std::mt19937& random) const {
        constexpr int Reads = 12;
        const int highest = tableKind == TbWdl ? 4 : 4095;
        for (int i = 0; i < Reads; ++i) {
            const std::uint64_t any = (std::uint64_t(random()) << 32 | random()) % slice.size;
            const int value = tbRawValue(slice, i == 0 ? 0 : i == 1 ? slice.size - 1 : any);
            require(value >= -1 && value <= highest, "a stored value is in range");
        }
        require(tbRawValue(slice, slice.size) == -1 || slice.flags & TbSingleValue,
                "no value beyond the end");
    }

    std::unique_ptr<std::uint8_t[]> bytes;
    TbPawnEntry entry{};
    TbKind tableKind;
    bool readable;
};

// ---- From a file ----

// The rest of a mapped file's last page is zeros that may be read without a fault. Poisoned, it is seen.
class PoisonedTail {
   public:
    PoisonedTail(const Position& pos, TbKind kind) {
        const TbEntry* const entry = tbTableFor(pos, kind);
        if (!entry) return;
        const std::size_t page = std::size_t(sysconf(_SC_PAGESIZE));
        tail = entry->mappedData[kind] + entry->mappedSize[kind];
        size = (page - entry->mappedSize[kind] % page) % page;
        ASAN_POISON_MEMORY_REGION(tail, size);
    }
    ~PoisonedTail() { ASAN_UNPOISON_MEMORY_REGION(tail, size); }
    PoisonedTail(const PoisonedTail&) = delete;
    PoisonedTail& operator=(const PoisonedTail&) = delete;

   private:
    const std::uint8_t* tail = nullptr;
    std::size_t size = 0;
};

void probe(Position pos) {
    int success;
    const int result = tbProbeWdl(pos, &success);
    require(!success || (result >= -2 && result <= 2), "a result is in range");
    tbProbeDtz(pos, &success);
    int score;
    probeSearchTablebase(pos, 1, &score);
    RootMove list[MaxListMoves + 1];
    for (const auto rootProbe : {tbRootProbeDtz, tbRootProbeWdl}) {
        const int count = rootProbe(pos, list, &score);
        require(count >= 0 && count < MaxListMoves, "the root list is in bounds");
        require(count == 0 || list[count].move == NoMove, "the root list has an end");
    }
}

void probeAsFile(const std::string& name, TbKind kind, const std::vector<char>& bytes) {
    static const TableFolder folder;
    static const std::string path =
        sharedData() ? folder.path() + ":" + realTables().string() : folder.path();
    folder.write(name + (kind == TbDtz ? ".rtbz" : ".rtbw"), bytes);
    // A distance is asked for only where the result is no draw, so every position is made a win where a table
    // of one result can be.
    const std::vector<char> won = singleValueTable(name, 2);
    if (kind == TbDtz && TableInMemory(name, TbWdl, won).isReadable()) folder.write(name + ".rtbw", won);
    tbInit(path.c_str());
    const std::vector<Position>& positions = positionsOf(name);
    {
        const PoisonedTail tail(positions[0], kind);
        for (const Position& pos : positions) probe(pos);
    }
    tbInit("");
    for (const char* suffix : {".rtbw", ".rtbz"}) std::filesystem::remove(folder.file(name + suffix));
}

// Writes the small ones of the real tables as inputs into a folder.
void writeSeeds(const std::string& to) {
    constexpr std::uintmax_t Largest = 16384;  // bytes
    if (!sharedData()) return;
    for (std::size_t i = 0; i < std::size(Names); ++i)
        for (const char kind : {'w', 'z'}) {
            const std::string name = std::string(Names[i]) + ".rtb" + kind;
            std::error_code absent;
            if (!(std::filesystem::file_size(realTables() / name, absent) <= Largest)) continue;
            const std::vector<char> table = readBytes(realTables() / name);
            std::ofstream(std::filesystem::path(to) / name, std::ios::binary)
                .put(char(i))
                .put(kind)
                .write(table.data(), std::streamsize(table.size()));
        }
}

}  // namespace

// With --seeds=FOLDER it only writes inputs: the real tables are not for the repository.
int LLVMFuzzerInitialize(int* argumentCount, char*** arguments) {
    const std::string seeds = "--seeds=";
    for (int i = 1; i < *argumentCount; ++i) {
        const std::string argument = (*arguments)[i];
        if (argument.compare(0, seeds.size(), seeds) != 0) continue;
        writeSeeds(argument.substr(seeds.size()));
        std::exit(0);
    }
    takeOverProcessEnd();
    // A line with the number of tables for each input; the fuzzer itself writes to standard error.
    if (!std::freopen("/dev/null", "w", stdout)) return 1;
    initSliders();
    ThreadPool::tableMemoryInUse = 1;
    ThreadPool::resize(true);
    transTable.resize(1);
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t HeadSize = 2, PaddingUnit = 64, ChecksumSize = 16;
    if (size < HeadSize) return 0;
    const std::string name = Names[data[0] % std::size(Names)];
    const TbKind kind = data[1] == 'z' || data[1] == 'Z' ? TbDtz : TbWdl;
    std::vector<char> bytes(data + HeadSize, data + size);
    if (data[1] != 'Z' && data[1] != 'W')
        bytes.resize((bytes.size() + PaddingUnit - 1 - ChecksumSize) / PaddingUnit * PaddingUnit +
                     ChecksumSize);
    TableInMemory table(name, kind, bytes);
    if (table.isReadable()) table.readValues();
    // Unreadable files are all alike, and making one costs time: a part of them must do.
    if (table.isReadable() || data[0] >= 128) probeAsFile(name, kind, bytes);
    return 0;
}
