// Texts of codes: the one lookup with its bound and its fallback.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

// The text of one code.
struct TextCode {
    std::uint32_t Code;
    const char* Text;
};

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
    constexpr TextTable(const char* const (&low)[N], // NOLINT: a plain array is a text table
                        std::span<const char* const> high = {}, std::span<const TextRange> ranges = {})
        : Low(low), High(high), Ranges(ranges) {}
    template <std::size_t N>
    constexpr TextTable(const char* const (&low)[N], std::span<const TextRange> ranges) : Low(low), Ranges(ranges) {}
};

// The text of a code that no table holds.
inline constexpr const char* UnrecognizedText = "Unrecognized";

// The text of a code; UnrecognizedText for a code that the table does not hold.
const char* TextFind(const TextTable& table, std::uint64_t code);

// The text of a code among codes that ascend; null for a code that is not there.
const char* TextFind(std::span<const TextCode> texts, std::uint64_t code);
