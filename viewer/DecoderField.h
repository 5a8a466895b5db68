// The fields of decoders: a decoder is a constant table of its fields from number 4 on. The frame reads a field's row,
// the field prints what was read. What does not fit its row does not compile.
#pragma once

#include "viewer/StructRead.h"
#include "viewer/TextTable.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
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

// What a field shows of its row: made by the function of that name below.
enum class FieldShape : std::uint8_t { Counted, String, Number, Text, TextLine, Bits, Groups, Mark, Bytes, Own };

// The conversions that formats have, and the widths, of 1, 2, 4 and 8 bytes and added up, of the numbers that they
// take.
struct FormatConversion {
    std::string_view Text;
    std::uint8_t Widths;
};

inline constexpr FormatConversion FormatConversions[] = {
    {"s", 0},   {"d", 7},   {"02d", 7}, {"X", 7},   {"02X", 1}, {"04X", 2},
    {"04x", 2}, {"08X", 4}, {"llX", 8}, {"llx", 8}, {"lld", 8},
};

inline constexpr std::uint8_t AnyWidth = 0xFF;

// The widths of the value that a format takes. `given` names what its print gives it, in this order: n the row's value,
// d another number of 32 bits, s a text. A format that takes anything else does not compile.
consteval std::uint8_t FormatWidths(std::string_view format, std::string_view given) {
    std::uint8_t widths = AnyWidth;
    for (std::size_t at = format.find('%'); at != format.npos; at = format.find('%')) {
        format.remove_prefix(at + 1);
        const FormatConversion* const conversion = std::ranges::find_if(
            FormatConversions, [format](const FormatConversion& each) { return format.starts_with(each.Text); });
        if (conversion == std::end(FormatConversions) || given.empty() ||
            (given[0] == 's' ? conversion->Widths != 0 : (conversion->Widths & (given[0] == 'd' ? 7 : widths)) == 0)) {
            throw "a format takes what its print gives it";
        }
        widths &= given[0] == 'n' ? conversion->Widths : AnyWidth;
        given.remove_prefix(1);
    }
    return given.empty() ? widths : throw "a format takes all that its print gives it";
}

// One field. Row is its row among the rows of its type. A field of its own has Print, which prints the row's value, or
// Show, which also reads by itself. The rest serves the other shapes.
struct DecoderField {
    std::uint8_t Row;
    FieldShape Shape;
    std::uint8_t Widths; // those of the row that Format takes
    const char* Format;
    TextTable Texts;
    std::uint32_t Mask = 0xFFFFFFFF;
    const char* const* BitNames = nullptr;
    std::span<const BitGroup> Groups;
    std::uint64_t Special = 0;
    const char* Mark = nullptr;
    void (*Print)(const DecoderField& field, const FieldValue& value) = nullptr;
    FieldOutcome (*Show)(const DecoderField& field, const StructPlace& place) = nullptr;

    consteval DecoderField(std::uint8_t row, FieldShape shape, const char* format = "", std::string_view given = "")
        : Row(row), Shape(shape), Widths(FormatWidths(format, given)), Format(format) {}
};

// Reads a row of a structure. False when it can't be read.
bool FieldRead(const StructPlace& place, std::uint8_t row, FieldValue* value);

// Reads and prints a field.
FieldOutcome FieldShow(const DecoderField& field, const StructPlace& place);

// Prints Format with the row's value.
void NumberPrint(const DecoderField& field, const FieldValue& value);

// A string: Format takes the text. Printed whole, whatever its length.
consteval DecoderField StringField(std::uint8_t row, const char* format) {
    return {row, FieldShape::String, format, "s"};
}

// A number: Format takes it once or twice.
consteval DecoderField NumberField(std::uint8_t row, const char* format) {
    const std::string_view text = format;
    return {row, FieldShape::Number, format, text.find('%') == text.rfind('%') ? "n" : "nn"};
}

// A number and its text in one print: Format takes the number and the text of its bits under `mask`.
consteval DecoderField TextField(std::uint8_t row, const char* format, TextTable texts,
                                 std::uint32_t mask = 0xFFFFFFFF) {
    DecoderField field(row, FieldShape::Text, format, "ns");
    field.Texts = texts;
    field.Mask = mask;
    return field;
}

// A number, and its text in a print of its own (`text`) on the same line: Format takes the number alone.
consteval DecoderField TextLineField(std::uint8_t row, const char* format, TextTable texts, const char* text = "%s\n") {
    DecoderField field(row, FieldShape::TextLine, format, "n");
    FormatWidths(text, "s");
    field.Texts = texts;
    field.Mark = text;
    return field;
}

// A number, then one line per named bit. The names end with a null entry.
consteval DecoderField BitsField(std::uint8_t row, const char* format, const char* const* names) {
    DecoderField field(row, FieldShape::Bits, format, "n");
    field.BitNames = names;
    return field;
}

// A number, then one line per group of bits.
consteval DecoderField GroupsField(std::uint8_t row, const char* format, std::span<const BitGroup> groups) {
    DecoderField field(row, FieldShape::Groups, format, "n");
    for (const BitGroup& group : groups) {
        FormatWidths(group.Format, group.Texts.Low.empty() ? "d" : "s");
        if (std::uint64_t{group.Mask} << group.Shift >> 8 * field.Widths != 0) {
            throw "a group's bits are the value's";
        }
    }
    field.Groups = groups;
    return field;
}

// A number, then on the same line `mark` when it is the special value and a bare line end otherwise. The mark brings
// its own line end.
consteval DecoderField MarkField(std::uint8_t row, const char* format, std::uint64_t special,
                                 const char* mark = "- Unknown\n") {
    DecoderField field(row, FieldShape::Mark, format, "n");
    FormatWidths(mark, "");
    field.Special = special;
    field.Mark = mark;
    return field;
}

// Bytes as they are stored, on one line behind the label.
consteval DecoderField BytesField(std::uint8_t row, const char* label) {
    return {row, FieldShape::Bytes, label};
}

// A field that is counted but neither read nor printed.
consteval DecoderField CountedField(std::uint8_t row) {
    return {row, FieldShape::Counted};
}

// A field with a function of its own: for its value, which prints Format with what `given` says (see FormatWidths), or
// for what it takes more than that.
consteval DecoderField OwnField(std::uint8_t row, void (*print)(const DecoderField&, const FieldValue&),
                                const char* format, std::string_view given = "n", TextTable texts = {}) {
    DecoderField field(row, FieldShape::Own, format, given);
    field.Texts = texts;
    field.Print = print;
    return field;
}
consteval DecoderField OwnField(std::uint8_t row, FieldOutcome (*show)(const DecoderField&, const StructPlace&)) {
    DecoderField field(row, FieldShape::Own);
    field.Show = show;
    return field;
}
