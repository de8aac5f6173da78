// Typed tables on large memory: their entries, and the rule for memory that the system has not.
#include "base/large_table.h"

#include <cstdint>
#include <gtest/gtest.h>

TEST(LargeTable, HoldsZeroEntriesUntilItIsFreed) {
    LargeTable<std::uint64_t> table;
    EXPECT_EQ(table.data(), nullptr);
    for (const std::size_t count : {std::size_t{1000000}, std::size_t{3}}) {
        table.allocate(count, "numbers");
        EXPECT_EQ(table.size(), count);
        EXPECT_GE(table.pages().size(), count * sizeof(std::uint64_t));
        EXPECT_EQ(table[count - 1], 0u);
        table[count - 1] = 1;
    }
    table.free();
    EXPECT_EQ(table.data(), nullptr);
    EXPECT_EQ(table.size(), 0u);
}

TEST(LargeTableDeathTest, SaysWhatIsMissingAndEndsTheProcess) {
    constexpr std::size_t TooMany = std::size_t{1} << 55;
    const char* const line = "^Unable to allocate 288230376151711744 bytes of memory for numbers\n$";
    LargeTable<std::uint64_t> table;
    EXPECT_EXIT(table.allocate(TooMany, "numbers"), testing::ExitedWithCode(1), line);
    EXPECT_EXIT(table.allocate(TooMany, "numbers", -1), testing::ExitedWithCode(255), line);
    testing::internal::CaptureStderr();
    EXPECT_FALSE(table.tryAllocate(TooMany, "numbers"));
    EXPECT_EQ(testing::internal::GetCapturedStderr().find("Unable"), 0u);
    EXPECT_EQ(table.size(), 0u);
}
