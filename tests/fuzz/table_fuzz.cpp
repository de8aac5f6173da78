// Any bytes as an endgame table, probed in many positions. The first byte of an input chooses the table's
// name, the second its kind ('z' for distances, else win/draw/loss) and the rest is the file. Its length is
// rounded up to what tables have, since hardly any input would get past that test, unless the second byte is
// 'Z' or 'W'.
//
// The bytes are first read from memory of exactly their size, where every read beyond them is seen, and what
// is readable then once more from a file, among real tables.
#include "endgame/table_files.h"
#include "endgame/tb_root.h"
#include "fuzz/fuzz_support.h"

#include <map>
#include <sanitizer/asan_interface.h>

namespace {

constexpr const char* Names[] = {"KQvK",    "KRvK",    "KPvK",     "KNNvK",    "KBNvK",    "KRRvK",
                                 "KNvKN",   "KBvKN",   "KQvKR",    "KRvKR",    "KPPvK",    "KPvKP",
                                 "KQvKP",   "KRPvK",   "KPPPvK",   "KPPvKP",   "KRPvKR",   "KNNNvK",
                                 "KPPvKPP", "KRRvKBN", "KPPPPPvK", "KPPPvKPP", "KQRBNvKN", "KNNNNNvK"};

// The same playable positions each time.
const std::vector<Position>& positionsOf(const std::string& name) {
    constexpr std::size_t PositionsOfTable = 24;
    static std::map<std::string, std::vector<Position>> all;
    std::vector<Position>& positions = all[name];
    std::mt19937 random(unsigned(name.size()));
    while (positions.size() < PositionsOfTable) positions.push_back(randomPosition(name, random));
    return positions;
}

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

void probe(const Position& pos) {
    require(std::abs(wdlOf(pos).value_or(0)) <= 2, "a result is in range");
    dtzOf(pos);
    probeSearchTablebase(pos, 1);
    int score;
    RootMove list[MaxListMoves + 1];
    for (const auto rootProbe : {tbRootProbeDtz, tbRootProbeWdl}) {
        const int count = rootProbe(pos, list, &score);
        require(count >= 0 && count < MaxListMoves, "the root list is in bounds");
        require(count == 0 || list[count].move == NoMove, "the root list has an end");
    }
}

void probeAsFile(const std::string& name, TbKind kind, const std::vector<char>& bytes) {
    static const TableFolder folder;
    static const std::string path = folder.path() + ":" + smallTables().string();
    folder.write(fileName(name, kind), bytes);
    // A distance is asked for only where the result is no draw, so every position is made a win where a table
    // of one result can be.
    const std::vector<char> won = singleValueTable(name, 2);
    if (kind == TbDtz && TableInMemory(name, TbWdl, won).isReadable())
        folder.write(fileName(name, TbWdl), won);
    tbInit(path.c_str());
    const std::vector<Position>& positions = positionsOf(name);
    {
        const PoisonedTail tail(positions[0], kind);
        for (const Position& pos : positions) probe(pos);
    }
    tbInit("");
    for (const TbKind made : {TbWdl, TbDtz}) std::filesystem::remove(folder.file(fileName(name, made)));
}

// Writes the small ones of the real tables as inputs into a folder.
void writeSeeds(const std::filesystem::path& to) {
    constexpr std::uintmax_t Largest = 16384;  // bytes
    for (std::size_t i = 0; i < std::size(Names); ++i)
        for (const TbKind kind : {TbWdl, TbDtz}) {
            const std::string name = fileName(Names[i], kind);
            std::error_code absent;
            if (!(std::filesystem::file_size(smallTables() / name, absent) <= Largest)) continue;
            const std::vector<char> table = readBytes(smallTables() / name);
            std::ofstream seed(to / name, std::ios::binary);
            seed.put(char(i)).put(name.back()).write(table.data(), std::streamsize(table.size()));
        }
}

}  // namespace

// With --seeds=FOLDER it only writes inputs.
int LLVMFuzzerInitialize(int* argumentCount, char*** arguments) {
    const std::string seeds = "--seeds=", argument = *argumentCount > 1 ? (*arguments)[1] : "";
    if (argument.starts_with(seeds)) {
        writeSeeds(argument.substr(seeds.size()));
        std::exit(0);
    }
    // A line with the number of tables for each input; the fuzzer itself writes to standard error.
    if (!std::freopen("/dev/null", "w", stdout)) return 1;
    startSmallEngine();
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
    std::mt19937 random(1);
    constexpr int Reads = 12;  // of each slice
    require(!table.isReadable() || table.holdsValuesInRange(random, Reads), "stored values are in range");
    // Unreadable files are all alike, and making one costs time: a part of them must do.
    if (table.isReadable() || data[0] >= 128) probeAsFile(name, kind, bytes);
    return 0;
}
