// Builds ACPI tables.
#include "machine/model/AcpiBuilder.h"

#include <numeric>

namespace StandIn {

namespace {

// Makes the sum of the first bytes zero by the one at an offset, which is still 0.
void ChecksumPut(Bytes& bytes, std::size_t offset, std::size_t length) {
    const auto end = bytes.begin() + static_cast<std::ptrdiff_t>(length);
    bytes[offset] = static_cast<std::uint8_t>(0U - std::accumulate(bytes.begin(), end, 0U));
}

} // namespace

AcpiBuilder::AcpiBuilder(std::string_view signature, std::size_t size, std::uint8_t revision) : Content(size) {
    Put(0, signature).Put(8, revision).Put(10, "STANDINMACHINE").Put(24, std::uint32_t{1});
}

Bytes AcpiBuilder::Table() const {
    Bytes table = Content;
    BytesPut(table, 4, static_cast<std::uint32_t>(table.size()));
    ChecksumPut(table, 9, table.size());
    return table;
}

Bytes AcpiRootPointer(std::uint64_t xsdt, std::uint32_t rsdt) {
    constexpr std::uint32_t size = 36;
    constexpr std::uint8_t revision = 2;
    Bytes pointer(size);
    BytesPut(pointer, 0, "RSD PTR ");
    BytesPut(pointer, 15, revision);
    BytesPut(pointer, 16, rsdt);
    BytesPut(pointer, 20, size);
    BytesPut(pointer, 24, xsdt);
    ChecksumPut(pointer, 8, 20);
    ChecksumPut(pointer, 32, size);
    return pointer;
}

} // namespace StandIn
