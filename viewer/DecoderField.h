// The fields of decoders: a decoder is a constant table of its fields from number 4 on. The frame reads a field's row,
// the field prints what was read.
#pragma once

#include "viewer/StructRead.h"
#include "viewer/TextTable.h"

#include <cstdint>
#include <span>
#include <string_view>

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

// One field. Row is its row among the rows of its type. Print prints the row's value; a field that needs more than that
// has Show, which reads and prints by itself; one with neither is counted, but neither read nor printed. The rest
// serves the ready-made shapes below.
struct DecoderField {
    std::uint8_t Row;
    void (*Print)(const DecoderField& field, const FieldValue& value) = nullptr;
    FieldOutcome (*Show)(const DecoderField& field, const StructPlace& place) = nullptr;
    const char* Format = nullptr;
    TextTable Texts = {};
    std::uint32_t Mask = 0xFFFFFFFF;
    const char* const* BitNames = nullptr;
    std::span<const BitGroup> Groups = {};
    std::uint64_t Special = 0;
    const char* Mark = nullptr;
};

// Reads a row of a structure. False when it can't be read.
bool FieldRead(const StructPlace& place, std::uint8_t row, FieldValue* value);

void NumberPrint(const DecoderField& field, const FieldValue& value);
void TextPrint(const DecoderField& field, const FieldValue& value);
void TextLinePrint(const DecoderField& field, const FieldValue& value);
void BitsPrint(const DecoderField& field, const FieldValue& value);
void GroupsPrint(const DecoderField& field, const FieldValue& value);
void MarkPrint(const DecoderField& field, const FieldValue& value);
void BytesPrint(const DecoderField& field, const FieldValue& value);
FieldOutcome StringShow(const DecoderField& field, const StructPlace& place);

// A string: Format takes the text. Printed whole, whatever its length.
consteval DecoderField StringField(std::uint8_t row, const char* format) {
    const bool takes = std::string_view(format).find("%s") != std::string_view::npos;
    return {.Row = row, .Show = StringShow, .Format = takes ? format : throw "a string's format takes it"};
}

// A number: Format takes it up to three times, as a 64-bit argument for eight-byte rows and as a 32-bit one for others.
constexpr DecoderField NumberField(std::uint8_t row, const char* format) {
    return {.Row = row, .Print = NumberPrint, .Format = format};
}

// A number and its text in one print: Format takes the number and the text of its bits under `mask`.
constexpr DecoderField TextField(std::uint8_t row, const char* format, TextTable texts,
                                 std::uint32_t mask = 0xFFFFFFFF) {
    return {.Row = row, .Print = TextPrint, .Format = format, .Texts = texts, .Mask = mask};
}

// A number, and its text in a print of its own (`text`) on the same line: Format takes the number alone.
constexpr DecoderField TextLineField(std::uint8_t row, const char* format, TextTable texts, const char* text = "%s\n") {
    return {.Row = row, .Print = TextLinePrint, .Format = format, .Texts = texts, .Mark = text};
}

// A number, then one line per named bit. The names end with a null entry.
constexpr DecoderField BitsField(std::uint8_t row, const char* format, const char* const* names) {
    return {.Row = row, .Print = BitsPrint, .Format = format, .BitNames = names};
}

// A number, then one line per group of bits.
constexpr DecoderField GroupsField(std::uint8_t row, const char* format, std::span<const BitGroup> groups) {
    return {.Row = row, .Print = GroupsPrint, .Format = format, .Groups = groups};
}

// A number, then on the same line `mark` when it is the special value and a bare line end otherwise. The mark brings
// its own line end.
constexpr DecoderField MarkField(std::uint8_t row, const char* format, std::uint64_t special,
                                 const char* mark = "- Unknown\n") {
    return {.Row = row, .Print = MarkPrint, .Format = format, .Special = special, .Mark = mark};
}

// Bytes as they are stored, on one line behind the label.
constexpr DecoderField BytesField(std::uint8_t row, const char* label) {
    return {.Row = row, .Print = BytesPrint, .Format = label};
}

// A field that is counted but neither read nor printed.
constexpr DecoderField CountedField(std::uint8_t row) {
    return {.Row = row};
}

// A field with a function of its own: for its value, or for what it takes more than that.
constexpr DecoderField OwnField(std::uint8_t row, void (*print)(const DecoderField&, const FieldValue&),
                                const char* format = nullptr) {
    return {.Row = row, .Print = print, .Format = format};
}
constexpr DecoderField OwnField(std::uint8_t row, FieldOutcome (*show)(const DecoderField&, const StructPlace&)) {
    return {.Row = row, .Show = show};
}
