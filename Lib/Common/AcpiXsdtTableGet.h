// The ACPI root table, by whichever way leads to it.
#pragma once

#include "Lib/Common/Bin.h"
#include "Lib/RyxStatus.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

// The header that every ACPI table begins with: signature, u32 length and further fields.
constexpr std::uint32_t AcpiHeaderSize = 36;
constexpr std::size_t AcpiLengthOffset = 4;

// Larger tables are not read into the work buffer; a larger root table is cut there.
constexpr std::uint32_t AcpiWorkBufferSize = 0x10000;

// Whether bytes begin with a signature of four characters.
inline bool AcpiSignatureIs(const std::uint8_t* bytes, const char* signature) {
    return std::memcmp(bytes, signature, 4) == 0;
}

// Gets the root table, signed "XSDT" or "RSDT", as far as it could be read: at least its header, at most 64 KiB. Tried
// in this order: the registry's copy, the maker's "BATB" table, a root pointer in the legacy segment, and the search of
// GetRsdtFromSystemTable. The caller owns the container. RyxErrorArgument: no out-parameter; RyxErrorRootTable: none
// found; RyxErrorBuffer: no memory; RyxErrorPhysicalMemory: the last way found a table that can't be read.
RyxStatus AcpiXsdtTableGet(RyxBin** table);
