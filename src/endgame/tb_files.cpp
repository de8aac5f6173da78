#include "endgame/tb_files.h"

#include "base/end_process.h"
#include "base/output.h"
#include "base/relaxed.h"
#include "board/zobrist.h"
#include "endgame/tb_entry.h"
#include "endgame/tb_setup.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <new>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr const char* Suffixes[TbKinds] = {".rtbw", ".rtbm", ".rtbz"};
constexpr std::size_t MaxPathSize = 256;  // of a file's whole path, with its terminator

// Open addressing on the top bits of the material key. A slot whose pointer was cleared is no end of a chain:
// only a slot with key 0 is, and no material but the bare kings has that key.
constexpr int HashBits = 12;
constexpr std::size_t HashSlots = std::size_t(1) << HashBits;
struct HashSlot {
    Key key;
    Relaxed<TbEntry*> entry;  // null once the table has proved unreadable; written under `tbMutex`
};

// All that is known of the tables. Written by tbInit, while no search runs; a search changes entries and
// slots alone, under `tbMutex`.
struct TbState {
    HashSlot tbHash[HashSlots];
    TbPieceEntry* tbPiecePool = nullptr;
    TbPawnEntry* tbPawnPool = nullptr;
    std::size_t pieceEntries = 0;
    std::size_t pawnEntries = 0;
    int tbWdlCount = 0;  // files found; those of distances to mate are read by nobody and not counted
    int tbDtzCount = 0;
    int tbMaxMen = 0;
    std::vector<std::string> tbPaths;
    bool hasPath = false;  // a path was set before, so that there may be something to free
    std::mutex tbMutex;    // held while a table is set up

    void insertEntry(Key key, TbEntry* entry) {
        std::size_t slot = slotOf(key);
        while (tbHash[slot].key) slot = (slot + 1) % HashSlots;
        tbHash[slot].key = key;
        tbHash[slot].entry = entry;
    }
    TbEntry* findEntry(Key key) const {
        std::size_t slot = slotOf(key);
        while (tbHash[slot].key && tbHash[slot].key != key) slot = (slot + 1) % HashSlots;
        return tbHash[slot].key ? tbHash[slot].entry.load() : nullptr;
    }
    void forgetEntry(const TbEntry* entry) {
        for (HashSlot& slot : tbHash)
            if (slot.entry.load() == entry) slot.entry = nullptr;
    }

   private:
    static std::size_t slotOf(Key key) { return std::size_t(key >> (64 - HashBits)); }
};
TbState tbState;

// The first regular file of this name in the directories, opened for reading, or -1. Whatever else has the
// name, such as a directory, counts as absent, and opening must not block on it. A path that is too long
// isn't tried.
int openTable(const char* name, const char* suffix, struct stat* status) {
    for (const std::string& directory : tbState.tbPaths) {
        char path[MaxPathSize];
        const int length = std::snprintf(path, sizeof path, "%s/%s%s", directory.c_str(), name, suffix);
        if (length < 0 || std::size_t(length) >= sizeof path) continue;
        const int descriptor = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        if (descriptor < 0) continue;
        if (fstat(descriptor, status) == 0 && S_ISREG(status->st_mode)) return descriptor;
        close(descriptor);
    }
    return -1;
}

bool tbFileExists(const char* name, const char* suffix) {
    struct stat status;
    const int descriptor = openTable(name, suffix, &status);
    if (descriptor < 0) return false;
    close(descriptor);
    return true;
}

// False if there is no such file. An empty file is mapped at no address with size 0.
bool tbMapFile(const char* name, const char* suffix, const std::uint8_t*& data, std::uint64_t& size) {
    struct stat status;
    const int descriptor = openTable(name, suffix, &status);
    if (descriptor < 0) return false;
    data = nullptr;
    size = std::uint64_t(status.st_size);
    if (size) {
        void* const mapping = mmap(nullptr, size, PROT_READ, MAP_SHARED, descriptor, 0);
        if (mapping == MAP_FAILED) {
            std::fprintf(stderr, "Could not map %s%s into memory.\n", name, suffix);
            endProcess(1);
        }
        data = static_cast<const std::uint8_t*>(mapping);
    }
    close(descriptor);
    return true;
}

void unmap(TbEntry& entry, TbKind kind) {
    if (entry.mappedData[kind])
        munmap(const_cast<std::uint8_t*>(entry.mappedData[kind]), entry.mappedSize[kind]);
    entry.mappedData[kind] = nullptr;
    entry.mappedSize[kind] = 0;
}

enum class SetUpResult { Ready, Absent, Corrupted };

// Only under `tbMutex`.
SetUpResult tbSetupTable(TbEntry& entry, const char* name, TbKind kind) {
    if (!tbMapFile(name, Suffixes[kind], entry.mappedData[kind], entry.mappedSize[kind]))
        return SetUpResult::Absent;
    if (tbReadTable(entry, name, kind)) return SetUpResult::Ready;
    std::fputs("Corrupted table.\n", stderr);
    unmap(entry, kind);
    return SetUpResult::Corrupted;
}

void tbFree(TbEntry& entry) {
    for (const TbKind kind : {TbWdl, TbDtm, TbDtz}) {
        if (entry.ready[kind].load(std::memory_order_relaxed)) tbFreeTable(entry, kind);
        unmap(entry, kind);
        entry.ready[kind].store(0, std::memory_order_relaxed);
    }
}

void forgetTables() {
    tbState.tbPaths.clear();
    for (std::size_t i = 0; i < tbState.pieceEntries; ++i) tbFree(tbState.tbPiecePool[i]);
    for (std::size_t i = 0; i < tbState.pawnEntries; ++i) tbFree(tbState.tbPawnPool[i]);
    tbState.pieceEntries = tbState.pawnEntries = 0;
    for (HashSlot& slot : tbState.tbHash) {
        slot.key = 0;
        slot.entry = nullptr;
    }
    tbState.tbWdlCount = tbState.tbDtzCount = 0;
}

void splitPath(const char* path) {
    const std::string text = path;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find(':', start), text.size());
        if (end > start) tbState.tbPaths.push_back(text.substr(start, end - start));
        start = end + 1;
    }
}

void allocatePools() {
    if (tbState.tbPiecePool && tbState.tbPawnPool) return;
    tbState.tbPiecePool = static_cast<TbPieceEntry*>(std::malloc(TbPiecePoolSize * sizeof(TbPieceEntry)));
    tbState.tbPawnPool = static_cast<TbPawnEntry*>(std::malloc(TbPawnPoolSize * sizeof(TbPawnEntry)));
    if (tbState.tbPiecePool && tbState.tbPawnPool) return;
    std::fputs("Out of memory.\n", stderr);
    endProcess(1);
}

// Sum over the pieces of both sides, kings left out, as a position's plain material key is built.
Key materialKey(const TbMenCounts& men, bool mirrored) {
    Key key = 0;
    for (const Colour colour : {White, Black})
        for (int type = Pawn; type <= Queen; ++type) {
            const Colour keyColour = mirrored ? opponent(colour) : colour;
            key += men.of[boardCode(colour, type)] * matValue[keyColour][type][0];
        }
    return key;
}

void tbAddTable(const char* name) {
    if (!tbFileExists(name, Suffixes[TbWdl])) return;
    const TbMenCounts men = tbCountMen(name);
    const std::uint8_t whitePawns = men.of[boardCode(White, Pawn)],
                       blackPawns = men.of[boardCode(Black, Pawn)];
    TbEntry* entry;
    if (whitePawns || blackPawns)
        entry = new (&tbState.tbPawnPool[tbState.pawnEntries++]) TbPawnEntry{};
    else
        entry = new (&tbState.tbPiecePool[tbState.pieceEntries++]) TbPieceEntry{};
    const Key mirroredKey = materialKey(men, true);
    entry->key = materialKey(men, false);
    entry->hasPawns = whitePawns || blackPawns;
    entry->symmetric = entry->key == mirroredKey;
    int singles = 0;
    for (const std::uint8_t count : men.of) {
        entry->menCount = std::uint8_t(entry->menCount + count);
        singles += count == 1;
    }
    ++tbState.tbWdlCount;
    entry->hasDtm = tbFileExists(name, Suffixes[TbDtm]);
    entry->hasDtz = tbFileExists(name, Suffixes[TbDtz]);
    tbState.tbDtzCount += entry->hasDtz;
    tbState.tbMaxMen = std::max<int>(tbState.tbMaxMen, entry->menCount);
    if (entry->hasPawns) {
        const bool blackLeads = blackPawns && (!whitePawns || whitePawns > blackPawns);
        entry->pawnsLeading = blackLeads ? blackPawns : whitePawns;
        entry->pawnsOther = blackLeads ? whitePawns : blackPawns;
    } else {
        entry->kkEncoding = singles == 2;
    }
    tbState.insertEntry(entry->key, entry);
    if (!entry->symmetric) tbState.insertEntry(mirroredKey, entry);
}

// Men per side besides the kings, in the order in which names are tried.
struct Shape {
    int first, second;
};
constexpr Shape Shapes[] = {{1, 0}, {1, 1}, {2, 0}, {3, 0}, {2, 1}, {4, 0},
                            {3, 1}, {2, 2}, {5, 0}, {4, 1}, {3, 2}};
constexpr std::string_view NameOrder = "QRBNP";

// All choices of `count` men, strongest first, like men allowed, each list in the order of NameOrder.
void listSides(int count, std::size_t strongest, const std::string& chosen, std::vector<std::string>& sides) {
    if (count == 0) return sides.push_back(chosen);
    for (std::size_t i = strongest; i < NameOrder.size(); ++i)
        listSides(count - 1, i, chosen + NameOrder[i], sides);
}

void tryAllNames() {
    for (const Shape& shape : Shapes) {
        std::vector<std::string> firstSides, secondSides;
        listSides(shape.first, 0, "", firstSides);
        listSides(shape.second, 0, "", secondSides);
        for (std::size_t i = 0; i < firstSides.size(); ++i)
            // With equal counts the stronger side comes first, so that no material has two names.
            for (std::size_t j = shape.first == shape.second ? i : 0; j < secondSides.size(); ++j)
                tbAddTable(("K" + firstSides[i] + "vK" + secondSides[j]).c_str());
    }
}

}  // namespace

TbMenCounts tbCountMen(const char* name) {
    constexpr std::string_view letters = " PNBRQK";
    TbMenCounts men{};
    Colour colour = White;
    for (; *name; ++name) {
        if (*name == 'v') colour = Black;
        const std::size_t type = letters.find(*name, 1);
        if (type != std::string_view::npos) ++men.of[boardCode(colour, int(type))];
    }
    return men;
}

void tbInit(const char* path) {
    if (tbState.hasPath) forgetTables();
    tbState.hasPath = *path && std::strcmp(path, "<empty>") != 0;
    if (!tbState.hasPath) return;
    splitPath(path);
    tbState.tbMaxMen = 0;
    allocatePools();
    tryAllNames();
    sendLine("info string Found %d WDL and %d DTZ tablebase files (up to %d-man).\n", tbState.tbWdlCount,
             tbState.tbDtzCount, tbState.tbMaxMen);
}

int tbLargestTable() { return tbState.tbMaxMen; }

void tbTableName(const Position& pos, char* name, bool mirrored) {
    constexpr char letters[] = " PNBRQK";
    char* end = name + TbNameSize - 1;
    for (const Colour side : {White, Black}) {
        const Colour colour = mirrored ? opponent(side) : side;
        if (side == Black && name < end) *name++ = 'v';
        for (int type = King; type >= Pawn; --type)
            for (int i = popcount(pos.pieces[colour][type]); i > 0 && name < end; --i)
                *name++ = letters[type];
    }
    *name = '\0';
}

TbEntry* tbTableFor(const Position& pos, TbKind kind) {
    TbEntry* const entry = tbState.findEntry(pos.matKeyPlain);
    if (!entry || int(pos.pieceCount) != entry->menCount || (kind == TbDtz && !entry->hasDtz)) return nullptr;
    if (entry->ready[kind].load(std::memory_order_acquire)) return entry;

    const std::lock_guard<std::mutex> lock(tbState.tbMutex);
    if (entry->ready[kind].load(std::memory_order_relaxed)) return entry;
    if (!tbState.findEntry(pos.matKeyPlain)) return nullptr;  // another thread found the table unreadable
    char name[TbNameSize];
    tbTableName(pos, name, entry->key != pos.matKeyPlain);
    const SetUpResult result = tbSetupTable(*entry, name, kind);
    if (result == SetUpResult::Ready) {
        entry->ready[kind].store(1, std::memory_order_release);
        return entry;
    }
    // A distance file that has gone costs only that probe. Anything else means that the table is not to be
    // trusted.
    if (kind == TbWdl || result == SetUpResult::Corrupted) tbState.forgetEntry(entry);
    return nullptr;
}
