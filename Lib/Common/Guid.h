// GUIDs as they stand in memory.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

using Guid = std::array<std::uint8_t, 16>;

// Takes a GUID from its written form, "01234567-89ab-cdef-0123-456789abcdef": the first three groups are little-endian
// numbers in memory, the other bytes stand as they are written.
constexpr Guid GuidFromText(const char (&text)[37]) {
    constexpr std::uint8_t order[] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
    Guid guid{};
    std::size_t at = 0;
    for (const std::uint8_t place : order) {
        if (text[at] == '-') {
            ++at;
        }
        for (int digit = 0; digit < 2; ++digit, ++at) {
            const char character = text[at];
            const int value = character <= '9' ? character - '0' : character - 'a' + 10;
            guid[place] = static_cast<std::uint8_t>(guid[place] << 4 | value);
        }
    }
    return guid;
}
