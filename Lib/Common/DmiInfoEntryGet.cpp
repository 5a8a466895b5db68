// Table acquisition.
#include "Lib/Common/DmiInfoEntryGet.h"

#include "Lib/API/RyxBin.h"
#include "Lib/API/RyxPrint.h"
#include "Lib/Common/DmiParser.h"
#include "Lib/Common/LibraryContext.h"
#include "Lib/Platform/Driver.h"
#include "Lib/Platform/FirmwareTable.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace {

constexpr std::uint32_t SegmentAddress = 0xF0000;
constexpr std::uint32_t SegmentLength = 0xFFFF;
constexpr std::uint32_t LastPosition = 0xFFE0;

// Offsets in the entry point.
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

AcquisitionState& State() {
    return LibraryContextGet().Acquisition;
}

std::uint32_t EntryPointAddress(const AcquisitionState& state) {
    std::uint32_t address = 0;
    for (std::size_t i = 4; i-- > 0;) {
        address = address << 8 | state.EntryPoint[AddressOffset + i];
    }
    return address;
}

std::uint16_t EntryPointTableLength(const AcquisitionState& state) {
    return static_cast<std::uint16_t>(state.EntryPoint[LengthOffset] | state.EntryPoint[LengthOffset + 1] << 8);
}

std::uint32_t DwordAt(const std::uint8_t* bytes) {
    std::uint32_t dword = 0;
    std::memcpy(&dword, bytes, sizeof dword);
    return dword;
}

// Looks for an entry point in the segment and copies it. Neither its checksums nor its stated length are looked at. On
// machines without one, every request looks through the whole segment, so that paragraphs without the anchor are passed
// over by four with one branch.
void SegmentScan(const std::uint8_t* segment, AcquisitionState* state) {
    constexpr std::uint32_t paragraph = 16;
    const std::uint32_t anchor = DwordAt(reinterpret_cast<const std::uint8_t*>("_SM_"));
    const auto anchored = [=](std::uint32_t position) { return DwordAt(segment + position) == anchor ? 1U : 0U; };
    for (std::uint32_t position = 0; position <= LastPosition; position += paragraph) {
        while (position + 3 * paragraph <= LastPosition &&
               (anchored(position) | anchored(position + paragraph) | anchored(position + 2 * paragraph) |
                anchored(position + 3 * paragraph)) == 0) {
            position += 4 * paragraph;
        }
        if (position <= LastPosition && anchored(position) != 0 &&
            std::memcmp(segment + position + IntermediateOffset, "_DMI_", 5) == 0) {
            std::copy_n(segment + position, EntryPointSize, state->EntryPoint.begin());
            return;
        }
    }
}

} // namespace

RyxStatus DmiInfoEntryGet(std::uint32_t* address, std::uint16_t* length) {
    if (address == nullptr || length == nullptr) {
        return RyxErrorArgument;
    }
    AcquisitionState& state = State();
    if (state.TableAddress == 0 || state.TableLength == 0) {
        const std::unique_ptr<std::uint8_t[]> segment(new (std::nothrow) std::uint8_t[SegmentLength]);
        if (segment == nullptr) {
            return RyxErrorBuffer;
        }
        const RyxStatus status = PhysicalMemoryRead(SegmentAddress, SegmentLength, segment.get());
        if (status != RyxOk) {
            return status;
        }
        state.EntryPoint.fill(0);
        SegmentScan(segment.get(), &state);
        if (EntryPointAddress(state) == 0 &&
            (SmbiosEntryPointPlatformLocate(&state.EntryPoint) != RyxOk || EntryPointAddress(state) == 0)) {
            return RyxErrorNotFound;
        }
        state.Version = static_cast<std::uint8_t>(state.EntryPoint[MajorOffset] * 10 + state.EntryPoint[MinorOffset]);
        state.TableAddress = EntryPointAddress(state);
        state.TableLength = EntryPointTableLength(state);
    }
    *address = state.TableAddress;
    *length = state.TableLength;
    return RyxOk;
}

RyxStatus SmbiosEntryPointPlatformLocate(std::array<std::uint8_t, EntryPointSize>* entryPoint) {
    static_cast<void>(entryPoint);
    return RyxErrorUnsupported;
}

RyxStatus DmiFirmwareTableRead(DmiTableCopy* copy) {
    std::uint8_t version = 0;
    std::uint8_t revision = 0;
    if (!SmbiosFirmwareTableGet(&copy->Bytes, &copy->Size, &version, &revision)) {
        return RyxErrorNotFound;
    }
    AcquisitionState& state = State();
    state.Version = version;
    state.EntryPoint[MajorOffset] = version / 10;
    state.EntryPoint[MinorOffset] = version % 10;
    state.EntryPoint[RevisionOffset] = revision;
    state.EntryPoint[LengthOffset] = static_cast<std::uint8_t>(copy->Size);
    state.EntryPoint[LengthOffset + 1] = static_cast<std::uint8_t>(copy->Size >> 8);
    return RyxOk;
}

RyxStatus DmiTableCopyGet(DmiTableCopy* copy) {
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
    return DmiValueCreate(State().EntryPoint.data() + selected.Offset, selected.Width, bin);
}
