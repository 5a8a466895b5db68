// The frame that every decoder follows.
#include "Lib/API/RyxPrint.h"
#include "viewer/StructDispatch.h"
#include "viewer/ViewerState.h"

namespace {

constexpr std::uint8_t TypeRow = 0;

// Fields 2 and 3; field 1 is shown from the type that the frame has read already.
constexpr DecoderField HeaderFields[] = {
    NumberField(1, "Length : 0x%02X (%02d)\n"),
    NumberField(2, "Handle : 0x%04X (%02d)\n"),
};

static_assert(FieldsFit(0, HeaderFields, TypeRow));

// Shows one structure. True when the whole decoder ends with it.
bool StructShow(const StructPlace& place, std::span<const DecoderField> fields) {
    if (RyxInterrupted()) {
        return true;
    }
    FieldValue type;
    if (!FieldRead(place, TypeRow, &type) || type.Number >= StructTypeNameTable.size()) {
        return false;
    }
    ViewerDecoderRan = 1;
    ViewerFieldCounter = 1;
    RyxPrintf("\n");
    if (ViewerFieldSelected == 0 || ViewerFieldSelected == 1) {
        RyxPrintf("Type : %s\n", StructTypeNameTable[type.Number]);
        if (ViewerFieldSelected == 1) {
            return true;
        }
    }
    for (const std::span<const DecoderField> part : {std::span<const DecoderField>(HeaderFields), fields}) {
        for (const DecoderField& field : part) {
            ++ViewerFieldCounter;
            if (ViewerFieldSelected != 0 && ViewerFieldSelected != ViewerFieldCounter) {
                continue;
            }
            const FieldOutcome outcome = FieldShow(field, place);
            if (outcome == FieldOutcome::Unreadable) {
                return false;
            }
            if (outcome == FieldOutcome::Printed && ViewerFieldSelected != 0) {
                return true;
            }
        }
    }
    return false;
}

} // namespace

RyxStatus StructDecoder::operator()() const {
    const bool first = FirstOnly();
    const std::uint8_t end = first ? 2 : ViewerInstanceEnd;
    for (std::uint8_t instance = first ? 1 : ViewerInstanceFirst; instance < end; ++instance) {
        if (StructShow({Type, instance}, Fields)) {
            break;
        }
    }
    return RyxOk;
}
