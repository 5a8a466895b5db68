// The frame that every decoder follows.
#include "viewer/DecoderFrame.h"

#include "Lib/API/RyxPrint.h"
#include "Lib/API/RyxSmbios.h"
#include "viewer/StructDispatch.h"
#include "viewer/StructRead.h"
#include "viewer/ViewerState.h"

#include <algorithm>
#include <string_view>

namespace {

// What one print holds.
constexpr std::size_t PrintLimit = 1023;

constexpr std::uint8_t RowType = 0;
constexpr std::uint8_t RowLength = 1;
constexpr std::uint8_t RowHandle = 2;

// Fields 2 and 3; field 1 is shown from the type that the frame has read already.
constexpr DecoderField HeaderFields[] = {
    NumberField(RowLength, "Length : 0x%02X (%02d)\n"),
    NumberField(RowHandle, "Handle : 0x%04X (%02d)\n"),
};

std::uint32_t FieldOf(const StructPlace& place, std::uint8_t row) {
    return place.Type * RyxFieldsPerType + row;
}

// Prints a number with a format that takes it up to three times.
void NumberPrint(const char* format, std::uint64_t number, std::size_t size) {
    if (size > sizeof(std::uint32_t)) {
        const auto value = static_cast<unsigned long long>(number);
        RyxPrintf(format, value, value, value);
    } else {
        const auto value = static_cast<unsigned int>(number);
        RyxPrintf(format, value, value, value);
    }
}

// Reads a row's value and prints it with the field's format.
bool NumberRead(const DecoderField& field, const StructPlace& place, std::uint64_t* number) {
    std::span<const std::uint8_t> bytes;
    if (!FieldBytes(place, field.Row, &bytes)) {
        return false;
    }
    *number = ValueOf(bytes.data(), bytes.size());
    NumberPrint(field.Format, *number, bytes.size());
    return true;
}

// Goes past one field: counts it, and shows it when it is selected. False when the structure's output ends; `done`
// tells whether the whole decoder does.
bool FieldPass(const DecoderField& field, const StructPlace& place, bool* done) {
    ++ViewerFieldCounter;
    if (ViewerFieldSelected != 0 && ViewerFieldSelected != ViewerFieldCounter) {
        return true;
    }
    switch (field.Show(field, place)) {
    case FieldOutcome::Unreadable:
        return false;
    case FieldOutcome::Printed:
        *done = ViewerFieldSelected != 0;
        return !*done;
    default:
        return true;
    }
}

// Shows one structure. True when the whole decoder ends with it.
bool StructShow(const StructPlace& place, std::span<const DecoderField> fields) {
    std::span<const std::uint8_t> type;
    if (!FieldBytes(place, RowType, &type) || type.empty()) {
        return false;
    }
    ViewerDecoderRan = 1;
    ViewerFieldCounter = 1;
    RyxPrintf("\n");
    if (ViewerFieldSelected == 0 || ViewerFieldSelected == 1) {
        const std::uint8_t shown = type[0];
        RyxPrintf("Type : %s\n", shown < StructTypeNameTable.size() ? StructTypeNameTable[shown] : "");
        if (ViewerFieldSelected == 1) {
            return true;
        }
    }
    bool done = false;
    const auto pass = [&](const DecoderField& field) { return FieldPass(field, place, &done); };
    static_cast<void>(std::all_of(std::begin(HeaderFields), std::end(HeaderFields), pass) &&
                      std::all_of(fields.begin(), fields.end(), pass));
    return done;
}

} // namespace

bool FieldBytes(const StructPlace& place, std::uint8_t row, std::span<const std::uint8_t>* bytes) {
    const std::uint8_t* data = nullptr;
    std::uint64_t size = 0;
    if (StructFieldRead(FieldOf(place, row), place.Instance, &data, &size) != RyxOk) {
        return false;
    }
    *bytes = {data, static_cast<std::size_t>(size)};
    return true;
}

bool FieldNumber(const StructPlace& place, std::uint8_t row, std::uint64_t* number) {
    std::span<const std::uint8_t> bytes;
    if (!FieldBytes(place, row, &bytes)) {
        return false;
    }
    *number = ValueOf(bytes.data(), bytes.size());
    return true;
}

FieldOutcome StringShow(const DecoderField& field, const StructPlace& place) {
    std::string_view text;
    if (StructStringRead(FieldOf(place, field.Row), place.Instance, &text) != RyxOk) {
        return FieldOutcome::Unreadable;
    }
    const std::string_view format = field.Format;
    const std::size_t at = format.find("%s");
    if (format.size() - 2 + text.size() <= PrintLimit || at == std::string_view::npos) {
        RyxPrintf(field.Format, text.data());
        return FieldOutcome::Printed;
    }
    // Too long for one print: the label, the text in pieces, and what follows it.
    RyxPrintf("%.*s", static_cast<int>(at), field.Format);
    for (; !text.empty(); text.remove_prefix(std::min(text.size(), PrintLimit))) {
        RyxPrintf("%.*s", static_cast<int>(std::min(text.size(), PrintLimit)), text.data());
    }
    RyxPrintf(field.Format + at + 2);
    return FieldOutcome::Printed;
}

FieldOutcome NumberShow(const DecoderField& field, const StructPlace& place) {
    std::uint64_t number = 0;
    return NumberRead(field, place, &number) ? FieldOutcome::Printed : FieldOutcome::Unreadable;
}

FieldOutcome TextShow(const DecoderField& field, const StructPlace& place) {
    std::uint64_t number = 0;
    if (!FieldNumber(place, field.Row, &number)) {
        return FieldOutcome::Unreadable;
    }
    RyxPrintf(field.Format, static_cast<unsigned int>(number), TextFind(field.Texts, number & field.Mask));
    return FieldOutcome::Printed;
}

FieldOutcome TextLineShow(const DecoderField& field, const StructPlace& place) {
    std::uint64_t number = 0;
    if (!NumberRead(field, place, &number)) {
        return FieldOutcome::Unreadable;
    }
    RyxPrintf("%s\n", TextFind(field.Texts, number));
    return FieldOutcome::Printed;
}

FieldOutcome BitsShow(const DecoderField& field, const StructPlace& place) {
    std::uint64_t number = 0;
    if (!NumberRead(field, place, &number)) {
        return FieldOutcome::Unreadable;
    }
    BitListPrint(number, field.BitNames);
    return FieldOutcome::Printed;
}

FieldOutcome GroupsShow(const DecoderField& field, const StructPlace& place) {
    std::uint64_t number = 0;
    if (!NumberRead(field, place, &number)) {
        return FieldOutcome::Unreadable;
    }
    for (const BitGroup& group : field.Groups) {
        const auto code = static_cast<unsigned int>(number >> group.Shift & group.Mask);
        if (group.Texts.Low.empty()) {
            RyxPrintf(group.Format, code);
        } else {
            RyxPrintf(group.Format, TextFind(group.Texts, code));
        }
    }
    return FieldOutcome::Printed;
}

FieldOutcome MarkShow(const DecoderField& field, const StructPlace& place) {
    std::uint64_t number = 0;
    if (!NumberRead(field, place, &number)) {
        return FieldOutcome::Unreadable;
    }
    RyxPrintf(number == field.Special ? field.Mark : "\n");
    return FieldOutcome::Printed;
}

FieldOutcome NothingShow(const DecoderField& field, const StructPlace& place) {
    static_cast<void>(field);
    static_cast<void>(place);
    return FieldOutcome::Skipped;
}

RyxStatus SingleInstanceDecode(std::uint8_t type, std::span<const DecoderField> fields) {
    StructShow({type, 1}, fields);
    return RyxOk;
}

RyxStatus InstanceLoopDecode(std::uint8_t type, std::span<const DecoderField> fields) {
    for (std::uint8_t instance = ViewerInstanceFirst; instance < ViewerInstanceEnd; ++instance) {
        if (StructShow({type, instance}, fields)) {
            break;
        }
    }
    return RyxOk;
}
