// Texts of codes: the one lookup with its bound and its fallback.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

// One text for every code from First to Last.
struct TextRange {
    std::uint32_t First;
    std::uint32_t Last;
    const char* Text;
};

// The texts of a code. Low holds the codes from 0 on. A table with a High part is in two parts: codes from A0h on
// belong to High, whose first entry is A0h. Codes that neither part holds are looked for in Ranges.
struct TextTable {
    std::span<const char* const> Low;
    std::span<const char* const> High;
    std::span<const TextRange> Ranges;

    constexpr TextTable() = default;
    template <std::size_t N>
    constexpr TextTable(const char* const (&low)[N]) : Low(low) {} // NOLINT: a plain array is a text table
    template <std::size_t N, std::size_t M>
    constexpr TextTable(const char* const (&low)[N], const char* const (&high)[M]) : Low(low), High(high) {}
    template <std::size_t N, std::size_t M>
    constexpr TextTable(const char* const (&low)[N], const TextRange (&ranges)[M]) : Low(low), Ranges(ranges) {}
};

// The text of a code; "Unrecognized" for a code that the table does not hold.
const char* TextFind(const TextTable& table, std::uint64_t code);
