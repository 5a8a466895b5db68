// Texts of codes: the one lookup with its bound and its fallback.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

// The text of one code.
struct TextCode {
    std::uint32_t Code;
    const char* Text;
};

// One text for every code from First to Last, or for a single code.
struct TextRange {
    std::uint32_t First;
    std::uint32_t Last;
    const char* Text;

    constexpr TextRange(std::uint32_t first, std::uint32_t last, const char* text)
        : First(first), Last(last), Text(text) {}
    constexpr TextRange(std::uint32_t code, const char* text) : TextRange(code, code, text) {}
};

// The texts of a code. Low holds the codes from 0 on. A table with a High part is in two parts: codes from A0h on
// belong to High, whose first entry is A0h. Codes that neither part holds are looked for in Ranges, and then among the
// Newer ones: those that the standard has named since the table was made. XTexts names the table that fields use, and
// XLow, XHigh, XRanges and XNewer its parts.
class TextTable {
public:
    constexpr TextTable() = default;
    template <std::size_t N>
    constexpr TextTable(const char* const (&low)[N], // NOLINT: a plain array is a text table
                        std::span<const char* const> high = {}, std::span<const TextRange> ranges = {})
        : LowFirst(low), HighFirst(high.data()), RangesFirst(ranges.data()), LowCount(N), HighCount(Count(high.size())),
          RangesCount(Count(ranges.size())) {}
    template <std::size_t N>
    constexpr TextTable(const char* const (&low)[N], std::span<const TextRange> ranges)
        : TextTable(low, std::span<const char* const>(), ranges) {}

    constexpr std::span<const char* const> Low() const { return {LowFirst, LowCount}; }
    constexpr std::span<const char* const> High() const { return {HighFirst, HighCount}; }
    constexpr std::span<const TextRange> Ranges() const { return {RangesFirst, RangesCount}; }
    constexpr std::span<const TextRange> Newer() const { return {NewerFirst, NewerCount}; }

    // The table with newer codes beside it. Codes that don't ascend, or that the table itself holds, don't compile.
    consteval TextTable With(std::span<const TextRange> newer) const;

private:
    static constexpr std::uint16_t Count(std::size_t count) { return static_cast<std::uint16_t>(count); }

    // Every field has a table, most of them an empty one: small, for the program's file is read whole at each start.
    const char* const* LowFirst = nullptr;
    const char* const* HighFirst = nullptr;
    const TextRange* RangesFirst = nullptr;
    const TextRange* NewerFirst = nullptr;
    std::uint16_t LowCount = 0;
    std::uint16_t HighCount = 0;
    std::uint16_t RangesCount = 0;
    std::uint16_t NewerCount = 0;
};

// The text of a code that no table holds.
inline constexpr const char* UnrecognizedText = "Unrecognized";

// The text of a code among texts that hold each code once; null for a code that is not there.
constexpr const char* TextFind(std::span<const TextRange> texts, std::uint64_t code) {
    for (const TextRange& text : texts) {
        if (code >= text.First && code <= text.Last) {
            return text.Text;
        }
    }
    return nullptr;
}

// The text of a code; UnrecognizedText for a code that the table does not hold.
constexpr const char* TextFind(const TextTable& table, std::uint64_t code) {
    constexpr std::uint64_t highFirst = 0xA0;
    const bool high = !table.High().empty() && code >= highFirst;
    const std::span<const char* const> part = high ? table.High() : table.Low();
    const std::uint64_t index = high ? code - highFirst : code;
    if (index < part.size()) {
        return part[static_cast<std::size_t>(index)];
    }
    const char* text = TextFind(table.Ranges(), code);
    if (text == nullptr) {
        text = TextFind(table.Newer(), code);
    }
    return text != nullptr ? text : UnrecognizedText;
}

// The text of a code among codes that ascend; null for a code that is not there.
constexpr const char* TextFind(std::span<const TextCode> texts, std::uint64_t code) {
    const auto found = std::lower_bound(texts.begin(), texts.end(), code,
                                        [](const TextCode& text, std::uint64_t sought) { return text.Code < sought; });
    return found != texts.end() && found->Code == code ? found->Text : nullptr;
}

consteval TextTable TextTable::With(std::span<const TextRange> newer) const {
    std::uint64_t next = 0;
    for (const TextRange& text : newer) {
        if (text.First < next || text.Last < text.First) {
            throw "newer codes ascend";
        }
        for (next = text.First; next <= text.Last; ++next) {
            if (TextFind(*this, next) != UnrecognizedText) {
                throw "a newer code is one that the table does not hold";
            }
        }
    }
    TextTable table = *this;
    table.NewerFirst = newer.data();
    table.NewerCount = Count(newer.size());
    return table;
}
