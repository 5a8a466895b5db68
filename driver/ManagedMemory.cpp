// Which physical memory the driver keeps its hands off.
#include "driver/ManagedMemory.h"

namespace RyxDriver {

namespace {

struct Range {
    ULONGLONG Begin;
    ULONGLONG Length;
};

constexpr Range OutsideFirmware[] = {{0, 0xA0000}, {0x100000, 0xFFF00000}};

// The range of an index; false behind the last one.
bool RangeAt(const PHYSICAL_MEMORY_RANGE* given, ULONG index, Range* range) {
    if (given == nullptr) {
        if (index >= sizeof OutsideFirmware / sizeof OutsideFirmware[0]) {
            return false;
        }
        *range = OutsideFirmware[index];
        return true;
    }
    range->Begin = static_cast<ULONGLONG>(given[index].BaseAddress.QuadPart);
    range->Length = static_cast<ULONGLONG>(given[index].NumberOfBytes.QuadPart);
    return range->Begin != 0 || range->Length != 0;
}

} // namespace

ManagedMemory::ManagedMemory() : Given(HardwareRangesGet()) {}

ManagedMemory::~ManagedMemory() {
    if (Given != nullptr) {
        HardwareRangesFree(Given);
    }
}

bool ManagedMemory::Allows(ULONGLONG address, ULONG length) const {
    const ULONGLONG end = address + length;
    Range range;
    for (ULONG index = 0; RangeAt(Given, index, &range); ++index) {
        if (range.Begin <= address ? address - range.Begin < range.Length : range.Begin < end && range.Length != 0) {
            return false;
        }
    }
    return end <= AddressEnd;
}

ULONGLONG ManagedMemory::LowEnd() const {
    ULONGLONG end = 0;
    Range range;
    for (ULONG index = 0; RangeAt(Given, index, &range); ++index) {
        if (range.Begin < AddressEnd) {
            const ULONGLONG most = AddressEnd - range.Begin;
            const ULONGLONG rangeEnd = range.Begin + (range.Length < most ? range.Length : most);
            end = rangeEnd > end ? rangeEnd : end;
        }
    }
    return end;
}

bool ManagedMemory::StretchFind(ULONGLONG* begin, ULONGLONG end, ULONGLONG* stretchEnd) const {
    Range range;
    // Every range that is left moves the beginning on, so that this comes to an end.
    for (ULONG index = 0; *begin < end && RangeAt(Given, index, &range); ++index) {
        if (range.Begin <= *begin && *begin - range.Begin < range.Length) {
            *begin = range.Begin + range.Length;
            index = static_cast<ULONG>(-1); // once more from the first one, for they are in no order
        }
    }
    if (*begin >= end) {
        return false;
    }
    *stretchEnd = end;
    for (ULONG index = 0; RangeAt(Given, index, &range); ++index) {
        if (range.Length != 0 && range.Begin > *begin && range.Begin < *stretchEnd) {
            *stretchEnd = range.Begin;
        }
    }
    return true;
}

} // namespace RyxDriver
