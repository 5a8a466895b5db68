// Builds SMBIOS structure tables and entry points.
#include "machine/model/SmbiosBuilder.h"

#include "Lib/LittleEndian.h"
#include "machine/model/EntryPoint.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace StandIn {

namespace {

constexpr std::uint32_t SegmentStart = 0xF0000;

void Append(Bytes& bytes, std::uint64_t value, unsigned width) {
    for (unsigned place = 0; place < width; ++place) {
        bytes.push_back(static_cast<std::uint8_t>(value >> (8 * place)));
    }
}

void Append(Bytes& bytes, const std::string& text) {
    bytes.insert(bytes.end(), text.begin(), text.end());
}

// The byte that makes the sum of the range 0, where the range's own checksum byte is still 0.
std::uint8_t Checksum(Bytes::const_iterator from, Bytes::const_iterator to) {
    return static_cast<std::uint8_t>(0U - std::accumulate(from, to, 0U));
}

} // namespace

SmbiosBuilder& SmbiosBuilder::Begin(std::uint8_t type) {
    const auto taken = [this](std::uint16_t handle) {
        return std::any_of(Structures.begin(), Structures.end(), [handle](const Structure& structure) {
            return LittleEndianRead<std::uint16_t>(structure.Formatted.data() + 2) == handle;
        });
    };
    while (taken(NextHandle)) {
        ++NextHandle;
    }
    return Begin(type, NextHandle);
}

SmbiosBuilder& SmbiosBuilder::Begin(std::uint8_t type, std::uint16_t handle) {
    Structure& structure = Structures.emplace_back();
    structure.Formatted = {type, 0}; // Encode fills in the length
    Append(structure.Formatted, handle, 2);
    return *this;
}

SmbiosBuilder& SmbiosBuilder::Byte(std::uint8_t value) {
    Append(Structures.back().Formatted, value, 1);
    return *this;
}

SmbiosBuilder& SmbiosBuilder::Word(std::uint16_t value) {
    Append(Structures.back().Formatted, value, 2);
    return *this;
}

SmbiosBuilder& SmbiosBuilder::Dword(std::uint32_t value) {
    Append(Structures.back().Formatted, value, 4);
    return *this;
}

SmbiosBuilder& SmbiosBuilder::Qword(std::uint64_t value) {
    Append(Structures.back().Formatted, value, 8);
    return *this;
}

SmbiosBuilder& SmbiosBuilder::Raw(std::initializer_list<std::uint8_t> values) {
    return Raw(Bytes(values));
}

SmbiosBuilder& SmbiosBuilder::Raw(const Bytes& values) {
    Bytes& formatted = Structures.back().Formatted;
    formatted.insert(formatted.end(), values.begin(), values.end());
    return *this;
}

SmbiosBuilder& SmbiosBuilder::String(const std::string& text) {
    if (text.empty()) {
        return Byte(0);
    }
    SetString(text);
    return Byte(static_cast<std::uint8_t>(Structures.back().Strings.size()));
}

SmbiosBuilder& SmbiosBuilder::StatedLength(std::uint8_t length) {
    Structures.back().StatedLength = length;
    return *this;
}

SmbiosBuilder& SmbiosBuilder::SetString(const std::string& text) {
    Structures.back().Strings.push_back(text);
    return *this;
}

std::uint16_t SmbiosBuilder::Handle() const {
    const Bytes& formatted = Structures.back().Formatted;
    return LittleEndianRead<std::uint16_t>(formatted.data() + 2);
}

std::uint16_t SmbiosBuilder::Count() const {
    return static_cast<std::uint16_t>(Structures.size());
}

std::uint16_t SmbiosBuilder::LargestSize() const {
    std::size_t largest = 0;
    for (const Structure& structure : Structures) {
        largest = std::max(largest, Encode(structure).size());
    }
    return static_cast<std::uint16_t>(std::min<std::size_t>(largest, 0xFFFF));
}

Bytes SmbiosBuilder::Table() const {
    Bytes table;
    for (const Structure& structure : Structures) {
        const Bytes encoded = Encode(structure);
        table.insert(table.end(), encoded.begin(), encoded.end());
    }
    return table;
}

Bytes SmbiosBuilder::Encode(const Structure& structure) const {
    Bytes encoded = structure.Formatted;
    encoded[1] =
        static_cast<std::uint8_t>(structure.StatedLength >= 0 ? structure.StatedLength : structure.Formatted.size());
    for (const std::string& text : structure.Strings) {
        Append(encoded, text);
        encoded.push_back(0);
    }
    if (structure.Strings.empty()) {
        encoded.push_back(0); // an empty set still ends in two zero bytes
    }
    encoded.push_back(0);
    return encoded;
}

Bytes EntryPoint21(std::uint8_t major, std::uint8_t minor, std::uint32_t tableAddress, std::uint16_t tableLength,
                   std::uint16_t structureCount, std::uint16_t largestSize) {
    constexpr std::uint8_t size = 31;
    constexpr std::size_t checksumOffset = 4;
    constexpr std::size_t intermediateOffset = 16;
    constexpr std::size_t intermediateChecksumOffset = 21;
    Bytes entry;
    Append(entry, "_SM_");
    entry.insert(entry.end(), {0, size, major, minor});
    Append(entry, largestSize, 2);
    Append(entry, 0, 6); // entry point revision and formatted area
    Append(entry, "_DMI_");
    entry.push_back(0);
    Append(entry, tableLength, 2);
    Append(entry, tableAddress, 4);
    Append(entry, structureCount, 2);
    entry.push_back(static_cast<std::uint8_t>(major << 4 | (minor & 0x0F)));
    entry[intermediateChecksumOffset] = Checksum(entry.begin() + intermediateOffset, entry.end());
    entry[checksumOffset] = Checksum(entry.begin(), entry.end());
    return entry;
}

Bytes EntryPoint30(std::uint8_t major, std::uint8_t minor, std::uint64_t tableAddress, std::uint32_t tableLength) {
    constexpr std::uint8_t size = 24;
    constexpr std::size_t checksumOffset = 5;
    constexpr std::uint8_t revision = 1;
    Bytes entry;
    Append(entry, "_SM3_");
    entry.insert(entry.end(), {0, size, major, minor, 0, revision, 0});
    Append(entry, tableLength, 4);
    Append(entry, tableAddress, 8);
    entry[checksumOffset] = Checksum(entry.begin(), entry.end());
    return entry;
}

Machine MachineWithTable(const SmbiosBuilder& builder, std::uint8_t major, std::uint8_t minor, bool legacy) {
    constexpr std::uint32_t lowAddress = 0xE0000;
    constexpr std::uint32_t highAddress = 0x7F000000; // for what does not fit below the segment
    Bytes table = builder.Table();
    const std::uint32_t address = table.size() <= SegmentStart - lowAddress ? lowAddress : highAddress;
    const Bytes entry = legacy ? EntryPoint21(major, minor, address,
                                              static_cast<std::uint16_t>(std::min<std::size_t>(table.size(), 0xFFFF)),
                                              builder.Count(), builder.LargestSize())
                               : EntryPoint30(major, minor, address, static_cast<std::uint32_t>(table.size()));
    Machine machine;
    std::string unused; // an entry point made here is sound
    TablesInstall(machine, entry, std::move(table), &unused);
    return machine;
}

} // namespace StandIn
