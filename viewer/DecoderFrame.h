// The frame that every decoder follows: a decoder is a constant table of its fields from number 4 on, run by one of the
// frame's two forms.
#pragma once

#include "Lib/RyxStatus.h"
#include "viewer/TextTable.h"

#include <cstdint>
#include <span>

// The structure that a decoder is showing.
struct StructPlace {
    std::uint8_t Type;
    std::uint32_t Instance;
};

// What became of a field: printed; not printed although it could be (nothing to show, so the decoder goes on even when
// the field is the selected one); or not readable, which ends the structure's output.
enum class FieldOutcome { Printed, Skipped, Unreadable };

// A group of bits of a value with a line of its own: Format takes the text of (value >> Shift) & Mask, or the number
// itself when there are no texts.
struct BitGroup {
    const char* Format;
    std::uint8_t Shift;
    std::uint32_t Mask;
    TextTable Texts;
};

// One field. Row is its row among the rows of its type; Show reads and prints it. The rest serves the ready-made shapes
// below, each of which reads the row and prints it with Format.
struct DecoderField {
    std::uint8_t Row;
    FieldOutcome (*Show)(const DecoderField& field, const StructPlace& place);
    const char* Format = nullptr;
    TextTable Texts = {};
    std::uint32_t Mask = 0xFFFFFFFF;
    const char* const* BitNames = nullptr;
    std::span<const BitGroup> Groups = {};
    std::uint64_t Special = 0;
    const char* Mark = nullptr;
};

// The field's bytes, and a row's value as a number. False when the row can't be read.
bool FieldBytes(const StructPlace& place, std::uint8_t row, std::span<const std::uint8_t>* bytes);
bool FieldNumber(const StructPlace& place, std::uint8_t row, std::uint64_t* number);

FieldOutcome StringShow(const DecoderField& field, const StructPlace& place);
FieldOutcome NumberShow(const DecoderField& field, const StructPlace& place);
FieldOutcome TextShow(const DecoderField& field, const StructPlace& place);
FieldOutcome TextLineShow(const DecoderField& field, const StructPlace& place);
FieldOutcome BitsShow(const DecoderField& field, const StructPlace& place);
FieldOutcome GroupsShow(const DecoderField& field, const StructPlace& place);
FieldOutcome MarkShow(const DecoderField& field, const StructPlace& place);
FieldOutcome NothingShow(const DecoderField& field, const StructPlace& place);

// A string: Format takes the text. Printed whole, whatever its length.
constexpr DecoderField StringField(std::uint8_t row, const char* format) {
    return {.Row = row, .Show = StringShow, .Format = format};
}

// A number: Format takes it up to three times, as a 64-bit argument for eight-byte rows and as a 32-bit one for others.
constexpr DecoderField NumberField(std::uint8_t row, const char* format) {
    return {.Row = row, .Show = NumberShow, .Format = format};
}

// A number and its text in one print: Format takes the number and the text of its bits under `mask`.
constexpr DecoderField TextField(std::uint8_t row, const char* format, TextTable texts,
                                 std::uint32_t mask = 0xFFFFFFFF) {
    return {.Row = row, .Show = TextShow, .Format = format, .Texts = texts, .Mask = mask};
}

// A number, and its text in a print of its own ("%s\n") on the same line: Format takes the number alone.
constexpr DecoderField TextLineField(std::uint8_t row, const char* format, TextTable texts) {
    return {.Row = row, .Show = TextLineShow, .Format = format, .Texts = texts};
}

// A number, then one line per named bit. The names end with a null entry.
constexpr DecoderField BitsField(std::uint8_t row, const char* format, const char* const* names) {
    return {.Row = row, .Show = BitsShow, .Format = format, .BitNames = names};
}

// A number, then one line per group of bits.
constexpr DecoderField GroupsField(std::uint8_t row, const char* format, std::span<const BitGroup> groups) {
    return {.Row = row, .Show = GroupsShow, .Format = format, .Groups = groups};
}

// A number, then on the same line `mark` when it is the special value and a bare line end otherwise. The mark brings
// its own line end.
constexpr DecoderField MarkField(std::uint8_t row, const char* format, std::uint64_t special, const char* mark) {
    return {.Row = row, .Show = MarkShow, .Format = format, .Special = special, .Mark = mark};
}

// A field that is counted but neither read nor printed.
constexpr DecoderField CountedField(std::uint8_t row) {
    return {.Row = row, .Show = NothingShow};
}

// A field with a function of its own.
constexpr DecoderField OwnField(std::uint8_t row, FieldOutcome (*show)(const DecoderField&, const StructPlace&),
                                const char* format = nullptr) {
    return {.Row = row, .Show = show, .Format = format};
}

// Shows the first structure of a type: fields 1 to 3, then the given ones. Always RyxOk.
RyxStatus SingleInstanceDecode(std::uint8_t type, std::span<const DecoderField> fields);

// Shows the structures of a type in the viewer's instance range. Always RyxOk.
RyxStatus InstanceLoopDecode(std::uint8_t type, std::span<const DecoderField> fields);
