// The repository has what its tests need. Comparisons with data too large for it are optional: that data lies
// beside the work tree, in ../shared/data, and a test that reads it begins with OPTIONAL_WITH_SHARED_DATA().
#pragma once

#include <filesystem>
#include <gtest/gtest.h>
#include <system_error>

inline std::filesystem::path testData() { return TARVOK_SOURCE_DIR "/tests/data"; }
inline std::filesystem::path sharedData() { return TARVOK_SOURCE_DIR "/../shared/data"; }
inline bool hasSharedData() {
    std::error_code ignored;
    return std::filesystem::is_directory(sharedData(), ignored);
}

// A macro because only the body of the test itself can be left early by a skip.
#define OPTIONAL_WITH_SHARED_DATA() \
    if (!hasSharedData())           \
    GTEST_SKIP() << "optional: compares with many tables, which ../shared/data would hold"
