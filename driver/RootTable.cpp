// The search for the ACPI root table: only memory that Windows doesn't manage is looked at.
#include "driver/RootTable.h"

#include "driver/Hardware.h"
#include "driver/Lock.h"
#include "driver/ManagedMemory.h"

namespace RyxDriver {

namespace {

constexpr ULONGLONG MiB = 1ULL << 20;

constexpr ULONG SignatureSize = 4;
constexpr ULONG HeaderSize = 36; // of every ACPI table
constexpr ULONG LengthOffset = 4;

// The firmware's record: its signature stands at multiples of 16.
constexpr ULONGLONG SegmentBegin = 0xE0000;
constexpr ULONGLONG SegmentEnd = 0x100000;
constexpr ULONG RecordStep = 16;
constexpr ULONG RecordAddressOffset = 20;
constexpr ULONG RecordSize = 24;

// Memory is looked at piece by piece, and pieces overlap by what a signature and the rest of its header could lack.
// Between pieces other requests have their turn. They may search as well, so that a piece is looked at as soon as it is
// read; it would be too large for a kernel stack.
constexpr ULONG PieceStep = 0x4000;
constexpr ULONG PieceSize = PieceStep + HeaderSize - 1;
constinit UCHAR Piece[PieceSize];

bool Signed(const UCHAR* bytes, const char* signature) {
    for (ULONG place = 0; place < SignatureSize; ++place) {
        if (bytes[place] != static_cast<UCHAR>(signature[place])) {
            return false;
        }
    }
    return true;
}

// Something with a signature at its head.
struct Wanted {
    const char* Signature;
    ULONG Size; // of what must lie within the searched memory
    ULONG Step; // its addresses are multiples of this
};

constexpr Wanted Record{"IFE$", RecordSize, RecordStep};
constexpr Wanted Table{"RSDT", HeaderSize, 1};

// The firmware keeps its tables right above the highest memory that Windows manages; what comes further up is devices.
constexpr ULONGLONG LargestFirmware = 64 * MiB;

// Finds the first one from `begin` to before `end`, and gives the number that stands `offset` bytes into it.
bool Find(const ManagedMemory& managed, const Wanted& wanted, ULONG offset, ULONGLONG begin, ULONGLONG end,
          ULONGLONG* place, ULONG* number) {
    ULONGLONG stretchEnd = 0;
    for (; managed.StretchFind(&begin, end, &stretchEnd); begin = stretchEnd) {
        for (; begin < stretchEnd && stretchEnd - begin >= wanted.Size; begin += PieceStep) {
            LockPause();
            const ULONGLONG left = stretchEnd - begin;
            const ULONG length = left < PieceSize ? static_cast<ULONG>(left) : PieceSize;
            if (!NT_SUCCESS(HardwareRead(static_cast<ULONG>(begin), length, Piece))) {
                continue; // what can't be mapped holds nothing
            }
            ULONG at = (wanted.Step - static_cast<ULONG>(begin) % wanted.Step) % wanted.Step;
            for (; at < PieceStep && at <= length && length - at >= wanted.Size; at += wanted.Step) {
                if (Piece[at] == static_cast<UCHAR>(wanted.Signature[0]) && Signed(&Piece[at], wanted.Signature)) {
                    *place = begin + at;
                    *number = Number(&Piece[at + offset]);
                    return true;
                }
            }
        }
    }
    return false;
}

// The second table when there are two, else the first. The search goes on behind a table's own length.
bool TableFind(const ManagedMemory& managed, ULONGLONG begin, ULONGLONG end, ULONG* address) {
    const ULONGLONG highest = managed.LowEnd() + LargestFirmware;
    end = end < highest ? end : highest;
    end = end < AddressEnd ? end : AddressEnd;
    ULONGLONG place = 0;
    ULONG length = 0;
    if (!Find(managed, Table, LengthOffset, begin, end, &place, &length)) {
        return false;
    }
    *address = static_cast<ULONG>(place);
    if (Find(managed, Table, LengthOffset, place + (length < SignatureSize ? SignatureSize : length), end, &place,
             &length)) {
        *address = static_cast<ULONG>(place);
    }
    return true;
}

} // namespace

bool RootTableFindByRecord(ULONG* address) {
    const ManagedMemory managed;
    ULONGLONG record = 0;
    ULONG start = 0;
    return Find(managed, Record, RecordAddressOffset, SegmentBegin, SegmentEnd, &record, &start) &&
           TableFind(managed, start, start + 32 * MiB, address);
}

bool RootTableFindNear(ULONG place, ULONG* address) {
    const ManagedMemory managed;
    return TableFind(managed, place, place + 8 * MiB, address) ||
           TableFind(managed, place > 8 * MiB ? place - 8 * MiB : 0, place, address);
}

} // namespace RyxDriver
