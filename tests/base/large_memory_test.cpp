// Pages of large tables: when they are touched, on what pages they come, and what is kept.
#include "base/large_memory.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <sys/mman.h>
#include <thread>
#include <vector>

static constexpr std::size_t Page = 4096, Megabyte = std::size_t{1} << 20;

class LargeMemoryTest : public ::testing::Test {
   protected:
    ~LargeMemoryTest() override { memory.free(); }

    char& byteAt(std::size_t offset) { return static_cast<char*>(memory.data())[offset]; }
    // Pages that stand in memory.
    std::size_t residentPages() {
        std::vector<unsigned char> resident(memory.size() / Page);
        EXPECT_EQ(mincore(memory.data(), memory.size(), resident.data()), 0);
        return std::size_t(
            std::count_if(resident.begin(), resident.end(), [](int byte) { return byte & 1; }));
    }
    // The system's flags of the mapping that an address lies in, each with a blank before and behind.
    static std::string mappingFlags(const char* address) {
        const auto wanted = reinterpret_cast<std::uintptr_t>(address);
        std::ifstream maps("/proc/self/smaps");
        bool inside = false;
        for (std::string line; std::getline(maps, line);) {
            unsigned long first = 0, behind = 0;
            if (std::sscanf(line.c_str(), "%lx-%lx ", &first, &behind) == 2)
                inside = first <= wanted && wanted < behind;
            if (inside && line.starts_with("VmFlags:")) return line.substr(8) + ' ';
        }
        return {};
    }

    LargeMemory memory;
};

TEST_F(LargeMemoryTest, IsTouchedByAllWhoShareTheWorkAndKeepsItsContent) {
    for (const std::size_t bytes : {3 * Page - 1, 61 * Megabyte}) {
        ASSERT_TRUE(memory.allocate(bytes));
        EXPECT_GE(memory.size(), bytes);
        EXPECT_EQ(residentPages(), 0u) << bytes;
        byteAt(Page) = 1;
        byteAt(bytes - 1) = 2;
        EXPECT_EQ(memory.touchedBytes(), 0u);
        memory.askForHugePages();
        const auto work = [this] {
            while (memory.touchNext()) {
            }
        };
        std::thread other(work);
        work();
        other.join();
        EXPECT_EQ(memory.touchedBytes(), memory.size());
        EXPECT_EQ(residentPages(), memory.size() / Page) << bytes;
        EXPECT_FALSE(memory.isFresh());
        EXPECT_EQ(byteAt(Page), 1);
        EXPECT_EQ(byteAt(bytes - 1), 2);
        memory.forgetUntouched();
        EXPECT_EQ(byteAt(bytes - 1), 2) << "all of it was touched";
    }
}

TEST_F(LargeMemoryTest, WhatASearchFindsUntouchedIsLeftAloneUntilItIsForgotten) {
    ASSERT_TRUE(memory.allocate(64 * Megabyte));
    memory.askForHugePages();
    ASSERT_TRUE(memory.touchNext());
    const std::size_t touched = memory.touchedBytes();
    ASSERT_LT(touched, memory.size());
    EXPECT_TRUE(memory.isFresh());
    memory.settle();
    EXPECT_FALSE(memory.isFresh());
    memory.askForHugePages();
    EXPECT_FALSE(memory.touchNext());
    EXPECT_EQ(residentPages(), touched / Page);
    byteAt(touched - 1) = 1;
    byteAt(touched) = 2;
    memory.forgetUntouched();
    EXPECT_EQ(byteAt(touched - 1), 1);
    EXPECT_EQ(byteAt(touched), 0);
    EXPECT_TRUE(memory.isFresh());
    EXPECT_TRUE(memory.touchNext());
    EXPECT_GT(memory.touchedBytes(), touched);
}

TEST_F(LargeMemoryTest, AsksForHugePagesOnlyWhereItIsTouchedInTime) {
    if (!std::ifstream("/sys/kernel/mm/transparent_hugepage/enabled")) GTEST_SKIP() << "no huge pages here";
    constexpr const char *Huge = " hg ", *Small = " nh ";
    ASSERT_TRUE(memory.allocate(64 * Megabyte));
    EXPECT_EQ(mappingFlags(&byteAt(0)).find(Huge), std::string::npos);
    memory.askForHugePages();
    ASSERT_TRUE(memory.touchNext());
    memory.settle();
    EXPECT_NE(mappingFlags(&byteAt(0)).find(Huge), std::string::npos) << mappingFlags(&byteAt(0));
    EXPECT_NE(mappingFlags(&byteAt(memory.touchedBytes())).find(Small), std::string::npos);
    memory.forgetUntouched();
    memory.askForHugePages();
    EXPECT_NE(mappingFlags(&byteAt(memory.size() - 1)).find(Huge), std::string::npos);
}
