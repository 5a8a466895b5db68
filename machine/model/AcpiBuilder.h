// Builds ACPI tables, for the firmware model and for tests.
#pragma once

#include "machine/model/Machine.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>

namespace StandIn {

// Puts a value into bytes, which grow as needed: a text without its final zero, anything else as it stands in memory.
template <typename Value> void BytesPut(Bytes& bytes, std::size_t offset, const Value& value) {
    std::string_view plain(reinterpret_cast<const char*>(&value), sizeof value);
    if constexpr (std::is_convertible_v<const Value&, std::string_view>) {
        plain = value;
    }
    bytes.resize(std::max(bytes.size(), offset + plain.size()));
    std::copy(plain.begin(), plain.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
}

constexpr std::size_t AcpiHeaderSize = 36;

// A table: the header, which states its size, and what is put behind it.
class AcpiBuilder {
public:
    explicit AcpiBuilder(std::string_view signature, std::size_t size = AcpiHeaderSize, std::uint8_t revision = 1);

    template <typename Value> AcpiBuilder& Put(std::size_t offset, const Value& value) {
        BytesPut(Content, offset, value);
        return *this;
    }

    // The table as it stands in memory, with its checksum.
    Bytes Table() const;

private:
    Bytes Content;
};

// A root table of addresses: an XSDT of 64-bit ones, an RSDT of 32-bit ones.
template <typename Address> Bytes AcpiRootTable(const std::vector<Address>& addresses) {
    AcpiBuilder table(sizeof(Address) == 8 ? "XSDT" : "RSDT");
    for (std::size_t entry = 0; entry < addresses.size(); ++entry) {
        table.Put(AcpiHeaderSize + entry * sizeof(Address), addresses[entry]);
    }
    return table.Table();
}

// The structure that names the root tables; an address of 0 names none.
Bytes AcpiRootPointer(std::uint64_t xsdt, std::uint32_t rsdt);

} // namespace StandIn
