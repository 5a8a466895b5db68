// The structure parser: walking a table copy, and looking fields up in its structures.
#pragma once

#include "Lib/Common/DmiInfoEntryGet.h"
#include "Lib/LittleEndian.h"
#include "Lib/RyxStatus.h"

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

struct RyxBin;

// A structure in a table copy, with all that follows it to the table's end: the one place that knows where the copy
// ends. Every read is checked against it. The table's SMBIOS version (major x 10 + minor) goes along.
class DmiStruct {
public:
    explicit DmiStruct(std::span<const std::uint8_t> toTableEnd, std::uint8_t version = 0)
        : Rest(toTableEnd), TableVersion(version) {}

    // Tells whether there is a structure at all: a header of 4 bytes.
    bool Exists() const { return Rest.size() >= 4; }

    // The header's values; for a structure that exists.
    std::uint8_t Type() const { return Rest[0]; }
    std::uint8_t FormattedLength() const { return Rest[1]; }
    std::uint16_t Handle() const { return LittleEndianRead<std::uint16_t>(&Rest[2]); }

    std::uint8_t SmbiosVersion() const { return TableVersion; }

    // Gives bytes at an offset. False when they reach past the table's end.
    bool BytesGet(std::uint32_t offset, std::uint32_t length, std::span<const std::uint8_t>* bytes) const;
    bool ByteGet(std::uint32_t offset, std::uint8_t* byte) const;

    // The bytes from an offset on, to the table's end; empty when the offset lies at or past it.
    std::span<const std::uint8_t> From(std::uint32_t offset) const;

private:
    std::span<const std::uint8_t> Rest;
    std::uint8_t TableVersion;
};

// Splits a library field number: the type, and the index of its descriptor in DmiFieldTable, which lies at or past
// DmiFieldCount for a type without rows. Of the whole table the index counts on through the newer rows, and lies at
// DmiAllFieldCount where the type has none of that number.
void DmiFieldNumberResolve(std::uint32_t field, std::uint16_t* type, std::uint16_t* descriptor, bool whole = false);

// Moves to the next structure of the table, behind the two zero bytes that end this one's string set; false, and
// unmoved, when there is none, or no structure to move from.
bool DmiNextStructGet(DmiStruct* structure);

// Gives the string whose number stands at an offset of the structure: empty for number 0 and for a number that the set
// does not hold; cut at the table's end when its NUL is missing. False when the number itself lies past the table.
bool DmiStringFind(const DmiStruct& structure, std::uint32_t offset, std::string_view* text);

// Gives one field of a structure as a new value that the caller owns. RyxErrorArgument: no such descriptor, or no
// `bin`; RyxErrorUnsupported: the structure, the SMBIOS version or the table does not hold the field; RyxErrorMemory.
// Of the whole table the version counts only where a row of other structures' bytes would be taken for the field, and
// newer rows are there: each when all of it lies inside the formatted area.
RyxStatus DmiStructFieldGet(const DmiStruct& structure, std::uint16_t descriptor, RyxBin** bin, bool whole = false);

// Gives the strings of the structure's set, each with its NUL, as a new value that the caller owns. The set ends at its
// first empty string or at the table's end. RyxErrorArgument: no `bin`; RyxErrorMemory.
RyxStatus DmiStructStringsGet(const DmiStruct& structure, RyxBin** bin);

// Gives the bytes from an offset to the end of the formatted area. RyxErrorUnsupported: the area ends at or before the
// offset, or the table before it; RyxErrorArgument: no `bin`; RyxErrorMemory.
RyxStatus DmiStructAreaGet(const DmiStruct& structure, std::uint8_t offset, RyxBin** bin);

// Finds the instance (from 1) of a type among the first 128 structures of a table, of which those with a handle above
// 00FFh count for type 127 only; or among all structures of the whole table, up to the first one whose length is no
// header's. False when there is none. A copy with the bytes of the one before is not walked again: where its structures
// lie is remembered, if there is memory for that.
bool DmiInstanceFind(const DmiTableCopy& table, std::uint16_t type, std::uint32_t instance, DmiStruct* found,
                     bool whole = false);

// The structures of a type: all of the whole table, and those of them that count otherwise.
struct DmiTypeCount {
    std::uint32_t Whole;
    std::uint32_t Limited;
};

// Counts the structures of every type.
std::array<DmiTypeCount, 256> DmiStructuresCount(const DmiTableCopy& table);

// The state at process start: no table walked yet.
void DmiWalkReset();
