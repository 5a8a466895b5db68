// The last way to the ACPI root table.
#include "Lib/Platform/GetRsdtFromSystemTable.h"

#include "Lib/LittleEndian.h"
#include "Lib/Platform/Driver.h"
#include "Lib/Platform/FirmwareTable.h"
#include "Lib/Platform/System.h"

#include <algorithm>
#include <memory>
#include <new>
#include <string_view>

namespace {

constexpr std::uint32_t FadtCapacity = 0x8000;
constexpr std::uint32_t FadtDsdtOffset = 40;
constexpr std::uint64_t AddressEnd = 1ULL << 32U;
constexpr std::uint64_t SearchSpan = 8U << 20U;
constexpr std::uint32_t SearchPiece = 0x10000;
constexpr std::uint32_t TableHeaderSize = 36;
constexpr std::uint32_t RootTableLargest = 0x10000;

std::unique_ptr<std::uint8_t[]> Fadt;

// Reads the FADT through the firmware table service and gives the DSDT's address, which may be 0.
bool FadtRead(std::uint32_t* dsdt) {
    Fadt.reset(new (std::nothrow) std::uint8_t[FadtCapacity]);
    if (Fadt == nullptr) {
        return false;
    }
    const std::uint32_t length =
        AcpiFirmwareTableGet(LittleEndianRead<std::uint32_t>("FACP"), Fadt.get(), FadtCapacity);
    if (length < FadtDsdtOffset + sizeof *dsdt || length > FadtCapacity) {
        return false;
    }
    *dsdt = LittleEndianRead<std::uint32_t>(&Fadt[FadtDsdtOffset]);
    return true;
}

// Whether a signature that a search found stands at the head of a table.
bool IsRootTable(std::uint32_t address) {
    std::uint32_t header[2];
    return address <= AddressEnd - TableHeaderSize && PhysicalMemoryRead(address, sizeof header, header) == RyxOk &&
           header[1] >= TableHeaderSize && header[1] <= RootTableLargest;
}

// Searches physical memory from `begin` to before `end`, piece by piece, for an RSDT; pieces that can't be read hold
// none. Neighbouring pieces overlap, so that a signature across their border is seen.
bool MemorySearch(std::uint64_t begin, std::uint64_t end, std::uint32_t* address) {
    constexpr std::string_view signature = "RSDT";
    const std::unique_ptr<std::uint8_t[]> piece(new (std::nothrow) std::uint8_t[SearchPiece + signature.size() - 1]);
    if (piece == nullptr) {
        return false;
    }
    for (std::uint64_t at = begin; at < end; at += SearchPiece) {
        const std::uint64_t stop =
            std::min({at + SearchPiece + signature.size() - 1, end + signature.size() - 1, AddressEnd});
        const auto length = static_cast<std::uint32_t>(stop - at);
        if (PhysicalMemoryRead(static_cast<std::uint32_t>(at), length, piece.get()) != RyxOk) {
            continue;
        }
        const std::string_view bytes(reinterpret_cast<const char*>(piece.get()), length);
        for (std::size_t found = 0; (found = bytes.find(signature, found)) != std::string_view::npos; ++found) {
            const auto candidate = static_cast<std::uint32_t>(at + found);
            if (IsRootTable(candidate)) {
                *address = candidate;
                return true;
            }
        }
    }
    return false;
}

bool SearchAround(std::uint32_t dsdt, std::uint32_t* address) {
    const std::uint64_t middle = dsdt;
    return MemorySearch(middle, std::min(middle + SearchSpan, AddressEnd), address) ||
           MemorySearch(middle > SearchSpan ? middle - SearchSpan : 0, middle, address);
}

bool DriverLocate(std::uint32_t code, const std::uint32_t* near, std::uint32_t* address) {
    *address = 0;
    return DriverDeviceControl(code, near, near == nullptr ? 0 : sizeof *near, address, sizeof *address) &&
           *address != 0;
}

// The driver can search near an address on systems newer than version 6.1.
bool NearSearchSupported() {
    std::uint32_t major = 0;
    std::uint32_t minor = 0;
    SystemVersionGet(&major, &minor);
    return major > 6 || (major == 6 && minor > 1);
}

} // namespace

RyxStatus GetRsdtFromSystemTable(std::uint32_t* address) {
    if (address == nullptr) {
        return RyxErrorArgument;
    }
    std::uint32_t dsdt = 0;
    const bool fadtRead = FadtRead(&dsdt);
    std::uint32_t own = 0;
    const bool ownFound = fadtRead && dsdt != 0 && SearchAround(dsdt, &own);
    if (!DriverLocate(DriverRsdtLocate, nullptr, address) &&
        !(fadtRead && NearSearchSupported() && DriverLocate(DriverRsdtLocateNear, &dsdt, address))) {
        return RyxErrorRootTable;
    }
    if (ownFound) {
        *address = own;
    }
    return RyxOk;
}

void SystemTableRelease() {
    Fadt.reset();
}
