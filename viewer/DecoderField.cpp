// The ready-made shapes of fields.
#include "viewer/DecoderField.h"

#include "Lib/API/RyxPrint.h"
#include "Lib/API/RyxSmbios.h"

#include <algorithm>
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
    const std::string_view format = field.Format;
    if (format.size() - 2 + text.size() <= PrintLimit) {
        RyxPrintf(field.Format, text.data());
        return FieldOutcome::Printed;
    }
    // Too long for one print: the label, the text in pieces, and what follows it.
    const std::size_t at = format.find("%s");
    RyxPrintf("%.*s", static_cast<int>(at), field.Format);
    for (; !text.empty(); text.remove_prefix(std::min(text.size(), PrintLimit))) {
        RyxPrintf("%.*s", static_cast<int>(std::min(text.size(), PrintLimit)), text.data());
    }
    FixedPrint(field.Format + at + 2);
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

void ValuePrint(const DecoderField& field, const FieldValue& value) {
    switch (field.Shape) {
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

} // namespace

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
    if (field.Show != nullptr) {
        return field.Show(field, place);
    }
    FieldValue value;
    if (!FieldRead(place, field.Row, &value)) {
        return FieldOutcome::Unreadable;
    }
    ValuePrint(field, value);
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
