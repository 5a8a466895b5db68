// The ready-made shapes of fields.
#include "viewer/DecoderField.h"

#include "Lib/API/RyxPrint.h"
#include "Lib/API/RyxSmbios.h"
#include "Lib/DmiFieldTable.h"
#include "Lib/LittleEndian.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace {

// What one print holds.
constexpr std::size_t PrintLimit = 1023;

std::uint32_t FieldOf(const StructPlace& place, std::uint8_t row) {
    return place.Type * RyxFieldsPerType + row;
}

FieldOutcome StringShow(const DecoderField& field, const StructPlace& place) {
    std::string_view text;
    if (StructStringRead(FieldOf(place, field.Row), place.Instance, &text) != RyxOk) {
        return FieldOutcome::Unreadable;
    }
    TextPrint(field.Format, text);
    return FieldOutcome::Printed;
}

FieldOutcome StringsShow(const DecoderField& field, const StructPlace& place) {
    FieldValue count;
    FieldValue strings;
    if (!FieldRead(place, field.Row, &count) || StructStringsRead(place.Type, place.Instance, &strings) != RyxOk) {
        return FieldOutcome::Unreadable;
    }
    unsigned number = 0;
    for (std::size_t at = 0; at < strings.Bytes.size() && (count.Bytes.empty() || number < count.Number);) {
        const std::string_view text = TextOf(strings.Bytes.subspan(at));
        TextPrint(field.Format, text, ++number);
        at += text.size() + 1;
    }
    return FieldOutcome::Printed;
}

void GroupsPrint(std::span<const BitGroup> groups, std::uint64_t value) {
    for (const BitGroup& group : groups) {
        const auto code = static_cast<unsigned int>(value >> group.Shift & group.Mask);
        if (group.Texts.Low.empty()) {
            RyxPrintf(group.Format, code);
        } else {
            RyxPrintf(group.Format, TextFind(group.Texts, code));
        }
    }
}

void BytesPrint(const char* label, std::span<const std::uint8_t> bytes) {
    FixedPrint(label);
    for (const std::uint8_t byte : bytes) {
        RyxPrintf("0x%02X ", byte);
    }
    RyxPrintf("\n");
}

void SizePrint(const DecoderField& field, const FieldValue& value) {
    const std::uint64_t kilobytes = field.Kilobytes(value.Number);
    const auto print = [&field, kilobytes](auto number) {
        RyxPrintf(field.Format, number, static_cast<unsigned long long>(kilobytes),
                  static_cast<unsigned long long>(kilobytes >> 10), static_cast<unsigned long long>(kilobytes >> 20));
    };
    if (value.Bytes.size() > sizeof(std::uint32_t)) {
        print(static_cast<unsigned long long>(value.Number));
    } else {
        print(static_cast<unsigned int>(value.Number));
    }
}

// Prints the lines of fields for a record that repeats them.
void FieldsAgainPrint(const RecordLayout& layout, const StructPlace& place, std::span<const std::uint8_t> record,
                      const FieldValue& strings) {
    const std::uint8_t base = DmiRowFind(place.Type, layout.Fields->Row)->Offset;
    for (const DecoderField& field : std::span(layout.Fields, layout.FieldCount)) {
        const DmiFieldDescriptor& row = *DmiRowFind(place.Type, field.Row);
        const std::span<const std::uint8_t> bytes = record.subspan(row.Offset - base, DmiRowWidth(row));
        const FieldValue value{bytes, LittleEndianRead(bytes.data(), bytes.size())};
        if (field.Shape == FieldShape::String) {
            TextPrint(field.Format, StringOf(strings, static_cast<std::uint32_t>(value.Number)));
        } else {
            ValuePrint(field, place, value);
        }
    }
}

void RecordsPrint(const DecoderField& field, const StructPlace& place, const FieldValue& value) {
    const RecordLayout& layout = *field.Records;
    FieldValue strings;
    if (value.Bytes.empty() ||
        (layout.Fields != nullptr && StructStringsRead(place.Type, place.Instance, &strings) != RyxOk)) {
        return;
    }
    if (*field.Format != '\0') {
        FixedPrint(field.Format);
    }
    unsigned number = layout.First;
    for (std::size_t at = 0; at + layout.Size <= value.Bytes.size(); at += layout.Size, ++number) {
        const std::span<const std::uint8_t> record = value.Bytes.subspan(at, layout.Size);
        if (layout.Fields != nullptr) {
            FieldsAgainPrint(layout, place, record, strings);
        } else {
            RecordPrint(layout.Lines, record, number);
        }
    }
}

// Tells whether a line that refers to another field may be shown.
bool CaseApplies(const NumberCase& each, const StructPlace& place) {
    if (each.Row == 0) {
        return true;
    }
    const DmiFieldDescriptor& row = *DmiRowFind(place.Type, each.Row, true);
    FieldValue other;
    if (row.Rule != DmiRule::None) {
        return FieldRead(place, each.Row, &other) && other.Number != 0;
    }
    return StructAreaRead(place.Type, place.Instance, row.Offset, &other) == RyxOk &&
           row.Offset + other.Bytes.size() >= each.Length &&
           LittleEndianRead(other.Bytes.data(), DmiRowWidth(row)) != 0;
}

// Prints the line that the value has of its own. False when it has none.
bool CasePrint(const DecoderField& field, const StructPlace& place, const FieldValue& value) {
    for (const NumberCase& each : field.Cases) {
        if (value.Number == each.Value && CaseApplies(each, place)) {
            if (value.Bytes.size() > sizeof(std::uint32_t)) {
                RyxPrintf(each.Format, static_cast<unsigned long long>(value.Number), each.Text);
            } else {
                RyxPrintf(each.Format, static_cast<unsigned int>(value.Number), each.Text);
            }
            return true;
        }
    }
    return false;
}

} // namespace

void TextPrint(const char* format, std::string_view text, unsigned number) {
    const std::string_view whole = format;
    const std::size_t at = whole.find("%s");
    const bool numbered = whole.find('%') != at;
    char digits[12] = "";
    const int digitCount = numbered ? std::snprintf(digits, sizeof digits, "%u", number) : 0;
    if (whole.size() - (numbered ? 4 : 2) + static_cast<std::size_t>(digitCount) + text.size() <= PrintLimit) {
        if (numbered) {
            RyxPrintf(format, number, text.data());
        } else {
            RyxPrintf(format, text.data());
        }
        return;
    }
    // Too long for one print: the label, the text in pieces, and what follows it.
    const std::size_t labelEnd = numbered ? whole.find('%') : at;
    RyxPrintf("%.*s", static_cast<int>(labelEnd), format);
    if (numbered) {
        RyxPrintf("%u%.*s", number, static_cast<int>(at - labelEnd - 2), format + labelEnd + 2);
    }
    for (; !text.empty(); text.remove_prefix(std::min(text.size(), PrintLimit))) {
        RyxPrintf("%.*s", static_cast<int>(std::min(text.size(), PrintLimit)), text.data());
    }
    FixedPrint(format + at + 2);
}

void RowsPrint(std::span<const std::uint8_t> bytes, const char* row) {
    constexpr std::size_t rowSize = 16;
    for (; !bytes.empty(); bytes = bytes.subspan(std::min(bytes.size(), rowSize))) {
        char text[3 * rowSize];
        std::size_t at = 0;
        for (const std::uint8_t byte : bytes.first(std::min(bytes.size(), rowSize))) {
            std::snprintf(text + at, 3, "%02X", byte);
            text[at + 2] = ' ';
            at += 3;
        }
        text[at - 1] = '\0';
        RyxPrintf(row, text);
    }
}

void RecordPrint(std::span<const RecordLine> lines, std::span<const std::uint8_t> record, unsigned number) {
    for (const RecordLine& line : lines) {
        if (line.Offset + std::size_t{line.Width} > record.size()) {
            continue;
        }
        const auto value = static_cast<unsigned>(LittleEndianRead(&record[line.Offset], line.Width));
        const bool coded = !line.Texts.Low.empty();
        const char* const text = coded ? TextFind(line.Texts, value) : nullptr;
        if (line.Numbered && coded) {
            RyxPrintf(line.Format, number, value, text);
        } else if (line.Numbered) {
            RyxPrintf(line.Format, number, value, value);
        } else if (coded) {
            RyxPrintf(line.Format, value, text);
        } else {
            RyxPrintf(line.Format, value, value);
        }
    }
}

void ValuePrint(const DecoderField& field, const StructPlace& place, const FieldValue& value) {
    if (CasePrint(field, place, value)) {
        return;
    }
    switch (field.Shape) {
    case FieldShape::Size:
        SizePrint(field, value);
        return;
    case FieldShape::Records:
        RecordsPrint(field, place, value);
        return;
    case FieldShape::Rows:
        if (!value.Bytes.empty()) {
            FixedPrint(field.Format);
            RowsPrint(value.Bytes);
        }
        return;
    case FieldShape::Own:
        field.Print(field, value);
        return;
    case FieldShape::Bytes:
        BytesPrint(field.Format, value.Bytes);
        return;
    case FieldShape::Text:
        RyxPrintf(field.Format, static_cast<unsigned int>(value.Number),
                  TextFind(field.Texts, value.Number & field.Mask));
        return;
    default:
        NumberPrint(field, value);
    }
    switch (field.Shape) {
    case FieldShape::TextLine:
        RyxPrintf(field.Mark, TextFind(field.Texts, value.Number));
        break;
    case FieldShape::Bits:
        BitListPrint(value.Number, field.BitNames);
        break;
    case FieldShape::Groups:
        GroupsPrint(field.Groups, value.Number);
        break;
    case FieldShape::Mark:
        FixedPrint(value.Number == field.Special ? field.Mark : "\n");
        break;
    default:
        break;
    }
}

bool FieldRead(const StructPlace& place, std::uint8_t row, FieldValue* value) {
    return StructFieldRead(FieldOf(place, row), place.Instance, value) == RyxOk;
}

FieldOutcome FieldShow(const DecoderField& field, const StructPlace& place) {
    if (field.Shape == FieldShape::Counted) {
        return FieldOutcome::Skipped;
    }
    if (field.Shape == FieldShape::String) {
        return StringShow(field, place);
    }
    if (field.Shape == FieldShape::Strings) {
        return StringsShow(field, place);
    }
    if (field.Show != nullptr) {
        return field.Show(field, place);
    }
    FieldValue value;
    if (!FieldRead(place, field.Row, &value)) {
        return FieldOutcome::Unreadable;
    }
    ValuePrint(field, place, value);
    return FieldOutcome::Printed;
}

void NumberPrint(const DecoderField& field, const FieldValue& value) {
    if (value.Bytes.size() > sizeof(std::uint32_t)) {
        const auto number = static_cast<unsigned long long>(value.Number);
        RyxPrintf(field.Format, number, number);
    } else {
        const auto number = static_cast<unsigned int>(value.Number);
        RyxPrintf(field.Format, number, number);
    }
}
