// The ACPI root table.
#include "Lib/Common/AcpiXsdtTableGet.h"

#include "Lib/LittleEndian.h"
#include "Lib/Platform/Driver.h"
#include "Lib/Platform/FirmwareTable.h"
#include "Lib/Platform/GetRsdtFromSystemTable.h"
#include "Lib/Platform/Registry.h"

#include <algorithm>
#include <memory>
#include <new>

namespace {

constexpr std::uint64_t AddressEnd = 1ULL << 32U;

constexpr std::uint32_t SegmentAddress = 0xF0000;
constexpr std::uint32_t SegmentSize = 0x10000;
constexpr std::uint32_t SegmentSearchEnd = 61424;

// The root pointer and its fields.
constexpr std::uint32_t PointerSize = 36;
constexpr std::size_t PointerRsdtOffset = 16;
constexpr std::size_t PointerXsdtOffset = 24;

constexpr std::uint32_t MakerTableSize = 70;
constexpr std::size_t MakerTablePointerOffset = 62;

bool IsRootTable(const std::uint8_t* table, std::uint32_t length) {
    return length >= AcpiHeaderSize && (AcpiSignatureIs(table, "XSDT") || AcpiSignatureIs(table, "RSDT"));
}

// Reads the root table at a physical address: as many bytes as its header states, within what can be read.
RyxStatus TableAtRead(std::uint64_t address, RyxBin** table) {
    if (address == 0 || address > AddressEnd - AcpiHeaderSize) {
        return RyxErrorRootTable;
    }
    const auto from = static_cast<std::uint32_t>(address);
    std::uint8_t header[AcpiHeaderSize];
    if (const RyxStatus status = PhysicalMemoryRead(from, sizeof header, header); status != RyxOk) {
        return status;
    }
    const auto stated = LittleEndianRead<std::uint32_t>(header + AcpiLengthOffset);
    if (!IsRootTable(header, stated)) {
        return RyxErrorRootTable;
    }
    const auto length =
        static_cast<std::uint32_t>(std::min<std::uint64_t>({stated, AcpiWorkBufferSize, AddressEnd - address}));
    RyxBin* bin = nullptr;
    if (RyxBinMake(nullptr, length, &bin) != RyxOk) {
        return RyxErrorBuffer;
    }
    RyxBinOwner owner(bin);
    const RyxStatus status = PhysicalMemoryRead(from, length, bin->Data);
    if (status == RyxOk) {
        *table = owner.release();
    }
    return status;
}

// Reads the root table that a root pointer names: the XSDT, or the RSDT where there is no XSDT within reach.
RyxStatus TablePointedRead(const std::uint8_t* pointer, RyxBin** table) {
    const auto xsdt = LittleEndianRead<std::uint64_t>(pointer + PointerXsdtOffset);
    const auto rsdt = LittleEndianRead<std::uint32_t>(pointer + PointerRsdtOffset);
    return TableAtRead(xsdt != 0 && xsdt < AddressEnd ? xsdt : rsdt, table);
}

RyxStatus FromRegistry(RyxBin** table) {
    std::unique_ptr<std::uint8_t[]> copy;
    std::uint32_t size = 0;
    if (!RegistryDeepBinaryRead("HARDWARE\\ACPI\\RSDT", &copy, &size) || !IsRootTable(copy.get(), size)) {
        return RyxErrorRootTable;
    }
    return RyxBinMake(copy.get(), std::min(size, AcpiWorkBufferSize), table) == RyxOk ? RyxOk : RyxErrorBuffer;
}

RyxStatus FromMakerTable(RyxBin** table) {
    std::uint8_t maker[MakerTableSize];
    if (AcpiFirmwareTableGet(LittleEndianRead<std::uint32_t>("BATB"), maker, sizeof maker) != sizeof maker) {
        return RyxErrorRootTable;
    }
    const auto address = LittleEndianRead<std::uint64_t>(maker + MakerTablePointerOffset);
    if (address == 0 || address > AddressEnd - PointerSize) {
        return RyxErrorRootTable;
    }
    std::uint8_t pointer[PointerSize];
    const RyxStatus status = PhysicalMemoryRead(static_cast<std::uint32_t>(address), sizeof pointer, pointer);
    return status == RyxOk ? TablePointedRead(pointer, table) : status;
}

RyxStatus FromSegment(RyxBin** table) {
    const std::unique_ptr<std::uint8_t[]> segment(new (std::nothrow) std::uint8_t[SegmentSize]);
    if (segment == nullptr) {
        return RyxErrorBuffer;
    }
    if (const RyxStatus status = PhysicalMemoryRead(SegmentAddress, SegmentSize, segment.get()); status != RyxOk) {
        return status;
    }
    for (std::uint32_t offset = 0; offset < SegmentSearchEnd; offset += 16) {
        if (std::memcmp(&segment[offset], "RSD PTR", 7) == 0 && TablePointedRead(&segment[offset], table) == RyxOk) {
            return RyxOk;
        }
    }
    return RyxErrorRootTable;
}

RyxStatus FromSystemTable(RyxBin** table) {
    std::uint32_t address = 0;
    const RyxStatus status = GetRsdtFromSystemTable(&address);
    return status == RyxOk ? TableAtRead(address, table) : status;
}

} // namespace

RyxStatus AcpiXsdtTableGet(RyxBin** table) {
    if (table == nullptr) {
        return RyxErrorArgument;
    }
    RyxStatus status = RyxErrorRootTable;
    for (auto* const way : {FromRegistry, FromMakerTable, FromSegment, FromSystemTable}) {
        status = way(table);
        // Without memory the later ways, which need more of it, are not tried.
        if (status == RyxOk || status == RyxErrorBuffer) {
            break;
        }
    }
    return status;
}
