// SMBIOS values: a fresh table copy and one look into it per request.
#include "Lib/API/RyxSmbios.h"

#include "Lib/Common/DmiInfoEntryGet.h"
#include "Lib/Common/DmiParser.h"
#include "Lib/Common/LibraryContext.h"

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
    DmiFieldNumberResolve(field, &type, &descriptor);
    DmiTableCopy table{};
    DmiStruct found({});
    const RyxStatus status = InstanceCopyGet(type, instance, &table, &found);
    return status != RyxOk || !found.Exists() ? status : DmiStructFieldGet(found, descriptor, bin);
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

RyxStatus RyxSmbiosEpsDataGet(std::uint32_t field, RyxBin** bin) {
    return DmiEntryPointFieldGet(field, bin);
}
