// The structure parser.
#include "Lib/Common/DmiParser.h"

#include "Lib/API/RyxBin.h"
#include "Lib/DmiFieldTable.h"
#include "Lib/RyxNumbers.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace {

constexpr std::uint32_t ExaminedLimit = 128;
constexpr std::uint16_t HandleLimit = 0xFF;
constexpr std::uint16_t TypeEndOfTable = 127;

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

// By DmiRule; null for those that are nothing but a width.
constexpr ExtentRule ExtentRules[] = {
    nullptr,          nullptr,           nullptr,          HandleList,
    BehindHandleList, ContainedElements, ChassisSku,       EventLogDescriptors,
    BootStatus,       LastDeviceLoad,    LastDeviceHandle, HostInterfaceData,
};

static_assert(std::ranges::all_of(DmiFieldTable, [](const DmiFieldDescriptor& row) {
    return static_cast<std::size_t>(row.Rule) < std::size(ExtentRules);
}));

// Bytes are looked at by the piece, each of which gives marks: one for each byte that is zero together with the byte
// behind it, the first one lowest. Above the first mark there may be more than that.
#if defined(__SSE2__)
using Marks = std::uint32_t;
constexpr std::size_t PieceSize = 16;
constexpr unsigned MarkBits = 1; // for each byte

Marks MarksOf(const std::uint8_t* bytes) {
    const __m128i first = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
    const __m128i second = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + 1));
    const __m128i zeros = _mm_cmpeq_epi8(_mm_or_si128(first, second), _mm_setzero_si128());
    return static_cast<Marks>(_mm_movemask_epi8(zeros));
}
#else
using Marks = std::size_t;
constexpr std::size_t PieceSize = sizeof(Marks);
constexpr unsigned MarkBits = 8;

// Machines with these tables are little-endian: the first byte is a word's lowest.
Marks MarksOf(const std::uint8_t* bytes) {
    constexpr Marks ones = ~Marks{0} / 0xFF;
    Marks first = 0;
    Marks second = 0;
    std::memcpy(&first, bytes, sizeof first);
    std::memcpy(&second, bytes + 1, sizeof second);
    const Marks both = first | second;
    return (both - ones) & ~both & ones << 7;
}
#endif

// The place behind the two zero bytes that the first mark tells of, which is among `Count` marks from `First` on. Every
// place has a branch of its own and is a constant behind it: see SetEnd.
template <unsigned First, unsigned Count>
[[gnu::always_inline]] inline std::size_t PairEnd(Marks marks, std::size_t at) {
    if constexpr (Count == 1) {
        return at + First + 2;
    } else {
        constexpr unsigned half = Count / 2;
        constexpr Marks lower = ((Marks{1} << half * MarkBits) - 1) << First * MarkBits;
        const bool inLower = (marks & lower) != 0;
        if (inLower) {
            asm volatile(""); // here and below, or the compiler computes the place
            return PairEnd<First, half>(marks, at);
        }
        asm volatile("");
        return PairEnd<First + half, half>(marks, at);
    }
}

} // namespace

// A walk spends its time here, and would spend most of that waiting for bytes or on branches that were not foreseen. A
// piece takes one branch. In the piece that ends the set, branches lead to the place and none is computed, so that the
// processor is at the next structure before the bytes have come; and of two pieces only the second moves the place on.
inline std::size_t DmiStruct::SetEnd() const {
    const std::uint8_t* const bytes = Table.data();
    const std::size_t piecesEnd = Table.size() - std::min(Table.size(), 2 * PieceSize); // before it, two and a byte fit
    std::size_t at = Place + FormattedLength();
    for (; at < piecesEnd; at += 2 * PieceSize) {
        const Marks first = MarksOf(bytes + at);
        if (first != 0) [[unlikely]] {
            return PairEnd<0, PieceSize>(first, at);
        }
        const Marks second = MarksOf(bytes + at + PieceSize);
        if (second != 0) [[unlikely]] {
            return PairEnd<0, PieceSize>(second, at + PieceSize);
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
    Extent extent{row.Offset, DmiRowWidth(row)};
    const ExtentRule rule = ExtentRules[static_cast<std::size_t>(row.Rule)];
    if (rule != nullptr && !rule(structure, &extent)) {
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
