// Test data that is too large for the repository lies beside it, in ../shared/data, and not everyone has it.
// A test that reads it begins with REQUIRE_SHARED_DATA(): where the folder is absent the test is skipped and
// says so, except under continuous integration (CI set in the environment), where it fails.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <system_error>

// The folder, or nothing when it is absent.
inline std::optional<std::filesystem::path> sharedData() {
    const std::filesystem::path folder = std::filesystem::path(TARVOK_SOURCE_DIR) / ".." / "shared" / "data";
    std::error_code ignored;
    if (!std::filesystem::is_directory(folder, ignored)) return std::nullopt;
    return folder;
}

inline bool sharedDataIsMandatory() {
    const char* ci = std::getenv("CI");
    return ci && *ci;
}

// A macro because only the body of the test itself can be left early by a skip or a fatal failure.
#define REQUIRE_SHARED_DATA()                                                                  \
    do {                                                                                       \
        if (sharedData()) break;                                                               \
        if (sharedDataIsMandatory()) FAIL() << "the folder ../shared/data is absent under CI"; \
        GTEST_SKIP() << "the folder ../shared/data is absent";                                 \
    } while (false)
