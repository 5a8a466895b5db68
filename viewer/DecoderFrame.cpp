// The frame that every decoder follows.
#include "Lib/API/RyxPrint.h"
#include "viewer/Report.h"
#include "viewer/StructDispatch.h"
#include "viewer/ViewerState.h"

#include <cstdio>

namespace {

constexpr std::uint8_t TypeRow = 0;
constexpr std::uint8_t LengthRow = 1;
constexpr std::uint8_t HandleRow = 2;

// Fields 2 and 3; field 1 is shown from the type that the frame has read already.
constexpr DecoderField HeaderFields[] = {
    NumberField(LengthRow, "Length : 0x%02X (%02d)\n"),
    NumberField(HandleRow, "Handle : 0x%04X (%02d)\n"),
};

// For programs the header stands beside the fields, whatever is selected.
constexpr DecoderField HeaderCounted[] = {CountedField(LengthRow), CountedField(HandleRow)};

static_assert(FieldsFit(0, HeaderFields, TypeRow));

constexpr DecoderField OtherFields[] = {
    RowsField(3, "Data :\n"),
    StringsField(4, "String %d : %s\n"),
};

void TypePrint(const StructDecoder& decoder, std::uint64_t type) {
    if (decoder.Form != DecoderForm::Other) {
        RyxPrintf("Type : %s\n", StructTypeNameTable[type]);
        return;
    }
    char name[sizeof decoder.Name + sizeof " (Type 255)"];
    std::snprintf(name, sizeof name, "%s (Type %u)", StructTypeNameTable[type], static_cast<unsigned>(type));
    RyxPrintf("Type : %s\n", name);
}

// Begins the structure's object with its whole header. False when that can't be read.
bool HeaderReport(const StructDecoder& decoder, const StructPlace& place) {
    FieldValue length;
    FieldValue handle;
    if (!FieldRead(place, LengthRow, &length) || !FieldRead(place, HandleRow, &handle)) {
        return false;
    }
    ReportStructBegin({place.Type, std::string_view(decoder.Name, decoder.NameLength), place.Instance,
                       static_cast<std::uint16_t>(handle.Number), static_cast<std::uint8_t>(length.Number)});
    return true;
}

// What comes after a field.
enum class FrameStep : std::uint8_t { NextField, NextStruct, End };

// Counts a field and shows it if it is selected.
FrameStep FieldStep(const DecoderField& field, const StructPlace& place) {
    ++ViewerFieldCounter;
    if (ViewerFieldSelected != 0 && ViewerFieldSelected != ViewerFieldCounter) {
        return FrameStep::NextField;
    }
    const FieldOutcome outcome = FieldShow(field, place);
    ReportFieldEnd();
    if (outcome == FieldOutcome::Unreadable) {
        return FrameStep::NextStruct;
    }
    return outcome == FieldOutcome::Printed && ViewerFieldSelected != 0 ? FrameStep::End : FrameStep::NextField;
}

// Goes through the fields of a structure. Of the whole table, some speak differently and others follow.
FrameStep FieldsShow(const StructDecoder& decoder, const StructPlace& place) {
    std::span<const DecoderField> whole = RyxSmbiosWholeGet() ? decoder.Whole : std::span<const DecoderField>();
    FrameStep step = FrameStep::NextField;
    for (const std::span<const DecoderField> part :
         {std::span<const DecoderField>(ViewerJson ? HeaderCounted : HeaderFields), decoder.Fields}) {
        for (const DecoderField& field : part) {
            const bool other = !whole.empty() && whole.front().Row == field.Row;
            if (step = FieldStep(other ? whole.front() : field, place); step != FrameStep::NextField) {
                return step;
            }
            whole = whole.subspan(other ? 1 : 0);
        }
    }
    for (; !whole.empty() && step == FrameStep::NextField; whole = whole.subspan(1)) {
        step = FieldStep(whole.front(), place);
    }
    return step;
}

// Shows one structure. True when the whole decoder ends with it.
bool StructShow(const StructDecoder& decoder, const StructPlace& place) {
    if (RyxInterrupted()) {
        return true;
    }
    FieldValue type;
    const RyxStatus status = StructFieldRead(place.Type * RyxFieldsPerType + TypeRow, place.Instance, &type);
    if (status == RyxErrorObject && RyxSmbiosWholeGet()) {
        return true; // of the whole table, with all its types, those that follow are not looked for one by one
    }
    if (status != RyxOk || type.Number >= StructTypeNameTable.size()) {
        return false;
    }
    ViewerDecoderRan = 1;
    ViewerFieldCounter = 1;
    if (ViewerJson) {
        if (!HeaderReport(decoder, place)) {
            return false;
        }
    } else {
        RyxPrintf("\n");
        if (ViewerFieldSelected == 0 || ViewerFieldSelected == 1) {
            TypePrint(decoder, type.Number);
        }
    }
    const FrameStep step = ViewerFieldSelected == 1 ? FrameStep::End : FieldsShow(decoder, place);
    ReportEnd();
    return step == FrameStep::End;
}

} // namespace

RyxStatus StructDecoder::operator()(std::uint8_t type) const {
    const bool first = FirstOnly();
    const std::uint8_t end = first ? 2 : ViewerInstanceEnd;
    for (std::uint8_t instance = first ? 1 : ViewerInstanceFirst; instance < end; ++instance) {
        if (StructShow(*this, {type, instance})) {
            break;
        }
    }
    return RyxOk;
}

constinit const StructDecoder StructDecodeUnknown(47, "Unknown", DecoderForm::Other, {}, OtherFields);
constinit const StructDecoder StructDecodeOem(128, "OEM-specific", DecoderForm::Other, {}, OtherFields);
