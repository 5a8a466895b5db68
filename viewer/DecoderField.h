// The fields of decoders: a decoder is a constant table of its fields from number 4 on. The frame reads a field's row,
// the field prints what was read. What does not fit its row does not compile.
#pragma once

#include "viewer/Report.h"
#include "viewer/TextTable.h"

#include <algorithm>
#include <array>
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
enum class FieldShape : std::uint8_t {
    Counted,
    String,
    Number,
    Text,
    TextLine,
    Bits,
    Groups,
    Mark,
    Bytes,
    Uuid,
    Own,
    Shown,
    Size,
    Rows,
    Strings,
    Records,
};

// The conversions that formats have, and the widths, of 1, 2, 4 and 8 bytes and added up, of the numbers that they
// take.
struct FormatConversion {
    std::string_view Text;
    std::uint8_t Widths;
};

inline constexpr FormatConversion FormatConversions[] = {
    {"s", 0},   {"d", 7},   {"02d", 7}, {"X", 7},   {"02X", 1}, {"04X", 2}, {"04x", 2},
    {"08X", 4}, {"llX", 8}, {"llx", 8}, {"lld", 8}, {"llu", 8}, {"u", 4},
};

inline constexpr std::uint8_t AnyWidth = 0xFF;

// The widths of the value that a format takes. `given` names what its print gives it, in this order: n the row's value,
// d another number of 32 bits, q one of 64, s a text. A format that takes anything else does not compile.
consteval std::uint8_t FormatWidths(std::string_view format, std::string_view given) {
    std::uint8_t widths = AnyWidth;
    for (std::size_t at = format.find('%'); at != format.npos; at = format.find('%')) {
        format.remove_prefix(at + 1);
        const FormatConversion* const conversion = std::ranges::find_if(
            FormatConversions, [format](const FormatConversion& each) { return format.starts_with(each.Text); });
        if (conversion == std::end(FormatConversions) || given.empty() ||
            (given[0] == 's'   ? conversion->Widths != 0
             : given[0] == 'd' ? (conversion->Widths & 7) == 0
             : given[0] == 'q' ? conversion->Widths != 8
                               : (conversion->Widths & widths) == 0)) {
            throw "a format takes what its print gives it";
        }
        widths &= given[0] == 'n' ? conversion->Widths : AnyWidth;
        given.remove_prefix(1);
    }
    return given.empty() ? widths : throw "a format takes all that its print gives it";
}

// A value that has a line of its own: Format takes the number, and Text if there is one. With a row, the line refers to
// that field, and is shown only where the field is there and not 0, and the structure has that Length at least.
struct NumberCase {
    std::uint64_t Value;
    const char* Format;
    const char* Text = nullptr;
    std::uint8_t Row = 0;
    std::uint8_t Length = 0;
};

// A line about a record of a list or about a block of data: Format takes the number at Offset, once or twice or with
// its text, behind the record's number when `given` begins with d (see FormatWidths).
struct RecordLine {
    const char* Format;
    std::uint8_t Offset;
    std::uint8_t Width;
    bool Numbered;
    TextTable Texts;

    consteval RecordLine(std::uint8_t offset, std::uint8_t width, const char* format, std::string_view given = "n",
                         TextTable texts = {})
        : Format(format), Offset(offset), Width(width), Numbered(given[0] == 'd'), Texts(texts) {
        if ((FormatWidths(format, given) & width) == 0) {
            throw "a line takes its bytes' width";
        }
    }
};

struct DecoderField;

// What a list's records are made of: bytes, lines of their own, or the lines of fields that stand in the structure for
// the first of them; and the number of the first record of the list.
struct RecordLayout {
    std::uint8_t Size;
    std::uint8_t First = 1;
    std::span<const RecordLine> Lines = {};
    const DecoderField* Fields = nullptr;
    std::uint8_t FieldCount = 0;
};

// One field. Row is its row among the rows of its type. A field of its own has Print, which prints the row's value, or
// Show, which also reads by itself. The rest serves the other shapes.
struct DecoderField {
    std::uint8_t Row;
    FieldShape Shape;
    std::uint8_t Widths; // those of the row that Format takes
    std::uint32_t Mask = 0xFFFFFFFF;
    const char* Format;
    TextTable Texts;
    const char* Mark = nullptr;
    std::span<const NumberCase> Cases;
    // What one shape has alone.
    union {
        std::uint64_t Special = 0;                                                 // Mark
        const char* const* BitNames;                                               // Bits
        std::span<const BitGroup> Groups;                                          // Groups
        void (*Print)(const DecoderField& field, const FieldValue& value);         // Own
        FieldOutcome (*Show)(const DecoderField& field, const StructPlace& place); // Shown
        std::uint64_t (*Kilobytes)(std::uint64_t number);                          // Size
        const RecordLayout* Records;                                               // Records
    };

    consteval DecoderField(std::uint8_t row, FieldShape shape, const char* format = "", std::string_view given = "")
        : Row(row), Shape(shape), Widths(FormatWidths(format, given)), Format(format) {}

    // The field with lines of their own for some values.
    consteval DecoderField With(std::span<const NumberCase> cases) const {
        DecoderField field = *this;
        field.Cases = cases;
        for (const NumberCase& each : cases) {
            field.Widths &= FormatWidths(each.Format, each.Text == nullptr ? "n" : "ns");
        }
        return field;
    }
};

// Reads a row of a structure. False when it can't be read.
bool FieldRead(const StructPlace& place, std::uint8_t row, FieldValue* value);

// Reads and prints a field.
FieldOutcome FieldShow(const DecoderField& field, const StructPlace& place);

// Prints what was read of a field that is neither a string nor a list of strings.
void ValuePrint(const DecoderField& field, const StructPlace& place, const FieldValue& value);

// Bytes, and their number.
FieldValue ValueOf(std::span<const std::uint8_t> bytes);

// Prints the text of a line's code as the rest of it; Format takes the text, or is it.
void TextReport(const char* format, const char* text);

// Prints lines about a record, or details of the entry before them, as far as the bytes go.
void RecordPrint(std::span<const RecordLine> lines, std::span<const std::uint8_t> record, unsigned number = 0,
                 ReportPart part = ReportPart::Entry);

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
        FormatWidths(group.Format, group.Texts.Low().empty() ? "d" : "s");
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

// Bytes as they are stored, on one line behind the label; the same for those of a UUID.
consteval DecoderField BytesField(std::uint8_t row, const char* label) {
    return {row, FieldShape::Bytes, label};
}
consteval DecoderField UuidField(std::uint8_t row, const char* label) {
    return {row, FieldShape::Uuid, label};
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
    DecoderField field(row, FieldShape::Shown);
    field.Show = show;
    return field;
}

// A size: Format takes the number, and the KB, MB and GB that it stands for.
consteval DecoderField SizeField(std::uint8_t row, const char* format, std::uint64_t (*kilobytes)(std::uint64_t)) {
    DecoderField field(row, FieldShape::Size, format, "nqqq");
    field.Kilobytes = kilobytes;
    return field;
}

constexpr std::uint64_t KilobytesOfBytes(std::uint64_t bytes) {
    return bytes >> 10;
}

// Bytes in rows below the label; nothing when there are none.
consteval DecoderField RowsField(std::uint8_t row, const char* label) {
    return {row, FieldShape::Rows, label};
}

// The strings of the structure's set, as many of them as the row's value says, or all where the row has no bytes:
// Format takes the number and the text of each. Programs have them under `label`.
consteval DecoderField StringsField(std::uint8_t row, const char* format, const char* label = "Strings") {
    DecoderField field(row, FieldShape::Strings, format, "ds");
    field.Mark = label;
    return field;
}

// The records of a list below the heading; nothing when there are none. Without a heading, programs have them under
// `label`.
consteval DecoderField RecordsField(std::uint8_t row, const RecordLayout* layout, const char* heading,
                                    const char* label = nullptr) {
    DecoderField field(row, FieldShape::Records, heading);
    field.Records = layout;
    field.Mark = label;
    return field;
}

// Names of bits and those that follow them.
template <std::size_t N, std::size_t M>
consteval std::array<const char*, N + M> NamesLonger(const char* const (&names)[N], // NOLINT: plain arrays of names
                                                     const char* const (&more)[M]) {
    std::array<const char*, N + M> all{};
    std::copy(std::begin(more), std::end(more), std::copy_n(names, N - 1, all.begin()));
    return all;
}
