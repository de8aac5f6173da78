// An opening book's record.
#pragma once

#include <cstdint>
#include <string>

// Sixteen bytes, the highest of each number first. The last four mean nothing to the engine.
inline std::string bookRecord(std::uint64_t key, unsigned move, unsigned weight) {
    std::string bytes;
    for (int shift = 56; shift >= 0; shift -= 8) bytes += char(key >> shift);
    for (const unsigned word : {move, weight}) bytes += {char(word >> 8), char(word)};
    return bytes + std::string(4, '\0');
}
