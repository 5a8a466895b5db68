// Table acquisition: finding the SMBIOS entry point and copying the structure table.
#pragma once

#include "Lib/RyxStatus.h"

#include <cstdint>
#include <memory>

struct RyxBin;

// A private copy of the structure table. Size bounds every read; what a larger buffer holds behind it is no table.
struct DmiTableCopy {
    std::unique_ptr<std::uint8_t[]> Bytes;
    std::uint32_t Size;
    std::uint8_t Version; // of SMBIOS, major x 10 + minor
};

// Gives the table's physical address and its length in bytes, found by a scan of the legacy firmware segment or kept
// from an earlier one. RyxErrorArgument: a missing out-parameter; RyxErrorNotFound: no entry point, or one without a
// table address; RyxErrorBuffer: no memory; RyxErrorPhysicalMemory: the segment can't be read.
RyxStatus DmiInfoEntryGet(std::uint32_t* address, std::uint16_t* length);

// Gets the table from the firmware table service, and brings the version and the entry point copy up to date.
// RyxErrorArgument: no out-parameter; RyxErrorNotFound: the service has none.
RyxStatus DmiFirmwareTableRead(DmiTableCopy* copy);

// Copies the table anew, from physical memory or else from the firmware table service, and prints a message when it
// can't. RyxErrorArgument (no message), RyxErrorNotFound, RyxErrorBuffer, RyxErrorTableRead.
RyxStatus DmiTableCopyGet(DmiTableCopy* copy);

// Gives an entry point field as a new value that the caller owns; the results are those of RyxSmbiosEpsDataGet.
RyxStatus DmiEntryPointFieldGet(std::uint32_t field, RyxBin** bin);

// The state at process start: nothing found yet.
void DmiInfoReset();
