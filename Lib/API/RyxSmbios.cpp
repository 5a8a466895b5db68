// SMBIOS values: a fresh table copy and one look into it per request.
#include "Lib/API/RyxSmbios.h"

#include "Lib/Common/DmiInfoEntryGet.h"
#include "Lib/Common/DmiParser.h"
#include "Lib/Common/LibraryContext.h"

#include <utility>

namespace {

// Copies the table and finds an instance in it. `found` is left without a structure when there is none.
RyxStatus InstanceCopyGet(std::uint16_t type, std::uint32_t instance, DmiTableCopy* table, DmiStruct* found) {
    const RyxStatus status = DmiTableCopyGet(table);
    if (status == RyxOk) {
        DmiInstanceFind(*table, type, instance, found, RyxSmbiosWholeGet());
    }
    return status;
}

} // namespace

RyxStatus RyxSmbiosDataGet(std::uint32_t field, std::uint32_t instance, RyxBin** bin) {
    if (bin == nullptr) {
        return RyxErrorArgument;
    }
    std::uint16_t type = 0;
    std::uint16_t descriptor = 0;
    const bool whole = RyxSmbiosWholeGet();
    DmiFieldNumberResolve(field, &type, &descriptor, whole);
    DmiTableCopy table{};
    DmiStruct found({});
    const RyxStatus status = InstanceCopyGet(type, instance, &table, &found);
    return status != RyxOk || !found.Exists() ? status : DmiStructFieldGet(found, descriptor, bin, whole);
}

void RyxSmbiosWholeDefaultSet(bool whole) {
    LibraryContextGet().WholeByDefault = whole;
}

bool RyxSmbiosWholeGet() {
    return LibraryContextGet().WholeTable;
}

RyxStatus RyxSmbiosAreaGet(std::uint8_t type, std::uint32_t instance, std::uint8_t offset, RyxBin** bin) {
    if (bin == nullptr) {
        return RyxErrorArgument;
    }
    DmiTableCopy table{};
    DmiStruct found({});
    const RyxStatus status = InstanceCopyGet(type, instance, &table, &found);
    return status != RyxOk || !found.Exists() ? status : DmiStructAreaGet(found, offset, bin);
}

RyxStatus RyxSmbiosStringsGet(std::uint8_t type, std::uint32_t instance, RyxBin** bin) {
    if (bin == nullptr) {
        return RyxErrorArgument;
    }
    DmiTableCopy table{};
    DmiStruct found({});
    const RyxStatus status = InstanceCopyGet(type, instance, &table, &found);
    return status != RyxOk || !found.Exists() ? status : DmiStructStringsGet(found, bin);
}

RyxStatus RyxSmbiosCountsGet(std::array<DmiTypeCount, 256>* counts) {
    if (counts == nullptr) {
        return RyxErrorArgument;
    }
    std::uint8_t& quiet = LibraryContextGet().Options.Byte[RyxOptionQuiet];
    const std::uint8_t kept = std::exchange(quiet, std::uint8_t{1});
    DmiTableCopy table{};
    const RyxStatus status = DmiTableCopyGet(&table);
    quiet = kept;
    if (status == RyxOk) {
        *counts = DmiStructuresCount(table);
    }
    return status;
}

RyxStatus RyxSmbiosEpsDataGet(std::uint32_t field, RyxBin** bin) {
    return DmiEntryPointFieldGet(field, bin);
}
