// Builds SMBIOS structure tables and entry points, for the sample machine and for tests.
#pragma once

#include "machine/model/Machine.h"

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace StandIn {

// Appends structures one after another. The formatted area is written value by value behind the 4-byte header, whose
// length follows by itself; strings are numbered as they are added.
class SmbiosBuilder {
public:
    explicit SmbiosBuilder(std::uint16_t firstHandle = 0) : NextHandle(firstHandle) {}

    // Begins a structure with a handle; without one, the next free one from the first handle on.
    SmbiosBuilder& Begin(std::uint8_t type);
    SmbiosBuilder& Begin(std::uint8_t type, std::uint16_t handle);

    // Appends to the formatted area of the structure last begun; multi-byte values are little-endian.
    SmbiosBuilder& Byte(std::uint8_t value);
    SmbiosBuilder& Word(std::uint16_t value);
    SmbiosBuilder& Dword(std::uint32_t value);
    SmbiosBuilder& Qword(std::uint64_t value);
    SmbiosBuilder& Raw(std::initializer_list<std::uint8_t> values);
    SmbiosBuilder& Raw(const Bytes& values);

    // Appends a string number, and the string to the structure's set; the empty text appends the number 0.
    SmbiosBuilder& String(const std::string& text);

    // Overrides the length byte that the header states, whatever the formatted area holds.
    SmbiosBuilder& StatedLength(std::uint8_t length);

    // Appends a string to the set without a number in the formatted area.
    SmbiosBuilder& SetString(const std::string& text);

    // The handle of the structure last begun.
    std::uint16_t Handle() const;

    // Number of structures so far, and the size of the largest, strings included.
    std::uint16_t Count() const;
    std::uint16_t LargestSize() const;

    // The table as it stands in memory.
    Bytes Table() const;

private:
    struct Structure {
        Bytes Formatted;
        std::vector<std::string> Strings;
        int StatedLength = -1;
    };
    Bytes Encode(const Structure& structure) const;
    std::vector<Structure> Structures;
    std::uint16_t NextHandle;
};

// A 31-byte "_SM_" entry point with correct checksums.
Bytes EntryPoint21(std::uint8_t major, std::uint8_t minor, std::uint32_t tableAddress, std::uint16_t tableLength,
                   std::uint16_t structureCount, std::uint16_t largestSize);

// A 24-byte "_SM3_" entry point with a correct checksum.
Bytes EntryPoint30(std::uint8_t major, std::uint8_t minor, std::uint64_t tableAddress, std::uint32_t tableLength);

// A machine with that table at SMBIOS major.minor, on the legacy road (memory and service) or on the firmware road
// (service only).
Machine MachineWithTable(const SmbiosBuilder& builder, std::uint8_t major, std::uint8_t minor, bool legacy = true);

} // namespace StandIn
