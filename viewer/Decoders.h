// The decoders, one per structure type.
#pragma once

#include "Lib/API/RyxSmbios.h"
#include "Lib/DmiFieldTable.h"
#include "viewer/DecoderField.h"

#include <algorithm>
#include <bit>

// Which structures of its type a decoder shows: the first one only (unless the whole table is wanted), or those in the
// viewer's instance range; of newer types, and of types that no decoder knows, those in the range and of the whole
// table alone.
enum class DecoderForm : std::uint8_t { Single, Loop, Newer, Other };

// Fields fit their type: they show rows of it behind `last`, in order, strings as strings and numbers in their width.
// Fields that don't fit don't compile.
consteval bool FieldsFit(std::uint8_t type, std::span<const DecoderField> fields, std::uint8_t last,
                         bool whole = false) {
    for (const DecoderField& field : fields) {
        const DmiFieldDescriptor* const row = DmiRowFind(type, field.Row, whole);
        last = field.Row > last ? field.Row : throw "the rows of a decoder ascend";
        if (row == nullptr) {
            throw "a field's row is one of its type's";
        }
        if ((row->ValueClass == DmiClass::String) != (field.Shape == FieldShape::String)) {
            throw "strings are shown as strings, and nothing else is";
        }
        const std::uint8_t width = DmiRowWidth(*row);
        if (field.Widths != AnyWidth && (!std::has_single_bit(width) || (field.Widths & width) == 0)) {
            throw "a format takes its row's width";
        }
        if (field.Shape == FieldShape::Mark && width < 8 && field.Special >> 8 * width != 0) {
            throw "a special value is one that its row can hold";
        }
        for (const NumberCase& each : field.Cases) {
            if (width < 8 && each.Value >> 8 * width != 0) {
                throw "a special value is one that its row can hold";
            }
            const DmiFieldDescriptor* const other = DmiRowFind(type, each.Row, true);
            if (other == nullptr ||
                (each.Row != 0 && other->Rule == DmiRule::None && each.Length < other->Offset + DmiRowWidth(*other))) {
                throw "a line refers to a field that its length holds";
            }
        }
    }
    return true;
}

// A decoder: its type, the name that structures of the type are shown under, and the type's fields from number 4 on.
// Of the whole table, fields of Whole take the place of those with their rows, and the rest of them follow.
struct StructDecoder {
    char Name[44]{};         // in the record itself, so that other constant tables can hold its address
    std::uint8_t NameLength; // without the type's number
    std::uint8_t Type;
    DecoderForm Form;
    std::span<const DecoderField> Fields;
    std::span<const DecoderField> Whole;

    // The name is completed by the type's number: " (Type NN)".
    consteval StructDecoder(std::uint8_t type, std::string_view name, DecoderForm form,
                            std::span<const DecoderField> fields, std::span<const DecoderField> whole = {},
                            std::string_view before = " (Type ")
        : NameLength(static_cast<std::uint8_t>(name.size())), Type(type), Form(form), Fields(fields), Whole(whole) {
        constexpr std::uint8_t handleRow = 2; // the last one that every type has
        FieldsFit(type, fields, handleRow);
        FieldsFit(type, whole, handleRow, true);
        for (const DecoderField& field : whole) {
            if (DmiRowFind(type, field.Row) != nullptr &&
                std::ranges::find(fields, field.Row, &DecoderField::Row) == fields.end()) {
                throw "a field of the whole table is newer or takes another one's place";
            }
        }
        char* end = std::copy(name.begin(), name.end(), Name);
        if (form == DecoderForm::Other) {
            return; // each of its types completes it
        }
        end = std::copy(before.begin(), before.end(), end);
        if (type >= 100) {
            *end++ = static_cast<char>('0' + type / 100);
        }
        *end++ = static_cast<char>('0' + type / 10 % 10);
        *end++ = static_cast<char>('0' + type % 10);
        *end = ')';
    }

    // Tells whether no structure but the first one is shown, whatever the instance range.
    bool FirstOnly() const { return Form == DecoderForm::Single && !RyxSmbiosWholeGet(); }

    // Shows the selected fields of the structures of a type, by default the decoder's own; a field that can't be read
    // ends a structure's output silently. Always RyxOk.
    RyxStatus operator()(std::uint8_t type) const;
    RyxStatus operator()() const { return (*this)(Type); }
};

// The types that have a decoder, StructDecodeType and the number: the one list that declares and enters them all.
// clang-format off
#define STRUCT_TYPES(EACH) \
    EACH(0) EACH(1) EACH(2) EACH(3) EACH(4) EACH(5) EACH(6) EACH(7) EACH(8) EACH(9) EACH(10) EACH(11) EACH(12) \
    EACH(13) EACH(14) EACH(15) EACH(16) EACH(17) EACH(18) EACH(19) EACH(20) EACH(21) EACH(22) EACH(23) EACH(24) \
    EACH(25) EACH(26) EACH(27) EACH(28) EACH(29) EACH(30) EACH(31) EACH(32) EACH(33) EACH(34) EACH(35) EACH(36) \
    EACH(37) EACH(38) EACH(39) EACH(40) EACH(41) EACH(42) EACH(43) EACH(44) EACH(45) EACH(46) EACH(126) EACH(127)
// clang-format on

#define STRUCT_DECODER_DECLARE(type) extern const StructDecoder StructDecodeType##type;
STRUCT_TYPES(STRUCT_DECODER_DECLARE)
#undef STRUCT_DECODER_DECLARE

// What shows the other types, up to 125 and from 128 on.
extern const StructDecoder StructDecodeUnknown;
extern const StructDecoder StructDecodeOem;
