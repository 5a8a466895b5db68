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

} // namespace

bool FieldRead(const StructPlace& place, std::uint8_t row, FieldValue* value) {
    return StructFieldRead(FieldOf(place, row), place.Instance, value) == RyxOk;
}

void NumberPrint(const DecoderField& field, const FieldValue& value) {
    if (value.Bytes.size() > sizeof(std::uint32_t)) {
        const auto number = static_cast<unsigned long long>(value.Number);
        RyxPrintf(field.Format, number, number, number);
    } else {
        const auto number = static_cast<unsigned int>(value.Number);
        RyxPrintf(field.Format, number, number, number);
    }
}

void TextPrint(const DecoderField& field, const FieldValue& value) {
    RyxPrintf(field.Format, static_cast<unsigned int>(value.Number), TextFind(field.Texts, value.Number & field.Mask));
}

void TextLinePrint(const DecoderField& field, const FieldValue& value) {
    NumberPrint(field, value);
    RyxPrintf(field.Mark, TextFind(field.Texts, value.Number));
}

void BitsPrint(const DecoderField& field, const FieldValue& value) {
    NumberPrint(field, value);
    BitListPrint(value.Number, field.BitNames);
}

void GroupsPrint(const DecoderField& field, const FieldValue& value) {
    NumberPrint(field, value);
    for (const BitGroup& group : field.Groups) {
        const auto code = static_cast<unsigned int>(value.Number >> group.Shift & group.Mask);
        if (group.Texts.Low.empty()) {
            RyxPrintf(group.Format, code);
        } else {
            RyxPrintf(group.Format, TextFind(group.Texts, code));
        }
    }
}

void MarkPrint(const DecoderField& field, const FieldValue& value) {
    NumberPrint(field, value);
    RyxPrintf(value.Number == field.Special ? field.Mark : "\n");
}

void BytesPrint(const DecoderField& field, const FieldValue& value) {
    RyxPrintf(field.Format);
    for (const std::uint8_t byte : value.Bytes) {
        RyxPrintf("0x%02X ", byte);
    }
    RyxPrintf("\n");
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
    RyxPrintf(field.Format + at + 2);
    return FieldOutcome::Printed;
}
