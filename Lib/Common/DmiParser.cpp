// The structure parser.
#include "Lib/Common/DmiParser.h"

#include "Lib/Common/Bin.h"
#include "Lib/DmiFieldTable.h"
#include "Lib/RyxNumbers.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <utility>

namespace {

constexpr std::uint32_t ExaminedLimit = 128;
constexpr std::uint16_t HandleLimit = 0xFF;
constexpr std::uint16_t TypeEndOfTable = 127;
constexpr std::uint8_t HeaderLength = 4;

// Where a value lies in its structure, in bytes.
struct Extent {
    std::uint32_t Offset;
    std::uint32_t Length;
};

// A rule computes what it does not find in `extent`, which holds the row's own offset and width. False when a count
// that it needs lies past the table.
using ExtentRule = bool (*)(const DmiStruct& structure, Extent* extent);

// A computed offset is one byte wide.
std::uint32_t OffsetOf(std::uint32_t computed) {
    return computed & 0xFF;
}

// The product of two count bytes of the structure.
bool ProductGet(const DmiStruct& structure, std::uint32_t offset, std::uint32_t* product) {
    std::uint8_t count = 0;
    std::uint8_t size = 0;
    if (!structure.ByteGet(offset, &count) || !structure.ByteGet(offset + 1, &size)) {
        return false;
    }
    *product = std::uint32_t{count} * size;
    return true;
}

bool HandleList(const DmiStruct& structure, Extent* extent) {
    std::uint8_t count = 0;
    if (!structure.ByteGet(14, &count)) {
        return false;
    }
    extent->Length = 2U * count;
    return true;
}

bool BehindHandleList(const DmiStruct& structure, Extent* extent) {
    Extent list{};
    if (!HandleList(structure, &list)) {
        return false;
    }
    extent->Offset = OffsetOf(15 + list.Length);
    return true;
}

bool ContainedElements(const DmiStruct& structure, Extent* extent) {
    return ProductGet(structure, 19, &extent->Length);
}

bool ChassisSku(const DmiStruct& structure, Extent* extent) {
    std::uint32_t elements = 0;
    if (!ProductGet(structure, 19, &elements)) {
        return false;
    }
    extent->Offset = OffsetOf(21 + elements);
    return true;
}

bool EventLogDescriptors(const DmiStruct& structure, Extent* extent) {
    return ProductGet(structure, 21, &extent->Length);
}

bool BootStatus(const DmiStruct& structure, Extent* extent) {
    extent->Length = structure.FormattedLength() - 10U; // longer than 10, or the field would not be looked up
    return true;
}

// The last entry of a memory channel's device list: its first byte.
bool LastDeviceLoad(const DmiStruct& structure, Extent* extent) {
    std::uint8_t count = 0;
    if (!structure.ByteGet(6, &count)) {
        return false;
    }
    extent->Offset = OffsetOf(7 + 3U * (count - 1U));
    return true;
}

bool LastDeviceHandle(const DmiStruct& structure, Extent* extent) {
    const bool found = LastDeviceLoad(structure, extent);
    extent->Offset = OffsetOf(extent->Offset + 1);
    return found;
}

bool HostInterfaceData(const DmiStruct& structure, Extent* extent) {
    constexpr std::uint8_t interfaceOem = 0xF0;
    std::uint8_t interfaceType = 0;
    if (!structure.ByteGet(4, &interfaceType)) {
        return false;
    }
    extent->Length = interfaceType == interfaceOem ? 4 : 1;
    return true;
}

// The bytes of the formatted area from an offset on; cut at the table's end. False when the area does not reach there.
bool AreaRest(const DmiStruct& structure, Extent* extent) {
    if (extent->Offset > structure.FormattedLength()) {
        return false;
    }
    extent->Length = static_cast<std::uint32_t>(
        std::min<std::size_t>(structure.FormattedLength() - extent->Offset, structure.From(extent->Offset).size()));
    return true;
}

bool BehindElements(const DmiStruct& structure, Extent* extent) {
    std::uint32_t elements = 0;
    const bool found = ProductGet(structure, 19, &elements);
    extent->Offset += elements;
    return found;
}

// As many records as a count byte says.
bool RecordsGet(const DmiStruct& structure, std::uint32_t countOffset, std::uint32_t recordSize,
                std::uint32_t* length) {
    std::uint8_t count = 0;
    const bool found = structure.ByteGet(countOffset, &count);
    *length = count * recordSize;
    return found;
}

bool PeerGroups(const DmiStruct& structure, Extent* extent) {
    return RecordsGet(structure, 18, 5, &extent->Length);
}

bool BehindPeerGroups(const DmiStruct& structure, Extent* extent) {
    Extent groups{};
    const bool found = PeerGroups(structure, &groups);
    extent->Offset += groups.Length;
    return found;
}

bool PairsToEnd(const DmiStruct& structure, Extent* extent) {
    const bool found = AreaRest(structure, extent);
    extent->Length -= extent->Length % 2;
    return found;
}

bool TriplesToEnd(const DmiStruct& structure, Extent* extent) {
    const bool found = AreaRest(structure, extent);
    extent->Length -= extent->Length % 3;
    return found;
}

bool MiddleDevices(const DmiStruct& structure, Extent* extent) {
    std::uint8_t count = 0;
    const bool found = structure.ByteGet(6, &count);
    extent->Length = count > 2 ? 3U * (count - 2U) : 0;
    return found;
}

// A host interface's data and its records. False when the structure does not have that layout: older ones have no
// length in front of the data, and there are some in tables of versions that should know it.
bool HostLayoutGet(const DmiStruct& structure, Extent* data, Extent* records) {
    constexpr std::uint8_t firstVersion = 32;
    constexpr std::uint32_t dataOffset = 6;
    std::uint8_t length = 0;
    std::uint8_t count = 0;
    if (structure.SmbiosVersion() < firstVersion || !structure.ByteGet(dataOffset - 1, &length) ||
        dataOffset + length >= structure.FormattedLength() || !structure.ByteGet(dataOffset + length, &count)) {
        return false;
    }
    *data = {dataOffset, length};
    *records = {dataOffset + length + 1, 0};
    for (; count != 0; --count) {
        std::uint8_t recordLength = 0;
        if (!structure.ByteGet(records->Offset + records->Length + 1, &recordLength)) {
            return false;
        }
        records->Length += 2U + recordLength;
    }
    std::span<const std::uint8_t> bytes;
    return records->Offset + records->Length <= structure.FormattedLength() &&
           structure.BytesGet(records->Offset, records->Length, &bytes);
}

bool HostDataLength(const DmiStruct& structure, Extent*) {
    Extent data{};
    Extent records{};
    return HostLayoutGet(structure, &data, &records);
}

bool HostData(const DmiStruct& structure, Extent* extent) {
    Extent records{};
    return HostLayoutGet(structure, extent, &records);
}

bool HostRecordCount(const DmiStruct& structure, Extent* extent) {
    Extent data{};
    Extent records{};
    const bool found = HostLayoutGet(structure, &data, &records);
    extent->Offset += data.Length;
    return found;
}

bool HostRecords(const DmiStruct& structure, Extent* extent) {
    Extent data{};
    return HostLayoutGet(structure, &data, extent);
}

bool ProcessorBlock(const DmiStruct& structure, Extent* extent) {
    std::uint8_t length = 0;
    const bool found = structure.ByteGet(6, &length) && AreaRest(structure, extent);
    extent->Length = std::min<std::uint32_t>(extent->Length, length);
    return found;
}

bool ComponentHandles(const DmiStruct& structure, Extent* extent) {
    return RecordsGet(structure, 23, 2, &extent->Length);
}

// By DmiRule; null for those that are nothing but a width.
constexpr ExtentRule ExtentRules[] = {
    nullptr,          nullptr,           nullptr,          HandleList,
    BehindHandleList, ContainedElements, ChassisSku,       EventLogDescriptors,
    BootStatus,       LastDeviceLoad,    LastDeviceHandle, HostInterfaceData,
    AreaRest,         BehindElements,    PeerGroups,       BehindPeerGroups,
    PairsToEnd,       TriplesToEnd,      MiddleDevices,    HostDataLength,
    HostData,         HostRecordCount,   HostRecords,      ProcessorBlock,
    ComponentHandles,
};

static_assert(std::size(ExtentRules) == static_cast<std::size_t>(DmiRule::ComponentHandles) + 1);

// What ends a string set.
constexpr std::string_view TwoZeros("\0\0", 2);

// From a structure's string set on to the table's end.
std::string_view SetOf(const DmiStruct& structure) {
    const std::span<const std::uint8_t> set = structure.From(structure.FormattedLength());
    return {reinterpret_cast<const char*>(set.data()), set.size()};
}

// Gives a text as a value with one byte more, for its NUL, which the table's end may have cut off.
RyxStatus TextBinMake(std::string_view text, RyxBin** bin) {
    RyxBin* made = nullptr;
    const RyxStatus status = RyxBinMake(nullptr, static_cast<std::uint32_t>(text.size() + 1), &made);
    if (status == RyxOk) {
        text.copy(reinterpret_cast<char*>(made->Data), text.size());
        *bin = made;
    }
    return status;
}

constexpr std::uint32_t None = std::numeric_limits<std::uint32_t>::max();

// Where a structure lies in its table, and the number of the next one of its type, from 0.
struct Spot {
    std::uint32_t Place;
    std::uint32_t Next;
    std::uint16_t Handle;
    std::uint8_t Type;
};

// The bytes of the table that was walked last, its structures, and the number of each type's first one.
struct WalkedTable {
    std::unique_ptr<std::uint8_t[]> Bytes;
    std::size_t Size;
    std::unique_ptr<Spot[]> Spots; // nothing: no table is remembered
    std::uint32_t WholeEnd;        // the structures before the first one whose length is no header's
    std::array<std::uint32_t, 256> First;
};

WalkedTable Walked;

// Sees to it that a table of these bytes is the one that was walked last. False when there is no memory for that.
bool WalkRemember(std::span<const std::uint8_t> bytes) {
    if (Walked.Spots != nullptr && Walked.Size == bytes.size() &&
        std::equal(bytes.begin(), bytes.end(), Walked.Bytes.get())) {
        return true;
    }
    Walked = {};
    const DmiStruct first(bytes);
    std::uint32_t count = first.Exists() ? 1 : 0;
    for (DmiStruct structure = first; DmiNextStructGet(&structure);) {
        ++count;
    }
    std::unique_ptr<std::uint8_t[]> copy(new (std::nothrow) std::uint8_t[bytes.size()]);
    std::unique_ptr<Spot[]> spots(new (std::nothrow) Spot[count]);
    if (copy == nullptr || spots == nullptr) {
        return false;
    }
    std::copy(bytes.begin(), bytes.end(), copy.get());
    DmiStruct structure = first;
    std::uint32_t wholeEnd = count;
    for (std::uint32_t number = 0; number < count; ++number, DmiNextStructGet(&structure)) {
        if (structure.FormattedLength() < HeaderLength) {
            wholeEnd = std::min(wholeEnd, number);
        }
        const auto place = static_cast<std::uint32_t>(bytes.size() - structure.From(0).size());
        spots[number] = {place, None, structure.Handle(), structure.Type()};
    }
    Walked = {std::move(copy), bytes.size(), std::move(spots), wholeEnd, {}};
    Walked.First.fill(None);
    for (std::uint32_t number = count; number-- != 0;) {
        Walked.Spots[number].Next = std::exchange(Walked.First[Walked.Spots[number].Type], number);
    }
    return true;
}

} // namespace

bool DmiStruct::BytesGet(std::uint32_t offset, std::uint32_t length, std::span<const std::uint8_t>* bytes) const {
    if (offset > Rest.size() || length > Rest.size() - offset) {
        return false;
    }
    *bytes = Rest.subspan(offset, length);
    return true;
}

bool DmiStruct::ByteGet(std::uint32_t offset, std::uint8_t* byte) const {
    if (offset >= Rest.size()) {
        return false;
    }
    *byte = Rest[offset];
    return true;
}

std::span<const std::uint8_t> DmiStruct::From(std::uint32_t offset) const {
    return Rest.subspan(std::min<std::size_t>(offset, Rest.size()));
}

void DmiFieldNumberResolve(std::uint32_t field, std::uint16_t* type, std::uint16_t* descriptor, bool whole) {
    const std::uint32_t number = field / RyxFieldsPerType;
    if (whole) {
        *type = static_cast<std::uint16_t>(number);
        *descriptor = static_cast<std::uint16_t>(
            number < DmiFirstRows.size() ? DmiWholeRowPlace(static_cast<std::uint8_t>(number), field % RyxFieldsPerType)
                                         : DmiAllFieldCount);
        return;
    }
    const std::uint16_t first = number < DmiFirstRows.size() ? DmiFirstRows[number] : DmiFieldCount;
    *type = static_cast<std::uint16_t>(number);
    *descriptor = static_cast<std::uint16_t>(first + field % RyxFieldsPerType);
}

bool DmiNextStructGet(DmiStruct* structure) {
    if (structure == nullptr || !structure->Exists()) {
        return false;
    }
    const std::size_t setEnd = SetOf(*structure).find(TwoZeros);
    if (setEnd == std::string_view::npos) {
        return false;
    }
    const auto length = static_cast<std::uint32_t>(structure->FormattedLength() + setEnd + TwoZeros.size());
    const DmiStruct next(structure->From(length), structure->SmbiosVersion());
    if (next.Exists()) {
        *structure = next;
    }
    return next.Exists();
}

bool DmiStringFind(const DmiStruct& structure, std::uint32_t offset, std::string_view* text) {
    std::uint8_t number = 0;
    if (!structure.ByteGet(offset, &number)) {
        return false;
    }
    *text = {};
    if (number == 0) {
        return true;
    }
    std::string_view rest = SetOf(structure);
    for (; number > 1 && !rest.empty() && rest.front() != '\0'; --number) {
        const std::size_t end = rest.find('\0');
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    }
    *text = rest.substr(0, rest.find('\0'));
    return true;
}

RyxStatus DmiStructFieldGet(const DmiStruct& structure, std::uint16_t descriptor, RyxBin** bin, bool whole) {
    const bool newer = descriptor >= DmiFieldCount;
    if (descriptor >= (whole ? DmiAllFieldCount : DmiFieldCount) || bin == nullptr) {
        return RyxErrorArgument;
    }
    const DmiFieldDescriptor& row = DmiRowAt(descriptor);
    // Behind the contained elements of a chassis older firmware has left stray bytes.
    const bool versionCounts = !whole || newer || row.Rule == DmiRule::ChassisSku;
    if ((versionCounts && row.MinVersion > structure.SmbiosVersion()) ||
        (!newer && structure.FormattedLength() <= row.Offset)) {
        return RyxErrorUnsupported;
    }
    Extent extent{row.Offset, DmiRowWidth(row)};
    const ExtentRule rule = ExtentRules[static_cast<std::size_t>(row.Rule)];
    if ((rule != nullptr && !rule(structure, &extent)) ||
        (newer && extent.Offset + extent.Length > structure.FormattedLength())) {
        return RyxErrorUnsupported;
    }
    if (row.ValueClass == DmiClass::String) {
        std::string_view text;
        return DmiStringFind(structure, extent.Offset, &text) ? TextBinMake(text, bin) : RyxErrorUnsupported;
    }
    std::span<const std::uint8_t> bytes;
    if (!structure.BytesGet(extent.Offset, extent.Length, &bytes)) {
        return RyxErrorUnsupported;
    }
    return RyxBinMake(bytes.data(), extent.Length, bin);
}

RyxStatus DmiStructStringsGet(const DmiStruct& structure, RyxBin** bin) {
    if (bin == nullptr) {
        return RyxErrorArgument;
    }
    const std::string_view set = SetOf(structure);
    const std::size_t end = set.starts_with('\0') ? 0 : set.find(TwoZeros);
    std::string_view texts = set.substr(0, end);
    if (texts.ends_with('\0')) {
        texts.remove_suffix(1); // the table ends with a string's NUL
    }
    return texts.empty() ? RyxBinMake(nullptr, 0, bin) : TextBinMake(texts, bin);
}

RyxStatus DmiStructAreaGet(const DmiStruct& structure, std::uint8_t offset, RyxBin** bin) {
    if (bin == nullptr) {
        return RyxErrorArgument;
    }
    if (structure.FormattedLength() <= offset) {
        return RyxErrorUnsupported;
    }
    std::span<const std::uint8_t> bytes;
    if (!structure.BytesGet(offset, 0, &bytes)) {
        return RyxErrorUnsupported;
    }
    const std::span<const std::uint8_t> rest = structure.From(offset);
    const auto length = static_cast<std::uint32_t>(
        std::min<std::size_t>(rest.size(), std::size_t{structure.FormattedLength()} - offset));
    return RyxBinMake(rest.data(), length, bin);
}

bool DmiInstanceFind(const DmiTableCopy& table, std::uint16_t type, std::uint32_t instance, DmiStruct* found,
                     bool whole) {
    const std::uint16_t highest = whole || type == TypeEndOfTable ? 0xFFFF : HandleLimit;
    const std::span<const std::uint8_t> bytes(table.Bytes.get(), table.Size);
    if (type < Walked.First.size() && WalkRemember(bytes)) {
        const std::uint32_t limit = whole ? Walked.WholeEnd : ExaminedLimit;
        for (std::uint32_t number = Walked.First[type]; number < limit; number = Walked.Spots[number].Next) {
            const Spot& spot = Walked.Spots[number];
            if (spot.Handle <= highest && instance-- == 1) {
                *found = DmiStruct(bytes.subspan(spot.Place), table.Version);
                return true;
            }
        }
        return false;
    }
    DmiStruct structure(bytes, table.Version);
    bool more = structure.Exists();
    for (std::uint32_t number = 0;
         more && (whole ? structure.FormattedLength() >= HeaderLength : number < ExaminedLimit);
         ++number, more = DmiNextStructGet(&structure)) {
        if (structure.Type() == type && structure.Handle() <= highest && instance-- == 1) {
            *found = structure;
            return true;
        }
    }
    return false;
}

std::array<DmiTypeCount, 256> DmiStructuresCount(const DmiTableCopy& table) {
    std::array<DmiTypeCount, 256> counts{};
    DmiStruct structure({table.Bytes.get(), table.Size}, table.Version);
    bool more = structure.Exists();
    for (std::uint32_t number = 0; more && structure.FormattedLength() >= HeaderLength;
         ++number, more = DmiNextStructGet(&structure)) {
        DmiTypeCount& count = counts[structure.Type()];
        ++count.Whole;
        if (number < ExaminedLimit && (structure.Handle() <= HandleLimit || structure.Type() == TypeEndOfTable)) {
            ++count.Limited;
        }
    }
    return counts;
}

void DmiWalkReset() {
    Walked = {};
}
