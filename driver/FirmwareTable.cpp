// The firmware's ACPI tables, as the driver needs them for itself.
#include "driver/FirmwareTable.h"

#include "driver/Hardware.h"
#include "driver/ManagedMemory.h"
#include "driver/RootTable.h"

namespace RyxDriver {

namespace {

constexpr ULONG LengthOffset = 4;
constexpr ULONG HeaderSize = 36;
constexpr ULONG EntrySize = 4;

constinit UCHAR Table[LargestFirmwareTable];

bool Read(const ManagedMemory& managed, ULONGLONG address, ULONG length, UCHAR* data) {
    return managed.Allows(address, length) && NT_SUCCESS(HardwareRead(static_cast<ULONG>(address), length, data));
}

// Reads the table that the root table names into Table. Its entries are the addresses of the tables.
bool TableReadByRoot(ULONG root, ULONG signature, ULONG* length, bool* unfit) {
    const ManagedMemory managed;
    UCHAR head[LengthOffset + sizeof(ULONG)];
    if (!Read(managed, root, sizeof head, head)) {
        return false;
    }
    const ULONG rootLength = Number(head + LengthOffset);
    for (ULONG place = HeaderSize; place < LargestFirmwareTable && place + EntrySize <= rootLength;
         place += EntrySize) {
        UCHAR entry[EntrySize];
        if (!Read(managed, ULONGLONG{root} + place, EntrySize, entry) ||
            !Read(managed, Number(entry), sizeof head, head) || Number(head) != signature) {
            continue;
        }
        *length = Number(head + LengthOffset);
        *unfit =
            *length < HeaderSize || *length > LargestFirmwareTable || !Read(managed, Number(entry), *length, Table);
        return !*unfit;
    }
    return false;
}

} // namespace

const UCHAR* FirmwareTableGet(const char* signature, ULONG* length, bool* unfit) {
    const ULONG wanted = Number(reinterpret_cast<const UCHAR*>(signature));
    const NTSTATUS status = HardwareTableGet(wanted, Table, sizeof Table, length);
    *unfit = status == STATUS_BUFFER_TOO_SMALL || status == STATUS_INSUFFICIENT_RESOURCES;
    if (!NT_SUCCESS(status)) {
        ULONG root = 0;
        if (*unfit || !RootTableFindByRecord(&root) || !TableReadByRoot(root, wanted, length, unfit)) {
            return nullptr;
        }
    }
    // What a table says of its length holds only within what there is of it.
    const ULONG stated = *length < HeaderSize ? 0 : Number(Table + LengthOffset);
    *unfit = stated < HeaderSize || stated > *length;
    *length = stated;
    return *unfit ? nullptr : Table;
}

} // namespace RyxDriver
