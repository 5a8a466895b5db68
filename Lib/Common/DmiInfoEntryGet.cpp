// Table acquisition.
#include "Lib/Common/DmiInfoEntryGet.h"

#include "Lib/Common/Bin.h"
#include "Lib/Common/Print.h"
#include "Lib/LittleEndian.h"
#include "Lib/Platform/Driver.h"
#include "Lib/Platform/FirmwareTable.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>

namespace {

constexpr std::uint32_t SegmentAddress = 0xF0000;
constexpr std::uint32_t SegmentLength = 0xFFFF;
constexpr std::uint32_t LastPosition = 0xFFE0;

// The entry point, and offsets in it.
constexpr std::size_t EntryPointSize = 31;
constexpr std::size_t MajorOffset = 6;
constexpr std::size_t MinorOffset = 7;
constexpr std::size_t RevisionOffset = 10;
constexpr std::size_t IntermediateOffset = 16;
constexpr std::size_t LengthOffset = 22;
constexpr std::size_t AddressOffset = 24;

struct EntryPointField {
    std::uint8_t Offset;
    std::uint8_t Width;
};

constexpr EntryPointField EntryPointFields[] = {{0, 4},  {4, 1},  {5, 1},  {6, 1},  {7, 1},  {8, 2},  {10, 1},
                                                {11, 5}, {16, 5}, {21, 1}, {22, 2}, {24, 4}, {28, 2}, {30, 1}};

// Kept for the life of the process. Address and length are 0 until a memory scan succeeds; then none is made again.
struct AcquisitionState {
    std::uint32_t TableAddress;
    std::uint16_t TableLength;
    std::uint8_t Version;
    std::array<std::uint8_t, EntryPointSize> EntryPoint;
};

AcquisitionState State;

// Looks for an entry point in the segment and copies it. Neither its checksums nor its stated length are looked at. On
// machines without one, every request looks through the whole segment, so that paragraphs without the anchor are passed
// over by four with one branch.
void SegmentScan(const std::uint8_t* segment) {
    constexpr std::uint32_t paragraph = 16;
    const auto anchored = [=, anchor = LittleEndianRead<std::uint32_t>("_SM_")](std::uint32_t position) {
        return LittleEndianRead<std::uint32_t>(segment + position) == anchor ? 1U : 0U;
    };
    for (std::uint32_t position = 0; position <= LastPosition; position += paragraph) {
        while (position + 3 * paragraph <= LastPosition &&
               (anchored(position) | anchored(position + paragraph) | anchored(position + 2 * paragraph) |
                anchored(position + 3 * paragraph)) == 0) {
            position += 4 * paragraph;
        }
        if (position <= LastPosition && anchored(position) != 0 &&
            std::memcmp(segment + position + IntermediateOffset, "_DMI_", 5) == 0) {
            std::copy_n(segment + position, EntryPointSize, State.EntryPoint.begin());
            return;
        }
    }
}

// Fills the entry point copy by other means than the scan, on platforms that have any.
RyxStatus SmbiosEntryPointPlatformLocate(std::array<std::uint8_t, EntryPointSize>* /*entryPoint*/) {
    return RyxErrorUnsupported;
}

} // namespace

RyxStatus DmiInfoEntryGet(std::uint32_t* address, std::uint16_t* length) {
    if (address == nullptr || length == nullptr) {
        return RyxErrorArgument;
    }
    if (State.TableAddress == 0 || State.TableLength == 0) {
        const std::unique_ptr<std::uint8_t[]> segment(new (std::nothrow) std::uint8_t[SegmentLength]);
        if (segment == nullptr) {
            return RyxErrorBuffer;
        }
        const RyxStatus status = PhysicalMemoryRead(SegmentAddress, SegmentLength, segment.get());
        if (status != RyxOk) {
            return status;
        }
        State.EntryPoint.fill(0);
        SegmentScan(segment.get());
        const std::uint8_t* entry = State.EntryPoint.data();
        const auto tableAddress = [entry] { return LittleEndianRead<std::uint32_t>(entry + AddressOffset); };
        if (tableAddress() == 0 &&
            (SmbiosEntryPointPlatformLocate(&State.EntryPoint) != RyxOk || tableAddress() == 0)) {
            return RyxErrorNotFound;
        }
        State.Version = static_cast<std::uint8_t>(entry[MajorOffset] * 10 + entry[MinorOffset]);
        State.TableAddress = tableAddress();
        State.TableLength = LittleEndianRead<std::uint16_t>(entry + LengthOffset);
    }
    *address = State.TableAddress;
    *length = State.TableLength;
    return RyxOk;
}

RyxStatus DmiFirmwareTableRead(DmiTableCopy* copy) {
    if (copy == nullptr) {
        return RyxErrorArgument;
    }
    std::uint8_t revision = 0;
    if (!SmbiosFirmwareTableGet(&copy->Bytes, &copy->Size, &copy->Version, &revision)) {
        return RyxErrorNotFound;
    }
    State.Version = copy->Version;
    State.EntryPoint[MajorOffset] = copy->Version / 10;
    State.EntryPoint[MinorOffset] = copy->Version % 10;
    State.EntryPoint[RevisionOffset] = revision;
    State.EntryPoint[LengthOffset] = static_cast<std::uint8_t>(copy->Size);
    State.EntryPoint[LengthOffset + 1] = static_cast<std::uint8_t>(copy->Size >> 8);
    return RyxOk;
}

RyxStatus DmiTableCopyGet(DmiTableCopy* copy) {
    if (copy == nullptr) {
        return RyxErrorArgument;
    }
    std::uint32_t address = 0;
    std::uint16_t length = 0;
    RyxStatus status = DmiInfoEntryGet(&address, &length);
    if (status == RyxErrorNotFound) {
        status = DmiFirmwareTableRead(copy);
        if (status != RyxOk) {
            RyxPrintf("Failed to read DMI struct. Status = %X\n", status);
            return RyxErrorNotFound;
        }
        return RyxOk;
    }
    if (status != RyxOk) {
        RyxPrintf("Failed to read DMI entry information. Status = %X\n", status);
        return RyxErrorNotFound;
    }
    copy->Bytes.reset(new (std::nothrow) std::uint8_t[length]);
    if (copy->Bytes == nullptr) {
        return RyxErrorBuffer;
    }
    copy->Size = length;
    copy->Version = State.Version;
    status = PhysicalMemoryRead(address, length, copy->Bytes.get());
    if (status != RyxOk) {
        RyxPrintf("Failed to read physical memory data(SMBIOS) to buffer. Status = %X\n", status);
        return RyxErrorTableRead;
    }
    return RyxOk;
}

RyxStatus DmiEntryPointFieldGet(std::uint32_t field, RyxBin** bin) {
    if (bin == nullptr) {
        return RyxErrorArgument;
    }
    std::uint32_t address = 0;
    std::uint16_t length = 0;
    RyxStatus status = DmiInfoEntryGet(&address, &length);
    if (status == RyxErrorNotFound) {
        DmiTableCopy unused{};
        status = DmiFirmwareTableRead(&unused);
    }
    if (status != RyxOk) {
        return RyxErrorNotFound;
    }
    const EntryPointField selected =
        field < std::size(EntryPointFields) ? EntryPointFields[field] : EntryPointField{0, 0};
    return RyxBinMake(State.EntryPoint.data() + selected.Offset, selected.Width, bin);
}

void DmiInfoReset() {
    State = {};
}
