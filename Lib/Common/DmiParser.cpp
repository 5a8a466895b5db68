// The structure parser.
#include "Lib/Common/DmiParser.h"

#include "Lib/API/RyxBin.h"
#include "Lib/Common/DmiFieldTable.h"
#include "Lib/RyxNumbers.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

namespace {

constexpr std::uint32_t ExaminedLimit = 128;
constexpr std::uint16_t HandleLimit = 0xFF;
constexpr std::uint16_t TypeEndOfTable = 127;

// Where a value lies in its structure, in bytes.
struct Extent {
    std::uint32_t Offset;
    std::uint32_t Length;
};

// Where a rule takes a value's extent from; false when a count that it needs lies past the table.
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

// A list of words whose count stands at `offset`.
bool WordListLength(const DmiStruct& structure, std::uint32_t offset, std::uint32_t* length) {
    std::uint8_t count = 0;
    if (!structure.ByteGet(offset, &count)) {
        return false;
    }
    *length = 2U * count;
    return true;
}

bool CharacteristicsExtension(const DmiStruct&, Extent* extent) {
    extent->Length = 2;
    return true;
}

bool ContainedElements(const DmiStruct& structure, Extent* extent) {
    return ProductGet(structure, 19, &extent->Length);
}

// The string number of the chassis SKU stands behind the contained elements.
bool ChassisSku(const DmiStruct& structure, Extent* extent) {
    std::uint32_t elements = 0;
    if (!ProductGet(structure, 19, &elements)) {
        return false;
    }
    extent->Offset = OffsetOf(21 + elements);
    return true;
}

// The enabled error correction stands behind the memory module handles.
bool EnabledErrorCorrection(const DmiStruct& structure, Extent* extent) {
    std::uint32_t handles = 0;
    if (!WordListLength(structure, 14, &handles)) {
        return false;
    }
    *extent = {OffsetOf(15 + handles), 1};
    return true;
}

bool HandleListAt15(const DmiStruct& structure, Extent* extent) {
    return WordListLength(structure, 14, &extent->Length);
}

bool EventLogDescriptors(const DmiStruct& structure, Extent* extent) {
    return ProductGet(structure, 21, &extent->Length);
}

bool BootStatus(const DmiStruct& structure, Extent* extent) {
    extent->Length = structure.FormattedLength() - 10U; // longer than 10, or the field would not be looked up
    return true;
}

// Byte `entryByte` of the last entry in a memory channel's device list.
bool LastMemoryDevice(const DmiStruct& structure, std::uint32_t entryByte, std::uint32_t length, Extent* extent) {
    std::uint8_t count = 0;
    if (!structure.ByteGet(6, &count)) {
        return false;
    }
    *extent = {OffsetOf(7 + entryByte + 3U * (count - 1U)), length};
    return true;
}

bool LastMemoryDeviceLoad(const DmiStruct& structure, Extent* extent) {
    return LastMemoryDevice(structure, 0, 1, extent);
}

bool LastMemoryDeviceHandle(const DmiStruct& structure, Extent* extent) {
    return LastMemoryDevice(structure, 1, 2, extent);
}

// The fixed part of the first entry, with a value of one byte.
bool AdditionalInformation(const DmiStruct&, Extent* extent) {
    extent->Length = 6;
    return true;
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

// The rows whose extent a rule computes, by type and name.
struct RuleRow {
    std::uint8_t Type;
    const char* Name;
    ExtentRule Rule;
};

constexpr RuleRow RuleRows[] = {
    {0, "BIOS Characteristics Extension", CharacteristicsExtension},
    {2, "Contained Object Handles", HandleListAt15},
    {3, "Contained Elements", ContainedElements},
    {3, "SKU Number", ChassisSku},
    {5, "Memory Module Configuration Handles", HandleListAt15},
    {5, "Enabled Error Correcting Capabilities", EnabledErrorCorrection},
    {15, "List of Supported Event Log Type Descriptors", EventLogDescriptors},
    {32, "Boot Status", BootStatus},
    {37, "Memory Device Load", LastMemoryDeviceLoad},
    {37, "Memory Device Handle", LastMemoryDeviceHandle},
    {40, "Additional Information entries", AdditionalInformation},
    {42, "MC Host Interface Data", HostInterfaceData},
};

// The types that have rules, one bit each: most fields are known by it to have none.
constexpr std::uint64_t RuleTypes = [] {
    std::uint64_t types = 0;
    for (const RuleRow& rule : RuleRows) {
        types |= std::uint64_t{1} << rule.Type;
    }
    return types;
}();

ExtentRule RuleFind(const DmiFieldDescriptor& row) {
    if (row.Type >= 64 || (RuleTypes >> row.Type & 1) == 0) {
        return nullptr;
    }
    for (const RuleRow& rule : RuleRows) {
        if (rule.Type == row.Type && std::strcmp(rule.Name, row.Name) == 0) {
            return rule.Rule;
        }
    }
    return nullptr;
}

// The length of a kind before any rule; false for a kind that does not exist.
bool KindLength(DmiKind kind, std::uint32_t* length) {
    constexpr std::uint8_t lengths[] = {1, 1, 6, 15, 16, 2, 0, 4, 8, 0};
    const auto code = static_cast<std::size_t>(kind);
    if (code >= std::size(lengths)) {
        return false;
    }
    *length = lengths[code];
    return true;
}

// A machine word of a table's bytes, the first one lowest: machines with these tables are little-endian.
std::size_t WordAt(const std::uint8_t* bytes) {
    std::size_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

} // namespace

// A walk spends its time here, and most of that in branches that were not foreseen. A word takes one branch, which is
// taken where the set goes on. In the word that ends the set, every place has a branch of its own and gives the next
// structure's as a constant: nothing there waits for the bytes, and the branches tell later ones apart.
inline std::size_t DmiStruct::SetEnd() const {
    constexpr std::size_t step = sizeof(std::size_t);
    constexpr std::size_t ones = ~std::size_t{0} / 0xFF;
    constexpr std::size_t highs = ones << 7;
    const std::uint8_t* const bytes = Table.data();
    const std::size_t wordsEnd = Table.size() - std::min(Table.size(), step); // a word and a byte fit before it
    std::size_t at = Place + FormattedLength();
    for (; at < wordsEnd; at += step) {
        // A zero byte of this is one that is zero together with the byte behind it.
        const std::size_t both = WordAt(bytes + at) | WordAt(bytes + at + 1);
        if (((both - ones) & highs) != 0) [[unlikely]] { // a zero byte, or one above 80h
            // Marks the first zero byte, and perhaps bytes above it.
            const std::size_t zeros = (both - ones) & ~both & highs;
            if ((zeros & 0x80) != 0) {
                return at + 2;
            }
            if ((zeros & 0x8000) != 0) {
                return at + 3;
            }
            if ((zeros & 0x800000) != 0) {
                return at + 4;
            }
            if ((zeros & 0x80000000) != 0) {
                return at + 5;
            }
            if constexpr (step == 8) {
                if ((zeros >> 32 & 0x80) != 0) {
                    return at + 6;
                }
                if ((zeros >> 32 & 0x8000) != 0) {
                    return at + 7;
                }
                if ((zeros >> 32 & 0x800000) != 0) {
                    return at + 8;
                }
                if ((zeros >> 32 & 0x80000000) != 0) {
                    return at + 9;
                }
            }
        }
    }
    for (; at + 1 < Table.size(); ++at) {
        if (bytes[at] == 0 && bytes[at + 1] == 0) {
            return at + 2;
        }
    }
    return Table.size();
}

bool DmiStruct::BytesGet(std::uint32_t offset, std::uint32_t length, std::span<const std::uint8_t>* bytes) const {
    if (offset > Rest().size() || length > Rest().size() - offset) {
        return false;
    }
    *bytes = Rest().subspan(offset, length);
    return true;
}

bool DmiStruct::ByteGet(std::uint32_t offset, std::uint8_t* byte) const {
    if (offset >= Rest().size()) {
        return false;
    }
    *byte = Table[Place + offset];
    return true;
}

std::span<const std::uint8_t> DmiStruct::From(std::uint32_t offset) const {
    return Rest().subspan(std::min<std::size_t>(offset, Rest().size()));
}

void DmiFieldNumberResolve(std::uint32_t field, std::uint16_t* type, std::uint16_t* descriptor) {
    const std::uint32_t number = field / RyxFieldsPerType;
    const std::uint16_t first = number < DmiFirstRows.size() ? DmiFirstRows[number] : DmiFieldCount;
    *type = static_cast<std::uint16_t>(number);
    *descriptor = static_cast<std::uint16_t>(first + field % RyxFieldsPerType);
}

bool DmiNextStructGet(DmiStruct* structure) {
    if (structure == nullptr || !structure->Exists()) {
        return false;
    }
    const DmiStruct next = structure->Next();
    if (!next.Exists()) [[unlikely]] {
        return false;
    }
    *structure = next;
    return true;
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
    const std::span<const std::uint8_t> set = structure.From(structure.FormattedLength());
    std::string_view rest(reinterpret_cast<const char*>(set.data()), set.size());
    for (; number > 1 && !rest.empty() && rest.front() != '\0'; --number) {
        const std::size_t end = rest.find('\0');
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    }
    *text = rest.substr(0, rest.find('\0'));
    return true;
}

RyxStatus DmiStructFieldGet(const DmiStruct& structure, std::uint16_t descriptor, RyxBin** bin) {
    if (descriptor >= DmiFieldCount || bin == nullptr) {
        return RyxErrorArgument;
    }
    const DmiFieldDescriptor& row = DmiFieldTable[descriptor];
    if (row.MinVersion > structure.SmbiosVersion() || structure.FormattedLength() <= row.Offset) {
        return RyxErrorUnsupported;
    }
    Extent extent{row.Offset, 0};
    if (!KindLength(row.Kind, &extent.Length)) {
        return RyxErrorUnsupported;
    }
    if (const ExtentRule rule = RuleFind(row); rule != nullptr && !rule(structure, &extent)) {
        return RyxErrorUnsupported;
    }
    if (row.ValueClass == DmiClass::String) {
        std::string_view text;
        if (!DmiStringFind(structure, extent.Offset, &text)) {
            return RyxErrorUnsupported;
        }
        // One byte more than the text for its NUL, which the table's end may have cut off.
        RyxBin* made = nullptr;
        const RyxStatus status = RyxBinCreate(text.size() + 1, &made);
        if (status == RyxOk) {
            text.copy(reinterpret_cast<char*>(made->Data), text.size());
            *bin = made;
        }
        return status;
    }
    std::span<const std::uint8_t> bytes;
    if (!structure.BytesGet(extent.Offset, extent.Length, &bytes)) {
        return RyxErrorUnsupported;
    }
    return RyxBinMake(bytes.data(), extent.Length, bin);
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

// The step to the next structure is part of the loop: as a call, which compilers choose here, a walk takes a third
// more.
[[gnu::flatten]] bool DmiInstanceFind(const DmiTableCopy& table, std::uint16_t type, std::uint32_t instance,
                                      DmiStruct* found, bool whole) {
    const std::uint16_t highest = whole || type == TypeEndOfTable ? 0xFFFF : HandleLimit;
    DmiStruct structure({table.Bytes.get(), table.Size}, table.Version);
    std::uint32_t counted = 1;
    if (!structure.Exists()) {
        return false;
    }
    for (std::uint32_t left = whole ? std::numeric_limits<std::uint32_t>::max() : ExaminedLimit; left != 0; --left) {
        if (structure.Type() == type && structure.Handle() <= highest) {
            if (counted == instance) {
                *found = structure;
                return true;
            }
            ++counted;
        }
        structure = structure.Next();
        if (!structure.Exists()) [[unlikely]] {
            return false;
        }
    }
    return false;
}
