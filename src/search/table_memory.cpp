#include "search/table_memory.h"

#include "search/thread_pool.h"

#include <algorithm>
#include <atomic>
#include <cstring>

void touchTables(const std::vector<LargeMemory*>& tables, const std::function<bool()>& mayGoOn) {
    bool anyFresh = false;
    const auto prepare = [&](LargeMemory& memory) {
        memory.askForHugePages();
        anyFresh |= memory.isFresh();
    };
    for (int i = 0; i < threadPool.threadRecordCount; ++i) threadPool.threadRecords[i].forEachCache(prepare);
    for (LargeMemory* memory : tables) prepare(*memory);
    if (!anyFresh) return;
    const auto touch = [&](LargeMemory& memory) {
        while (mayGoOn() && memory.touchNext()) {
        }
    };
    threadPool.runOnAllThreads([&](int index) {
        threadPool.threadRecords[index].forEachCache(touch);
        for (LargeMemory* memory : tables) touch(*memory);
    });
}

void clearTable(LargeMemory& table) {
    constexpr std::size_t Stretch = std::size_t{8} << 20;
    table.forgetUntouched();
    const std::size_t size = table.touchedBytes();
    if (size == 0) return;
    std::atomic<std::size_t> next = 0;
    threadPool.runOnAllThreads([&](int) {
        for (std::size_t offset; (offset = next.fetch_add(Stretch)) < size;)
            std::memset(static_cast<char*>(table.data()) + offset, 0, std::min(Stretch, size - offset));
    });
}
