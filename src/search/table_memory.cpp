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
    for (int i = 0; i < ThreadPool::threadRecordCount; ++i)
        for (LargeMemory& memory : ThreadPool::threadRecords[i].cacheMemory) prepare(memory);
    for (LargeMemory* memory : tables) prepare(*memory);
    if (!anyFresh) return;
    ThreadPool::runOnAllThreads([&](int index) {
        for (LargeMemory& memory : ThreadPool::threadRecords[index].cacheMemory)
            while (mayGoOn() && memory.touchNext()) {
            }
        for (LargeMemory* memory : tables)
            while (mayGoOn() && memory->touchNext()) {
            }
    });
}

void clearTable(LargeMemory& table) {
    constexpr std::size_t Stretch = std::size_t{8} << 20;
    table.forgetUntouched();
    const std::size_t size = table.touchedBytes();
    if (size == 0) return;
    std::atomic<std::size_t> next = 0;
    ThreadPool::runOnAllThreads([&](int) {
        for (std::size_t offset; (offset = next.fetch_add(Stretch)) < size;)
            std::memset(static_cast<char*>(table.data()) + offset, 0, std::min(Stretch, size - offset));
    });
}
