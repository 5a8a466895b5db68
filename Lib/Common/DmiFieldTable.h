// The field-descriptor table: where every field of every known structure type lies.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

// Width codes. The variable kinds take their length, and some their position, from a rule of their row; without one a
// VariableOne field has one byte and the others none.
enum class DmiKind : std::uint8_t {
    Byte1 = 0,
    VariableOne = 1,
    Byte6 = 2,
    Byte15 = 3,
    Byte16 = 4,
    Byte2 = 5,
    Variable = 6,
    Byte4 = 7,
    Byte8 = 8,
    VariableLong = 9,
};

// What a value is. Only String changes how a field is read.
enum class DmiClass : std::uint8_t { Plain = 0, String = 1, Enumerated = 2, BitField = 3, ReservedArea = 4 };

struct DmiFieldDescriptor {
    std::uint8_t Type;       // structure type
    std::uint8_t Offset;     // offset in the structure; of a string, of its string number
    std::uint8_t MinVersion; // lowest SMBIOS version, major x 10 + minor
    const char* Name;
    DmiKind Kind;
    DmiClass ValueClass;
};

constexpr std::size_t DmiFieldCount = 452;

extern const std::array<DmiFieldDescriptor, DmiFieldCount> DmiFieldTable;

// The first row of every type; DmiFieldCount for a type without rows.
extern const std::array<std::uint16_t, 256> DmiFirstRows;
