// The ready-made shapes of fields.
#include "viewer/DecoderField.h"

#include "Lib/API/RyxSmbios.h"
#include "Lib/DmiFieldTable.h"
#include "Lib/LittleEndian.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace {

std::uint32_t FieldOf(const StructPlace& place, std::uint8_t row) {
    return place.Type * RyxFieldsPerType + row;
}

FieldOutcome StringShow(const DecoderField& field, const StructPlace& place) {
    std::string_view text;
    if (StructStringRead(FieldOf(place, field.Row), place.Instance, &text) != RyxOk) {
        return FieldOutcome::Unreadable;
    }
    ReportText(field.Format, text);
    return FieldOutcome::Printed;
}

FieldOutcome StringsShow(const DecoderField& field, const StructPlace& place) {
    FieldValue count;
    FieldValue strings;
    if (!FieldRead(place, field.Row, &count) || StructStringsRead(place.Type, place.Instance, &strings) != RyxOk) {
        return FieldOutcome::Unreadable;
    }
    ReportItems("", field.Mark, strings.Bytes);
    unsigned number = 0;
    for (std::size_t at = 0; at < strings.Bytes.size() && (count.Bytes.empty() || number < count.Number);) {
        const std::string_view text = TextOf(strings.Bytes.subspan(at));
        ReportItemText(field.Format, ++number, text);
        at += text.size() + 1;
    }
    return FieldOutcome::Printed;
}

void GroupsPrint(std::span<const BitGroup> groups, std::uint64_t value) {
    for (const BitGroup& group : groups) {
        const auto code = static_cast<unsigned int>(value >> group.Shift & group.Mask);
        if (group.Texts.Low().empty()) {
            ReportDetail(group.Format, code);
        } else {
            ReportDetail(group.Format, TextFind(group.Texts, code));
        }
    }
}

void SizePrint(const DecoderField& field, const FieldValue& value) {
    const std::uint64_t kilobytes = field.Kilobytes(value.Number);
    const auto print = [&field, &value, kilobytes](auto number) {
        ReportLine(value, field.Format, number, static_cast<unsigned long long>(kilobytes),
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
        const FieldValue value = ValueOf(record.subspan(row.Offset - base, DmiRowWidth(row)));
        if (field.Shape == FieldShape::String) {
            ReportText(field.Format, StringOf(strings, static_cast<std::uint32_t>(value.Number)));
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
    ReportItems(field.Format, field.Mark);
    unsigned number = layout.First;
    for (std::size_t at = 0; at + layout.Size <= value.Bytes.size(); at += layout.Size, ++number) {
        const std::span<const std::uint8_t> record = value.Bytes.subspan(at, layout.Size);
        ReportItem();
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
                ReportLine(value, each.Format, static_cast<unsigned long long>(value.Number), each.Text);
            } else {
                ReportLine(value, each.Format, static_cast<unsigned int>(value.Number), each.Text);
            }
            if (each.Text != nullptr) {
                ReportMeaning(each.Text);
            } else {
                ReportMeaningOf(each.Format);
            }
            return true;
        }
    }
    return false;
}

} // namespace

FieldValue ValueOf(std::span<const std::uint8_t> bytes) {
    return {bytes, LittleEndianRead(bytes.data(), bytes.size())};
}

void TextReport(const char* format, const char* text) {
    ReportMore(format, text);
    ReportMeaning(text);
}

void RecordPrint(std::span<const RecordLine> lines, std::span<const std::uint8_t> record, unsigned number,
                 ReportPart part) {
    for (const RecordLine& line : lines) {
        if (line.Offset + std::size_t{line.Width} > record.size()) {
            continue;
        }
        const FieldValue value = ValueOf(record.subspan(line.Offset, line.Width));
        const auto code = static_cast<unsigned>(value.Number);
        const char* const text = line.Texts.Low().empty() ? nullptr : TextFind(line.Texts, code);
        const auto say = [&](auto... values) {
            if (part == ReportPart::Detail) {
                ReportDetail(line.Format, values...);
            } else {
                ReportLine(value, line.Format, values...);
                ReportMeaning(text != nullptr ? text : "");
            }
        };
        if (line.Numbered && text != nullptr) {
            say(number, code, text);
        } else if (line.Numbered) {
            say(number, code, code);
        } else if (text != nullptr) {
            say(code, text);
        } else {
            say(code, code);
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
            ReportRows(field.Format, value.Bytes);
        }
        return;
    case FieldShape::Own:
        field.Print(field, value);
        return;
    case FieldShape::Uuid:
    case FieldShape::Bytes:
        ReportBytes(field.Format, value);
        if (field.Shape == FieldShape::Uuid) {
            ReportUuid();
        }
        return;
    case FieldShape::Text: {
        const char* const text = TextFind(field.Texts, value.Number & field.Mask);
        ReportLine(value, field.Format, static_cast<unsigned int>(value.Number), text);
        ReportMeaning(text);
        return;
    }
    default:
        NumberPrint(field, value);
    }
    switch (field.Shape) {
    case FieldShape::TextLine:
        TextReport(field.Mark, TextFind(field.Texts, value.Number));
        break;
    case FieldShape::Bits:
        ReportBits(value.Number, field.BitNames);
        break;
    case FieldShape::Groups:
        GroupsPrint(field.Groups, value.Number);
        break;
    case FieldShape::Mark:
        ReportMore(value.Number == field.Special ? field.Mark : "\n", 0);
        ReportMeaningOf(value.Number == field.Special ? field.Mark : "");
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
    if (field.Shape == FieldShape::Shown) {
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
        ReportLine(value, field.Format, number, number);
    } else {
        const auto number = static_cast<unsigned int>(value.Number);
        ReportLine(value, field.Format, number, number);
    }
}
