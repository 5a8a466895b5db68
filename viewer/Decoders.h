// The decoders, one per structure type.
#pragma once

#include "Lib/API/RyxSmbios.h"
#include "viewer/DecoderField.h"

#include <algorithm>
#include <cstddef>

// Which structures of its type a decoder shows: the first one only (unless the whole table is wanted), or those in the
// viewer's instance range.
enum class DecoderForm : std::uint8_t { Single, Loop };

// A decoder: the display name of its type, and its fields from number 4 on, whose rows ascend; else it does not
// compile. The name's characters stand in the record itself: so it has an address that other constant tables can hold.
struct StructDecoder {
    char Name[44]{};
    std::uint8_t Type;
    DecoderForm Form;
    std::span<const DecoderField> Fields;

    template <std::size_t N>
    consteval StructDecoder(std::uint8_t type, const char (&name)[N], DecoderForm form,
                            std::span<const DecoderField> fields)
        : Type(type), Form(form), Fields(fields) {
        std::copy(name, name + N, Name);
        std::uint8_t last = 2; // the rows of the three fields that every type has
        for (const DecoderField& field : fields) {
            last = field.Row > last ? field.Row : throw "the rows of a decoder ascend";
        }
    }

    // Tells whether no structure but the first one is shown, whatever the instance range.
    bool FirstOnly() const { return Form == DecoderForm::Single && !RyxSmbiosWholeGet(); }

    // Shows the selected fields of the structures; a field that can't be read ends a structure's output silently.
    // Always RyxOk.
    RyxStatus operator()() const;
};

extern const StructDecoder StructDecodeType0, StructDecodeType1, StructDecodeType2, StructDecodeType3,
    StructDecodeType4, StructDecodeType5, StructDecodeType6, StructDecodeType7, StructDecodeType8, StructDecodeType9,
    StructDecodeType10, StructDecodeType11, StructDecodeType12, StructDecodeType13, StructDecodeType14,
    StructDecodeType15, StructDecodeType16, StructDecodeType17, StructDecodeType18, StructDecodeType19,
    StructDecodeType20, StructDecodeType21, StructDecodeType22, StructDecodeType23, StructDecodeType24,
    StructDecodeType25, StructDecodeType26, StructDecodeType27, StructDecodeType28, StructDecodeType29,
    StructDecodeType30, StructDecodeType31, StructDecodeType32, StructDecodeType33, StructDecodeType34,
    StructDecodeType35, StructDecodeType36, StructDecodeType37, StructDecodeType38, StructDecodeType39,
    StructDecodeType40, StructDecodeType41, StructDecodeType42, StructDecodeType126, StructDecodeType127;
